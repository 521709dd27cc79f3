// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/edit_tracking.h"
#include "support/test_store.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

/// Tracked records, modified long ago and saved, and a clock that stands at now.
class EditTracking : public testing::Test
{
protected:
    EditTracking()
        : context(model::insert<model::Contexts>(store.moc()))
        , folder(model::insert<model::Folders>(store.moc()))
        , task(store.add(aTask().modified("2026-01-01")))
    {
        context.setModifiedDate(longAgo);
        folder.setModifiedDate(longAgo);
        store.save();
        tracking.registerForChangeNotifications();
    }

    void announce() { store.moc().processPendingChanges(); }

    TestStore store;
    const foundation::Instant longAgo = at("2026-01-01");
    const foundation::Instant now = store.clock.now();
    model::Contexts &context;
    model::Folders &folder;
    model::Tasks &task;
    model::EditTracking tracking{store.moc(), store.clock};
};

} // namespace

TEST_F(EditTracking, theFirstEditStampsATaskUntilTheNextSave)
{
    task.setTitle("Milk");
    announce();
    EXPECT_EQ(task.modifiedDate(), now);

    store.clock.advance(1);
    task.setNotes("Two litres");
    announce();
    EXPECT_EQ(task.modifiedDate(), now);

    store.save();
    task.setStar(true);
    announce();
    EXPECT_EQ(task.modifiedDate(), store.clock.now());
}

TEST_F(EditTracking, sortingFoldersDoesNotEditThemAndRenamingDoes)
{
    folder.setOrder(4);
    announce();
    EXPECT_EQ(folder.modifiedDate(), longAgo);
    folder.setTitle("Home");
    announce();
    EXPECT_EQ(folder.modifiedDate(), longAgo) << "its new place is not saved yet";
    store.save();
    folder.setTitle("House");
    context.setTitle("Shop");
    announce();
    EXPECT_EQ(folder.modifiedDate(), now);
    store.clock.advance(60);
    context.setNotes("closes at six");
    announce();
    EXPECT_EQ(context.modifiedDate(), store.clock.now()) << "every edit stamps a context";
}

TEST_F(EditTracking, newRecordsOtherRecordsAndMergedChangesAreNotStamped)
{
    auto &fresh = store.add(aTask());
    store.clock.advance(60);
    announce();
    EXPECT_EQ(fresh.modifiedDate(), now);
    store.moc().remove(fresh);
    store.records().getStateByName("Hold")->setState("On hold");
    store.save();

    objectstore::ObjectContext other(store.store(), objectstore::MergePolicy::StoreTrump);
    other.existingObject(task.objectID())->setValue("title", std::string("From the service"));
    const auto saved = other.save();
    ASSERT_TRUE(saved);
    store.moc().mergeChanges(saved->changes);
    announce();
    EXPECT_EQ(task.title(), "From the service");
    EXPECT_EQ(task.modifiedDate(), longAgo);
}

TEST_F(EditTracking, aPauseCoversWhatIsDoneInItAndNothingElse)
{
    folder.setTitle("before");
    {
        const auto synchronisation = tracking.pause();
        {
            const auto work = tracking.pause();
            task.setIsCurrentLocation(true);
        }
        context.setTitle("during");
    }
    EXPECT_EQ(folder.modifiedDate(), now);
    EXPECT_EQ(task.modifiedDate(), longAgo);
    EXPECT_EQ(context.modifiedDate(), longAgo);

    context.setTitle("after");
    announce();
    EXPECT_EQ(context.modifiedDate(), now);
}

TEST_F(EditTracking, nothingIsStampedWhileUnregistered)
{
    tracking.unregisterForChangeNotifications();
    task.setTitle("quiet");
    tracking.registerForChangeNotifications();
    tracking.registerForChangeNotifications();
    announce();
    EXPECT_EQ(task.modifiedDate(), longAgo);
    tracking.unregisterForChangeNotifications();
    context.setTitle("quiet too");
    announce();
    EXPECT_EQ(context.modifiedDate(), longAgo);
}
