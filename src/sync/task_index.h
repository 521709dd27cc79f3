// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "objectstore/object_context.h"

#include <unordered_map>
#include <unordered_set>

namespace syncing {

/// The tasks of a context by the id that the service knows them by, read once instead of asked for one by one.
/// Belongs to the context's thread.
class TaskIndex
{
public:
    /// Reads the ids, the context's unsaved changes included. `moc` must outlive the index.
    [[nodiscard]] static foundation::Result<TaskIndex> read(objectstore::ObjectContext &moc);

    /// The first, or the last, of the tasks with this id in the order of insertion; null when there is none.
    [[nodiscard]] model::Tasks *first(std::int64_t taskID) const { return find(taskID, false); }
    [[nodiscard]] model::Tasks *last(std::int64_t taskID) const { return find(taskID, true); }

    /// The same without the task itself, which reading it would take time; none when there is none.
    [[nodiscard]] objectstore::ObjectID firstID(std::int64_t taskID) const { return findID(taskID, false); }
    [[nodiscard]] objectstore::ObjectID lastID(std::int64_t taskID) const { return findID(taskID, true); }
    /// Whether the task was in the Trash when the index was read.
    [[nodiscard]] bool isInTrash(const objectstore::ObjectID &task) const { return m_inTrash.contains(task.key); }

    /// Calls `visit` with each id that only one task has, and that task.
    template <class Visit> void forEachSingle(Visit visit) const
    {
        for (const auto &[taskID, keys] : m_keys) {
            if (keys.first == keys.last)
                visit(taskID, objectstore::ObjectID{m_entity, keys.first});
        }
    }

    [[nodiscard]] std::size_t size() const { return m_keys.size(); }
    /// Adds a task that has just got its id.
    void add(const model::Tasks &task);

private:
    struct Keys {
        std::int64_t first = 0;
        std::int64_t last = 0;
    };

    explicit TaskIndex(objectstore::ObjectContext &moc);
    [[nodiscard]] model::Tasks *find(std::int64_t taskID, bool last) const;
    [[nodiscard]] objectstore::ObjectID findID(std::int64_t taskID, bool last) const;
    void add(std::int64_t taskID, std::int64_t key);

    objectstore::ObjectContext &m_moc;
    const objectstore::EntityDescription *m_entity;
    std::unordered_map<std::int64_t, Keys> m_keys;
    std::unordered_set<std::int64_t> m_inTrash;
};

} // namespace syncing
