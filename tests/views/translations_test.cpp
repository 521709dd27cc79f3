// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/translations.h"

#include "app/error_text.h"
#include "support/test_application.h"
#include "viewcontrollers/date_text.h"
#include "views/main_window.h"
#include "views/quick_task_controller.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QXmlStreamReader>
#include <gmock/gmock.h>

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

/// Every text of the catalog of which German has no use: the English of a text that was not translated.
QSet<QString> englishTexts()
{
    QFile file(QStringLiteral(QUELVIN_CATALOG));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader catalog(&file);
    QSet<QString> english;
    QSet<QString> german;
    while (!catalog.atEnd()) {
        if (catalog.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (catalog.name() == QLatin1String("source"))
            english.insert(catalog.readElementText());
        else if (catalog.name() == QLatin1String("translation"))
            german.insert(catalog.readElementText(QXmlStreamReader::IncludeChildElements));
    }
    EXPECT_FALSE(catalog.hasError()) << catalog.errorString().toStdString();
    return english - german;
}

QStringList textsOf(const QWidget &widget)
{
    QStringList texts{widget.windowTitle(), widget.toolTip(), widget.accessibleName()};
    for (const QAction *action : widget.actions())
        texts.append(action->text());
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        texts.append(label->text());
    if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        texts.append(button->text());
    if (const auto *field = qobject_cast<const QLineEdit *>(&widget))
        texts.append(field->placeholderText());
    if (const auto *list = qobject_cast<const QComboBox *>(&widget)) {
        for (int row = 0; row < list->count(); ++row)
            texts.append(list->itemText(row));
    }
    return texts;
}

} // namespace

TEST_F(German, isTheOnlyLanguageOfEveryWindow)
{
    support::TestApplication application;
    application.add(support::aTask().titled("Milch").due("2026-11-24"));
    views::MainWindow window(application.delegate());
    window.action(views::Command::GoToInbox)->trigger();
    window.showFirstRun();
    window.openPreferencesWindow();
    for (const auto command : {views::Command::Shortcuts, views::Command::ManageFolders, views::Command::ManageTags,
             views::Command::ManageSmartFolders, views::Command::NewSmartFolder})
        window.action(command)->trigger();
    auto *quickEntry = new views::QuickTaskController(application.delegate(), {});
    quickEntry->show();

    const QSet<QString> english = englishTexts();
    std::set<std::string> untranslated;
    for (const QWidget *widget : QApplication::allWidgets()) {
        for (const QString &text : textsOf(*widget)) {
            if (english.contains(text))
                untranslated.insert(text.toStdString() + " in " + widget->window()->metaObject()->className());
        }
    }
    EXPECT_THAT(untranslated, testing::IsEmpty());
    quickEntry->close();
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
