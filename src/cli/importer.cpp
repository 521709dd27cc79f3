// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/importer.h"

#include "cli/command_error.h"
#include "cli/text.h"
#include "model/entities.h"

#include <algorithm>

namespace cli {

using foundation::Failure;
using foundation::Result;
using objectstore::ManagedObject;
using objectstore::Value;

namespace {

const Field *fieldNamed(const FileRecord &record, std::string_view name)
{
    const auto found = std::ranges::find(record.fields, name, [](const auto &field) { return field.first; });
    return found == record.fields.end() ? nullptr : &found->second;
}

std::string textOf(const FileRecord &record, std::string_view name)
{
    const Field *field = fieldNamed(record, name);
    const auto *text = field ? std::get_if<std::string>(field) : nullptr;
    return text ? *text : std::string();
}

std::int64_t integerOf(const FileRecord &record, std::string_view name)
{
    const Field *field = fieldNamed(record, name);
    const auto *number = field ? std::get_if<std::int64_t>(field) : nullptr;
    return number ? *number : 0;
}

bool holdsDefault(const ManagedObject &object, std::string_view name)
{
    const objectstore::Property *property = object.entity().property(name);
    return objectstore::sameValue(object.value(*property), objectstore::view(property->defaultValue));
}

/// Sets what the file says. A record that was there keeps what it has.
void setAttributes(ManagedObject &object, const FileRecord &record, bool isNew)
{
    for (const auto &[name, field] : record.fields) {
        const FieldDescription *description = fileField(*record.kind, name);
        const objectstore::Property *property = object.entity().property(name);
        if (description->read || !property || !property->isAttribute())
            continue;
        if (auto value = attributeValue(*description, field); value && (isNew || holdsDefault(object, name)))
            object.setValue(*property, std::move(*value));
    }
}

} // namespace

Result<ImportCounts> Importer::add(const std::vector<FileRecord> &records)
{
    if (auto read = readExisting(); !read)
        return Failure(std::move(read.error()));
    for (const FileRecord &record : records) {
        if (auto added = addRecord(record); !added)
            return Failure(std::move(added.error()));
    }
    // parents may stand after their children
    std::map<const RecordKind *, std::size_t> place;
    for (const FileRecord &record : records) {
        ManagedObject &object = *m_known[record.kind].byPlace[place[record.kind]++];
        if (auto related = relate(record, object); !related)
            return Failure(std::move(related.error()));
    }
    return m_counts;
}

Result<void> Importer::readExisting()
{
    for (const RecordKind &kind : recordKinds()) {
        if (kind.entity == "Tasks")
            continue;
        auto found = m_moc.fetch({.entity = std::string(kind.entity), .predicate = {}, .sortDescriptors = {}});
        if (!found)
            return Failure(std::move(found.error()));
        for (ManagedObject *object : *found) {
            if (!object->boolean("markedForDeletion") && !object->boolean("deleted"))
                m_known[&kind].byTitle[std::string(object->text(kind.title))].push_back(object);
        }
    }
    auto priorities = m_moc.fetch({.entity = "Priorities", .predicate = {}, .sortDescriptors = {}});
    if (!priorities)
        return Failure(std::move(priorities.error()));
    for (ManagedObject *priority : *priorities)
        m_priorities.emplace(priority->integer("priority"), priority);
    return {};
}

ManagedObject &Importer::existingOrNew(const FileRecord &record, bool &isNew)
{
    const std::string title = textOf(record, record.kind->title);
    Known &known = m_known[record.kind];
    const bool isTask = record.kind->entity == "Tasks";
    Objects *namesakes = isTask ? nullptr : &known.byTitle[title];
    const std::size_t used = isTask ? 0 : known.used[title]++;
    isNew = !namesakes || used >= namesakes->size();
    if (!isNew)
        return *(*namesakes)[used];
    // a task is given its place below, from what has been read already
    using objectstore::Awakening;
    ManagedObject &object = m_moc.insert(record.kind->entity, isTask ? Awakening::None : Awakening::FromInsert);
    object.setValue(record.kind->title, title);
    if (isTask) {
        object.setDate("creationDate", m_moc.store().clock().now());
        object.setDate("modifiedDate", m_moc.store().clock().now());
    }
    if (namesakes)
        namesakes->push_back(&object);
    ++m_counts[record.kind];
    return object;
}

Result<void> Importer::addRecord(const FileRecord &record)
{
    bool isNew = false;
    ManagedObject &object = existingOrNew(record, isNew);
    m_known[record.kind].byPlace.push_back(&object);
    setAttributes(object, record, isNew);
    return record.kind->entity == "Tasks" ? placeTask(record, object) : Result<void>();
}

std::string Importer::where(const FileRecord &record) const
{
    return "The " + std::string(record.kind->word) + " " + inQuotes(textOf(record, record.kind->title));
}

/// The record that a task names by place or else by title.
Result<ManagedObject *> Importer::target(const FileRecord &record, std::string_view entity, std::string_view titleField,
    std::string_view indexField, std::string_view usual)
{
    Known &known = m_known[&kindOf(entity)];
    if (const Field *index = indexField.empty() ? nullptr : fieldNamed(record, indexField)) {
        const std::int64_t place = std::get<std::int64_t>(*index);
        if (place < 1 || place > static_cast<std::int64_t>(known.byPlace.size()))
            return notUnderstood(where(record) + " has a " + inQuotes(indexField) + " that the file does not have.");
        return known.byPlace[static_cast<std::size_t>(place - 1)];
    }
    const Field *named = fieldNamed(record, titleField);
    const std::string title = named ? textOf(record, titleField) : std::string(usual);
    const auto found = known.byTitle.find(title);
    if (found != known.byTitle.end() && !found->second.empty())
        return found->second.front();
    return notUnderstood(
        where(record) + " is in a " + std::string(titleField) + " " + inQuotes(title) + ", which is not there.");
}

Result<void> Importer::placeTask(const FileRecord &record, ManagedObject &task)
{
    struct Placement {
        std::string_view relationship, entity, titleField, indexField, usual;
    };
    static constexpr std::array<Placement, 3> placements{{
        {"folders", "Folders", "folder", folderIndexField, "Inbox"},
        {"contexts", "Contexts", "context", contextIndexField, "None"},
        {"states", "States", "state", "", ""},
    }};
    for (const Placement &placement : placements) {
        auto found = target(record, placement.entity, placement.titleField, placement.indexField, placement.usual);
        if (!found)
            return Failure(std::move(found.error()));
        task.setRelated(placement.relationship, *found);
    }
    const std::int64_t priority = integerOf(record, "priority");
    const auto found = m_priorities.find(priority);
    if (found == m_priorities.end())
        return notUnderstood(where(record) + " has the priority " + std::to_string(priority) + ", which is none.");
    task.setRelated("priorities", found->second);
    task.setValue("priority", priority);
    if (const Field *tags = fieldNamed(record, "tags")) {
        for (const std::string &title : std::get<std::vector<std::string>>(*tags))
            task.addObject("tags", tag(title));
    }
    return {};
}

ManagedObject &Importer::tag(const std::string &title)
{
    const RecordKind &kind = kindOf("Tags");
    Objects &namesakes = m_known[&kind].byTitle[title];
    if (namesakes.empty()) {
        namesakes.push_back(&m_moc.insert("Tags"));
        namesakes.front()->setValue("title", title);
        ++m_counts[&kind];
    }
    return *namesakes.back(); // of several, tasks are tagged with the last
}

Result<void> Importer::relate(const FileRecord &record, ManagedObject &object)
{
    const std::int64_t place = integerOf(record, parentIndexField);
    if (!fieldNamed(record, parentIndexField))
        return {};
    const Objects &objects = m_known[record.kind].byPlace;
    if (place < 1 || place > static_cast<std::int64_t>(objects.size()))
        return notUnderstood(where(record) + " has a parent that the file does not have.");
    ManagedObject *parent = objects[static_cast<std::size_t>(place - 1)];
    for (const ManagedObject *above = parent; above; above = above->related("parent")) {
        if (above == &object)
            return notUnderstood(where(record) + " is its own parent.");
    }
    if (object.entity().property("parent"))
        object.setRelated("parent", parent);
    return {};
}

} // namespace cli
