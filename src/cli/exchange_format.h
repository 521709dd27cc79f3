// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/record_fields.h"
#include "foundation/error.h"

#include <memory>
#include <string>
#include <string_view>

namespace cli {

/// Beside the fields of a record, files have these: the place of a related record in its list, counted from 1. They
/// are written where a title does not tell which record is meant, and for parents.
inline constexpr std::string_view folderIndexField = "folderIndex";
inline constexpr std::string_view contextIndexField = "contextIndex";
inline constexpr std::string_view parentIndexField = "parentIndex";

/// A record of a file, and what kind it is of.
struct FileRecord {
    const RecordKind *kind = nullptr;
    Record fields;
};

/// The description of a field that a file may have, the indexes included, or null.
[[nodiscard]] const FieldDescription *fileField(const RecordKind &kind, std::string_view name);

/// The records, which come by kind in the order of `recordKinds`, as text.
[[nodiscard]] std::string writeJson(const std::vector<FileRecord> &records);
[[nodiscard]] std::string writeCsv(const std::vector<FileRecord> &records);

/// Reads what one of them wrote, whichever it is; the first mistake ends in a sentence that says where it is.
[[nodiscard]] foundation::Result<std::vector<FileRecord>> readRecords(std::string_view text);

} // namespace cli
