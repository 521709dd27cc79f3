// SPDX-License-Identifier: GPL-3.0-or-later
// What a screen reader is told of every window, and how well its texts read.
#include "support/test_application.h"
#include "views/main_window.h"
#include "views/preferences_window.h"
#include "views/theme.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QButtonGroup>
#include <QDialog>
#include <QLineEdit>
#include <gmock/gmock.h>

using support::aTask;
using testing::IsEmpty;
using views::Command;
using views::Theme;

namespace {

/// Whether a user works with this widget itself: by keyboard, or as with a button by pointer.
bool isWorkedWith(const QWidget &widget)
{
    const bool isPartOfAnother = widget.focusProxy() || widget.objectName().startsWith(QLatin1String("qt_"));
    return !isPartOfAnother && (widget.focusPolicy() != Qt::NoFocus || qobject_cast<const QAbstractButton *>(&widget));
}

/// The widgets below `window` of which a screen reader is not told what they are or what they are for.
std::vector<std::string> namelessWidgets(QWidget &window)
{
    std::vector<std::string> nameless;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (!isWorkedWith(*widget))
            continue;
        QAccessibleInterface *told = QAccessible::queryAccessibleInterface(widget);
        if (!told || told->text(QAccessible::Name).isEmpty() || told->role() == QAccessible::NoRole
            || told->role() == QAccessible::Client)
            nameless.push_back(window.objectName().toStdString() + window.metaObject()->className() + ": "
                + widget->metaObject()->className() + " " + widget->objectName().toStdString() + " in "
                + widget->parentWidget()->metaObject()->className());
    }
    return nameless;
}

class Accessibility : public testing::Test
{
protected:
    Accessibility() : window(application.delegate())
    {
        application.add(aTask().titled("Milk").tagged("shop").due("2026-11-24"));
        window.show();
        window.action(Command::GoToInbox)->trigger();
        table().selectAll();
    }
    QAbstractItemView &table() { return *window.findChild<QAbstractItemView *>(QStringLiteral("taskTable")); }

    support::TestApplication application;
    views::MainWindow window;
};

/// Light and dark, with no accent of the desktop's own and with every kind of accent that desktops have.
std::vector<Theme> themes()
{
    std::vector<Theme> all;
    for (const char *appearance : {"light", "dark"}) {
        QPalette desktop;
        desktop.setColor(QPalette::Highlight, QColor(48, 140, 198));
        all.push_back(Theme::of(desktop, QString::fromLatin1(appearance)));
        for (int hue = 0; hue < 360; hue += 30) {
            for (const int value : {110, 170, 235}) {
                desktop.setColor(QPalette::Highlight, QColor::fromHsv(hue, 190, value));
                all.push_back(Theme::of(desktop, QString::fromLatin1(appearance)));
            }
        }
    }
    return all;
}

struct Pair {
    const char *text;
    QColor ink;
    const char *place;
    QColor ground;
};

std::vector<Pair> textsOf(const Theme &theme)
{
    std::vector<Pair> pairs;
    const std::pair<const char *, QColor> grounds[] = {{"window", theme.window}, {"sidebar", theme.sidebar},
        {"list", theme.list}, {"field", theme.field}, {"button", theme.button}, {"detail", theme.detail},
        {"title", theme.titleStart}, {"title's end", theme.titleEnd}, {"hover", theme.hover}};
    const std::pair<const char *, QColor> inks[]
        = {{"text", theme.text}, {"muted text", theme.muted}, {"overdue", theme.overdue}};
    for (const auto &[place, ground] : grounds) {
        for (const auto &[name, ink] : inks)
            pairs.push_back({name, ink, place, ground});
    }
    for (const QColor &ground : {theme.selection, theme.selectionInactive}) {
        pairs.push_back({"text", theme.text, "selection", ground});
        pairs.push_back({"muted text", theme.mutedSelected, "selection", ground});
        pairs.push_back({"overdue", theme.overdueSelected, "selection", ground});
    }
    pairs.push_back({"text", theme.text, "pressed", theme.pressed});
    pairs.push_back({"text", theme.text, "selected list", views::mixed(theme.text, theme.sidebar, 0.10)});
    for (const QColor &badge : {theme.badge, theme.badgeInactive})
        pairs.push_back({"count", theme.isDark ? theme.text : QColor(Qt::black), "badge", badge});
    pairs.push_back({"selected text", theme.onAccent, "accent", theme.accent});
    return pairs;
}

} // namespace

TEST_F(Accessibility, everyWidgetOfTheMainWindowIsNamed)
{
    EXPECT_THAT(namelessWidgets(window), IsEmpty());
    window.action(Command::TagBrowser)->trigger();
    EXPECT_THAT(namelessWidgets(window), IsEmpty());
}

TEST_F(Accessibility, everyWidgetOfTheOtherWindowsIsNamed)
{
    window.showFirstRun();
    window.openPreferencesWindow();
    for (const Command command : {Command::Shortcuts, Command::ManageFolders, Command::ManageContexts,
             Command::ManageTags, Command::ManageSmartFolders})
        window.action(command)->trigger();
    const QList<QDialog *> dialogs = window.findChildren<QDialog *>();
    EXPECT_GE(dialogs.size(), 7);
    for (QDialog *dialog : dialogs) {
        EXPECT_FALSE(dialog->windowTitle().isEmpty()) << dialog->metaObject()->className();
        EXPECT_THAT(namelessWidgets(*dialog), IsEmpty());
    }
}

TEST_F(Accessibility, everyRowOfTheListsTellsItsText)
{
    for (QAbstractItemView *view : {&table(), window.findChild<QAbstractItemView *>(QStringLiteral("sidebarList"))}) {
        QAccessibleInterface *told = QAccessible::queryAccessibleInterface(view);
        ASSERT_TRUE(told && told->tableInterface());
        ASSERT_GT(told->tableInterface()->rowCount(), 0);
        for (int row = 0; row < told->tableInterface()->rowCount(); ++row)
            EXPECT_FALSE(told->tableInterface()->cellAt(row, 0)->text(QAccessible::Name).isEmpty()) << row;
    }
}

TEST(Contrast, isThatOfTheGuidelines)
{
    EXPECT_NEAR(views::contrast(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(views::contrast(QColor(0x767676), Qt::white), 4.54, 0.01);
    EXPECT_NEAR(views::contrast(Qt::white, QColor(0x777777)), 4.48, 0.01);
}

TEST(Contrast, ofEveryTextIsEnoughInBothThemesAndWithAnyAccent)
{
    for (const Theme &theme : themes()) {
        for (const auto &[text, ink, place, ground] : textsOf(theme))
            EXPECT_GE(views::contrast(ink, ground), views::leastContrast)
                << text << " " << ink.name().toStdString() << " on " << place << " " << ground.name().toStdString()
                << (theme.isDark ? ", dark" : ", light") << ", accent " << theme.accent.name().toStdString();
    }
}
