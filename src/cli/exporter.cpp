// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/exporter.h"

#include "model/entities.h"

#include <array>
#include <map>
#include <unordered_map>

namespace cli {

using foundation::Failure;
using foundation::Result;
using objectstore::FetchRequest;
using objectstore::ManagedObject;
using objectstore::Predicate;

namespace {

struct Selection {
    std::string_view entity;
    std::string_view predicate; ///< empty: all
};

constexpr std::array<Selection, 6> selections{{
    {"Folders", "markedForDeletion == NO"},
    {"Contexts", "markedForDeletion == NO"},
    {"States", ""},
    {"Tags", "deleted == NO"},
    {"SmartFolder", ""},
    {"Tasks", "markedDeleted == NO"},
}};

/// Where each exported record stands in its list, and which titles tell it from all others.
class Places
{
public:
    void add(const ManagedObject &object, std::string_view title)
    {
        const std::int64_t place = ++m_count[&object.entity()];
        m_place.emplace(&object, place);
        ++m_titles[{&object.entity(), std::string(title)}];
    }

    /// 0 for a record that is not in the file.
    [[nodiscard]] std::int64_t of(const ManagedObject *object) const
    {
        const auto found = m_place.find(object);
        return found == m_place.end() ? 0 : found->second;
    }

    [[nodiscard]] bool isAmbiguous(const ManagedObject &object) const
    {
        const auto found = m_titles.find({&object.entity(), std::string(object.text("title"))});
        return found != m_titles.end() && found->second > 1;
    }

private:
    std::unordered_map<const ManagedObject *, std::int64_t> m_place;
    std::map<const objectstore::EntityDescription *, std::int64_t> m_count;
    std::map<std::pair<const objectstore::EntityDescription *, std::string>, int> m_titles;
};

void addPlace(Record &record, std::string_view name, const ManagedObject *related, const Places &places)
{
    if (const std::int64_t place = places.of(related))
        record.emplace_back(name, place);
}

void addIndexes(FileRecord &record, const ManagedObject &object, const Places &places)
{
    const bool isTask = model::as<model::Tasks>(&object) != nullptr;
    if (isTask || model::as<model::Folders>(&object))
        addPlace(record.fields, parentIndexField, object.related("parent"), places);
    if (!isTask)
        return;
    for (const auto &[relationship, name] :
        {std::pair("folders", folderIndexField), std::pair("contexts", contextIndexField)}) {
        const ManagedObject *related = object.related(relationship);
        if (related && places.isAmbiguous(*related))
            addPlace(record.fields, name, related, places);
    }
}

/// The records that the program makes by itself carry no dates of the user's.
void dropDatesOfDefaults(FileRecord &record, const ManagedObject &object)
{
    const bool isInbox = model::as<model::Folders>(&object) && object.text("title") == "Inbox";
    const bool isNone = model::as<model::Contexts>(&object) && object.text("title") == "None";
    if (isInbox || isNone)
        std::erase_if(record.fields, [](const auto &field) {
            return field.first == "creationDate" || field.first == "CreationDate" || field.first == "modifiedDate";
        });
}

} // namespace

Result<std::vector<FileRecord>> exportedRecords(objectstore::ObjectContext &moc)
{
    std::vector<std::pair<const RecordKind *, ManagedObject *>> objects;
    Places places;
    for (const auto &[entity, predicate] : selections) {
        const RecordKind &kind = kindOf(entity);
        FetchRequest request{.entity = std::string(entity), .predicate = {}, .sortDescriptors = {}};
        if (!predicate.empty())
            request.predicate = Predicate::format(predicate);
        auto found = moc.fetch(request);
        if (!found)
            return Failure(std::move(found.error()));
        for (ManagedObject *object : *found) {
            places.add(*object, object->text(kind.title));
            objects.emplace_back(&kind, object);
        }
    }
    std::vector<FileRecord> records;
    records.reserve(objects.size());
    for (const auto &[kind, object] : objects) {
        FileRecord record{kind, exportedRecordOf(*object, *kind)};
        dropDatesOfDefaults(record, *object);
        addIndexes(record, *object, places);
        records.push_back(std::move(record));
    }
    return records;
}

} // namespace cli
