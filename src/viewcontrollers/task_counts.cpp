// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/task_counts.h"

#include "model/entities.h"

#include <algorithm>
#include <array>

namespace viewcontrollers {

using objectstore::ManagedObject;
using objectstore::ObjectsChange;

namespace {

/// Beyond so many questions of tasks it is quicker to let the store count again what is still looked at.
constexpr std::size_t mostQuestions = 300'000;

bool isTask(const ManagedObject *object)
{
    return object->entity().name() == model::Tasks::entityName;
}

} // namespace

void KeySet::insert(std::int64_t key)
{
    auto bit = m_blocks[key / blockSize][static_cast<std::size_t>(key % blockSize)];
    m_size += bit ? 0 : 1;
    bit = true;
}

void KeySet::erase(std::int64_t key)
{
    const auto block = m_blocks.find(key / blockSize);
    if (block == m_blocks.end())
        return;
    auto bit = block->second[static_cast<std::size_t>(key % blockSize)];
    m_size -= bit ? 1 : 0;
    bit = false;
}

std::optional<std::int64_t> TaskCounts::known(std::uintptr_t id) const
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->second.isInDoubt)
        return std::nullopt;
    return entry->second.members.size();
}

objectstore::Result<std::int64_t> TaskCounts::count(std::uintptr_t id, const objectstore::FetchRequest &request)
{
    m_moc.processPendingChanges(); // so that the numbers have followed what was changed by now
    std::string text = request.predicate.text();
    const auto old = m_entries.find(id);
    if (old != m_entries.end() && old->second.text == text) {
        old->second.isInDoubt = false;
        return old->second.members.size();
    }
    KeySet members;
    const auto read
        = m_moc.fetchIDs(request, [&members](const objectstore::ObjectID &task) { members.insert(task.key); });
    if (!read) {
        m_entries.erase(id);
        return foundation::Failure(read.error());
    }
    const objectstore::EntityDescription &tasks = *m_moc.store().model().entity(request.entity);
    Entry &entry = m_entries[id] = {
        .request = request,
        .text = std::move(text),
        .evaluator = nullptr,
        .followsRelationships = request.predicate.followsRelationships(tasks),
        .isInDoubt = false,
        .members = std::move(members),
    };
    entry.evaluator = std::make_unique<objectstore::PredicateEvaluator>(entry.request.predicate, tasks);
    return entry.members.size();
}

void TaskCounts::follow(const ObjectsChange &change)
{
    const std::array kinds{&change.inserted, &change.updated, &change.deleted};
    std::vector<ManagedObject *> tasks;
    bool areOthersChanged = false;
    for (const auto *objects : kinds) {
        std::copy_if(objects->begin(), objects->end(), std::back_inserter(tasks), isTask);
        for (const ManagedObject *object : *objects)
            areOthersChanged |= !isTask(object) && changesAnswers(*object);
    }
    if (areOthersChanged)
        std::erase_if(m_entries, [](const auto &entry) { return entry.second.followsRelationships; });
    if (tasks.size() * m_entries.size() > mostQuestions)
        return forget();
    for (auto &[id, entry] : m_entries)
        ask(entry, tasks);
}

void TaskCounts::ask(Entry &entry, const std::vector<ManagedObject *> &tasks)
{
    for (const ManagedObject *task : tasks) {
        if (!task->isDeleted() && entry.evaluator->matches(*task))
            entry.members.insert(task->objectID().key);
        else
            entry.members.erase(task->objectID().key);
    }
}

bool TaskCounts::hasOnlyOtherMembers(const ManagedObject &object)
{
    const auto changed = object.changedValues();
    return !changed.empty()
        && std::all_of(changed.begin(), changed.end(), [](const auto &value) { return value.first->isToMany(); });
}

/// Whether tasks that point at a record may answer otherwise than before. Where only its members changed, they are the
/// tasks that were announced with it; a value that an undo brought back is no unsaved value any more.
bool TaskCounts::changesAnswers(const ManagedObject &object)
{
    if (hasOnlyOtherMembers(object))
        return m_edited.contains(&object);
    m_edited.insert(&object);
    return true;
}

void TaskCounts::doubt(std::uintptr_t id)
{
    if (const auto entry = m_entries.find(id); entry != m_entries.end())
        entry->second.isInDoubt = true;
}

void TaskCounts::doubtAll()
{
    for (auto &[id, entry] : m_entries)
        entry.isInDoubt = true;
}

} // namespace viewcontrollers
