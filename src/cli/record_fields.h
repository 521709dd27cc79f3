// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/managed_object.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace cli {

/// What stands under one name in JSON or in one column of CSV; dates are ISO 8601 texts.
using Field = std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<std::string>>;
using Record = std::vector<std::pair<std::string_view, Field>>;

enum class FieldType { Boolean, Integer, Double, Date, Text, Bytes, TextList };

/// One field of a kind of record: an attribute of the same name or, with a `read` of its own, a related record.
struct FieldDescription {
    std::string_view name;
    FieldType type = FieldType::Text;
    Field (*read)(const objectstore::ManagedObject &) = nullptr; ///< null: the attribute
    std::string_view usual = {}; ///< the text, of a related record, that need not be written
    /// Told about, and not part of an export: ids and what the store keeps for itself.
    bool isOwned = true;
};

/// A kind of record as people and files know it.
struct RecordKind {
    std::string_view entity;
    std::string_view word; ///< "folder"
    std::string_view list; ///< "folders"
    std::string_view title; ///< the attribute that names a record
    std::span<const FieldDescription> fields;
};

/// "Folders", "Contexts", "States", "Tags", "SmartFolder" and "Tasks", in the order in which they are imported.
[[nodiscard]] std::span<const RecordKind> recordKinds();
[[nodiscard]] const RecordKind &kindOf(std::string_view entity);

/// Everything that can be told about an object, its URI first.
[[nodiscard]] Record recordOf(const objectstore::ManagedObject &object, const RecordKind &kind);

/// What a user owns of an object, less what a new one has anyway.
[[nodiscard]] Record exportedRecordOf(const objectstore::ManagedObject &object, const RecordKind &kind);

/// The value of an attribute that a field stands for; nothing when it is not one of the field's type.
[[nodiscard]] std::optional<objectstore::Value> attributeValue(const FieldDescription &description, const Field &field);

/// The shortest decimal number that reads back as the same value.
[[nodiscard]] std::string shortest(double value);

} // namespace cli
