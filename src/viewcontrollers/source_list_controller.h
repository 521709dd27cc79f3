// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "model/smart_folder.h"
#include "viewcontrollers/record_model.h"
#include "viewcontrollers/source_item.h"
#include "viewcontrollers/task_counts.h"
#include "viewcontrollers/task_drag.h"

#include <QTimer>
#include <array>
#include <limits>
#include <optional>
#include <vector>

namespace viewcontrollers {

/// The source list: eight fixed rows, of which four are groups of records, each with the number of its tasks.
///
/// Numbers are counted by the store when a row is first drawn and follow each task that changes, so a long list costs
/// what is seen of it. Where the store needs long, the numbers that are there stand until it is done, a few at a time.
/// Follows the main context by itself; a record keeps its row, and an open editor its text, through every refresh. Main
/// thread. An error of the store is shown and the list goes on with what it had.
class SourceListController final : public RecordModel
{
    Q_OBJECT

public:
    enum Role {
        KindRole = Qt::UserRole + 1, ///< a SourceKind, as int
        BadgeRole, ///< the number of tasks; nothing for a group
        IconRole, ///< the name of the row's icon; empty for a group
    };

    explicit SourceListController(app::TMApplicationDelegate &delegate);

    [[nodiscard]] SourceKind kind(const QModelIndex &index) const;
    /// The record of a row below a group, or null.
    [[nodiscard]] objectstore::ManagedObject *record(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex indexOf(SourceKind topLevel) const;
    [[nodiscard]] QModelIndex indexOf(const objectstore::ManagedObject &record) const;

    [[nodiscard]] bool isExpandableGroup(const QModelIndex &index) const;
    [[nodiscard]] bool isNonExpandableGroup(const QModelIndex &index) const;
    /// Whether the user may rename the row: a record, but not the two that the program finds by their title.
    [[nodiscard]] bool isRenamable(const QModelIndex &index) const;

    /// The tasks that the row shows; nothing for a group.
    [[nodiscard]] std::optional<objectstore::FetchRequest> tasks(const QModelIndex &index) const;
    [[nodiscard]] TipType tip(const QModelIndex &index) const;

    /// A text that names a row from run to run, and the row that it names.
    [[nodiscard]] QString persistentName(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex indexForPersistentName(const QString &name) const;

    /// Reads the groups again and counts anew.
    void refreshOutlineView();
    /// Whether rows that were drawn wait for their numbers.
    [[nodiscard]] bool isCounting() const { return m_isWaiting; }

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &child) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Tasks are dropped onto rows, never between them: onto a folder or a context to be filed there, onto the Inbox,
    // onto Today to start today, onto the Trash to be deleted. Text and links of other programs become new tasks there.
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override;
    /// What a drop onto `target` would do; `Qt::IgnoreAction` where it is refused.
    [[nodiscard]] Qt::DropAction dropAction(const QMimeData &data, const QModelIndex &target) const;
    [[nodiscard]] bool canDropMimeData(
        const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &target) const override;
    bool dropMimeData(
        const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &target) override;

Q_SIGNALS:
    /// The groups were read again; the list of the selected row may show other tasks now.
    void refreshed();

private:
    [[nodiscard]] Records &children(int group) { return m_children[static_cast<std::size_t>(group)]; }
    [[nodiscard]] const Records &children(int group) const { return m_children[static_cast<std::size_t>(group)]; }
    [[nodiscard]] Records fetchChildren(SourceKind kind) const;
    void reloadGroup(int group);
    void repaintAll();
    void follow(const objectstore::ObjectsChange &change);
    void locationDidUpdate();
    [[nodiscard]] std::optional<objectstore::FetchRequest> badgeTasks(const QModelIndex &index) const;
    [[nodiscard]] QVariant badge(const QModelIndex &index) const;
    [[nodiscard]] objectstore::FetchRequest smartFolderTasks(const model::SmartFolder &folder) const;
    [[nodiscard]] QString title(const QModelIndex &index) const;
    [[nodiscard]] QString toolTip(const QModelIndex &index) const;
    void beginTurn();
    [[nodiscard]] bool isPlace(const QModelIndex &target) const;
    bool file(model::Tasks &task, const QModelIndex &target);
    bool dropText(const DroppedTask &dropped, const QModelIndex &target);

    app::TMApplicationDelegate &m_delegate;
    std::array<Records, topLevelItems.size()> m_children; ///< empty for the rows that have none
    mutable TaskCounts m_counts; ///< by the row's own number or its record's address
    mutable std::unordered_map<quintptr, qint64> m_badges; ///< what was last shown
    mutable foundation::Instant m_todayCounted;
    /// Seconds of computing in this turn of the event loop; the first picture waits for no number.
    mutable double m_counted = std::numeric_limits<double>::infinity();
    mutable bool m_isWaiting = false; ///< a row for the next turn, to be counted
    mutable QTimer m_countTimer;
    QTimer m_refreshTimer;
    QTimer m_badgeTimer; ///< after tasks changed: once for all that change in one turn
    QTimer m_flagTimer; ///< after tasks came to other contexts
};

/// The day of the month on the icon of Today: "today_1" to "today_31".
[[nodiscard]] QString todayImageName(foundation::Instant now);

} // namespace viewcontrollers
