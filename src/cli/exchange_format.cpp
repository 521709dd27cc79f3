// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/exchange_format.h"

#include "cli/command_error.h"
#include "cli/csv.h"
#include "cli/json_writer.h"
#include "cli/text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>
#include <charconv>

namespace cli {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr std::string_view formatName = "quelvin-export";
constexpr int formatVersion = 1;
constexpr std::string_view kindColumn = "record";

constexpr std::array indexFields{
    FieldDescription{folderIndexField, FieldType::Integer},
    FieldDescription{contextIndexField, FieldType::Integer},
    FieldDescription{parentIndexField, FieldType::Integer},
};

std::string text(const QString &string)
{
    return string.toStdString();
}

/// "Task 12" or, where it has a title, "Task 12 ("Buy milk")".
std::string nameOf(const RecordKind &kind, std::size_t place)
{
    return "Record " + std::to_string(place) + " of \"" + std::string(kind.list) + '"';
}

std::string cellText(const Field &field)
{
    struct AsText {
        std::string operator()(std::monostate) const { return {}; }
        std::string operator()(bool value) const { return value ? "1" : "0"; }
        std::string operator()(std::int64_t value) const { return std::to_string(value); }
        std::string operator()(double value) const { return shortest(value); }
        std::string operator()(const std::string &value) const { return value; }
        std::string operator()(const std::vector<std::string> &values) const
        {
            std::string line;
            if (!values.empty())
                appendCsv(line, values);
            return line.substr(0, line.size() - (line.empty() ? 0 : 1));
        }
    };
    return std::visit(AsText{}, field);
}

template <typename Number> std::optional<Field> numberIn(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional<Field>(number) : std::nullopt;
}

std::optional<Field> fieldIn(const std::string &cell, FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
    case FieldType::Integer:
        return numberIn<std::int64_t>(cell);
    case FieldType::Double:
        return numberIn<double>(cell);
    case FieldType::TextList: {
        const auto rows = readCsv(cell);
        return rows && rows->size() == 1 ? std::optional<Field>(rows->front()) : std::nullopt;
    }
    default:
        return Field(cell);
    }
}

/// A field of a list is a JSON array of strings; nothing for any other array.
std::optional<Field> listIn(const QJsonArray &array)
{
    std::vector<std::string> texts;
    for (const QJsonValue &value : array) {
        if (!value.isString())
            return std::nullopt;
        texts.push_back(text(value.toString()));
    }
    return texts;
}

std::optional<Field> fieldIn(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return Field();
    case QJsonValue::Bool:
        return Field(value.toBool());
    case QJsonValue::String:
        return Field(text(value.toString()));
    case QJsonValue::Array:
        return listIn(value.toArray());
    case QJsonValue::Double: {
        const double number = value.toDouble();
        const std::int64_t whole = value.toInteger(0);
        return static_cast<double>(whole) == number ? Field(whole) : Field(number);
    }
    default:
        return std::nullopt;
    }
}

/// Whether the field may stand under the name; related records are text, tags a list.
bool isOfType(const FieldDescription &description, const Field &field)
{
    if (description.type == FieldType::TextList)
        return std::holds_alternative<std::vector<std::string>>(field);
    return attributeValue(description, field).has_value();
}

Result<void> addField(FileRecord &record, std::string_view name, std::optional<Field> field, const std::string &where)
{
    const FieldDescription *description = fileField(*record.kind, name);
    if (!description)
        return notUnderstood(where + " has a field " + inQuotes(name) + " that is not known.");
    if (std::ranges::find(record.fields, name, [](const auto &present) { return present.first; })
        != record.fields.end())
        return notUnderstood(where + " has two values under " + inQuotes(name) + ".");
    if (!field || !isOfType(*description, *field))
        return notUnderstood(where + " has a value under " + inQuotes(name) + " that does not belong there.");
    record.fields.emplace_back(description->name, std::move(*field));
    return {};
}

Result<std::vector<FileRecord>> readJson(std::string_view json)
{
    QJsonParseError error;
    const auto bytes = QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size()));
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return notUnderstood(
            "The file is not JSON: " + text(error.errorString()) + " at byte " + std::to_string(error.offset) + ".");
    const QJsonObject root = document.object();
    if (text(root[QStringLiteral("format")].toString()) != formatName)
        return notUnderstood(
            "The file was not written by an export: its \"format\" is not \"" + std::string(formatName) + "\".");
    if (const int version = root[QStringLiteral("version")].toInt(); version != formatVersion)
        return notUnderstood(
            "The file is of version " + std::to_string(version) + " of the format; this program knows version 1.");
    for (const QString &list : root.keys()) {
        const bool known = std::ranges::find(recordKinds(), text(list), &RecordKind::list) != recordKinds().end();
        if (!known && list != QStringLiteral("format") && list != QStringLiteral("version"))
            return notUnderstood("The file has a list " + inQuotes(text(list)) + " that is not known.");
    }
    std::vector<FileRecord> records;
    for (const RecordKind &kind : recordKinds()) {
        std::size_t place = 0;
        for (const QJsonValue &value :
            root[QString::fromUtf8(kind.list.data(), static_cast<qsizetype>(kind.list.size()))].toArray()) {
            const std::string where = nameOf(kind, ++place);
            if (!value.isObject())
                return notUnderstood(where + " is not an object.");
            FileRecord record{&kind, {}};
            const QJsonObject object = value.toObject();
            for (auto field = object.begin(); field != object.end(); ++field) {
                if (auto added = addField(record, text(field.key()), fieldIn(field.value()), where); !added)
                    return Failure(std::move(added.error()));
            }
            records.push_back(std::move(record));
        }
    }
    return records;
}

Result<FileRecord> recordOfRow(const CsvRow &row, const CsvRow &header, std::size_t line)
{
    const std::string where = "Row " + std::to_string(line);
    if (row.size() != header.size())
        return notUnderstood(where + " has " + std::to_string(row.size()) + " values; the header has "
            + std::to_string(header.size()) + " names.");
    const auto kind = std::ranges::find(recordKinds(), row.front(), &RecordKind::word);
    if (kind == recordKinds().end())
        return notUnderstood(where + " is of an unknown kind, " + inQuotes(row.front()) + ".");
    FileRecord record{&*kind, {}};
    for (std::size_t i = 1; i < row.size(); ++i) {
        if (row[i].empty())
            continue;
        const FieldDescription *description = fileField(*kind, header[i]);
        auto field = description ? fieldIn(row[i], description->type) : std::nullopt;
        if (auto added = addField(record, header[i], std::move(field), where); !added)
            return Failure(std::move(added.error()));
    }
    std::ranges::sort(record.fields, {}, [](const auto &field) { return field.first; }); // as JSON has them
    return record;
}

Result<std::vector<FileRecord>> readCsvRecords(std::string_view csv)
{
    const auto rows = readCsv(csv);
    if (!rows)
        return Failure(rows.error());
    if (rows->empty() || rows->front().front() != kindColumn)
        return notUnderstood("The file was not written by an export: it is not JSON, and its first line does not begin "
                             "with \"record\".");
    std::vector<FileRecord> records;
    for (std::size_t i = 1; i < rows->size(); ++i) {
        auto record = recordOfRow((*rows)[i], rows->front(), i + 1);
        if (!record)
            return Failure(std::move(record.error()));
        records.push_back(std::move(*record));
    }
    std::ranges::stable_sort(records, {}, [](const FileRecord &record) { return record.kind - recordKinds().data(); });
    return records;
}

/// Every name that some kind has, in the order of the tasks' fields first.
CsvRow header()
{
    CsvRow names{std::string(kindColumn)};
    const auto add = [&names](std::string_view name) {
        if (std::ranges::find(names, name) == names.end())
            names.emplace_back(name);
    };
    for (const FieldDescription &field : kindOf("Tasks").fields)
        if (field.isOwned)
            add(field.name);
    for (const RecordKind &kind : recordKinds())
        for (const FieldDescription &field : kind.fields)
            if (field.isOwned)
                add(field.name);
    for (const FieldDescription &field : indexFields)
        add(field.name);
    return names;
}

} // namespace

const FieldDescription *fileField(const RecordKind &kind, std::string_view name)
{
    for (const std::span<const FieldDescription> fields :
        {kind.fields, std::span<const FieldDescription>(indexFields)}) {
        const auto found = std::ranges::find(fields, name, &FieldDescription::name);
        if (found != fields.end() && found->isOwned)
            return &*found;
    }
    return nullptr;
}

std::string writeJson(const std::vector<FileRecord> &records)
{
    std::string out
        = "{\n  \"format\": \"" + std::string(formatName) + "\",\n  \"version\": " + std::to_string(formatVersion);
    auto record = records.begin();
    for (const RecordKind &kind : recordKinds()) {
        out += ",\n  \"" + std::string(kind.list) + "\": [";
        for (bool first = true; record != records.end() && record->kind == &kind; ++record, first = false) {
            out += first ? "\n    " : ",\n    ";
            appendJson(out, record->fields);
        }
        out += out.back() == '[' ? "]" : "\n  ]";
    }
    return out + "\n}\n";
}

std::string writeCsv(const std::vector<FileRecord> &records)
{
    const CsvRow names = header();
    std::string out;
    appendCsv(out, names);
    for (const FileRecord &record : records) {
        CsvRow row(names.size());
        row.front() = record.kind->word;
        for (const auto &[name, field] : record.fields)
            row[static_cast<std::size_t>(std::ranges::find(names, name) - names.begin())] = cellText(field);
        appendCsv(out, row);
    }
    return out;
}

Result<std::vector<FileRecord>> readRecords(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && text[begin] == '{' ? readJson(text) : readCsvRecords(text);
}

} // namespace cli
