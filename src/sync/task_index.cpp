// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_index.h"

namespace syncing {

foundation::Result<TaskIndex> TaskIndex::read(objectstore::ObjectContext &moc)
{
    TaskIndex index(moc);
    const auto tasks = moc.fetch(
        {.entity = "Tasks", .predicate = objectstore::Predicate::format("taskID != 0"), .sortDescriptors = {}});
    if (!tasks)
        return foundation::Failure(tasks.error());
    for (const objectstore::ManagedObject *task : *tasks)
        index.add(task->integer("taskID"), task->objectID().key);
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

model::Tasks *TaskIndex::find(std::int64_t taskID, bool last) const
{
    const auto found = m_keys.find(taskID);
    if (found == m_keys.end())
        return nullptr;
    const std::int64_t key = last ? found->second.last : found->second.first;
    return model::as<model::Tasks>(m_moc.existingObject({m_moc.store().model().entity("Tasks"), key}));
}

} // namespace syncing
