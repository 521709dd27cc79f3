// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/task_filters.h"

#include "service/result.h"
#include "service/server_time.h"

namespace service {

namespace {

enum class FilterKind { Integer, Date, Stamp, Contains, Tag, NotCompleted, Page };

struct Filter {
    std::string_view name;
    FilterKind kind;
    const char *condition = ""; ///< with one place for the value
};

/// "after" a stamp includes the stamp's own second, since a change late in it may have come after the client's list.
constexpr std::array<Filter, 24> filters{{
    {"title", FilterKind::Contains, "task.title LIKE ? ESCAPE '\\'"},
    {"tag", FilterKind::Tag, "',' || replace(tag, ', ', ',') || ',' LIKE ? ESCAPE '\\'"},
    {"folder", FilterKind::Integer, "folder = ?"},
    {"context", FilterKind::Integer, "context = ?"},
    {"goal", FilterKind::Integer, "goal = ?"},
    {"priority", FilterKind::Integer, "priority = ?"},
    {"repeat", FilterKind::Integer, "repeat = ?"},
    {"status", FilterKind::Integer, "status = ?"},
    {"parent", FilterKind::Integer, "parent = ?"},
    {"star", FilterKind::Integer, "star = ?"},
    {"id", FilterKind::Integer, "task.id = ?"},
    {"shorter", FilterKind::Integer, "length < ?"},
    {"longer", FilterKind::Integer, "length > ?"},
    {"before", FilterKind::Date, "duedate <> '' AND duedate < ?"},
    {"after", FilterKind::Date, "duedate > ?"},
    {"startbefore", FilterKind::Date, "startdate <> '' AND startdate < ?"},
    {"startafter", FilterKind::Date, "startdate > ?"},
    {"compbefore", FilterKind::Date, "completed <> '' AND completed < ?"},
    {"compafter", FilterKind::Date, "completed > ?"},
    {"modbefore", FilterKind::Stamp, "modified < ?"},
    {"modafter", FilterKind::Stamp, "modified >= ?"},
    {"notcomp", FilterKind::NotCompleted},
    {"start", FilterKind::Page},
    {"end", FilterKind::Page},
}};

constexpr auto names = [] {
    std::array<std::string_view, filters.size()> result;
    for (std::size_t i = 0; i < filters.size(); ++i)
        result[i] = filters[i].name;
    return result;
}();

Refusal unreadable(const Filter &filter, const char *expected)
{
    return Refusal(std::string(filter.name) + " is not " + expected);
}

std::string likePattern(std::string_view text, std::string_view edge)
{
    std::string pattern = "%";
    pattern += edge;
    for (const char character : text) {
        if (character == '%' || character == '_' || character == '\\')
            pattern += '\\';
        pattern += character;
    }
    return pattern.append(edge).append("%");
}

Value dateOf(const Filter &filter, std::string_view text)
{
    if (text.size() > 10 && readStamp(text))
        text = text.substr(0, 10);
    const auto date = readDate(text);
    if (!date || date->empty())
        throw unreadable(filter, "a date");
    return *date;
}

Value valueOf(const Filter &filter, const Request &request)
{
    const std::string_view text = request.text(filter.name);
    switch (filter.kind) {
    case FilterKind::Contains:
        return likePattern(text, "");
    case FilterKind::Tag:
        return likePattern(text, ",");
    case FilterKind::Date:
        return dateOf(filter, text);
    case FilterKind::Stamp:
        if (const auto stamp = readStamp(text))
            return *stamp;
        throw unreadable(filter, "a date and time");
    default:
        return *request.integer(filter.name);
    }
}

} // namespace

std::span<const std::string_view> taskFilterNames()
{
    return names;
}

TaskFilter taskFilterOf(const Request &request, std::int64_t user)
{
    TaskFilter result{"task.user = ?", {user}};
    for (const Filter &filter : filters) {
        if (filter.kind == FilterKind::Page || !request.find(filter.name))
            continue;
        if (filter.kind == FilterKind::NotCompleted) {
            if (*request.flag(filter.name))
                result.condition += " AND completed = ''";
            continue;
        }
        result.condition.append(" AND (").append(filter.condition).append(")");
        result.values.push_back(valueOf(filter, request));
    }
    return result;
}

} // namespace service
