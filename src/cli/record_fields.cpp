// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/record_fields.h"

#include "model/entities.h"
#include "objectstore/object_context.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace cli {

using model::as;
using objectstore::ManagedObject;
using objectstore::Value;
using objectstore::ValueView;

namespace {

template <class Related> Field titleOf(const Related *related)
{
    return related ? Field(std::string(related->title())) : Field();
}

Field folderTitle(const ManagedObject &task)
{
    return titleOf(as<model::Tasks>(&task)->folders());
}

/// No context and the context "None" are the same to people and to the service; which of both a task has hangs on how
/// it came here.
Field contextTitle(const ManagedObject &task)
{
    const model::Contexts *context = as<model::Tasks>(&task)->contexts();
    return context ? titleOf(context) : Field(std::string("None"));
}

Field stateTitle(const ManagedObject &task)
{
    const model::States *state = as<model::Tasks>(&task)->states();
    return state ? Field(std::string(state->state())) : Field();
}

/// The relationship is what the user sets; the attribute of the same name follows what the service sent.
Field priorityValue(const ManagedObject &task)
{
    const model::Priorities *priority = as<model::Tasks>(&task)->priorities();
    return priority ? priority->priority() : std::int64_t{0};
}

Field tagTitles(const ManagedObject &task)
{
    std::vector<std::string> titles;
    for (const ManagedObject *tag : as<model::Tasks>(&task)->tags())
        titles.emplace_back(tag->text("title"));
    std::ranges::sort(titles);
    return titles;
}

using enum FieldType;

constexpr std::array folderFields{
    FieldDescription{"title"},
    FieldDescription{"order", Integer},
    FieldDescription{"archived", Boolean},
    FieldDescription{"private", Boolean},
    FieldDescription{"Notes"},
    FieldDescription{"type"},
    FieldDescription{"imageFile"},
    FieldDescription{"CreationDate", Date},
    FieldDescription{"modifiedDate", Date},
    FieldDescription{.name = "folderID", .type = Integer, .isOwned = false},
};

constexpr std::array contextFields{
    FieldDescription{"title"},
    FieldDescription{"latitude", Double},
    FieldDescription{"longitude", Double},
    FieldDescription{"useLocation", Boolean},
    FieldDescription{"alwaysShow", Boolean},
    FieldDescription{"notes"},
    FieldDescription{"creationDate", Date},
    FieldDescription{"modifiedDate", Date},
    FieldDescription{.name = "contextID", .type = Integer, .isOwned = false},
};

constexpr std::array stateFields{
    FieldDescription{"state"},
    FieldDescription{"stateID", Integer},
};

constexpr std::array tagFields{
    FieldDescription{"title"},
    FieldDescription{"isChecked", Boolean},
};

constexpr std::array smartFolderFields{
    FieldDescription{"title"},
    FieldDescription{"predicateData", Bytes},
};

constexpr std::array taskFields{
    FieldDescription{"title"},
    FieldDescription{"folder", Text, folderTitle, "Inbox"},
    FieldDescription{"context", Text, contextTitle, "None"},
    FieldDescription{"state", Text, stateTitle},
    FieldDescription{"priority", Integer, priorityValue},
    FieldDescription{"star", Boolean},
    FieldDescription{"complete", Boolean},
    FieldDescription{"tags", TextList, tagTitles},
    FieldDescription{"startDate", Date},
    FieldDescription{"dueDate", Date},
    FieldDescription{"completedDate", Date},
    FieldDescription{"reminder", Integer},
    FieldDescription{"length", Integer},
    FieldDescription{"repeat", Integer},
    FieldDescription{"repeatAdvanced"},
    FieldDescription{"timer", Integer},
    FieldDescription{"dueTime", Integer},
    FieldDescription{"hasDueDate", Boolean},
    FieldDescription{"hasDueTime", Boolean},
    FieldDescription{"hasStartTime", Boolean},
    FieldDescription{"imageFile"},
    FieldDescription{"deleteOnSync", Boolean},
    FieldDescription{"creationDate", Date},
    FieldDescription{"modifiedDate", Date},
    FieldDescription{"notes"},
    FieldDescription{.name = "taskID", .type = Integer, .isOwned = false},
};

constexpr std::array<RecordKind, 6> kinds{{
    {"Folders", "folder", "folders", "title", folderFields},
    {"Contexts", "context", "contexts", "title", contextFields},
    {"States", "state", "states", "state", stateFields},
    {"Tags", "tag", "tags", "title", tagFields},
    {"SmartFolder", "smartFolder", "smartFolders", "title", smartFolderFields},
    {"Tasks", "task", "tasks", "title", taskFields},
}};

std::string base64(std::span<const std::byte> bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()))
        .toBase64()
        .toStdString();
}

struct AsField {
    Field operator()(std::monostate) const { return {}; }
    Field operator()(bool value) const { return value; }
    Field operator()(std::int64_t value) const { return value; }
    Field operator()(double value) const { return value; }
    Field operator()(foundation::Instant value) const { return foundation::toIso8601(value); }
    Field operator()(std::string_view value) const { return std::string(value); }
    Field operator()(std::span<const std::byte> value) const { return base64(value); }
    Field operator()(const objectstore::ObjectID &) const { return {}; }
};

/// An attribute that was never set reads as a number all the same.
Field attribute(const ManagedObject &object, const FieldDescription &description)
{
    switch (description.type) {
    case Boolean:
        return object.boolean(description.name);
    case Integer:
        return object.integer(description.name);
    default:
        return std::visit(AsField{}, object.value(description.name));
    }
}

Field fieldOf(const ManagedObject &object, const FieldDescription &description)
{
    return description.read ? description.read(object) : attribute(object, description);
}

bool isUsual(const Field &field, std::string_view usual)
{
    if (const auto *text = std::get_if<std::string>(&field))
        return *text == usual;
    if (const auto *list = std::get_if<std::vector<std::string>>(&field))
        return list->empty();
    return field == Field() || field == Field(false) || field == Field(std::int64_t{0});
}

struct AsValue {
    FieldType type;

    std::optional<Value> operator()(std::monostate) const { return Value(); }
    std::optional<Value> operator()(bool value) const
    {
        return type == Boolean ? std::optional<Value>(value) : std::nullopt;
    }
    std::optional<Value> operator()(std::int64_t value) const
    {
        if (type == Boolean && (value == 0 || value == 1))
            return Value(value == 1);
        if (type == Double)
            return Value(static_cast<double>(value));
        return type == Integer ? std::optional<Value>(value) : std::nullopt;
    }
    std::optional<Value> operator()(double value) const
    {
        return type == Double ? std::optional<Value>(value) : std::nullopt;
    }
    std::optional<Value> operator()(const std::string &value) const
    {
        if (type == Date) {
            const auto instant = foundation::fromIso8601(value);
            return instant ? std::optional<Value>(*instant) : std::nullopt;
        }
        if (type == FieldType::Bytes) {
            const auto decoded = QByteArray::fromBase64Encoding(
                QByteArray::fromStdString(value), QByteArray::AbortOnBase64DecodingErrors);
            const auto bytes = std::as_bytes(
                std::span(decoded.decoded.constData(), static_cast<std::size_t>(decoded.decoded.size())));
            return decoded ? std::optional<Value>(objectstore::Bytes(bytes.begin(), bytes.end())) : std::nullopt;
        }
        return type == Text ? std::optional<Value>(value) : std::nullopt;
    }
    std::optional<Value> operator()(const std::vector<std::string> &) const { return std::nullopt; }
};

} // namespace

std::span<const RecordKind> recordKinds()
{
    return kinds;
}

const RecordKind &kindOf(std::string_view entity)
{
    const auto found = std::ranges::find(kinds, entity, &RecordKind::entity);
    if (found == kinds.end())
        throw std::logic_error("There is no kind of record " + std::string(entity));
    return *found;
}

Record recordOf(const ManagedObject &object, const RecordKind &kind)
{
    Record record{{"uri", object.context().uri(object)}};
    for (const FieldDescription &description : kind.fields)
        record.emplace_back(description.name, fieldOf(object, description));
    return record;
}

Record exportedRecordOf(const ManagedObject &object, const RecordKind &kind)
{
    Record record;
    for (const FieldDescription &description : kind.fields) {
        if (!description.isOwned)
            continue;
        Field field = fieldOf(object, description);
        if (!isUsual(field, description.usual))
            record.emplace_back(description.name, std::move(field));
    }
    return record;
}

std::optional<Value> attributeValue(const FieldDescription &description, const Field &field)
{
    return std::visit(AsValue{description.type}, field);
}

std::string shortest(double value)
{
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

} // namespace cli
