// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "viewcontrollers/record_model.h"
#include "viewcontrollers/task_catalog.h"
#include "viewcontrollers/task_choices.h"
#include "viewcontrollers/task_columns.h"

#include <optional>
#include <unordered_map>

namespace viewcontrollers {

/// The task list: the tasks of one request, filtered and sorted, as the rows of a table.
///
/// A task that is edited so that it no longer belongs stays in its row until the list is read again, so that what was
/// just ticked off does not vanish under the hand. Main thread. An error of the store is shown and the rows stay.
class TasksArrayController final : public RecordModel
{
    Q_OBJECT

public:
    enum Role { CompleteRole = Qt::UserRole + 1, OverdueRole, SortRole };

    explicit TasksArrayController(app::TMApplicationDelegate &delegate);

    /// Shows the tasks of `request`, without a filter; nothing empties the list. Where the request asks for a text in
    /// titles and notes, `searched` is that text.
    void setContent(std::optional<objectstore::FetchRequest> request, std::string searched = {});
    /// Shows only those of them that answer; nothing shows all.
    void setFilterPredicate(std::optional<objectstore::Predicate> predicate);
    [[nodiscard]] const std::optional<objectstore::Predicate> &filterPredicate() const { return m_filter; }
    /// The same list again, perhaps with another date: keeps the filter and the rows of the tasks that stay.
    void refreshContent(std::optional<objectstore::FetchRequest> request);
    /// Reads the list again and sorts it, keeping the rows of the tasks that stay.
    void rearrangeObjects();

    [[nodiscard]] const Records &arrangedObjects() const { return m_tasks; }
    [[nodiscard]] model::Tasks *task(const QModelIndex &index) const;
    [[nodiscard]] model::Tasks *task(int row) const;
    /// The row of a task; -1 when it is not in the list.
    [[nodiscard]] int row(const objectstore::ManagedObject &task) const;

    /// The records that a cell of the column can be set to.
    [[nodiscard]] std::vector<Choice> choices(TaskColumn column) const;
    [[nodiscard]] const foundation::Clock &clock() const { return m_delegate.clock(); }

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &) const override { return {}; }
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData *mimeData(const QModelIndexList &indexes) const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    void sort(int column, Qt::SortOrder order) override;
    [[nodiscard]] const TaskCatalog &catalog() const { return m_catalog; }
    [[nodiscard]] TaskColumn sortColumn() const { return m_sortColumn; }
    [[nodiscard]] Qt::SortOrder sortOrder() const { return m_sortOrder; }

Q_SIGNALS:
    /// The list holds other tasks, or is empty or no longer so.
    void contentChanged();

private:
    [[nodiscard]] std::optional<Records> fetchTasks() const;
    [[nodiscard]] std::optional<Records> tasksFromCatalog(const objectstore::FetchRequest &request) const;
    void readRowsAround(int row) const;
    void follow(const objectstore::ObjectsChange &change);
    void repaintRows(const Records &tasks);

    app::TMApplicationDelegate &m_delegate;
    TaskCatalog m_catalog;
    std::optional<objectstore::FetchRequest> m_content;
    std::string m_searched; ///< the text that the content is searched for; empty for another content
    std::optional<objectstore::Predicate> m_filter;
    TaskColumn m_sortColumn = TaskColumn::Title;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    Records m_tasks;
    mutable std::unordered_map<const objectstore::ManagedObject *, int> m_rows; ///< of m_tasks; empty means unknown
};

} // namespace viewcontrollers
