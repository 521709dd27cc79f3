// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/data_utilities.h"

#include "foundation/log.h"
#include "objectstore/object_context.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace model {

using objectstore::Predicate;
using objectstore::Value;

namespace {

template <class Entity> Entity *firstOf(const std::optional<std::vector<ManagedObject *>> &objects)
{
    return objects && !objects->empty() ? as<Entity>(objects->front()) : nullptr;
}

template <class Entity> Entity *lastOf(const std::optional<std::vector<ManagedObject *>> &objects)
{
    return objects && !objects->empty() ? as<Entity>(objects->back()) : nullptr;
}

/// The first object of the class for which the predicate's one variable has this value.
template <class Entity>
Entity *find(const DataUtilities &utilities, const Predicate &predicate, std::string variable, Value value)
{
    return firstOf<Entity>(
        utilities.fetch(Entity::entityName, predicate.withVariables({{std::move(variable), std::move(value)}})));
}

const Predicate &folderWithId()
{
    static const Predicate predicate = Predicate::format("folderID == $FOLDER_ID");
    return predicate;
}
const Predicate &contextWithId()
{
    static const Predicate predicate = Predicate::format("contextID == $CONTEXT_ID");
    return predicate;
}
const Predicate &stateWithId()
{
    static const Predicate predicate = Predicate::format("stateID == $STATE_ID");
    return predicate;
}
const Predicate &withTitle()
{
    static const Predicate predicate = Predicate::format("title == $TITLE");
    return predicate;
}

/// The whole number at the beginning of `text`, as far as 32 bits reach, 0 where there is none.
std::int64_t leadingInteger(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
    if (text.starts_with('+'))
        text.remove_prefix(1);
    std::int32_t number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<std::int32_t>;
        return text.starts_with('-') ? Limits::min() : Limits::max();
    }
    return number;
}

bool place(ManagedObject *target, Tasks *task)
{
    if (!target || !task)
        return false;
    target->addObject("tasks", *task);
    return true;
}

} // namespace

std::optional<std::vector<ManagedObject *>> DataUtilities::fetch(
    std::string_view entity, const Predicate &predicate) const
{
    auto objects = m_moc.fetch({.entity = std::string(entity), .predicate = predicate, .sortDescriptors = {}});
    if (!objects) {
        presentError(objects.error());
        return std::nullopt;
    }
    return std::move(*objects);
}

Tasks *DataUtilities::getTaskById(std::int64_t id) const
{
    static const Predicate predicate = Predicate::format("taskID == $TASK_ID");
    return lastOf<Tasks>(fetch("Tasks", predicate.withVariables({{"TASK_ID", Value(id)}})));
}

Folders *DataUtilities::getFolderById(std::int64_t id) const
{
    return find<Folders>(*this, folderWithId(), "FOLDER_ID", id);
}

Folders *DataUtilities::getFolderByTitle(std::string_view title) const
{
    return find<Folders>(*this, withTitle(), "TITLE", std::string(title));
}

Contexts *DataUtilities::getContextById(std::int64_t id) const
{
    return find<Contexts>(*this, contextWithId(), "CONTEXT_ID", id);
}

Contexts *DataUtilities::getContextByTitle(std::string_view title) const
{
    return find<Contexts>(*this, withTitle(), "TITLE", std::string(title));
}

States *DataUtilities::getStateById(std::int64_t id) const
{
    return find<States>(*this, stateWithId(), "STATE_ID", id);
}

States *DataUtilities::getStateByName(std::string_view name) const
{
    static const Predicate predicate = Predicate::format("state == $STATE");
    return find<States>(*this, predicate, "STATE", std::string(name));
}

Priorities *DataUtilities::getPriorityById(std::int64_t id) const
{
    static const Predicate predicate = Predicate::format("priorityID == $PRIORITY_ID");
    return find<Priorities>(*this, predicate, "PRIORITY_ID", id);
}

Priorities *DataUtilities::getPriorityByName(std::string_view name) const
{
    static const Predicate predicate = Predicate::format("priority == $PRIORITY");
    return find<Priorities>(*this, predicate, "PRIORITY", leadingInteger(name));
}

Tags *DataUtilities::getTagByName(std::string_view name) const
{
    return lastOf<Tags>(getRecordsWithPredicate("Tags", "title == \"" + std::string(name) + "\""));
}

std::optional<std::vector<Tags *>> DataUtilities::getTagsBySubstring(std::string_view prefix) const
{
    const auto objects = getRecordsWithPredicate("Tags", "title BEGINSWITH[c] \"" + std::string(prefix) + "\"");
    if (!objects)
        return std::nullopt;
    std::vector<Tags *> tags;
    std::ranges::transform(*objects, std::back_inserter(tags), [](ManagedObject *object) { return as<Tags>(object); });
    return tags;
}

std::optional<std::map<std::string, Tags *, std::less<>>> DataUtilities::getTags() const
{
    static const Predicate predicate = Predicate::format("deleted == %@", {Value(false)});
    const auto objects = fetch("Tags", predicate);
    if (!objects)
        return std::nullopt;
    std::map<std::string, Tags *, std::less<>> tags;
    for (ManagedObject *object : *objects)
        tags[std::string(object->text("title"))] = as<Tags>(object);
    return tags;
}

std::vector<Contexts *> DataUtilities::getLocalContexts() const
{
    std::vector<Contexts *> contexts;
    if (const auto objects = fetch("Contexts", {})) {
        for (ManagedObject *object : *objects)
            contexts.push_back(as<Contexts>(object));
    }
    return contexts;
}

std::optional<std::vector<ManagedObject *>> DataUtilities::getRecordsWithPredicate(
    std::string_view entity, std::string_view predicateString) const
{
    const auto predicate = Predicate::parse(predicateString);
    if (!predicate) {
        // not shown: a tag that is being typed makes such a text at many a key
        foundation::logLine("Not a predicate: " + std::string(predicateString) + ": " + predicate.error().message);
        return std::nullopt;
    }
    return fetch(entity, *predicate);
}

bool DataUtilities::addTaskToState(std::optional<std::int64_t> stateID, Tasks *task) const
{
    return stateID && task && place(find<States>(*this, stateWithId(), "STATE_ID", *stateID), task);
}

bool DataUtilities::addTaskToPriority(std::optional<std::int64_t> priority, Tasks *task) const
{
    static const Predicate predicate = Predicate::format("priority == $PRIORITY_ID");
    return priority && task && place(find<Priorities>(*this, predicate, "PRIORITY_ID", *priority), task);
}

bool DataUtilities::addTaskToContextId(std::optional<std::int64_t> contextID, Tasks *task) const
{
    return contextID && task && place(find<Contexts>(*this, contextWithId(), "CONTEXT_ID", *contextID), task);
}

bool DataUtilities::addTaskToFolder(std::optional<std::int64_t> folderID, Tasks *task) const
{
    return folderID && task && place(find<Folders>(*this, folderWithId(), "FOLDER_ID", *folderID), task);
}

bool DataUtilities::addTaskToContextObject(Contexts *context, Tasks *task) const
{
    return place(context, task);
}

bool DataUtilities::addTaskToFolderByObject(Folders *folder, Tasks *task) const
{
    return place(folder, task);
}

} // namespace model
