// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "objectstore/text_order.h"
#include "viewcontrollers/record_model.h"
#include "viewcontrollers/task_words.h"

#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>

namespace viewcontrollers {

/// What all tasks of a large store are called and say, kept in memory, so that the longest list is put in order and
/// searched without reading the tasks.
///
/// Read from the store on a thread of its own, soon after it is made and again whenever much has changed; tasks that
/// change in between are asked themselves. Until it is ready, and for a store that is small enough to do without, it
/// answers nothing, and the store is to be asked. Main thread; destruction waits for the reading under way.
class TaskCatalog final : public QObject
{
    Q_OBJECT

public:
    using Records = RecordModel::Records;
    using Keys = std::unordered_set<std::int64_t>;

    /// A store with fewer than `fewTasks` is sorted and searched quickly enough without.
    explicit TaskCatalog(app::TMApplicationDelegate &delegate, std::int64_t fewTasks = 5000);
    ~TaskCatalog() override;

    [[nodiscard]] bool isReady() const { return m_words != nullptr; }
    /// What the store was read as; null while the store is to be asked instead. Only true of tasks not in `changed`.
    [[nodiscard]] std::shared_ptr<const TaskWords> words() const;
    /// The keys of the tasks that changed since, few.
    [[nodiscard]] const Keys &changed() const { return m_changed; }
    /// The tasks with these ids in the order of their titles, most of them as faults.
    [[nodiscard]] std::optional<Records> arranged(std::vector<objectstore::ObjectID> tasks, Qt::SortOrder order) const;
    /// The tasks that have `text` in their title or their notes, in any case of its letters.
    [[nodiscard]] std::optional<std::vector<objectstore::ObjectID>> containing(std::string_view text) const;

private:
    void refresh();
    void take(std::shared_ptr<const TaskWords> words);
    void follow(const objectstore::ObjectsChange &change);
    void forget();
    [[nodiscard]] std::string_view titleOf(const objectstore::ManagedObject &task) const;
    void putInPlace(Records &records, objectstore::ManagedObject &task, Qt::SortOrder order) const;

    app::TMApplicationDelegate &m_delegate;
    objectstore::ObjectContext &m_moc;
    const objectstore::EntityDescription &m_entity;
    const std::int64_t m_fewTasks;
    objectstore::TextOrder m_textOrder;
    std::shared_ptr<const TaskWords> m_words; ///< none until it is ready
    Keys m_changed; ///< tasks of which the words may tell something old
    Keys m_changedSinceReading; ///< the same of the words that are being read
    QTimer m_timer;
    bool m_isReading = false;
    bool m_isOutOfDate = false; ///< what is being read may be old already
    std::jthread m_thread; // last: joined before the rest goes
};

} // namespace viewcontrollers
