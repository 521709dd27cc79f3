// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/exchange_format.h"
#include "foundation/error.h"
#include "objectstore/object_context.h"

#include <map>
#include <span>
#include <vector>

namespace cli {

/// How many records an import added.
using ImportCounts = std::map<const RecordKind *, std::size_t>;

/// Adds the records of a file to a context, which the caller saves, or drops after a failure.
///
/// Tasks are always added. A folder, context, state, tag or smart folder whose title is there already is that record
/// and only gains what it does not have; of several with one title the first of the file is the first of the store.
/// What is added is new to the service.
class Importer
{
public:
    explicit Importer(objectstore::ObjectContext &moc) : m_moc(moc) { }

    [[nodiscard]] foundation::Result<ImportCounts> add(const std::vector<FileRecord> &records);

private:
    using Objects = std::vector<objectstore::ManagedObject *>;
    /// The records of one kind: by title those that are there, by place those of the file.
    struct Known {
        std::map<std::string, Objects, std::less<>> byTitle;
        std::map<std::string, std::size_t, std::less<>> used; ///< how many of a title the file has named so far
        Objects byPlace;
    };

    [[nodiscard]] foundation::Result<void> readExisting();
    objectstore::ManagedObject &existingOrNew(const FileRecord &record, bool &isNew);
    [[nodiscard]] foundation::Result<void> addRecord(const FileRecord &record);
    [[nodiscard]] foundation::Result<void> relate(const FileRecord &record, objectstore::ManagedObject &object);
    [[nodiscard]] foundation::Result<void> placeTask(const FileRecord &record, objectstore::ManagedObject &task);
    [[nodiscard]] foundation::Result<objectstore::ManagedObject *> target(const FileRecord &record,
        std::string_view entity, std::string_view titleField, std::string_view indexField, std::string_view usual);
    objectstore::ManagedObject &tag(const std::string &title);
    [[nodiscard]] std::string where(const FileRecord &record) const;

    objectstore::ObjectContext &m_moc;
    std::map<const RecordKind *, Known> m_known;
    std::map<std::int64_t, objectstore::ManagedObject *> m_priorities;
    ImportCounts m_counts;
};

} // namespace cli
