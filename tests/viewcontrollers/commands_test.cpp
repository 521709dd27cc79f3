// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_application.h"
#include "viewcontrollers/main_menu_controller.h"
#include "viewcontrollers/task_commands.h"

using support::aTask;
using namespace viewcontrollers;

namespace {

class Commands : public testing::Test
{
protected:
    std::vector<model::Tasks *> trashed()
    {
        std::vector<model::Tasks *> found;
        const auto fetched = application.moc().fetch(model::deletedTasks());
        for (auto *task : fetched.value())
            found.push_back(model::as<model::Tasks>(task));
        return found;
    }

    support::TestApplication application;
    TaskCommands tasks{application.delegate()};
    MainMenuController lists{application.delegate()};
};

} // namespace

TEST_F(Commands, addATaskToTheFolderOrElseToTheInbox)
{
    auto &garden = application.addRecord<model::Folders>("Garden");
    EXPECT_EQ(tasks.addTask(QStringLiteral(" Prune\n the tree "), &garden).title(), "Prune the tree");
    EXPECT_EQ(garden.tasks().size(), 1U);
    const model::Tasks &inInbox = tasks.addTask({}, nullptr);
    EXPECT_EQ(inInbox.folders()->title(), "Inbox");
    EXPECT_EQ(inInbox.title(), "New Task");
    EXPECT_EQ(tasks.undoName(), QStringLiteral("Add Task"));
    EXPECT_EQ(tasks.cloneTask(nullptr).title(), "");
}

TEST_F(Commands, undoTakesBackAWholeStepAndRedoDoesItAgain)
{
    auto &first = application.add(aTask().titled("One"));
    auto &second = application.add(aTask().titled("Two"));
    tasks.removeTasks({&first, &second});
    EXPECT_EQ(trashed().size(), 2U);
    tasks.undo();
    EXPECT_EQ(trashed().size(), 0U);
    EXPECT_EQ(tasks.redoName(), QStringLiteral("Move to Trash"));
    tasks.redo();
    EXPECT_EQ(trashed().size(), 2U);
    tasks.undeleteTasks({&first});
    EXPECT_EQ(trashed(), std::vector<model::Tasks *>{&second});
}

TEST_F(Commands, completingDatesTheTaskAndReopeningClearsTheDate)
{
    auto &task = application.add(aTask());
    tasks.setComplete({&task}, true);
    EXPECT_EQ(task.completedDate(), application.clock.now());
    tasks.setComplete({&task}, false);
    EXPECT_FALSE(task.completedDate());
}

TEST_F(Commands, datesAreClearedForASingleTaskOnly)
{
    auto &first = application.add(aTask().due("2026-11-24"));
    auto &second = application.add(aTask().due("2026-11-24"));
    tasks.clearDueDate({&first, &second});
    EXPECT_TRUE(first.dueDate());
    tasks.clearDueDate({&first});
    EXPECT_FALSE(first.dueDate());
    EXPECT_TRUE(second.dueDate());
}

TEST_F(Commands, deletingAFolderSendsItsTasksToTheInboxWhichStays)
{
    auto &task = application.add(aTask().in("Garden"));
    auto &garden = *application.records().getFolderByTitle("Garden");
    lists.deleteRecord(garden);
    EXPECT_EQ(task.folders()->title(), "Inbox");
    EXPECT_TRUE(garden.markedForDeletion());
    EXPECT_FALSE(garden.isDeleted());
    tasks.undo();
    EXPECT_EQ(task.folders(), &garden);
    EXPECT_FALSE(garden.markedForDeletion());
    auto &inbox = *application.records().getFolderByTitle("Inbox");
    lists.deleteRecord(inbox);
    EXPECT_FALSE(inbox.markedForDeletion());
}

TEST_F(Commands, deletingAContextTakesItFromItsTasksAndASmartFolderGoesAtOnce)
{
    auto &task = application.add(aTask().doneAt("Phone"));
    auto &phone = *application.records().getContextByTitle("Phone");
    lists.deleteRecord(phone);
    EXPECT_EQ(task.contexts(), nullptr);
    EXPECT_TRUE(phone.markedForDeletion());
    auto &smart = lists.newSmartFolder();
    lists.deleteRecord(smart);
    EXPECT_TRUE(smart.isDeleted());
}

TEST_F(Commands, emptyingTheTrashDeletesFromTheMenuAndMarksFromTheContextMenu)
{
    auto &marked = application.add(aTask().inTheTrash());
    lists.emptyTrashFromContextMenu();
    EXPECT_TRUE(marked.markedDeleted());
    EXPECT_FALSE(marked.isDeleted());
    lists.emptyTrash();
    EXPECT_TRUE(marked.isDeleted());
    EXPECT_FALSE(application.moc().hasChanges());
}
