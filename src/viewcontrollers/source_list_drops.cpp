// SPDX-License-Identifier: GPL-3.0-or-later
// What a drop of tasks onto the source list does.
#include "app/text.h"
#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_drag.h"
#include "viewcontrollers/undo_group.h"

#include <QMimeData>

namespace viewcontrollers {

using model::as;

QStringList SourceListController::mimeTypes() const
{
    return {taskDataType()};
}

Qt::DropActions SourceListController::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropAction SourceListController::dropAction(const QModelIndex &target) const
{
    switch (kind(target)) {
    case SourceKind::Folder:
    case SourceKind::ArchivedFolder:
    case SourceKind::Context:
    case SourceKind::Trash:
    case SourceKind::Inbox:
        return Qt::MoveAction;
    case SourceKind::Today:
        return Qt::CopyAction;
    default:
        return Qt::IgnoreAction;
    }
}

bool SourceListController::canDropMimeData(
    const QMimeData *data, Qt::DropAction, int row, int, const QModelIndex &target) const
{
    return row == -1 && dropAction(target) != Qt::IgnoreAction && data->hasFormat(taskDataType());
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

bool SourceListController::dropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &target)
{
    if (!canDropMimeData(data, action, row, column, target))
        return false;
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
