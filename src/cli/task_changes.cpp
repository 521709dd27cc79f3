// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/task_changes.h"

#include "cli/command_error.h"
#include "cli/date_reader.h"
#include "cli/record_lookup.h"
#include "cli/text.h"

#include <array>
#include <charconv>

namespace cli {

using foundation::Failure;
using foundation::Instant;
using foundation::Result;
using objectstore::ManagedObject;
using objectstore::ObjectContext;
using objectstore::Value;

namespace {

constexpr std::int64_t lowestPriority = -1;
constexpr std::int64_t highestPriority = 3;
constexpr std::int64_t longestReminder = 525'600; // a year of minutes

struct PlaceOption {
    std::string_view option;
    std::string_view relationship;
    std::string_view entity;
};
constexpr std::array<PlaceOption, 3> placeOptions{{
    {"folder", "folders", "Folders"},
    {"context", "contexts", "Contexts"},
    {"state", "states", "States"},
}};

struct DateOption {
    std::string_view option;
    std::string_view attribute;
};
constexpr std::array<DateOption, 2> dateOptions{{{"start", "startDate"}, {"due", "dueDate"}}};

Result<std::int64_t> numberOf(std::string_view option, std::string_view text, std::int64_t lowest, std::int64_t highest)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size() && number >= lowest && number <= highest)
        return number;
    return notUnderstood("--" + std::string(option) + " takes a whole number from " + std::to_string(lowest) + " to "
        + std::to_string(highest) + ", not " + inQuotes(text) + ".");
}

Result<std::optional<Instant>> dateOf(std::string_view option, std::string_view text, Instant now)
{
    if (lowered(text) == "none")
        return std::optional<Instant>();
    auto date = readDate(text, now);
    if (!date)
        return notUnderstood("--" + std::string(option) + ": " + date.error().message);
    return std::optional(*date);
}

Result<ManagedObject *> priorityOf(ObjectContext &moc, std::string_view text)
{
    const auto number = numberOf("priority", text, lowestPriority, highestPriority);
    if (!number)
        return Failure(number.error());
    auto found = moc.fetch({.entity = "Priorities",
        .predicate = objectstore::Predicate::format("priority == %@", {Value(*number)}),
        .sortDescriptors = {}});
    if (!found)
        return Failure(std::move(found.error()));
    if (found->empty())
        return notUnderstood("The store has no priority " + std::string(text) + ".");
    return found->front();
}

} // namespace

Result<TaskChanges> TaskChanges::read(const Arguments &arguments, ObjectContext &moc, Instant now)
{
    TaskChanges changes;
    changes.m_title = arguments.value("title");
    changes.m_notes = arguments.value("note");
    if (arguments.has("star") && arguments.has("no-star"))
        return notUnderstood("--star and --no-star exclude each other.");
    if (arguments.has("star") || arguments.has("no-star"))
        changes.m_star = arguments.has("star");
    for (const auto &[option, attribute] : dateOptions) {
        if (const auto text = arguments.value(option)) {
            auto date = dateOf(option, *text, now);
            if (!date)
                return Failure(std::move(date.error()));
            changes.m_dates.push_back({attribute, *date});
        }
    }
    if (const auto text = arguments.value("reminder")) {
        const auto minutes = numberOf("reminder", *text, 0, longestReminder);
        if (!minutes)
            return Failure(minutes.error());
        changes.m_reminder = *minutes;
    }
    if (const auto text = arguments.value("priority")) {
        auto priority = priorityOf(moc, *text);
        if (!priority)
            return Failure(std::move(priority.error()));
        changes.m_placements.emplace_back("priorities", *priority);
    }
    for (const auto &[option, relationship, entity] : placeOptions) {
        if (const auto title = arguments.value(option)) {
            auto target = recordNamed(moc, kindOf(entity), *title);
            if (!target)
                return Failure(std::move(target.error()));
            changes.m_placements.emplace_back(relationship, *target);
        }
    }
    for (const std::string &title : arguments.values("untag")) {
        auto tag = recordNamed(moc, kindOf("Tags"), title);
        if (!tag)
            return Failure(std::move(tag.error()));
        changes.m_removedTags.push_back(*tag);
    }
    for (const std::string &title : arguments.values("tag")) {
        if (title.empty())
            return notUnderstood("--tag takes a title that is not empty.");
        auto tag = tagNamed(moc, title);
        if (!tag)
            return Failure(std::move(tag.error()));
        changes.m_tags.push_back(*tag);
    }
    return changes;
}

void TaskChanges::applyTo(model::Tasks &task) const
{
    if (m_title)
        task.setTitle(*m_title);
    if (m_notes)
        task.setNotes(*m_notes);
    if (m_star)
        task.setStar(*m_star);
    if (m_reminder)
        task.setReminder(*m_reminder);
    for (const auto &[attribute, date] : m_dates)
        task.setDate(attribute, date);
    for (const auto &[relationship, target] : m_placements)
        task.setRelated(relationship, target);
    if (const model::Priorities *priority = task.priorities())
        task.setValue("priority", priority->priority()); // the attribute is what conditions ask
    for (ManagedObject *tag : m_removedTags)
        task.removeObject("tags", *tag);
    for (ManagedObject *tag : m_tags)
        task.addObject("tags", *tag);
}

std::vector<OptionDescription> taskOptions()
{
    return {
        {"folder", "NAME", "Put it into this folder"},
        {"context", "NAME", "Give it this context"},
        {"state", "NAME", "Give it this state"},
        {"priority", "NUMBER", "-1 (negative), 0 (low), 1 (medium), 2 (high) or 3 (top)"},
        {"star", "", "Mark it with a star"},
        {"tag", "NAME", "Add a tag, which is made where there is none; may be given more than once", true},
        {"start", "DATE", "The date from which it can be done, or none"},
        {"due", "DATE", "The date by which it must be done, or none"},
        {"reminder", "MINUTES", "How long before the due date to remind"},
        {"note", "TEXT", "The text below the title"},
    };
}

std::vector<OptionDescription> editOptions()
{
    std::vector<OptionDescription> options{{"title", "TEXT", "Change the title"}};
    for (const OptionDescription &option : taskOptions())
        options.push_back(option);
    options.push_back({"no-star", "", "Take the star away"});
    options.push_back({"untag", "NAME", "Take a tag away; may be given more than once", true});
    return options;
}

} // namespace cli
