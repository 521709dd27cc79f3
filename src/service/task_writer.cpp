// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/task_writer.h"

#include "service/recurrence.h"
#include "service/server_time.h"
#include "service/task_fields.h"

#include <algorithm>

namespace service {

namespace {

/// Stamps have whole seconds, and clients compare them: a second change within one second must be seen, too.
constexpr const char *movedStamp = "modified = max(?1, modified + 1)";

bool has(const TaskValues &values, std::string_view column)
{
    return std::ranges::find(values, column, &TaskValues::value_type::first) != values.end();
}

/// A task without a due date has no due time either.
void dropTimeWithDate(TaskValues &values)
{
    for (const auto &[date, time] : {std::pair{"duedate", "duetime"}, std::pair{"startdate", "starttime"}}) {
        const auto found = std::ranges::find(values, std::string_view(date), &TaskValues::value_type::first);
        if (found == values.end() || !std::get<std::string>(found->second).empty())
            continue;
        std::erase_if(values, [name = std::string_view(time)](const auto &value) { return value.first == name; });
        values.emplace_back(time, noTime);
    }
}

/// Adds the next occurrence of a task that has just been completed.
void repeatTask(Call &call, std::int64_t id)
{
    Statement task = call.connection.prepare("SELECT startdate, duedate, repeat FROM task WHERE id = ?");
    task.bind(id).run();
    const std::string today = dateOf(call.now);
    const auto next = nextOccurrence({std::string(task.text(0)), std::string(task.text(1))}, task.integer(2), today);
    if (!next)
        return;
    call.connection
        .prepare("INSERT INTO task (user, title, tag, folder, context, goal, parent, added, modified, startdate,"
                 " starttime, duedate, duetime, reminder, repeat, rep_advanced, status, star, priority, length, note)"
                 " SELECT user, title, tag, folder, context, goal, parent, ?1, ?2, ?3, starttime, ?4, duetime,"
                 " reminder, repeat, rep_advanced, status, star, priority, length, note FROM task WHERE id = ?5")
        .bind(today)
        .bind(call.now)
        .bind(next->start)
        .bind(next->due)
        .bind(id)
        .run();
}

} // namespace

std::int64_t insertTask(Call &call)
{
    TaskValues values = taskValuesOf(call);
    if (!has(values, "title"))
        throw Refusal("empty title");
    dropTimeWithDate(values);
    const std::string today = dateOf(call.now);
    if (call.request.flag("completed").value_or(false))
        values.emplace_back("completed", today);
    std::string columns;
    std::string places;
    for (const auto &[column, value] : values) {
        columns.append(", ").append(column);
        places += ", ?";
    }
    Statement insert = call.connection.prepare(
        "INSERT INTO task (user, added, modified" + columns + ") VALUES (?, ?, ?" + places + ")");
    insert.bind(call.session.user).bind(today).bind(call.now);
    for (const auto &[column, value] : values)
        insert.bindValue(value);
    insert.run();
    const std::int64_t id = call.connection.lastId();
    touchAccount(call, "tasks_edited");
    return id;
}

void editTask(Call &call, std::int64_t id)
{
    Statement old = call.connection.prepare("SELECT completed FROM task WHERE id = ? AND user = ?");
    if (!old.bind(id).bind(call.session.user).step())
        throw Refusal("no such task");
    const bool wasCompleted = !old.text(0).empty();
    const bool isCompleted = call.request.flag("completed").value_or(wasCompleted);

    TaskValues values = taskValuesOf(call);
    dropTimeWithDate(values);
    for (auto &[column, value] : values)
        if (column == "parent" && std::get<std::int64_t>(value) == id)
            value = std::int64_t(0);
    if (isCompleted != wasCompleted)
        values.emplace_back("completed", isCompleted ? dateOf(call.now) : std::string());

    std::string sql = "UPDATE task SET ";
    sql += movedStamp;
    for (const auto &[column, value] : values)
        sql.append(", ").append(column).append(" = ?");
    Statement update = call.connection.prepare(sql + " WHERE id = ?");
    update.bind(call.now);
    for (const auto &[column, value] : values)
        update.bindValue(value);
    update.bind(id).run();
    if (isCompleted && !wasCompleted)
        repeatTask(call, id);
    touchAccount(call, "tasks_edited");
}

void deleteTask(Call &call, std::int64_t id)
{
    call.connection.prepare("DELETE FROM task WHERE id = ? AND user = ?").bind(id).bind(call.session.user).run();
    if (call.connection.changes() == 0) {
        Statement known = call.connection.prepare("SELECT 1 FROM deleted_task WHERE id = ? AND user = ?");
        if (!known.bind(id).bind(call.session.user).step())
            throw Refusal("no such task");
        return;
    }
    call.connection.prepare("INSERT INTO deleted_task (id, user, stamp) VALUES (?, ?, ?)")
        .bind(id)
        .bind(call.session.user)
        .bind(call.now)
        .run();
    releaseTasks(call, "parent", id);
    touchAccount(call, "tasks_deleted");
}

void releaseTasks(Call &call, const std::string &column, std::int64_t id)
{
    // The condition on 0 lets SQLite use the index, which leaves the tasks without one out.
    call.connection
        .prepare("UPDATE task SET " + std::string(movedStamp) + ", " + column + " = 0 WHERE " + column + " = ?2 AND "
            + column + " <> 0 AND user = ?3")
        .bind(call.now)
        .bind(id)
        .bind(call.session.user)
        .run();
    if (call.connection.changes() > 0)
        touchAccount(call, "tasks_edited");
}

} // namespace service
