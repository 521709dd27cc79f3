// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/task_view.h"

#include "cli/record_lookup.h"
#include "cli/text.h"
#include "objectstore/object_context.h"

#include <algorithm>

namespace cli {

using foundation::Instant;
using model::Tasks;

namespace {

template <class Related> std::string titleOf(const Related *related, std::string_view unlessTitled)
{
    return related && related->title() != unlessTitled ? std::string(related->title()) : std::string();
}

std::string priorityOf(const Tasks &task)
{
    const std::int64_t priority = task.priorities() ? task.priorities()->priority() : 0;
    return priority == 0 ? std::string() : std::to_string(priority);
}

std::string joinedTags(const Tasks &task)
{
    std::vector<std::string> titles;
    for (const objectstore::ManagedObject *tag : task.tags())
        titles.emplace_back(tag->text("title"));
    std::ranges::sort(titles);
    std::string joined;
    for (const std::string &title : titles)
        joined += (joined.empty() ? "" : ", ") + title;
    return joined;
}

std::vector<Cell> tableRow(const Tasks &task, Instant now)
{
    const bool isOverdue = !task.complete() && task.dueDate() && *task.dueDate() < foundation::startOfLocalDay(now);
    return {
        {shortName(task), Style::Dim},
        {task.complete() ? "✓" : "", Style::Dim},
        {task.star() ? "★" : "", Style::Yellow},
        {priorityOf(task), Style::Plain},
        {std::string(task.title()), task.complete() ? Style::Dim : Style::Plain},
        {titleOf(task.folders(), "Inbox"), Style::Plain},
        {titleOf(task.contexts(), "None"), Style::Plain},
        {task.states() ? std::string(task.states()->state()) : std::string(), Style::Plain},
        {shortDate(task.startDate()), Style::Plain},
        {shortDate(task.dueDate()), isOverdue ? Style::Red : Style::Plain},
    };
}

} // namespace

std::string shortDate(std::optional<Instant> date)
{
    if (!date)
        return {};
    const std::string iso = foundation::toIso8601(*date);
    const std::string day = iso.substr(0, 10);
    const std::string time = iso.substr(11, 5);
    return time == "00:00" ? day : day + " " + time;
}

std::string taskTable(std::span<objectstore::ManagedObject *const> tasks, Instant now, const Terminal &terminal)
{
    Table table({{"ID"}, {""}, {""}, {"P"}, {.name = "TITLE", .isFlexible = true},
        {.name = "FOLDER", .isFlexible = true}, {.name = "CONTEXT", .isFlexible = true, .isExpendable = true},
        {.name = "STATE", .isExpendable = true}, {.name = "START", .isExpendable = true}, {.name = "DUE"}});
    for (const objectstore::ManagedObject *task : tasks)
        table.add(tableRow(*model::as<Tasks>(task), now));
    return table.isEmpty() ? std::string() : table.text(terminal);
}

std::string taskSheet(const Tasks &task, const Terminal &terminal)
{
    const auto minutes
        = [](std::int64_t number) { return number == 0 ? std::string() : std::to_string(number) + " min"; };
    const std::vector<std::pair<std::string_view, std::string>> lines{
        {"Title", std::string(task.title())},
        {"Folder", titleOf(task.folders(), "")},
        {"Context", titleOf(task.contexts(), "")},
        {"State", task.states() ? std::string(task.states()->state()) : std::string()},
        {"Priority", priorityOf(task)},
        {"Star", task.star() ? "yes" : ""},
        {"Tags", joinedTags(task)},
        {"Start", shortDate(task.startDate())},
        {"Due", shortDate(task.dueDate())},
        {"Reminder", minutes(task.reminder())},
        {"Length", minutes(task.length())},
        {"Completed", task.complete() ? (task.completedDate() ? shortDate(task.completedDate()) : "yes") : ""},
        {"In the Trash", task.deleteOnSync() ? "yes" : ""},
        {"Created", shortDate(task.creationDate())},
        {"Modified", shortDate(task.modifiedDate())},
        {"URI", task.context().uri(task)},
    };
    std::string sheet;
    for (const auto &[name, value] : lines) {
        if (!value.empty())
            sheet += styled(std::string(name) + std::string(14 - name.size(), ' '), Style::Dim, terminal)
                + printable(value) + "\n";
    }
    if (!task.notes().empty())
        sheet += "\n" + printableLines(task.notes()) + "\n";
    return sheet;
}

} // namespace cli
