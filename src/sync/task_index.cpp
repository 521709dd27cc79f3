// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_index.h"

namespace syncing {

TaskIndex::TaskIndex(objectstore::ObjectContext &moc)
    : m_moc(moc), m_entity(moc.store().model().entity(model::Tasks::entityName))
{ }

foundation::Result<TaskIndex> TaskIndex::read(objectstore::ObjectContext &moc)
{
    TaskIndex index(moc);
    const auto read = moc.fetchValues(
        {.entity = "Tasks", .predicate = objectstore::Predicate::format("taskID != 0"), .sortDescriptors = {}},
        {"taskID", "deleteOnSync"},
        [&index](const objectstore::ObjectID &id, std::span<const objectstore::ValueView> values) {
            index.add(objectstore::toInteger(values[0]), id.key);
            if (objectstore::toInteger(values[1]) != 0)
                index.m_inTrash.insert(id.key);
        });
    if (!read)
        return foundation::Failure(read.error());
    return index;
}

void TaskIndex::add(const model::Tasks &task)
{
    add(task.taskID(), task.objectID().key);
}

void TaskIndex::add(std::int64_t taskID, std::int64_t key)
{
    if (taskID == 0)
        return;
    Keys &keys = m_keys.try_emplace(taskID, Keys{key, key}).first->second;
    keys.first = std::min(keys.first, key);
    keys.last = std::max(keys.last, key);
}

objectstore::ObjectID TaskIndex::findID(std::int64_t taskID, bool last) const
{
    const auto found = m_keys.find(taskID);
    if (found == m_keys.end())
        return {};
    return {m_entity, last ? found->second.last : found->second.first};
}

model::Tasks *TaskIndex::find(std::int64_t taskID, bool last) const
{
    return model::as<model::Tasks>(m_moc.existingObject(findID(taskID, last)));
}

} // namespace syncing
