// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_commands.h"

#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/undo_group.h"

namespace viewcontrollers {

model::Tasks &TaskCommands::insertTask(model::Folders *folder)
{
    const model::DataUtilities records = m_delegate.records();
    auto &task = model::insert<model::Tasks>(moc());
    records.addTaskToFolderByObject(folder ? folder : records.getFolderByTitle("Inbox"), &task);
    return task;
}

model::Tasks &TaskCommands::addTask(const QString &title, model::Folders *folder, const QString &notes)
{
    const UndoGroup group(moc(), tr("Add Task"));
    model::Tasks &task = insertTask(folder);
    const QString wanted = title.simplified();
    task.setTitle(app::toUtf8(wanted.isEmpty() ? tr("New Task") : wanted));
    if (!notes.isEmpty())
        task.setNotes(app::toUtf8(notes));
    return task;
}

model::Tasks &TaskCommands::addDroppedTask(const DroppedTask &dropped, model::Folders *folder)
{
    if (dropped.isCut)
        m_delegate.updateStatus(tr("The text was too long for a task; its beginning was taken."));
    return addTask(dropped.title, folder, dropped.notes);
}

model::Tasks &TaskCommands::cloneTask(model::Folders *folder)
{
    const UndoGroup group(moc(), tr("Clone Task"));
    model::Tasks &task = insertTask(folder);
    task.setTitle({});
    return task;
}

void TaskCommands::removeTasks(const TaskList &tasks)
{
    const UndoGroup group(moc(), tr("Move to Trash"));
    for (model::Tasks *task : tasks)
        task->setDeleteOnSync(true);
}

void TaskCommands::undeleteTasks(const TaskList &tasks)
{
    const UndoGroup group(moc(), tr("Put Back"));
    for (model::Tasks *task : tasks)
        task->setDeleteOnSync(false);
}

void TaskCommands::setComplete(const TaskList &tasks, bool complete)
{
    const UndoGroup group(moc(), complete ? tr("Complete") : tr("Reopen"));
    for (model::Tasks *task : tasks)
        viewcontrollers::setComplete(*task, complete, m_delegate.clock().now());
}

void TaskCommands::setStar(const TaskList &tasks, bool star)
{
    const UndoGroup group(moc(), star ? tr("Add Star") : tr("Remove Star"));
    for (model::Tasks *task : tasks)
        task->setStar(star);
}

void TaskCommands::clearDueDate(const TaskList &tasks)
{
    if (tasks.size() != 1)
        return;
    const UndoGroup group(moc(), tr("Clear Due Date"));
    tasks.front()->setDueDate(std::nullopt);
}

void TaskCommands::clearStartDate(const TaskList &tasks)
{
    if (tasks.size() != 1)
        return;
    const UndoGroup group(moc(), tr("Clear Start Date"));
    tasks.front()->setStartDate(std::nullopt);
}

objectstore::UndoManager &TaskCommands::undoManager() const
{
    return *moc().undoManager();
}

bool TaskCommands::canUndo() const
{
    return undoManager().canUndo();
}

bool TaskCommands::canRedo() const
{
    return undoManager().canRedo();
}

QString TaskCommands::undoName() const
{
    return app::toQString(undoManager().undoName());
}

QString TaskCommands::redoName() const
{
    return app::toQString(undoManager().redoName());
}

void TaskCommands::undo()
{
    moc().processPendingChanges();
    undoManager().undo();
    moc().processPendingChanges();
}

void TaskCommands::redo()
{
    undoManager().redo();
    moc().processPendingChanges();
}

} // namespace viewcontrollers
