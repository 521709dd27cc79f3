// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/record_lookup.h"

#include "cli/command_error.h"
#include "cli/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace cli {

using foundation::Failure;
using foundation::Result;
using objectstore::FetchRequest;
using objectstore::ManagedObject;
using objectstore::ObjectContext;
using objectstore::Predicate;
using objectstore::Value;

namespace {

constexpr int shortNameBase = 36;

/// What a list of the kind leaves out, and how it is ordered.
struct Listing {
    std::string_view entity;
    std::string_view condition; ///< empty: all
    std::vector<objectstore::SortDescriptor> order;
};

const Listing &listingOf(const RecordKind &kind)
{
    const objectstore::SortDescriptor byTitle{.key = "title", .localized = true};
    static const std::array<Listing, 5> listings{{
        {"Folders", "markedForDeletion == NO", {{.key = "order"}, byTitle}},
        {"Contexts", "markedForDeletion == NO", {byTitle}},
        {"States", "", {{.key = "stateID"}}},
        {"Tags", "deleted == NO", {byTitle}},
        {"SmartFolder", "", {byTitle}},
    }};
    return *std::ranges::find(listings, kind.entity, &Listing::entity);
}

Predicate conditionOf(const RecordKind &kind)
{
    const Listing &listing = listingOf(kind);
    return listing.condition.empty() ? Predicate() : Predicate::format(listing.condition);
}

Result<std::vector<ManagedObject *>> withTitle(ObjectContext &moc, const RecordKind &kind, std::string_view title)
{
    const std::string format = std::string(kind.title) + " == %@";
    return moc.fetch({.entity = std::string(kind.entity),
        .predicate
        = Predicate::conjunction({conditionOf(kind), Predicate::format(format, {Value(std::string(title))})}),
        .sortDescriptors = {}});
}

std::int64_t keyNamed(std::string_view name)
{
    std::int64_t key = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), key, shortNameBase);
    return error == std::errc() && end == name.data() + name.size() ? key : 0;
}

} // namespace

Result<std::vector<ManagedObject *>> recordsOf(ObjectContext &moc, const RecordKind &kind)
{
    return moc.fetch(
        {.entity = std::string(kind.entity), .predicate = conditionOf(kind), .sortDescriptors = listingOf(kind).order});
}

Result<bool> hasRecordNamed(ObjectContext &moc, const RecordKind &kind, std::string_view title)
{
    return withTitle(moc, kind, title).map([](const auto &found) { return !found.empty(); });
}

Result<ManagedObject *> recordNamed(ObjectContext &moc, const RecordKind &kind, std::string_view title)
{
    const auto found = withTitle(moc, kind, title);
    if (!found)
        return Failure(found.error());
    if (!found->empty())
        return found->front();
    const auto all = recordsOf(moc, kind);
    if (!all)
        return Failure(all.error());
    std::vector<std::string> titles;
    for (const ManagedObject *object : *all)
        titles.emplace_back(object->text(kind.title));
    return notUnderstood(
        "There is no " + std::string(kind.word) + " " + inQuotes(title) + "." + suggestion(title, titles));
}

Result<ManagedObject *> tagNamed(ObjectContext &moc, std::string_view title)
{
    auto found = withTitle(moc, kindOf("Tags"), title);
    if (!found)
        return Failure(std::move(found.error()));
    if (!found->empty())
        return found->back(); // of several, the window shows the last
    ManagedObject &tag = moc.insert("Tags");
    tag.setValue("title", std::string(title));
    return &tag;
}

Result<model::Tasks *> taskNamed(ObjectContext &moc, std::string_view reference)
{
    const objectstore::EntityDescription *entity = model::objectModel().entity("Tasks");
    const bool isUri = reference.find(':') != std::string_view::npos;
    const std::int64_t key = isUri ? 0 : keyNamed(reference);
    ManagedObject *object = isUri ? moc.objectWithURI(reference)
        : key > 0                 ? moc.existingObject({entity, key})
                                  : nullptr;
    auto *task = model::as<model::Tasks>(object);
    if (task && task->isFault()) // nor is it known to be there
        return failed("The task " + inQuotes(reference) + " could not be read from the store.");
    if (!task || task->markedDeleted())
        return notUnderstood(inQuotes(reference) + " names no task of this store.");
    return task;
}

std::string shortName(const ManagedObject &object)
{
    std::array<char, 16> buffer;
    const auto end
        = std::to_chars(buffer.data(), buffer.data() + buffer.size(), object.objectID().key, shortNameBase).ptr;
    return std::string(buffer.data(), end);
}

} // namespace cli
