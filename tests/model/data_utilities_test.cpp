// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "support/test_store.h"

#include <gmock/gmock.h>

using namespace support;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

/// A store at its second launch, when every default record has its id.
class DataUtilities : public testing::Test
{
protected:
    DataUtilities() { store.relaunch(); }

    model::Tags &addTag(const std::string &title, bool deleted = false)
    {
        auto &tag = model::insert<model::Tags>(store.moc());
        tag.setTitle(title);
        tag.setValue("deleted", deleted);
        return tag;
    }

    TestStore store;
};

} // namespace

TEST_F(DataUtilities, ofRecordsThatShareAnIdTheLastTaskAndTheFirstFolderAreFound)
{
    store.add(aTask().titled("Older").sentAs(7));
    auto &newer = store.add(aTask().titled("Newer").sentAs(7));
    auto &first = model::insert<model::Folders>(store.moc());
    first.setFolderID(9);
    model::insert<model::Folders>(store.moc()).setFolderID(9);

    for (const bool saved : {false, true}) {
        SCOPED_TRACE(saved ? "saved" : "unsaved");
        EXPECT_EQ(store.records().getTaskById(7), &newer);
        EXPECT_EQ(store.records().getFolderById(9), &first);
        EXPECT_EQ(store.records().getFolderById(10), nullptr);
        store.save();
    }
}

TEST_F(DataUtilities, prioritiesAreFoundByValueAndNotById)
{
    const auto records = store.records();
    EXPECT_EQ(records.getPriorityByName("3")->priority(), 3);
    EXPECT_EQ(records.getPriorityByName(" -1 and more")->priority(), -1);
    EXPECT_EQ(records.getPriorityByName("none")->priority(), 0);
    EXPECT_EQ(records.getPriorityByName("99999999999999999999"), nullptr);
    EXPECT_EQ(records.getPriorityById(3), nullptr);
}

TEST_F(DataUtilities, tagsAreFoundByNameBeginningAndDictionary)
{
    addTag("Work");
    auto &work = addTag("Work");
    auto &items = addTag("work items");
    auto &gone = addTag("Wood", true);
    const auto records = store.records();

    EXPECT_EQ(records.getTagByName("Work"), &work);
    EXPECT_EQ(records.getTagByName("work"), nullptr);
    EXPECT_THAT(*records.getTagsBySubstring("wo"), testing::SizeIs(4));
    EXPECT_THAT(*records.getTagsBySubstring("WOO"), ElementsAre(&gone));
    EXPECT_THAT(
        *records.getTags(), UnorderedElementsAre(testing::Pair("Work", &work), testing::Pair("work items", &items)));
}

TEST_F(DataUtilities, aTagNameThatIsNoPredicateTextFindsNothingAndIsLogged)
{
    auto &quoted = addTag("5\" nails");
    auto &slashed = addTag("a\\");
    std::vector<std::string> log;
    foundation::setLogSink([&](std::string_view line) { log.emplace_back(line); });
    for (const char *name : {"5\" nails", "a\\", "\""}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(store.records().getTagByName(name), nullptr);
        EXPECT_EQ(store.records().getTagsBySubstring(name), std::nullopt);
    }
    foundation::setLogSink({});
    EXPECT_THAT(log, testing::Contains(testing::HasSubstr("5\" nails")));
    EXPECT_THAT(store.errors.errors, IsEmpty());
    const auto tags = store.records().getTags();
    EXPECT_EQ(tags->at("5\" nails"), &quoted);
    EXPECT_EQ(tags->at("a\\"), &slashed);
}

TEST_F(DataUtilities, aPlacementThatHasNoTargetLeavesTheTaskWhereItWasAndAFailedFetchIsShown)
{
    const auto records = store.records();
    auto &task = store.add(aTask());
    const auto *inbox = task.folders();
    EXPECT_FALSE(records.addTaskToFolder(404, &task) || records.addTaskToFolder(std::nullopt, &task));
    EXPECT_FALSE(records.addTaskToFolder(0, nullptr) || records.addTaskToContextObject(nullptr, &task));
    EXPECT_EQ(task.folders(), inbox);
    EXPECT_THAT(store.errors.errors, IsEmpty());
    EXPECT_EQ(records.getRecordsWithPredicate("Tasks", "noSuchKey == 1"), std::nullopt);
    EXPECT_THAT(store.errors.errors, testing::SizeIs(1));
}
