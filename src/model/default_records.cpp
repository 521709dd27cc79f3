// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/default_records.h"

#include "foundation/log.h"
#include "model/data_utilities.h"
#include "objectstore/object_context.h"

#include <array>

namespace model {

using objectstore::Predicate;
using objectstore::Value;

namespace {

struct DefaultState {
    std::string_view state;
    std::int64_t stateID;
};

/// As the service numbers them.
constexpr std::array<DefaultState, 11> defaultStates{{
    {"Next Action", 1},
    {"Active", 2},
    {"Planning", 3},
    {"Delegated", 4},
    {"Waiting", 5},
    {"Hold", 6},
    {"Postponed", 7},
    {"Someday", 8},
    {"Cancelled", 9},
    {"Reference", 10},
    {"", 0},
}};

constexpr std::int64_t lowestPriority = -1;
constexpr std::int64_t highestPriority = 5;

/// A record with a name of its own, which takes none of the numbers of those that the user makes.
template <typename Record> Record &insertUnnumbered(ObjectContext &moc)
{
    return static_cast<Record &>(moc.insert(Record::entityName, objectstore::Awakening::None));
}

void save(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    moc.processPendingChanges();
    if (const auto saved = moc.save(); !saved) {
        foundation::logLine(
            "The default records were not saved: " + saved.error().message + " " + saved.error().detail);
        presenter.presentError(saved.error());
    }
}

} // namespace

void initializeDataStore(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    initFolderEntity(moc, presenter);
    initContextEntity(moc, presenter);
    initStateEntity(moc, presenter);
    initPriorityEntity(moc, presenter);
    save(moc, presenter);
}

// In each of these a fetch that failed has been shown and inserts nothing: what could not be read may well be there.

void initFolderEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    static const Predicate predicate = Predicate::format("title == %@", {Value("Inbox")});
    const auto found = DataUtilities(moc, presenter).fetch("Folders", predicate);
    if (!found || !found->empty())
        return;
    auto &inbox = insertUnnumbered<Folders>(moc);
    inbox.setFolderID(0);
    inbox.setTitle("Inbox");
    save(moc, presenter);
}

void initContextEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    static const Predicate predicate = Predicate::format("title == %@", {Value("None")});
    const auto found = DataUtilities(moc, presenter).fetch("Contexts", predicate);
    if (!found)
        return;
    if (!found->empty()) {
        found->back()->setValue("contextID", std::int64_t{0});
        return;
    }
    auto &none = insertUnnumbered<Contexts>(moc);
    none.setTitle("None");
    none.setDate("creationDate", moc.store().clock().now());
    save(moc, presenter);
}

void initStateEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    static const Predicate withoutTitle = Predicate::format("state == %@", {Value("")});
    const DataUtilities utilities(moc, presenter);
    if (const auto states = utilities.fetch("States", {}); states && states->empty()) {
        for (const auto &[title, stateID] : defaultStates) {
            auto &state = insert<States>(moc);
            state.setState(std::string(title));
            state.setStateID(stateID);
        }
    }
    const auto found = utilities.fetch("States", withoutTitle);
    if (!found || !found->empty())
        return;
    insert<States>(moc).setState("");
    save(moc, presenter);
}

void initPriorityEntity(ObjectContext &moc, foundation::ErrorPresenter &presenter)
{
    static const Predicate predicate = Predicate::format("priority == $PRIORITY");
    const DataUtilities utilities(moc, presenter);
    for (std::int64_t priority = lowestPriority; priority <= highestPriority; ++priority) {
        const auto found = utilities.fetch("Priorities", predicate.withVariables({{"PRIORITY", Value(priority)}}));
        if (found && found->empty())
            insert<Priorities>(moc).setPriority(priority);
    }
}

} // namespace model
