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

/// Every ink that is used on every ground of a theme.
std::vector<std::pair<QColor, QColor>> textsOf(const Theme &theme)
{
    std::vector<std::pair<QColor, QColor>> pairs{{theme.text, theme.pressed}, {theme.onAccent, theme.accent},
        {theme.text, views::mixed(theme.text, theme.sidebar, 0.10)}}; // a list that is selected
    for (const QColor &ground : {theme.window, theme.sidebar, theme.list, theme.field, theme.button, theme.detail,
             theme.titleStart, theme.titleEnd, theme.hover}) {
        for (const QColor &ink : {theme.text, theme.muted, theme.overdue})
            pairs.emplace_back(ink, ground);
    }
    for (const QColor &ground : {theme.selection, theme.selectionInactive}) {
        for (const QColor &ink : {theme.text, theme.mutedSelected, theme.overdueSelected})
            pairs.emplace_back(ink, ground);
    }
    for (const QColor &badge : {theme.badge, theme.badgeInactive})
        pairs.emplace_back(theme.isDark ? theme.text : QColor(Qt::black), badge);
    return pairs;
}

} // namespace

TEST_F(Accessibility, everyWidgetOfEveryWindowIsNamed)
{
    window.action(Command::TagBrowser)->trigger();
    EXPECT_THAT(namelessWidgets(window), IsEmpty());
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
        for (const auto &[ink, ground] : textsOf(theme))
            EXPECT_GE(views::contrast(ink, ground), views::leastContrast)
                << ink.name().toStdString() << " on " << ground.name().toStdString() << ", accent "
                << theme.accent.name().toStdString() << (theme.isDark ? ", dark" : ", light");
    }
}
