// SPDX-License-Identifier: GPL-3.0-or-later
// What a drop onto the source list does.
#include "app/text.h"
#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_commands.h"
#include "viewcontrollers/task_drag.h"
#include "viewcontrollers/undo_group.h"

#include <QMimeData>

namespace viewcontrollers {

using model::as;

QStringList SourceListController::mimeTypes() const
{
    return QStringList{taskDataType()} + textTypes();
}

Qt::DropActions SourceListController::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

/// Whether a task can be put there, rather than thrown away or only found there.
bool SourceListController::isPlace(const QModelIndex &target) const
{
    switch (kind(target)) {
    case SourceKind::Folder:
    case SourceKind::ArchivedFolder:
    case SourceKind::Context:
    case SourceKind::Inbox:
    case SourceKind::Today:
        return true;
    default:
        return false;
    }
}

Qt::DropAction SourceListController::dropAction(const QMimeData &data, const QModelIndex &target) const
{
    if (!data.hasFormat(taskDataType())) {
        // never a move, upon which the other program would delete its text
        return isPlace(target) && offersText(data) ? Qt::CopyAction : Qt::IgnoreAction;
    }
    if (kind(target) == SourceKind::Today)
        return Qt::CopyAction;
    return isPlace(target) || kind(target) == SourceKind::Trash ? Qt::MoveAction : Qt::IgnoreAction;
}

bool SourceListController::canDropMimeData(
    const QMimeData *data, Qt::DropAction, int row, int, const QModelIndex &target) const
{
    return row == -1 && dropAction(*data, target) != Qt::IgnoreAction;
}

bool SourceListController::file(model::Tasks &task, const QModelIndex &target)
{
    const model::DataUtilities records = m_delegate.records();
    switch (kind(target)) {
    case SourceKind::Trash:
        task.setDeleteOnSync(true);
        return true;
    case SourceKind::Today:
        task.setStartDate(m_delegate.clock().now());
        return true;
    case SourceKind::Inbox:
        records.addTaskToFolderByObject(records.getFolderByTitle("Inbox"), &task);
        return true;
    case SourceKind::Context:
        return records.addTaskToContextObject(as<model::Contexts>(record(target)), &task);
    default:
        return records.addTaskToFolderByObject(as<model::Folders>(record(target)), &task);
    }
}

bool SourceListController::dropText(const DroppedTask &dropped, const QModelIndex &target)
{
    const UndoGroup group(m_delegate.managedObjectContext(), TaskCommands::tr("Add Task"));
    const bool isFiled = file(TaskCommands(m_delegate).addDroppedTask(dropped, nullptr), target);
    m_refreshTimer.start();
    return isFiled;
}

bool SourceListController::dropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &target)
{
    if (!canDropMimeData(data, action, row, column, target))
        return false;
    if (!data->hasFormat(taskDataType())) {
        const auto dropped = droppedTask(*data);
        return dropped && dropText(*dropped, target);
    }
    const std::vector<model::Tasks *> tasks = tasksOf(*data, m_delegate.managedObjectContext());
    if (tasks.empty())
        return false;
    {
        const UndoGroup group(m_delegate.managedObjectContext(), tr("Move to \"%1\"").arg(title(target)));
        for (model::Tasks *task : tasks) {
            if (!file(*task, target))
                return false; // those before it stay where they were put
        }
    }
    // On the next turn, when the drop is over: the list that the tasks came from is read again without them.
    m_refreshTimer.start();
    return true;
}

} // namespace viewcontrollers
