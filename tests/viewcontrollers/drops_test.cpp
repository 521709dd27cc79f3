// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_application.h"
#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_drag.h"

#include <QMimeData>

using support::at;
using support::aTask;
using namespace viewcontrollers;

namespace {

class Drop : public testing::Test
{
protected:
    bool drop(const std::vector<const objectstore::ManagedObject *> &tasks, const QModelIndex &target, int row = -1)
    {
        const std::unique_ptr<QMimeData> data(makeTaskData(tasks));
        return list.dropMimeData(data.get(), Qt::MoveAction, row, -1, target);
    }

    support::TestApplication application;
    SourceListController list{application.delegate()};
};

} // namespace

TEST_F(Drop, onAFolderOrAContextFilesTheTasksThere)
{
    auto &first = application.add(aTask().titled("One").in("House"));
    auto &second = application.add(aTask().titled("Two"));
    auto &garden = application.addRecord<model::Folders>("Garden");
    auto &phone = application.addRecord<model::Contexts>("Phone");
    list.refreshOutlineView();
    EXPECT_TRUE(drop({&first, &second}, list.indexOf(garden)));
    EXPECT_EQ(garden.tasks().size(), 2U);
    EXPECT_TRUE(drop({&first}, list.indexOf(phone)));
    EXPECT_EQ(first.contexts(), &phone);
    EXPECT_EQ(first.folders(), &garden);
}

TEST_F(Drop, onTodayOnlyStartsTheTaskToday)
{
    auto &task = application.add(aTask().titled("Call Ana").in("Home").due("2026-12-24"));
    EXPECT_TRUE(drop({&task}, list.indexOf(SourceKind::Today)));
    EXPECT_EQ(task.startDate(), application.clock.now());
    EXPECT_EQ(task.dueDate(), at("2026-12-24"));
    EXPECT_EQ(task.folders()->title(), "Home");
}

TEST_F(Drop, onTheTrashDeletesAndOnTheInboxFiles)
{
    auto &first = application.add(aTask().in("House"));
    auto &second = application.add(aTask().in("House"));
    EXPECT_TRUE(drop({&first, &second}, list.indexOf(SourceKind::Trash)));
    EXPECT_TRUE(first.deleteOnSync() && second.deleteOnSync());
    EXPECT_TRUE(drop({&first}, list.indexOf(SourceKind::Inbox)));
    EXPECT_EQ(first.folders()->title(), "Inbox");
}

TEST_F(Drop, isRefusedElsewhereBetweenRowsAndWithoutTasks)
{
    auto &task = application.add(aTask().in("House"));
    auto &smart = application.moc().insert("SmartFolder");
    list.refreshOutlineView();
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Location)));
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::FoldersGroup)));
    EXPECT_FALSE(drop({&task}, list.indexOf(smart)));
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Trash), 2));
    EXPECT_FALSE(drop({}, list.indexOf(SourceKind::Trash)));
    application.moc().remove(task);
    application.moc().processPendingChanges();
    EXPECT_FALSE(drop({&task}, list.indexOf(SourceKind::Trash))) << "the task is gone";
}

TEST(DroppedText, becomesTheTitleAndALinkTheNotes)
{
    QMimeData text;
    text.setText(QStringLiteral(" Buy\n milk "));
    EXPECT_EQ(droppedTask(text)->title, QStringLiteral("Buy milk"));
    QMimeData link;
    const QString lines = QStringLiteral("message:<id@host>\nRe: the offer");
    link.setData(
        QStringLiteral("text/x-moz-url"), QByteArray(reinterpret_cast<const char *>(lines.utf16()), lines.size() * 2));
    EXPECT_EQ(droppedTask(link)->title, QStringLiteral("Re: the offer"));
    EXPECT_EQ(droppedTask(link)->notes, QStringLiteral("message://<id@host>"));
    EXPECT_EQ(createMessageLink(QStringLiteral("short")), QStringLiteral("short"));
    EXPECT_FALSE(droppedTask(QMimeData()));
}
