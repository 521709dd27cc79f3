// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/record_lookup.h"
#include "cli/table.h"
#include "cli/text.h"
#include "cli/workplace.h"

#include <algorithm>
#include <array>

namespace cli {

using foundation::Failure;
using foundation::Result;
using objectstore::ManagedObject;
using objectstore::ObjectContext;

namespace {

using RowOf = std::vector<Cell> (*)(const ManagedObject &);

std::string coordinates(const ManagedObject &context)
{
    return context.boolean("useLocation")
        ? shortest(context.number("latitude")) + "," + shortest(context.number("longitude"))
        : std::string();
}

Done list(Workplace &workplace, const Arguments &arguments, std::string_view entity, Table table, RowOf rowOf)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const RecordKind &kind = kindOf(entity);
    const auto records = recordsOf(**moc, kind);
    if (!records)
        return Failure(records.error());
    if (arguments.has("json")) {
        appendJsonArray(workplace.out, *records, kind);
        return {};
    }
    for (const ManagedObject *record : *records)
        table.add(rowOf(*record));
    workplace.out += table.isEmpty() ? std::string() : table.text(workplace.terminal());
    return {};
}

/// What an action works on.
struct Change {
    ObjectContext &moc;
    const RecordKind &kind;
    const std::string &name;
    const std::string &newName;
    ManagedObject *record; ///< null for "add"
};

Done checkNewTitle(const Change &change, const std::string &title)
{
    if (title.empty())
        return notUnderstood("The title of a " + std::string(change.kind.word) + " must not be empty.");
    const auto taken = hasRecordNamed(change.moc, change.kind, title);
    if (!taken)
        return Failure(taken.error());
    return *taken
        ? Done(notUnderstood("There is a " + std::string(change.kind.word) + " " + inQuotes(title) + " already."))
        : Done();
}

Done add(const Change &change)
{
    if (auto fits = checkNewTitle(change, change.name); !fits)
        return fits;
    ManagedObject &record = change.moc.insert(change.kind.entity);
    record.setValue("title", change.name);
    record.setDate("modifiedDate", change.moc.store().clock().now());
    return {};
}

Done rename(const Change &change)
{
    if (auto fits = checkNewTitle(change, change.newName); !fits)
        return fits;
    change.record->setValue("title", change.newName);
    return {};
}

/// The record waits, out of sight, until a synchronisation has deleted it at the service; its tasks stay.
Done remove(const Change &change)
{
    if (change.kind.entity == "Folders") {
        auto inbox = recordNamed(change.moc, change.kind, "Inbox");
        if (!inbox)
            return Failure(std::move(inbox.error()));
        for (ManagedObject *task : std::vector(change.record->objects("tasks")))
            task->setRelated("folders", *inbox);
    } else {
        change.record->setObjects("tasks", {});
    }
    change.record->setValue("markedForDeletion", true);
    return {};
}

Done archive(const Change &change)
{
    change.record->setValue("archived", true);
    return {};
}

Done unarchive(const Change &change)
{
    change.record->setValue("archived", false);
    return {};
}

struct Action {
    std::string_view name;
    bool needsRecord;
    bool takesNewName;
    Done (*run)(const Change &);
};

constexpr std::array<Action, 5> actions{{
    {"add", false, false, add},
    {"rename", true, true, rename},
    {"delete", true, false, remove},
    {"archive", true, false, archive},
    {"unarchive", true, false, unarchive},
}};

/// `defaultTitle` is the record that everything counts on, which stays as it is.
Done change(Workplace &workplace, const Arguments &arguments, std::span<const Action> known, std::string_view entity,
    std::string_view defaultTitle)
{
    const RecordKind &kind = kindOf(entity);
    const std::string &wanted = arguments.operands[0];
    const auto action = std::ranges::find(known, wanted, &Action::name);
    if (action == known.end()) {
        std::vector<std::string> names;
        for (const Action &candidate : known)
            names.emplace_back(candidate.name);
        return notUnderstood("A " + std::string(kind.word) + " cannot be changed by " + inQuotes(wanted) + "."
            + suggestion(wanted, names));
    }
    if (action->takesNewName != arguments.operand(2).has_value())
        return notUnderstood(action->takesNewName ? "The new name is missing." : inQuotes(wanted) + " takes one name.");
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const std::string &name = arguments.operands[1];
    const std::string newName = arguments.operand(2).value_or("");
    Change asked{**moc, kind, name, newName, nullptr};
    if (action->needsRecord) {
        auto record = recordNamed(**moc, kind, name);
        if (!record)
            return Failure(std::move(record.error()));
        if (name == defaultTitle)
            return notUnderstood("The " + std::string(kind.word) + " " + inQuotes(name) + " stays as it is.");
        asked.record = *record;
    }
    if (auto done = action->run(asked); !done)
        return done;
    return workplace.save();
}

} // namespace

Done listFolders(Workplace &workplace, const Arguments &arguments)
{
    return list(workplace, arguments, "Folders", Table({{"TITLE", true}, {"ARCHIVED"}, {"PRIVATE"}, {"NOTES", true}}),
        [](const ManagedObject &folder) {
            return std::vector<Cell>{{std::string(folder.text("title"))},
                {folder.boolean("archived") ? "archived" : ""}, {folder.boolean("private") ? "private" : ""},
                {std::string(folder.text("Notes")), Style::Dim}};
        });
}

Done listContexts(Workplace &workplace, const Arguments &arguments)
{
    return list(workplace, arguments, "Contexts", Table({{"TITLE", true}, {"LOCATION"}, {"NOTES", true}}),
        [](const ManagedObject &context) {
            return std::vector<Cell>{{std::string(context.text("title"))}, {coordinates(context)},
                {std::string(context.text("notes")), Style::Dim}};
        });
}

Done listTags(Workplace &workplace, const Arguments &arguments)
{
    return list(workplace, arguments, "Tags", Table({{"TITLE", true}}),
        [](const ManagedObject &tag) { return std::vector<Cell>{{std::string(tag.text("title"))}}; });
}

Done listStates(Workplace &workplace, const Arguments &arguments)
{
    return list(workplace, arguments, "States", Table({{"STATE", true}}), [](const ManagedObject &state) {
        const bool isNone = state.text("state").empty();
        return std::vector<Cell>{
            {isNone ? "(none)" : std::string(state.text("state")), isNone ? Style::Dim : Style::Plain}};
    });
}

Done changeFolder(Workplace &workplace, const Arguments &arguments)
{
    return change(workplace, arguments, actions, "Folders", "Inbox");
}

Done changeContext(Workplace &workplace, const Arguments &arguments)
{
    return change(workplace, arguments, std::span(actions).first(3), "Contexts", "None");
}

} // namespace cli
