// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_queries.h"

#include <array>

namespace model {

using objectstore::Argument;
using objectstore::FetchRequest;
using objectstore::Predicate;
using objectstore::Value;

namespace {

/// The forms of one list's predicate: completed tasks too or not, and everywhere or only at the current location.
struct PredicateForms {
    std::string_view completedHere;
    std::string_view completedAnywhere;
    std::string_view openHere;
    std::string_view openAnywhere;

    [[nodiscard]] constexpr std::string_view at(ListFilter filter) const
    {
        if (filter.showCompleted)
            return filter.byLocation ? completedHere : completedAnywhere;
        return filter.byLocation ? openHere : openAnywhere;
    }
};

constexpr PredicateForms todayForms{
    "(startDate <= %@ || dueDate <= %@) && (deleteOnSync==0) && (isCurrentLocation==YES)"
    " && ((complete==YES) || (complete==NO))",
    "(startDate <= %@ || dueDate <= %@) && (deleteOnSync==0) && ((complete==YES) || (complete==NO))",
    "(startDate <= %@ || dueDate <= %@) && (complete==NO) && (deleteOnSync==0) && (isCurrentLocation==YES)",
    "(startDate <= %@ || dueDate <= %@) && (complete==NO) && (deleteOnSync==0)",
};

constexpr PredicateForms folderForms{
    "folders==%@ && (deleteOnSync==NO) && (isCurrentLocation==YES) && ((complete==YES) || (complete==NO))",
    "folders==%@ && (deleteOnSync==NO) && ((complete==YES) || (complete==NO))",
    "folders==%@ && (complete==NO) && (deleteOnSync==NO) && (isCurrentLocation==YES)",
    "folders==%@ && (complete==NO) && (deleteOnSync==NO)",
};

constexpr PredicateForms contextForms{
    "contexts==%@ && (deleteOnSync==NO) && (isCurrentLocation==YES) && ((complete==YES) || (complete==NO))",
    "contexts==%@ && (deleteOnSync==NO) && ((complete==YES) || (complete==NO))",
    "contexts==%@ && (complete==NO) && (deleteOnSync==NO) && (isCurrentLocation==YES)",
    "contexts==%@ && (complete==NO) && (deleteOnSync==NO)",
};

constexpr PredicateForms allForms{
    "(deleteOnSync==NO) && (isCurrentLocation==YES)",
    "deleteOnSync==NO",
    "(complete==NO) && (deleteOnSync==NO) && (isCurrentLocation==YES)",
    "(complete==NO) && (deleteOnSync==NO)",
};

FetchRequest tasksMatching(std::string_view format, std::initializer_list<Argument> arguments = {})
{
    return {.entity = "Tasks", .predicate = Predicate::format(format, arguments), .sortDescriptors = {}};
}

} // namespace

FetchRequest todayTasks(Instant now, ListFilter filter)
{
    return tasksMatching(todayForms.at(filter), {Value(now), Value(now)});
}

FetchRequest folderTasks(const Folders &folder, ListFilter filter)
{
    return tasksMatching(folderForms.at(filter), {Value(folder.objectID())});
}

FetchRequest contextTasks(const Contexts &context, ListFilter filter)
{
    return tasksMatching(contextForms.at(filter), {Value(context.objectID())});
}

FetchRequest trashTasks()
{
    return tasksMatching("(deleteOnSync==1) && (markedDeleted==0)");
}

FetchRequest locationTasks()
{
    return tasksMatching("isCurrentLocation==YES");
}

FetchRequest allTasks(ListFilter filter)
{
    return tasksMatching(allForms.at(filter));
}

FetchRequest smartFolderTasks(const Predicate &predicate, std::optional<bool> complete)
{
    std::vector<Predicate> parts{Predicate::format("deleteOnSync==0")};
    if (complete)
        parts.push_back(Predicate::format("complete==%i", {Value(std::int64_t{*complete})}));
    parts.push_back(predicate);
    return {.entity = "Tasks", .predicate = Predicate::conjunction(std::move(parts)), .sortDescriptors = {}};
}

FetchRequest everyTask()
{
    return {.entity = "Tasks", .predicate = {}, .sortDescriptors = {}};
}

FetchRequest todayBadgeTasks(Instant now, bool showCompleted)
{
    return tasksMatching(showCompleted ? "(startDate <= %@ || dueDate <= %@) && (deleteOnSync==NO)"
                                         " && ((complete==YES) || (complete==NO))"
                                       : "(startDate <= %@ || dueDate <= %@) && (complete==NO) && (deleteOnSync==NO)",
        {Value(now), Value(now)});
}

FetchRequest locationBadgeTasks(bool showCompleted)
{
    return tasksMatching(showCompleted ? "(isCurrentLocation==YES) && (deleteOnSync=0)"
                                       : "(isCurrentLocation==YES) && (complete==0) && (deleteOnSync==0)");
}

FetchRequest tasksToRemindOf(Instant now)
{
    return tasksMatching("reminder != 0 AND (dueDate - reminder * 60 <= %@ AND deleteOnSync == NO)", {Value(now)});
}

FetchRequest deletedTasks()
{
    return tasksMatching("deleteOnSync == YES");
}

FetchRequest tasksContaining(std::string_view text)
{
    if (text.empty())
        return everyTask();
    const Value wanted = std::string(text);
    return tasksMatching("(title contains [c] %@) OR (notes contains [c] %@)", {wanted, wanted});
}

} // namespace model
