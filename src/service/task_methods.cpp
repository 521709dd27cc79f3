// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/method.h"
#include "service/task_fields.h"
#include "service/task_filters.h"
#include "service/task_writer.h"
#include "service/text.h"

#include <algorithm>

namespace service {

namespace {

constexpr std::array<std::string_view, 1> onlyId{"id"};
constexpr std::array<std::string_view, 1> deletedFilter{"after"};
constexpr std::size_t longestMark = 200;

/// How an element of a task is written. Contexts carry their name, their id stands beside it.
enum class Form { Integer, Text, Plain, Stamp, Time, Context, Goal, Due, Timer };

struct TaskElement {
    std::string_view name;
    Form form;
    const char *column;
};

constexpr std::array<TaskElement, 25> elements{{
    {"id", Form::Integer, "task.id"}, {"parent", Form::Integer, "task.parent"},
    {"children", Form::Integer,
        "(SELECT count(*) FROM task AS child WHERE child.parent = task.id AND child.parent <> 0)"},
    {"title", Form::Text, "task.title"}, {"tag", Form::Text, "task.tag"}, {"folder", Form::Integer, "task.folder"},
    {"context", Form::Context, "coalesce(context.title, '')"}, {"goal", Form::Goal, "task.goal"},
    {"added", Form::Plain, "task.added"}, {"modified", Form::Stamp, "task.modified"},
    {"startdate", Form::Plain, "task.startdate"}, {"starttime", Form::Time, "task.starttime"},
    {"duedate", Form::Due, "task.duedate"}, {"duetime", Form::Time, "task.duetime"},
    {"reminder", Form::Integer, "task.reminder"}, {"completed", Form::Plain, "task.completed"},
    {"repeat", Form::Integer, "task.repeat"}, {"rep_advanced", Form::Text, "task.rep_advanced"},
    {"status", Form::Integer, "task.status"}, {"star", Form::Integer, "task.star"},
    {"priority", Form::Integer, "task.priority"}, {"length", Form::Integer, "task.length"},
    {"timer", Form::Timer, "task.timer"}, {"note", Form::Text, "task.note"},
    {"", Form::Integer, "task.context"}, // read for the context's attribute
}};
constexpr int contextColumn = 24;
constexpr std::size_t writtenElements = 24;

std::string selectList()
{
    std::string list;
    for (const TaskElement &element : elements)
        list.append(list.empty() ? "" : ", ").append(element.column);
    return list;
}

void appendAttributed(std::string &xml, std::string_view name, std::string_view attribute, std::int64_t number)
{
    xml.append("<").append(name).append(" ").append(attribute).append("=\"");
    appendInteger(xml, number);
    xml += "\">";
}

void appendElement(std::string &xml, const TaskElement &element, const Statement &task, int column)
{
    const auto open = [&] { xml.append("<").append(element.name).append(">"); };
    switch (element.form) {
    case Form::Integer:
        open(), appendInteger(xml, task.integer(column));
        break;
    case Form::Text:
        open(), appendText(xml, task.text(column));
        break;
    case Form::Plain:
        open(), xml.append(task.text(column));
        break;
    case Form::Stamp:
        open(), xml.append(stampOf(task.integer(column)));
        break;
    case Form::Time:
        open(), appendTime(xml, task.integer(column));
        break;
    case Form::Context:
        appendAttributed(xml, element.name, "id", task.integer(contextColumn));
        appendText(xml, task.text(column));
        break;
    case Form::Goal:
        appendAttributed(xml, element.name, "id", task.integer(column));
        break;
    case Form::Due:
        xml.append("<duedate modifier=\"\">").append(task.text(column));
        break;
    case Form::Timer:
        appendAttributed(xml, element.name, "onfor", 0);
        appendInteger(xml, task.integer(column));
        break;
    }
    xml.append("</").append(element.name).append(">");
}

std::int64_t countOf(Call &call, const TaskFilter &filter)
{
    Statement count = call.connection.prepare("SELECT count(*) FROM task WHERE " + filter.condition);
    for (const Value &value : filter.values)
        count.bindValue(value);
    count.run();
    return count.integer(0);
}

std::string getTasks(Call &call)
{
    constexpr std::size_t usualBytes = 600; // of one task
    const TaskFilter filter = taskFilterOf(call.request, call.session.user);
    const std::int64_t total = countOf(call, filter);
    const std::int64_t start = std::clamp<std::int64_t>(call.request.integer("start").value_or(0), 0, total);
    const std::int64_t end = std::clamp(call.request.integer("end").value_or(total), start, total);

    std::string xml;
    xml.reserve(256 + static_cast<std::size_t>(end - start) * usualBytes);
    xml += "<tasks";
    for (const auto &[name, number] : std::initializer_list<std::pair<const char *, std::int64_t>>{
             {" num=\"", end - start}, {" total=\"", total}, {" start=\"", start}, {" end=\"", end}}) {
        xml += name;
        appendInteger(xml, number);
        xml += '"';
    }
    xml += '>';

    static const std::string columns = selectList();
    Statement tasks = call.connection.prepare("SELECT " + columns
        + " FROM task LEFT JOIN context ON context.id = task.context WHERE " + filter.condition
        + " ORDER BY task.id LIMIT ? OFFSET ?");
    for (const Value &value : filter.values)
        tasks.bindValue(value);
    tasks.bind(end - start).bind(start);
    while (tasks.step()) {
        xml += "\n<task>";
        for (std::size_t i = 0; i < writtenElements; ++i)
            appendElement(xml, elements[i], tasks, static_cast<int>(i));
        xml += "</task>";
    }
    return xml += "\n</tasks>";
}

/// A client that got no answer sends its add again with the same mark, and gets the task that came of the first, unless
/// that was deleted since: rather one that comes back than one that is lost.
std::string addTask(Call &call)
{
    const std::string mark(call.request.text("mark"));
    if (mark.size() > longestMark)
        throw Refusal("the mark is too long");
    if (mark.empty())
        return added(insertTask(call));
    Statement known = call.connection.prepare("SELECT task.id FROM marked_add JOIN task ON task.id = marked_add.task"
                                              " WHERE marked_add.user = ? AND mark = ?");
    if (known.bind(call.session.user).bind(mark).step())
        return added(known.integer(0));
    const std::int64_t id = insertTask(call);
    call.connection.prepare("INSERT OR REPLACE INTO marked_add (user, mark, task) VALUES (?, ?, ?)")
        .bind(call.session.user)
        .bind(mark)
        .bind(id)
        .run();
    return added(id);
}

std::string editTask(Call &call)
{
    editTask(call, call.request.id());
    return success();
}

std::string deleteTask(Call &call)
{
    deleteTask(call, call.request.id());
    return success();
}

std::string getDeleted(Call &call)
{
    std::int64_t after = 0;
    if (const std::string *text = call.request.find("after")) {
        const auto stamp = readStamp(*text);
        if (!stamp)
            throw Refusal("after is not a date and time");
        after = *stamp;
    }
    Statement deleted
        = call.connection.prepare("SELECT id, stamp FROM deleted_task WHERE user = ? AND stamp >= ? ORDER BY id");
    deleted.bind(call.session.user).bind(after);
    std::string xml = "<deleted>";
    while (deleted.step())
        xml.append("<task>")
            .append(element("id", deleted.integer(0)))
            .append(element("stamp", stampOf(deleted.integer(1))))
            .append("</task>");
    return xml += "</deleted>";
}

/// `addTask` takes an id as well, which clients send although there is none yet; it is not looked at.
constexpr auto taskParameters = [] {
    std::array<std::string_view, taskFields.size() + 2> names{"id", "completed"};
    for (std::size_t i = 0; i < taskFields.size(); ++i)
        names[i + 2] = taskFields[i].name;
    return names;
}();
constexpr auto addParameters = [] {
    std::array<std::string_view, taskParameters.size() + 1> names{"mark"};
    std::ranges::copy(taskParameters, names.begin() + 1);
    return names;
}();

} // namespace

std::span<const Method> taskMethods()
{
    static const std::array<Method, 5> table{{
        {"getTasks", Access::Read, taskFilterNames(), getTasks},
        {"addTask", Access::Write, addParameters, addTask},
        {"editTask", Access::Write, taskParameters, editTask},
        {"deleteTask", Access::Write, onlyId, deleteTask},
        {"getDeleted", Access::Read, deletedFilter, getDeleted},
    }};
    return table;
}

} // namespace service
