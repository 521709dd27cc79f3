// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/tasks_array_controller.h"

#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/task_drag.h"
#include "viewcontrollers/undo_group.h"

#include <set>

namespace viewcontrollers {

using objectstore::ManagedObject;
using objectstore::Predicate;

namespace {
constexpr std::size_t rowsReadTogether = 64; // more than a screen shows
} // namespace

TasksArrayController::TasksArrayController(app::TMApplicationDelegate &delegate)
    : m_delegate(delegate), m_catalog(delegate)
{
    connect(&m_delegate, &app::TMApplicationDelegate::objectsDidChange, this, &TasksArrayController::follow);
}

void TasksArrayController::setContent(std::optional<objectstore::FetchRequest> request, std::string searched)
{
    m_content = std::move(request);
    m_searched = std::move(searched);
    m_filter.reset();
    beginResetModel();
    m_rows.clear();
    m_tasks = fetchTasks().value_or(Records());
    endResetModel();
    Q_EMIT contentChanged();
}

void TasksArrayController::refreshContent(std::optional<objectstore::FetchRequest> request)
{
    m_content = std::move(request);
    rearrangeObjects();
}

void TasksArrayController::setFilterPredicate(std::optional<Predicate> predicate)
{
    m_filter = std::move(predicate);
    rearrangeObjects();
}

void TasksArrayController::rearrangeObjects()
{
    const auto tasks = fetchTasks();
    if (!tasks)
        return;
    m_rows.clear();
    rearrange(m_tasks, *tasks, {});
    m_rows.clear();
    Q_EMIT contentChanged();
}

std::optional<RecordModel::Records> TasksArrayController::fetchTasks() const
{
    if (!m_content)
        return Records();
    objectstore::FetchRequest request = *m_content;
    if (m_filter)
        request.predicate = Predicate::conjunction({request.predicate, *m_filter});
    if (m_sortColumn == TaskColumn::Title && m_catalog.isReady()) {
        if (auto tasks = tasksFromCatalog(request))
            return tasks;
    }
    const TaskColumnDescription &by = describe(m_sortColumn);
    request.sortDescriptors
        = {{.key = std::string(by.sortKey), .ascending = m_sortOrder == Qt::AscendingOrder, .localized = by.isText}};
    if (m_sortColumn != TaskColumn::Title) // so that equal rows do not jump about
        request.sortDescriptors.push_back({.key = "title", .ascending = true, .localized = true});
    auto tasks = m_delegate.managedObjectContext().fetch(request);
    if (tasks)
        return std::move(*tasks);
    m_delegate.user().presentError(tasks.error());
    return std::nullopt;
}

std::optional<RecordModel::Records> TasksArrayController::tasksFromCatalog(
    const objectstore::FetchRequest &request) const
{
    if (!m_searched.empty() && !m_filter) {
        auto found = m_catalog.containing(m_searched);
        return found ? m_catalog.arranged(std::move(*found), m_sortOrder) : std::nullopt;
    }
    std::vector<objectstore::ObjectID> ids;
    const auto read = m_delegate.managedObjectContext().fetchIDs(
        request, [&ids](const objectstore::ObjectID &task) { ids.push_back(task); });
    return read ? m_catalog.arranged(std::move(ids), m_sortOrder) : std::nullopt; // what went wrong shows in a fetch
}

model::Tasks *TasksArrayController::task(const QModelIndex &index) const
{
    return index.isValid() ? task(index.row()) : nullptr;
}

model::Tasks *TasksArrayController::task(int row) const
{
    if (row < 0 || row >= rowCount())
        return nullptr;
    return model::as<model::Tasks>(m_tasks[static_cast<std::size_t>(row)]);
}

void TasksArrayController::readRowsAround(int row) const
{
    const auto place = static_cast<std::size_t>(row);
    const std::size_t first = place - place % rowsReadTogether;
    const std::span all(m_tasks);
    m_delegate.managedObjectContext().fill(all.subspan(first, std::min(rowsReadTogether, all.size() - first)));
}

int TasksArrayController::row(const ManagedObject &task) const
{
    if (m_rows.size() != m_tasks.size()) {
        m_rows.clear();
        for (std::size_t place = 0; place < m_tasks.size(); ++place)
            m_rows.emplace(m_tasks[place], static_cast<int>(place));
    }
    const auto found = m_rows.find(&task);
    return found == m_rows.end() ? -1 : found->second;
}

void TasksArrayController::follow(const objectstore::ObjectsChange &change)
{
    const auto concernsTasks = [](const ManagedObject *object) { return model::as<model::Tasks>(object) != nullptr; };
    if (std::any_of(change.deleted.begin(), change.deleted.end(),
            [this](const ManagedObject *object) { return row(*object) >= 0; })) {
        Records remaining = m_tasks;
        std::erase_if(remaining, [](const ManagedObject *task) { return task->isDeleted(); });
        rearrange(m_tasks, remaining, {});
        m_rows.clear();
        Q_EMIT contentChanged();
    }
    if (std::all_of(change.updated.begin(), change.updated.end(), concernsTasks))
        repaintRows(change.updated);
    else if (rowCount() > 0) // a folder that was renamed shows in many rows
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

void TasksArrayController::repaintRows(const Records &tasks)
{
    for (const ManagedObject *task : tasks) {
        if (const int changed = row(*task); changed >= 0)
            Q_EMIT dataChanged(index(changed, 0), index(changed, columnCount() - 1));
    }
}

std::vector<Choice> TasksArrayController::choices(TaskColumn column) const
{
    return viewcontrollers::choices(m_delegate.records(), column);
}

QModelIndex TasksArrayController::index(int row, int column, const QModelIndex &parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

int TasksArrayController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_tasks.size());
}

int TasksArrayController::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(taskColumns.size());
}

QVariant TasksArrayController::data(const QModelIndex &index, int role) const
{
    const model::Tasks *shown = task(index);
    if (!shown)
        return {};
    if (shown->isFault())
        readRowsAround(index.row());
    const auto column = static_cast<TaskColumn>(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return cellText(*shown, column, m_delegate.clock().now());
    case Qt::EditRole:
        return cellValue(*shown, column);
    case CompleteRole:
        return shown->complete();
    case OverdueRole:
        return isOverdue(*shown, m_delegate.clock().now());
    default:
        return {};
    }
}

bool TasksArrayController::setData(const QModelIndex &index, const QVariant &value, int role)
{
    model::Tasks *edited = task(index);
    if (!edited)
        return false;
    const auto column = static_cast<TaskColumn>(index.column());
    if (role != Qt::EditRole || value == cellValue(*edited, column))
        return false;
    const QString name = QCoreApplication::translate("TaskTable", describe(column).title);
    const UndoGroup group(m_delegate.managedObjectContext(), tr("Edit %1").arg(name));
    if (!setCellValue(*edited, column, value))
        return false;
    Q_EMIT dataChanged(this->index(index.row(), 0), this->index(index.row(), columnCount() - 1));
    return true;
}

QVariant TasksArrayController::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const TaskColumnDescription &column = taskColumns[static_cast<std::size_t>(section)];
    const QString title = QCoreApplication::translate("TaskTable", column.title);
    if (role == Qt::DisplayRole)
        return column.column == TaskColumn::Star ? QString() : title;
    return role == Qt::ToolTipRole || role == Qt::AccessibleTextRole ? title : QVariant();
}

Qt::ItemFlags TasksArrayController::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    flags.setFlag(Qt::ItemIsEditable, isEditable(static_cast<TaskColumn>(index.column())));
    return flags;
}

QStringList TasksArrayController::mimeTypes() const
{
    return {taskDataType()};
}

QMimeData *TasksArrayController::mimeData(const QModelIndexList &indexes) const
{
    std::set<int> rows; // each once, in the order of the list
    for (const QModelIndex &index : indexes)
        rows.insert(index.row());
    std::vector<const ManagedObject *> tasks;
    for (const int row : rows)
        tasks.push_back(task(row));
    return makeTaskData(tasks);
}

void TasksArrayController::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    const auto wanted = static_cast<TaskColumn>(column);
    if (wanted == m_sortColumn && order == m_sortOrder)
        return;
    m_sortColumn = wanted;
    m_sortOrder = order;
    rearrangeObjects();
}

} // namespace viewcontrollers
