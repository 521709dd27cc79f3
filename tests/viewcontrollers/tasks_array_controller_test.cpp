// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/tasks_array_controller.h"

#include "objectstore/undo_manager.h"
#include "support/test_application.h"

#include <QAbstractItemModelTester>
#include <algorithm>
#include <random>

using support::aTask;
using namespace viewcontrollers;

namespace {

class TaskList : public testing::Test
{
protected:
    std::string titles() const
    {
        QStringList titles;
        for (int row = 0; row < list.rowCount(); ++row)
            titles.append(list.index(row, 0).data().toString());
        return titles.join(QLatin1Char('|')).toStdString();
    }
    void showAll() { list.setContent(model::allTasks({})); }

    support::TestApplication application;
    TasksArrayController list{application.delegate()};
    QAbstractItemModelTester tester{&list, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(TaskList, sortsByTitleAsPeopleDoAndByAnyOtherColumn)
{
    application.add(aTask().titled("éclair").due("2026-11-26").ofPriority(3));
    application.add(aTask().titled("Zoo").due("2026-11-24").ofPriority(1));
    application.add(aTask().titled("apple").due("2026-11-25").ofPriority(1));
    showAll();
    EXPECT_EQ(titles(), "apple|éclair|Zoo");
    list.sort(static_cast<int>(TaskColumn::DueDate), Qt::AscendingOrder);
    EXPECT_EQ(titles(), "Zoo|apple|éclair");
    list.sort(static_cast<int>(TaskColumn::Priority), Qt::DescendingOrder);
    EXPECT_EQ(titles(), "éclair|apple|Zoo") << "equal ones stay in the order of their titles";
}

TEST_F(TaskList, leavesATaskThatWasTickedOffInItsRowUntilItIsReadAgain)
{
    auto &task = application.add(aTask().titled("Milk"));
    application.add(aTask().titled("Bread"));
    showAll();
    task.setComplete(true);
    application.moc().processPendingChanges();
    EXPECT_EQ(titles(), "Bread|Milk");
    list.rearrangeObjects();
    EXPECT_EQ(titles(), "Bread");
}

TEST_F(TaskList, keepsTheRowOfEveryTaskThatStaysWhicheverComeGoAndMove)
{
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<model::Tasks *> tasks;
    for (int number = 0; number < 8; ++number)
        tasks.push_back(&application.add(aTask()));
    list.sort(static_cast<int>(TaskColumn::Length), Qt::AscendingOrder);
    showAll();
    for (int step = 0; step < 200 && !HasFailure(); ++step) {
        std::vector<std::pair<QPersistentModelIndex, model::Tasks *>> rows;
        for (int row = 0; row < list.rowCount(); ++row)
            rows.emplace_back(list.index(row, 1), list.task(row));
        for (model::Tasks *task : tasks) {
            task->setLength(random() % 100);
            task->setDeleteOnSync(random() % 3 == 0);
        }
        application.moc().processPendingChanges();
        list.rearrangeObjects();
        for (const auto &[index, task] : rows)
            EXPECT_EQ(list.task(index), task->deleteOnSync() ? nullptr : task);
        EXPECT_EQ(list.rowCount(), std::ranges::count(tasks, false, &model::Tasks::deleteOnSync));
        for (int row = 1; row < list.rowCount(); ++row)
            EXPECT_LE(list.task(row - 1)->length(), list.task(row)->length());
    }
}

TEST_F(TaskList, dropsTheRowOfATaskThatIsDeleted)
{
    auto &task = application.add(aTask().titled("Milk"));
    application.add(aTask().titled("Bread"));
    showAll();
    application.moc().remove(task);
    application.moc().processPendingChanges();
    EXPECT_EQ(titles(), "Bread");
    EXPECT_EQ(list.row(task), -1);
}

TEST_F(TaskList, editsEveryEditableColumnAsOneStepToUndo)
{
    auto &task = application.add(aTask().titled("Milk"));
    auto &folder = application.addRecord<model::Folders>("Garden");
    showAll();
    const auto cell = [this](TaskColumn column) { return list.index(0, static_cast<int>(column)); };
    const auto uri = QString::fromStdString(application.moc().uri(folder));
    EXPECT_TRUE(list.setData(cell(TaskColumn::Folder), uri, Qt::EditRole));
    EXPECT_EQ(task.folders(), &folder);
    EXPECT_EQ(cell(TaskColumn::Folder).data().toString(), QStringLiteral("Garden"));
    EXPECT_TRUE(list.setData(cell(TaskColumn::Length), 90, Qt::EditRole));
    EXPECT_EQ(cell(TaskColumn::Length).data().toString(), QStringLiteral("1 h 30 min"));
    EXPECT_FALSE(list.setData(cell(TaskColumn::Title), QStringLiteral("Milk"), Qt::EditRole)) << "nothing changed";
    application.moc().undoManager()->undo();
    EXPECT_EQ(task.length(), 0);
    EXPECT_EQ(task.folders(), &folder);
    EXPECT_FALSE(list.flags(cell(TaskColumn::CreationDate)) & Qt::ItemIsEditable);
}

TEST_F(TaskList, addsAFilterToItsContentAndForgetsItWithTheContent)
{
    application.add(aTask().titled("Milk").atTheCurrentLocation());
    application.add(aTask().titled("Bread"));
    showAll();
    list.setFilterPredicate(objectstore::Predicate::format("isCurrentLocation==YES"));
    EXPECT_EQ(titles(), "Milk");
    showAll();
    EXPECT_EQ(titles(), "Bread|Milk");
}
