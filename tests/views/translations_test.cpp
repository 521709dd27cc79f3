// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/translations.h"

#include "app/error_text.h"
#include "support/test_application.h"
#include "viewcontrollers/date_text.h"
#include "views/main_window.h"

#include <QAction>
#include <QLineEdit>

namespace {

/// The program as a German has it, for one test.
class German : public testing::Test
{
protected:
    German() { QLocale::setDefault(locale); }
    ~German() override { QLocale::setDefault(QLocale::c()); }

    QLocale locale{QStringLiteral("de_DE")};
    views::Translations translations{locale};
};

std::string sentence(const char *message)
{
    return app::errorText({"ObjectStoreErrorDomain", 1, message, {}}).toStdString();
}

} // namespace

TEST_F(German, isSpokenByWindowsListsAndCommands)
{
    support::TestApplication application;
    views::MainWindow window(application.delegate());
    EXPECT_EQ(window.action(views::Command::RemoveTask)->text(), QStringLiteral("In den Papierkorb legen"));
    EXPECT_EQ(
        window.findChild<QLineEdit *>(QStringLiteral("searchField"))->placeholderText(), QStringLiteral("Suchen"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Heute"));
}

TEST_F(German, keepsTheNamesInTheSentenceOfAnError)
{
    EXPECT_EQ(sentence("The store \"my 100%1.qvl\" could not be opened."),
        "Die Aufgabendatei „my 100%1.qvl“ konnte nicht geöffnet werden.");
    EXPECT_EQ(sentence("Your changes could not be saved. They are kept in the program."),
        "Deine Änderungen konnten nicht gesichert werden. Sie bleiben im Programm erhalten.");
    EXPECT_EQ(sentence("Nobody has \"translated\" this."), "Nobody has \"translated\" this.");
}

TEST_F(German, readsTheDatesThatItWritesAndThoseThatGermansType)
{
    const auto now = support::at("2026-11-24 09:00");
    const auto friday = support::at("2026-11-27");
    for (const char *text : {"27.11.", "27.11.2026", "27. November", "27. Nov. 2026", "Freitag", "2026-11-27"})
        EXPECT_EQ(viewcontrollers::parseDate(QString::fromUtf8(text), now), friday) << text;
    EXPECT_EQ(viewcontrollers::parseDate(viewcontrollers::fullDate(friday), now), friday);
    EXPECT_EQ(viewcontrollers::parseDate(QStringLiteral("morgen 14:00"), now), support::at("2026-11-25 14:00"));
}
