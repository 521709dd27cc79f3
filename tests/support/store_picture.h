// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "objectstore/object_context.h"

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// The records of one entity; throws where they cannot be read.
inline std::vector<model::ManagedObject *> allOf(objectstore::ObjectContext &moc, const char *entity)
{
    auto found = moc.fetch({.entity = entity, .predicate = {}, .sortDescriptors = {}});
    if (!found)
        throw std::runtime_error("not fetched: " + found.error().message + " " + found.error().detail);
    return std::move(*found);
}

inline std::string titleOr(const model::ManagedObject *object, const char *otherwise)
{
    return object ? std::string(object->text("title")) : std::string(otherwise);
}

/// The title of a task's folder or context, or of the one that stands for none and that its tasks fall to at its end.
inline std::string placeOf(const model::ManagedObject *place, const char *otherwise)
{
    return titleOr(place && !place->boolean("markedForDeletion") ? place : nullptr, otherwise);
}

/// What a user sees of a task, in one line.
inline std::string lineOf(const model::Tasks &task)
{
    std::set<std::string> tags;
    for (const model::ManagedObject *tag : task.tags())
        tags.insert(titleOr(tag, "nowhere"));
    std::string line = "task " + titleOr(&task, "") + " | " + std::string(task.notes()) + " | "
        + placeOf(task.folders(), "Inbox") + " | " + placeOf(task.contexts(), "None") + " | star "
        + std::to_string(task.star()) + " | done " + std::to_string(task.complete()) + " | priority "
        + (task.priorities() ? std::to_string(task.priorities()->priority()) : "none") + " | due "
        + (task.dueDate() ? foundation::toIso8601(*task.dueDate()).substr(0, 10) : std::string("-")) + " | tags";
    for (const std::string &tag : tags)
        line += " " + tag;
    return line + (task.deleteOnSync() ? " (in the Trash)" : "");
}

/// One line for each folder, context and task, sorted; what is in the Trash or to be deleted has a mark at its end.
inline std::multiset<std::string> pictureOf(objectstore::ObjectContext &moc)
{
    std::multiset<std::string> lines;
    for (const auto &[entity, word] : {std::pair("Folders", "folder "), std::pair("Contexts", "context ")}) {
        for (const model::ManagedObject *place : allOf(moc, entity))
            lines.insert(word + titleOr(place, "") + (place->boolean("markedForDeletion") ? " (to be deleted)" : ""));
    }
    for (const model::ManagedObject *task : allOf(moc, "Tasks"))
        lines.insert(lineOf(*model::as<model::Tasks>(task)));
    return lines;
}

} // namespace support
