// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/task_fields.h"

#include "service/server_time.h"

namespace service {

namespace {

Value readText(const Request &request, const TaskField &field)
{
    const std::string_view text = request.text(field.name);
    if (text.size() > field.longest)
        throw Refusal(std::string(field.name) + " is too long");
    return std::string(text);
}

template <typename Read> Value readWith(const Request &request, const TaskField &field, Read read, const char *expected)
{
    auto value = read(request.text(field.name));
    if (!value)
        throw Refusal(std::string(field.name) + " is not " + expected);
    return *std::move(value);
}

Value valueOf(Call &call, const TaskField &field)
{
    const Request &request = call.request;
    switch (field.kind) {
    case FieldKind::Title:
        return std::string(titleOf(request));
    case FieldKind::Text:
        return readText(request, field);
    case FieldKind::Integer:
        return *request.integer(field.name);
    case FieldKind::Flag:
        return std::int64_t(*request.flag(field.name));
    case FieldKind::Date:
        return readWith(request, field, readDate, "a date");
    case FieldKind::Time:
        return readWith(request, field, readTime, "a time of day");
    case FieldKind::Folder:
        return ownIdOrNone(call, "folder", *request.integer(field.name));
    case FieldKind::Context:
        return ownIdOrNone(call, "context", *request.integer(field.name));
    case FieldKind::Parent:
        break;
    }
    return ownIdOrNone(call, "task", *request.integer(field.name));
}

} // namespace

TaskValues taskValuesOf(Call &call)
{
    TaskValues values;
    for (const TaskField &field : taskFields)
        if (call.request.find(field.name))
            values.emplace_back(field.name, valueOf(call, field));
    return values;
}

} // namespace service
