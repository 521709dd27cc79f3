// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/main_window.h"

#include "support/test_application.h"
#include "views/source_list_view.h"
#include "views/tasks_table_view.h"
#include "views/tip_view.h"
#include "views/tray_icon.h"

#include <QLineEdit>
#include <QPointer>
#include <QTest>

using support::aTask;
using viewcontrollers::SourceKind;
using views::Command;

namespace {

class Window : public testing::Test
{
protected:
    void open()
    {
        window = std::make_unique<views::MainWindow>(application.delegate());
        window->show();
        application.delegate().applicationDidFinishLaunching();
    }
    template <class Widget> Widget &child(const char *name)
    {
        return *window->findChild<Widget *>(QString::fromLatin1(name));
    }
    views::FoldersOutlineView &outline() { return child<views::FoldersOutlineView>("sidebarList"); }
    views::TasksTableView &table() { return child<views::TasksTableView>("taskTable"); }
    std::string titles()
    {
        QStringList titles;
        for (int row = 0; row < table().model()->rowCount(); ++row)
            titles.append(table().model()->index(row, 0).data().toString());
        return titles.join(QLatin1Char('|')).toStdString();
    }
    void type(const char *field, const char *text)
    {
        child<QLineEdit>(field).selectAll();
        QTest::keyClicks(&child<QLineEdit>(field), QString::fromUtf8(text));
    }
    void trigger(Command command) { window->action(command)->trigger(); }

    support::TestApplication application;
    std::unique_ptr<views::MainWindow> window;
};

} // namespace

TEST_F(Window, addsATypedTaskToTheInboxWhileTodayIsShown)
{
    open();
    type("newTaskField", "Buy milk");
    QTest::keyClick(&child<QLineEdit>("newTaskField"), Qt::Key_Return);
    EXPECT_EQ(outline().selectedRow().data().toString(), QStringLiteral("Inbox"));
    EXPECT_EQ(titles(), "Buy milk");
    EXPECT_EQ(table().selectedTasks().size(), 1U);
    EXPECT_EQ(child<QLineEdit>("newTaskField").text(), QString());
}

TEST_F(Window, showsWhatAnotherProgramAddsWithoutLosingTheSelection)
{
    application.add(aTask().titled("Milk"));
    application.delegate().saveAction();
    open();
    trigger(Command::GoToInbox);
    table().selectAll();
    const auto other = application.openStore();
    aTask().titled("Bread").addTo({other->managedObjectContext(), application.user});
    ASSERT_TRUE(other->managedObjectContext().save());
    EXPECT_TRUE(QTest::qWaitFor([&] { return titles() == "Bread|Milk"; }, 8000)) << titles();
    ASSERT_EQ(table().selectedTasks().size(), 1U);
    EXPECT_EQ(table().selectedTasks().front()->title(), "Milk");
}

TEST_F(Window, searchesAllTasksAndEscapeReturnsToTheList)
{
    application.add(aTask().titled("Milk").in("House"));
    application.add(aTask().titled("Old milk").inTheTrash());
    application.add(aTask().titled("Bread").noted("not MILK"));
    application.add(aTask().titled("Butter"));
    open();
    trigger(Command::GoToInbox);
    type("searchField", "milk");
    EXPECT_EQ(titles(), "Bread|Milk|Old milk");
    QTest::keyClick(&child<QLineEdit>("searchField"), Qt::Key_Escape);
    EXPECT_EQ(titles(), "Bread|Butter");
    type("searchField", "milk");
    trigger(Command::GoToInbox);
    EXPECT_EQ(titles(), "Bread|Butter");
    EXPECT_EQ(child<QLineEdit>("searchField").text(), QString());
}

TEST_F(Window, savesATitleThatIsBeingTypedInItsCellAndStillMakesItOneStep)
{
    auto &task = application.add(aTask().titled("Milk"));
    application.delegate().saveAction();
    open();
    trigger(Command::GoToInbox);
    const auto edit = [this](const char *text) {
        table().setCurrentIndex(table().model()->index(0, 0));
        table().editTitle();
        auto *editor = table().viewport()->findChild<QLineEdit *>();
        QTest::keyClicks(editor, QString::fromUtf8(text));
        return editor;
    };
    for (const int key : {Qt::Key_Escape, Qt::Key_Return}) {
        QPointer<QLineEdit> editor = edit("Bread");
        EXPECT_TRUE(QTest::qWaitFor([&] { return task.title() == "Bread"; })) << "before the editor closes";
        QTest::keyClicks(editor, QStringLiteral(" rolls"));
        QTest::keyClick(editor, static_cast<Qt::Key>(key));
        EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); }));
        EXPECT_EQ(task.title(), key == Qt::Key_Escape ? "Milk" : "Bread rolls");
    }
    trigger(Command::Undo);
    EXPECT_EQ(task.title(), "Milk");
}

TEST_F(Window, aTitleThatIsBeingEditedOutlivesWhatChangesAroundIt)
{
    open();
    trigger(Command::NewFolder);
    QCoreApplication::processEvents();
    auto *editor = outline().findChild<QLineEdit *>(QStringLiteral("titleEditor"));
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->selectedText(), editor->text()) << "so that typing replaces it";
    QTest::keyClicks(editor, QStringLiteral("Wint"));
    application.add(aTask().titled("Milk").in("House")); // also makes the folder
    QCoreApplication::processEvents();
    QTest::keyClicks(editor, QStringLiteral("er"));
    Q_EMIT application.delegate().commitEditing();
    EXPECT_TRUE(application.records().getFolderByTitle("Winter"));
}

TEST_F(Window, aTipThatIsClosedStaysAway)
{
    open();
    trigger(Command::GoToInbox);
    auto &tip = *window->findChild<views::TipPlaceHolderView *>();
    ASSERT_TRUE(tip.isVisible());
    auto &close = child<QToolButton>("tipClose");
    close.click();
    EXPECT_FALSE(application.settings.boolean("InboxTip"));
    EXPECT_TRUE(application.settings.boolean("TodayTip"));
}

TEST_F(Window, hidesAColumnAtOnceWhenItsSettingChanges)
{
    open();
    const int folder = static_cast<int>(viewcontrollers::TaskColumn::Folder);
    ASSERT_FALSE(table().isColumnHidden(folder));
    application.settings.set("ShowFolderColumn", false);
    Q_EMIT application.delegate().columnsDidChange();
    EXPECT_TRUE(table().isColumnHidden(folder));
}

TEST_F(Window, opensWithTheListThatWasSelectedAndTheGroupsAsTheyWere)
{
    application.addRecord<model::Folders>("Garden");
    application.delegate().saveAction();
    open();
    auto &sources = *static_cast<viewcontrollers::SourceListController *>(outline().model());
    outline().selectRow(sources.indexOf(*application.records().getFolderByTitle("Garden")));
    outline().setExpanded(sources.indexOf(SourceKind::ContextsGroup), false);
    window->close();
    window.reset();
    open();
    auto &reopened = *static_cast<viewcontrollers::SourceListController *>(outline().model());
    EXPECT_EQ(outline().selectedRow().data().toString(), QStringLiteral("Garden"));
    EXPECT_FALSE(outline().isExpanded(reopened.indexOf(SourceKind::ContextsGroup)));
    EXPECT_TRUE(outline().isExpanded(reopened.indexOf(SourceKind::FoldersGroup)));
}

TEST_F(Window, itsTitleBeginsWithTheBadgeAndFollowsIt)
{
    open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Today"));
    application.add(aTask().in("House").due("2026-11-24"));
    application.add(aTask().in("House").starting("2026-11-23"));
    for (int number = 0; number < 5; ++number)
        application.add(aTask());
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->windowTitle() == QStringLiteral("(2/5) Today"); }))
        << window->windowTitle().toStdString();
    for (const auto &[setting, title] : {std::pair("ShowTodayInBadge", "(5) Today"), {"ShowInboxInBadge", "Today"}}) {
        application.settings.set(setting, false);
        application.delegate().updateDockBadge();
        EXPECT_EQ(window->windowTitle(), QLatin1String(title));
    }
}

TEST(BadgedIcon, carriesItsTextWithinTheIconAtEverySize)
{
    for (const int size : {16, 22, 64}) {
        const QImage plain = views::badgedIcon({}).pixmap(size).toImage();
        const QImage brief = views::badgedIcon(QStringLiteral("7")).pixmap(size).toImage();
        const QImage lengthy = views::badgedIcon(QStringLiteral("128/1024")).pixmap(size).toImage();
        EXPECT_EQ(brief.size(), QSize(size, size));
        EXPECT_NE(brief, plain) << size;
        EXPECT_NE(lengthy, brief) << size;
        EXPECT_EQ(brief.pixelColor(size / 4, size / 4), plain.pixelColor(size / 4, size / 4)) << "the icon shows";
    }
}

TEST_F(Window, followsTheUserFromOnePlaceToAnother)
{
    constexpr location::Coordinate places[] = {{52.4915, 13.4236}, {48.1374, 11.5755}};
    for (const auto &[title, place] : {std::pair{"Home", places[0]}, {"Office", places[1]}}) {
        auto &context = application.addRecord<model::Contexts>(title);
        context.setUseLocation(true);
        context.setCoordinate(place);
    }
    application.add(aTask().titled("Water the plants").doneAt("Home"));
    application.add(aTask().titled("Book the room").doneAt("Office"));
    application.settings.set(model::keys::UseLocation, true);
    open();
    trigger(Command::GoToLocation);
    EXPECT_EQ(titles(), "");
    EXPECT_EQ(child<QLabel>("statusLine").text(), QStringLiteral("Looking for your position…"));
    application.location.moveTo(places[0]);
    EXPECT_EQ(titles(), "Water the plants");
    application.location.moveTo(places[1]);
    EXPECT_TRUE(QTest::qWaitFor([&] { return titles() == "Book the room"; }));

    trigger(Command::GoToInbox);
    EXPECT_EQ(titles(), "Book the room|Water the plants");
    trigger(Command::FilterByLocation);
    EXPECT_EQ(titles(), "Book the room");
    application.add(aTask().titled("Call the caterer").doneAt("Office"));
    QCoreApplication::processEvents(); // no more than that, since a new day would count anew as well
    const QModelIndex row = outline().model()->index(2, 0);
    EXPECT_EQ(row.data(viewcontrollers::SourceListController::BadgeRole).toInt(), 2) << "a new task is counted";
    application.location.fail(location::LocationErrorCode::Unavailable, "The receiver has gone.");
    EXPECT_EQ(titles(), "");
    EXPECT_EQ(child<QLabel>("statusLine").text(), QStringLiteral("The receiver has gone."));
    trigger(Command::FilterByLocation);
    EXPECT_EQ(titles(), "Book the room|Call the caterer|Water the plants");
}
