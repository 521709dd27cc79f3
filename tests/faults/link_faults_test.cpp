// SPDX-License-Identifier: GPL-3.0-or-later
// What two contexts do to each other's links, as found by sequences of random commands.
#include "faults/invariants.h"
#include "objectstore/library.h"

#include <gmock/gmock.h>

using namespace library;

namespace {

/// A book on no shelf and an empty shelf, seen by two contexts.
struct TwoDesks {
    TwoDesks()
    {
        const auto writer = library.context();
        const ObjectID novel = book(*writer, "Novel").objectID();
        const ObjectID board = writer->insert("Shelf").objectID();
        const ObjectID word = writer->insert("Label").objectID();
        value(writer->save());
        for (Side *side : {&ours, &theirs}) {
            side->context = library.context();
            side->book = side->context->existingObject(novel);
            side->shelf = side->context->existingObject(board);
            side->label = side->context->existingObject(word);
        }
    }
    struct Side {
        std::unique_ptr<ObjectContext> context;
        ManagedObject *book = nullptr;
        ManagedObject *shelf = nullptr;
        ManagedObject *label = nullptr;
    };

    [[nodiscard]] std::vector<std::string> problems() const
    {
        return faults::storeProblems(library.store->file(), model());
    }

    Library library;
    Side ours;
    Side theirs;
};

} // namespace

TEST(Faults, F55_a_link_to_what_the_other_context_deleted_is_not_saved)
{
    for (const bool merged : {false, true}) {
        TwoDesks desks;
        desks.ours.book->setRelated("shelf", desks.ours.shelf);
        desks.ours.book->addObject("labels", *desks.ours.label);
        desks.theirs.context->remove(*desks.theirs.shelf);
        desks.theirs.context->remove(*desks.theirs.label);
        value(desks.theirs.context->save());
        if (merged)
            value(desks.ours.context->mergeExternalChanges());
        value(desks.ours.context->save());
        EXPECT_THAT(desks.problems(), testing::IsEmpty());
        EXPECT_EQ(desks.ours.book->related("shelf"), nullptr);
        EXPECT_THAT(desks.ours.book->objects("labels"), testing::IsEmpty());
    }
}

TEST(Faults, F55_a_deletion_takes_the_links_that_the_other_context_saved_since)
{
    TwoDesks desks;
    desks.theirs.context->remove(*desks.theirs.shelf);
    desks.theirs.context->remove(*desks.theirs.label);
    desks.ours.book->setRelated("shelf", desks.ours.shelf);
    desks.ours.book->addObject("labels", *desks.ours.label);
    value(desks.ours.context->save());
    const SaveReport report = value(desks.theirs.context->save());
    EXPECT_THAT(desks.problems(), testing::IsEmpty());
    desks.ours.context->mergeChanges(report.changes);
    EXPECT_EQ(desks.ours.book->related("shelf"), nullptr);
    desks.ours.book->setValue("title", std::string("Story")); // over the row as the deletion left it
    EXPECT_THAT(value(desks.ours.context->save()).discarded, testing::IsEmpty());
}
