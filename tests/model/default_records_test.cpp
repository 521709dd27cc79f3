// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/default_records.h"
#include "support/test_store.h"

#include <gmock/gmock.h>

using namespace support;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

std::string states(TestStore &store)
{
    std::string states;
    for (const model::ManagedObject *state : store.all("States"))
        states.append(state->text("state")).append(" ").append(std::to_string(state->integer("stateID"))).append(", ");
    return states;
}

std::vector<std::int64_t> priorities(TestStore &store)
{
    std::vector<std::int64_t> priorities;
    for (const model::ManagedObject *priority : store.all("Priorities"))
        priorities.push_back(priority->integer("priority"));
    return priorities;
}

} // namespace

TEST(DefaultRecords, firstLaunchMakesWhatTheProgramCountsOn)
{
    TestStore store;
    const auto folders = store.all("Folders");
    EXPECT_THAT(titles(folders), ElementsAre("Inbox"));
    EXPECT_FALSE(objectstore::isNil(folders.front()->value("folderID")));
    EXPECT_EQ(folders.front()->integer("folderID"), 0);

    const auto contexts = store.all("Contexts");
    EXPECT_THAT(titles(contexts), ElementsAre("None"));
    EXPECT_TRUE(objectstore::isNil(contexts.front()->value("contextID"))) << "it gets its id at the second launch";

    EXPECT_EQ(states(store),
        "Next Action 1, Active 2, Planning 3, Delegated 4, Waiting 5, Hold 6, Postponed 7, Someday 8, Cancelled 9, "
        "Reference 10,  0, ");
    EXPECT_THAT(priorities(store), ElementsAre(-1, 0, 1, 2, 3, 4, 5));
    EXPECT_THAT(store.all("Group"), IsEmpty());
    EXPECT_FALSE(store.moc().hasChanges());
    EXPECT_THAT(store.errors.errors, IsEmpty());
}

TEST(DefaultRecords, secondLaunchOnlyGivesNoneItsIdAndTheNextRepairsIt)
{
    TestStore store;
    for (int launch = 2; launch <= 3; ++launch) {
        store.relaunch();
        EXPECT_THAT(store.all("Folders"), SizeIs(1));
        EXPECT_THAT(store.all("States"), SizeIs(11));
        EXPECT_THAT(store.all("Priorities"), SizeIs(7));
        EXPECT_THAT(store.all("Contexts"), ElementsAre(store.records().getContextById(0)));
        EXPECT_FALSE(store.moc().hasChanges());
        store.records().getContextByTitle("None")->setContextID(5);
        store.save();
    }
}

TEST(DefaultRecords, whatTheUserDeletedComesBackOnlyWhereItIsNeeded)
{
    TestStore store;
    const auto records = store.records();
    store.moc().remove(*records.getStateByName("Waiting"));
    store.moc().remove(*records.getStateByName(""));
    store.moc().remove(*records.getPriorityByName("3"));
    records.getFolderByTitle("Inbox")->setTitle("In tray");
    store.save();
    store.relaunch();

    EXPECT_EQ(store.records().getStateByName("Waiting"), nullptr);
    model::States *untitled = store.records().getStateByName("");
    ASSERT_NE(untitled, nullptr);
    EXPECT_TRUE(objectstore::isNil(untitled->value("stateID"))) << "only the first one has the id 0";
    EXPECT_THAT(priorities(store), ElementsAre(-1, 0, 1, 2, 4, 5, 3));
    EXPECT_THAT(titles(store.all("Folders")), ElementsAre("In tray", "Inbox"));
}
