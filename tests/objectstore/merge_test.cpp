// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <set>

using namespace library;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// One book, read by two contexts; `theirs` saves first, then `ours` by its policy.
struct TwoReaders {
    explicit TwoReaders(MergePolicy policy) : ours(library.context(policy)), theirs(library.context())
    {
        auto writer = library.context();
        const ObjectID id = book(*writer, "Novel", 1).objectID();
        value(writer->save());
        our = ours->existingObject(id);
        their = theirs->existingObject(id);
    }

    Library library;
    std::unique_ptr<ObjectContext> ours;
    std::unique_ptr<ObjectContext> theirs;
    ManagedObject *our = nullptr;
    ManagedObject *their = nullptr;
};

} // namespace

TEST(MergePolicy, rollbackDropsAllOurValuesOfARowThatChanged)
{
    TwoReaders readers(MergePolicy::Rollback);
    readers.their->setValue("pages", std::int64_t{2});
    value(readers.theirs->save());
    readers.our->setValue("title", std::string("Ours"));
    readers.our->setValue("pages", std::int64_t{3});
    ManagedObject &untouched = book(*readers.ours, "Untouched");
    const SaveReport report = value(readers.ours->save());
    EXPECT_EQ(report.discarded.size(), 2U);
    EXPECT_EQ(readers.our->text("title"), "Novel");
    EXPECT_EQ(readers.our->integer("pages"), 2);
    EXPECT_FALSE(untouched.isInserted());
    EXPECT_EQ(count(*readers.library.context(), "Book", "pages == 2 OR title == 'Untouched'"), 2);
}

TEST(MergePolicy, storeTrumpKeepsOurValuesWhereTheStoreDidNotChange)
{
    TwoReaders readers(MergePolicy::StoreTrump);
    readers.their->setValue("pages", std::int64_t{2});
    value(readers.theirs->save());
    readers.our->setValue("title", std::string("Ours"));
    readers.our->setValue("pages", std::int64_t{3});
    const SaveReport report = value(readers.ours->save());
    ASSERT_EQ(report.discarded.size(), 1U);
    EXPECT_EQ(report.discarded[0].property, "pages");
    EXPECT_EQ(toInteger(view(report.discarded[0].value)), 3);
    EXPECT_EQ(count(*readers.library.context(), "Book", "title == 'Ours' AND pages == 2"), 1);
    readers.our->setValue("pages", std::int64_t{4}); // the merged row is the one to compare with next time
    EXPECT_THAT(value(readers.ours->save()).discarded, IsEmpty());
}

TEST(MergePolicy, aRowDeletedElsewhereStaysDeleted)
{
    for (const MergePolicy policy : {MergePolicy::Rollback, MergePolicy::StoreTrump}) {
        TwoReaders readers(policy);
        readers.theirs->remove(*readers.their);
        value(readers.theirs->save());
        readers.our->setValue("title", std::string("Ours"));
        EXPECT_EQ(value(readers.ours->save()).discarded.size(), 1U);
        EXPECT_TRUE(readers.our->isDeleted());
        EXPECT_THAT(fetch(*readers.library.context(), "Book"), IsEmpty());
    }
}

TEST(MergeChanges, bringsInWhatAnotherContextSaved)
{
    TwoReaders readers(MergePolicy::Rollback);
    ManagedObject &shelf = readers.theirs->insert("Shelf");
    readers.their->setRelated("shelf", &shelf);
    readers.their->setValue("title", std::string("Theirs"));
    int inserted = 0;
    std::vector<std::string> updated;
    const Subscription subscription = readers.ours->onObjectsDidChange([&](const ObjectsChange &change) {
        inserted += static_cast<int>(change.inserted.size());
        updated = titles(change.updated);
    });
    readers.ours->mergeChanges(value(readers.theirs->save()).changes);
    EXPECT_EQ(inserted, 1);
    EXPECT_THAT(updated, ElementsAre("Theirs"));
    EXPECT_FALSE(readers.our->hasChanges());
    EXPECT_THAT(readers.our->related("shelf")->objects("books"), ElementsAre(readers.our));

    readers.theirs->remove(*readers.their);
    readers.ours->mergeChanges(value(readers.theirs->save()).changes);
    EXPECT_TRUE(readers.our->isDeleted());
}

TEST(MergeChanges, keepsUnsavedChangesForTheNextSaveToDecide)
{
    TwoReaders readers(MergePolicy::StoreTrump);
    readers.our->setValue("title", std::string("Ours"));
    readers.their->setValue("pages", std::int64_t{9});
    readers.ours->mergeChanges(value(readers.theirs->save()).changes);
    EXPECT_EQ(readers.our->text("title"), "Ours");
    EXPECT_THAT(value(readers.ours->save()).discarded, IsEmpty());
    EXPECT_EQ(readers.our->integer("pages"), 9);
}

TEST(MergeExternalChanges, announcesAgainNoneOfTheSavesThatWereMergedBefore)
{
    TwoReaders readers(MergePolicy::Rollback);
    book(*readers.theirs, "Not told");
    value(readers.theirs->save());
    book(*readers.theirs, "Told");
    const SaveReport told = value(readers.theirs->save());
    readers.ours->mergeChanges(told.changes);
    readers.our->setValue("pages", std::int64_t{1});
    value(readers.ours->save());
    std::vector<std::string> announced;
    const Subscription subscription = readers.ours->onObjectsDidChange([&](const ObjectsChange &change) {
        for (const auto &objects : {titles(change.inserted), titles(change.updated)})
            announced.insert(announced.end(), objects.begin(), objects.end());
    });
    EXPECT_TRUE(value(readers.ours->mergeExternalChanges()));
    EXPECT_THAT(announced, ElementsAre("Not told"));

    readers.their->setValue("title", std::string("Told, too"));
    readers.ours->mergeChanges(value(readers.theirs->save()).changes);
    announced.clear();
    EXPECT_FALSE(value(readers.ours->mergeExternalChanges()));
    EXPECT_THAT(announced, IsEmpty());
}

TEST(MergeExternalChanges, bringsInOnlyWhatOthersDidAndWhatBecameOfItInTheEnd)
{
    TwoReaders readers(MergePolicy::Rollback);
    readers.theirs->enableUndo();
    UndoManager &undo = *readers.theirs->undoManager();
    ManagedObject &passing = book(*readers.theirs, "Passing");
    ManagedObject &story = book(*readers.theirs, "Story");
    value(readers.theirs->save());
    readers.theirs->remove(passing);
    story.setValue("title", std::string("Saga"));
    value(readers.theirs->save());
    book(*readers.ours, "Ours");
    value(readers.ours->save());
    undo.clear();
    readers.theirs->remove(*readers.their);
    value(readers.theirs->save());
    undo.undo();
    value(readers.theirs->save());

    std::vector<std::string> inserted;
    std::vector<std::string> updated;
    const Subscription subscription = readers.ours->onObjectsDidChange([&](const ObjectsChange &change) {
        inserted = titles(change.inserted);
        updated = titles(change.updated);
    });
    EXPECT_TRUE(value(readers.ours->mergeExternalChanges()));
    EXPECT_THAT(inserted, ElementsAre("Saga"));
    EXPECT_THAT(updated, ElementsAre("Novel"));
    EXPECT_FALSE(readers.our->isDeleted());
    EXPECT_EQ(count(*readers.ours, "Book", "TRUEPREDICATE"), 3);
}

TEST(MergeExternalChanges, aSaveThatWroteNothingHidesNoneOfTheOthers)
{
    TwoReaders readers(MergePolicy::Rollback);
    readers.our->setValue("title", std::string("Ours"));
    readers.their->setValue("title", std::string("Theirs"));
    value(readers.theirs->save());
    EXPECT_TRUE(value(readers.ours->mergeExternalChanges()));
    EXPECT_THAT(value(readers.ours->save()).discarded, testing::SizeIs(1)) << "all that there was to save";
    readers.their->setValue("title", std::string("Theirs again"));
    value(readers.theirs->save());
    EXPECT_TRUE(value(readers.ours->mergeExternalChanges()));
    EXPECT_EQ(readers.our->text("title"), "Theirs again");
}

TEST(MergeExternalChanges, aContextThatLiesFarBehindComparesEveryRecord)
{
    TwoReaders readers(MergePolicy::Rollback);
    ManagedObject &doomed = book(*readers.ours, "Doomed");
    value(readers.ours->save());
    readers.theirs->remove(*readers.theirs->existingObject(doomed.objectID()));
    for (std::int64_t pages = 2; pages < 400; ++pages) {
        readers.their->setValue("pages", pages);
        value(readers.theirs->save());
    }
    EXPECT_TRUE(value(readers.ours->mergeExternalChanges()));
    EXPECT_EQ(readers.our->integer("pages"), 399);
    EXPECT_TRUE(doomed.isDeleted());
    EXPECT_FALSE(value(readers.ours->mergeExternalChanges()));
}

TEST(MergePolicy, insertionsOfOneMomentNeverMeet)
{
    Library library; // whose clock stands still
    const auto ours = library.context();
    const auto theirs = library.context();
    std::set<std::int64_t> keys;
    for (int i = 0; i < 2000; ++i)
        keys.insert({book(*ours, "Ours", i).objectID().key, book(*theirs, "Theirs", i).objectID().key});
    EXPECT_EQ(keys.size(), 4000U);

    auto other = value(Store::open(model(), library.store->file(), library.clock)); // as another process has it
    ObjectContext late(*other, MergePolicy::Rollback);
    ManagedObject &second = book(late, "Second", 1);
    SQLite::Database(library.store->file().string(), SQLite::OPEN_READWRITE)
        .exec(
            "INSERT INTO Book (_key, _save, title) VALUES (" + std::to_string(second.objectID().key) + ", 0, 'First')");
    EXPECT_FALSE(late.save()) << "the save overwrote the record of another process";
    EXPECT_THAT(titles(fetch(*library.context(), "Book")), ElementsAre("First"));
    EXPECT_TRUE(late.hasChanges());
}
