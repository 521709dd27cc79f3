// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_mapping.h"

#include "objectstore/object_context.h"
#include "objectstore/predicate.h"

namespace syncing {

using model::Tasks;
using objectstore::ManagedObject;
using objectstore::Value;
using toodledo::GtdTask;

namespace {

/// Numbers travel in 32 bits.
Value number(std::int64_t value)
{
    return std::int64_t{static_cast<std::int32_t>(value)};
}

Value textOrNothing(const std::optional<std::string> &text)
{
    return text ? Value(*text) : Value();
}

/// The first of its kind for each id; a record without one counts as having none.
template <class Record>
std::unordered_map<std::int64_t, Record *> byId(const model::DataUtilities &records, std::string_view attribute)
{
    std::unordered_map<std::int64_t, Record *> found;
    const auto all = records.fetch(Record::entityName, {});
    for (ManagedObject *object : all.value_or(std::vector<ManagedObject *>())) {
        const auto value = object->value(attribute);
        if (!objectstore::isNil(value))
            found.try_emplace(objectstore::toInteger(value), model::as<Record>(object));
    }
    return found;
}

template <class Record>
void place(Tasks &task, std::string_view relationship, const std::unordered_map<std::int64_t, Record *> &records,
    std::int64_t id)
{
    if (const auto found = records.find(static_cast<std::int32_t>(id)); found != records.end())
        task.setRelated(relationship, found->second);
}

/// The record with this id, else the default one of its kind, which has the id 0.
template <class Record>
Record *recordOrDefault(const std::unordered_map<std::int64_t, Record *> &records, std::int64_t id)
{
    auto found = records.find(static_cast<std::int32_t>(id));
    if (found == records.end())
        found = records.find(0);
    return found == records.end() ? nullptr : found->second;
}

} // namespace

TaskMapping::TaskMapping(const model::DataUtilities &records)
    : m_records(records)
    , m_folders(byId<model::Folders>(records, "folderID"))
    , m_contexts(byId<model::Contexts>(records, "contextID"))
    , m_states(byId<model::States>(records, "stateID"))
    , m_priorities(byId<model::Priorities>(records, "priority"))
    , m_inbox(records.getFolderByTitle("Inbox"))
    , m_none(records.getContextByTitle("None"))
{
    if (auto tags = records.getTags())
        m_tags = std::move(*tags);
}

Tasks &TaskMapping::getToodledoTaskAsLocalTask(const GtdTask &from)
{
    // looking the default places up for each of a hundred thousand tasks would take most of a first run
    auto &task = dynamic_cast<Tasks &>(m_records.moc().insert(Tasks::entityName, objectstore::Awakening::None));
    task.setRelated("states", recordOrDefault(m_states, from.status));
    task.setRelated("priorities", recordOrDefault(m_priorities, from.priority));
    task.setRelated("contexts", recordOrDefault(m_contexts, from.context));
    task.setRelated("folders", recordOrDefault(m_folders, from.folder));
    task.setValue("taskID", number(from.taskId));
    task.setValue("title", textOrNothing(from.title));
    task.setComplete(from.completed || from.completedDate);
    if (from.completedDate)
        task.setCompletedDate(from.completedDate);
    task.setValue("parentID", number(from.parentId));
    task.setValue("childrenCount", number(from.children));
    task.setValue("contextID", number(from.context));
    task.setValue("priority", number(from.priority));
    task.setStartDate(from.startDate);
    task.setDueDate(from.dueDate);
    task.setModifiedDate(from.modifiedDate);
    task.setCreationDate(from.addedDate);
    task.setValue("length", number(from.length));
    task.setValue("timer", number(from.timer));
    task.setValue("repeat", number(from.repeat));
    task.setValue("repeatAdvanced", textOrNothing(from.repeatAdvanced));
    task.setStar(from.star);
    task.setValue("notes", textOrNothing(from.note));
    setTags(from, task);
    return task;
}

void TaskMapping::copyToodledoTaskToLocalTask(const GtdTask &from, Tasks &to)
{
    to.setValue("taskID", number(from.taskId));
    to.setValue("parentID", number(from.parentId));
    to.setValue("childrenCount", number(from.children));
    to.setValue("title", textOrNothing(from.title));
    to.setComplete(from.completed);
    if (from.completed)
        to.setCompletedDate(from.completedDate);
    to.setValue("contextID", number(from.context));
    to.setValue("state", number(from.status));
    to.setStartDate(from.startDate);
    to.setDueDate(from.dueDate);
    to.setValue("length", number(from.length));
    to.setValue("timer", number(from.timer));
    to.setStar(from.star);
    to.setValue("notes", textOrNothing(from.note));
    setTags(from, to);
    placeInContextPriorityAndState(from, to);
}

void TaskMapping::copyWholeToodledoTaskToLocalTask(const GtdTask &from, Tasks &to)
{
    copyToodledoTaskToLocalTask(from, to);
    if (!from.tags)
        to.setTags({});
    if (model::Folders *folder = folderOrInbox(from.folder))
        to.setRelated("folders", folder);
    // the default context has no id before the second launch, so that a task does not find its way back to it by one
    if (const auto context = m_contexts.find(from.context); context == m_contexts.end())
        to.setRelated("contexts", m_none);
}

GtdTask TaskMapping::copyLocalTaskToToodledoTask(const Tasks &task, foundation::Instant now)
{
    const auto text = [&task](std::string_view name) {
        const auto value = task.value(name);
        return objectstore::isNil(value) ? std::nullopt : std::optional<std::string>(objectstore::toText(value));
    };
    GtdTask sent;
    sent.taskId = task.taskID();
    sent.parentId = task.integer("parentID");
    sent.children = task.integer("childrenCount");
    sent.title = text("title");
    if (const model::Folders *folder = task.folders())
        sent.folder = folder->folderID();
    if (const model::Contexts *context = task.contexts())
        sent.context = context->contextID();
    if (const model::States *state = task.states())
        sent.status = state->stateID();
    if (const model::Priorities *priority = task.priorities())
        sent.priority = priority->priority();
    sent.startDate = task.startDate();
    sent.dueDate = task.dueDate();
    sent.addedDate = now;
    sent.length = task.length();
    sent.timer = task.integer("timer");
    sent.star = task.star();
    sent.note = text("notes");
    sent.completed = task.complete();
    if (sent.completed)
        sent.completedDate = now;
    if (const auto &tags = task.tags(); !tags.empty()) {
        sent.tags.emplace();
        for (const ManagedObject *tag : tags)
            sent.tags->emplace_back(tag->text("title"));
    }
    return sent;
}

model::Folders *TaskMapping::folderOrInbox(std::int64_t folderID) const
{
    const auto found = m_folders.find(folderID);
    return found == m_folders.end() ? m_inbox : found->second;
}

void TaskMapping::placeInContextPriorityAndState(const GtdTask &from, Tasks &to) const
{
    place(to, "contexts", m_contexts, from.context);
    place(to, "priorities", m_priorities, from.priority);
    place(to, "states", m_states, from.status);
}

void TaskMapping::setTags(const GtdTask &from, Tasks &to)
{
    std::vector<ManagedObject *> tags;
    for (const std::string &name : from.tags.value_or(std::vector<std::string>())) {
        if (name.empty())
            continue;
        ManagedObject &tag = tagNamed(name);
        if (std::find(tags.begin(), tags.end(), &tag) == tags.end())
            tags.push_back(&tag);
    }
    if (!tags.empty())
        to.setTags(tags);
}

ManagedObject &TaskMapping::tagNamed(const std::string &name)
{
    model::Tags *&tag = m_tags[name];
    if (!tag) {
        tag = &model::insert<model::Tags>(m_records.moc());
        tag->setTitle(name);
    }
    return *tag;
}

} // namespace syncing
