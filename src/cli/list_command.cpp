// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/record_lookup.h"
#include "cli/task_view.h"
#include "cli/text.h"
#include "cli/workplace.h"
#include "model/settings_defaults.h"
#include "model/task_queries.h"

#include <algorithm>
#include <array>

namespace cli {

using foundation::Failure;
using foundation::Result;
using objectstore::FetchRequest;
using objectstore::ManagedObject;
using objectstore::ObjectContext;
using objectstore::Predicate;
using objectstore::SortDescriptor;

namespace {

/// What a list is made for: the store, the moment, and whether completed tasks are wanted.
struct Wish {
    ObjectContext &moc;
    foundation::Instant now;
    model::ListFilter filter;
    std::string name;
};

Result<FetchRequest> folderRequest(const Wish &wish)
{
    return recordNamed(wish.moc, kindOf("Folders"), wish.name).map([&wish](ManagedObject *folder) {
        return model::folderTasks(*model::as<model::Folders>(folder), wish.filter);
    });
}

Result<FetchRequest> contextRequest(const Wish &wish)
{
    return recordNamed(wish.moc, kindOf("Contexts"), wish.name).map([&wish](ManagedObject *context) {
        return model::contextTasks(*model::as<model::Contexts>(context), wish.filter);
    });
}

struct ListKind {
    std::string_view name;
    bool takesName;
    Result<FetchRequest> (*request)(const Wish &);
};

const std::array<ListKind, 6> listKinds{{
    {"today", false, [](const Wish &wish) { return Result<FetchRequest>(model::todayTasks(wish.now, wish.filter)); }},
    {"inbox", false,
        [](const Wish &wish) {
            return folderRequest({wish.moc, wish.now, wish.filter, "Inbox"});
        }},
    {"trash", false, [](const Wish &) { return Result<FetchRequest>(model::trashTasks()); }},
    {"all", false, [](const Wish &) { return Result<FetchRequest>(model::allTasks({.showCompleted = true})); }},
    {"folder", true, folderRequest},
    {"context", true, contextRequest},
}};

Result<FetchRequest> listRequest(Workplace &workplace, ObjectContext &moc, const Arguments &arguments)
{
    const std::string what = arguments.operand(0).value_or("all");
    const auto kind = std::ranges::find(listKinds, what, &ListKind::name);
    if (kind == listKinds.end()) {
        std::vector<std::string> names;
        for (const ListKind &known : listKinds)
            names.emplace_back(known.name);
        return notUnderstood("There is no list " + inQuotes(what)
            + ": write today, inbox, trash, all, folder or context." + suggestion(what, names));
    }
    if (kind->takesName != arguments.operand(1).has_value())
        return notUnderstood(kind->takesName ? "The name of the " + what + " is missing."
                                             : "The list " + inQuotes(what) + " takes no name.");
    const bool showCompleted
        = what != "all" && what != "trash" && workplace.settings().boolean(model::keys::ShowCompletedTasks);
    return kind->request(
        {moc, workplace.clock().now(), {.showCompleted = showCompleted}, arguments.operand(1).value_or("")});
}

/// The text on a line of its own with a caret under a place in it.
std::string pointedAt(std::string_view text, std::size_t position)
{
    position = std::min(position, text.size());
    return "\n  " + printable(text) + "\n  " + std::string(displayWidth(printable(text.substr(0, position))), ' ')
        + "^";
}

Result<Predicate> condition(const std::string &text, const objectstore::EntityDescription &entity)
{
    const auto predicate = Predicate::parse(text);
    if (!predicate) {
        const std::string &message = predicate.error().message;
        return notUnderstood("The condition is not understood: " + message + (message.ends_with('.') ? "" : ".")
            + pointedAt(text, predicate.error().position));
    }
    if (const auto problem = predicate->problemWith(entity)) {
        // the sentence quotes the name that the entity does not have
        const std::size_t begin = problem->find('"');
        const std::size_t end = begin == std::string::npos ? begin : problem->find('"', begin + 1);
        const std::size_t place
            = end == std::string::npos ? end : text.find(problem->substr(begin + 1, end - begin - 1));
        return notUnderstood(*problem + (place == std::string::npos ? std::string() : pointedAt(text, place)));
    }
    return *predicate;
}

struct SortKey {
    std::string_view name;
    std::string_view path;
};

/// Where what people mean lies elsewhere than under its name.
constexpr std::array<SortKey, 4> relatedKeys{{
    {"folder", "folders.title"},
    {"context", "contexts.title"},
    {"state", "states.stateID"},
    {"priority", "priorities.priority"},
}};

Result<SortDescriptor> sortBy(std::string_view text, const objectstore::EntityDescription &entity)
{
    SortDescriptor descriptor{.ascending = !text.starts_with('-')};
    const std::string_view name = text.substr(descriptor.ascending ? 0 : 1);
    if (const auto related = std::ranges::find(relatedKeys, name, &SortKey::name); related != relatedKeys.end()) {
        descriptor.key = related->path;
        descriptor.localized = related->path.ends_with(".title");
        return descriptor;
    }
    const objectstore::Property *property = entity.property(name);
    if (!property || !property->isAttribute()) {
        std::vector<std::string> names;
        for (const FieldDescription &field : kindOf("Tasks").fields)
            names.emplace_back(field.name);
        return notUnderstood("Tasks have no " + inQuotes(name) + " to sort by." + suggestion(name, names));
    }
    descriptor.key = name;
    descriptor.localized = property->type == objectstore::AttributeType::Text;
    return descriptor;
}

/// Tasks without the date come last, whichever way the others go.
void putUndatedLast(std::vector<ManagedObject *> &tasks, const SortDescriptor &descriptor)
{
    const objectstore::Property *property = tasks.empty() ? nullptr : tasks.front()->entity().property(descriptor.key);
    if (property && property->isAttribute() && property->type == objectstore::AttributeType::Date)
        std::stable_partition(tasks.begin(), tasks.end(),
            [&](const ManagedObject *task) { return !objectstore::isNil(task->value(*property)); });
}

} // namespace

Done listTasks(Workplace &workplace, const Arguments &arguments)
{
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    auto request = listRequest(workplace, **moc, arguments);
    if (!request)
        return Failure(std::move(request.error()));
    const objectstore::EntityDescription &entity = *model::objectModel().entity("Tasks");
    if (const auto where = arguments.value("where")) {
        auto asked = condition(*where, entity);
        if (!asked)
            return Failure(std::move(asked.error()));
        request->predicate = Predicate::conjunction({request->predicate, *asked});
    }
    const auto order = sortBy(arguments.value("sort").value_or("title"), entity);
    if (!order)
        return Failure(order.error());
    request->sortDescriptors = {*order};
    if (order->key != "title")
        request->sortDescriptors.push_back({.key = "title", .localized = true});
    auto tasks = (*moc)->fetch(*request);
    if (!tasks)
        return Failure(std::move(tasks.error()));
    putUndatedLast(*tasks, *order);
    if (arguments.has("json"))
        appendJsonArray(workplace.out, *tasks, kindOf("Tasks"));
    else
        workplace.out += taskTable(*tasks, workplace.clock().now(), workplace.terminal());
    return {};
}

} // namespace cli
