// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/entities.h"
#include "support/test_store.h"

#include <gmock/gmock.h>

using namespace support;
using testing::ElementsAre;

TEST(ObjectModel, aRelationshipAndItsInverseNameEachOther)
{
    for (const auto &entity : model::objectModel().entities()) {
        const auto check = [&](const objectstore::Property *property) {
            SCOPED_TRACE(entity->name() + "." + property->name);
            if (property->inverse) {
                EXPECT_EQ(property->inverse->inverse, property);
                EXPECT_EQ(property->inverse->destination, entity.get());
            }
            EXPECT_EQ(property->deleteRule, objectstore::DeleteRule::Nullify);
        };
        std::ranges::for_each(entity->toManyRelationships(), check);
        std::ranges::for_each(entity->columns(), check);
    }
}

TEST(Tasks, aNewOneIsDatedAndLandsInTheInbox)
{
    TestStore store;
    store.relaunch();
    const auto &task = store.add(aTask());
    EXPECT_EQ(task.title(), "New Task");
    EXPECT_EQ(task.creationDate(), store.clock.now());
    EXPECT_EQ(task.modifiedDate(), store.clock.now());
    EXPECT_EQ(task.folders()->title(), "Inbox");
    EXPECT_EQ(task.contexts()->title(), "None");
    EXPECT_EQ(task.states()->stateID(), 0);
    EXPECT_EQ(task.states()->state(), "");
    EXPECT_EQ(task.priorities()->priority(), 0);
    EXPECT_TRUE(task.isNew());
    EXPECT_FALSE(task.deleteOnSync());
}

TEST(Tasks, aNewOneGoesWithoutTheRecordsThatAreMissing)
{
    TestStore store; // at the first launch "None" has no id yet
    store.moc().remove(*store.records().getFolderByTitle("Inbox"));
    const auto &task = store.add(aTask());
    EXPECT_EQ(task.contexts(), nullptr);
    EXPECT_EQ(task.folders(), nullptr);
    EXPECT_NE(task.priorities(), nullptr);
}

TEST(Folders, andContextsAreNumberedOnEachOfThemForItself)
{
    TestStore store;
    const auto number = [](const auto &made, std::string_view before) {
        EXPECT_TRUE(made.title().starts_with(before));
        return std::stoi(std::string(made.title().substr(before.size())));
    };
    const int folder = number(model::insert<model::Folders>(store.moc()), "New Folder #");
    const int context = number(model::insert<model::Contexts>(store.moc()), "New Context #");
    TestStore other; // whose first records, which every store has, take none of the numbers
    EXPECT_EQ(number(model::insert<model::Folders>(other.moc()), "New Folder #"), folder + 1);
    EXPECT_EQ(number(model::insert<model::Contexts>(other.moc()), "New Context #"), context + 1);
}

TEST(Contexts, theLocationStandsAtTheEndOfTheNotesAndOnlyOnce)
{
    const std::string block = "\n--- Begin Location Info ---\n48.1374,-11.5\n--- End Location Info ---";
    const std::pair<std::string, std::string> cases[] = {
        {"", block},
        {"By the river", "By the river" + block},
        {"Above\n--- Begin Location Info ---\n1,2\n--- End Location Info ---\nbelow", "Above\nbelow" + block},
        {"Above\n--- Begin Location Info ---\n1,2\nno end", "Above" + block},
        {"--- End Location Info --- first" + block + "below", "--- End Location Info --- firstbelow" + block},
    };
    TestStore store;
    for (const auto &[before, after] : cases) {
        SCOPED_TRACE(before);
        auto &context = model::insert<model::Contexts>(store.moc());
        context.setLatitude(48.1374);
        context.setLongitude(-11.5);
        context.setNotes(before);
        context.updateNotesLocation();
        EXPECT_EQ(context.notes(), after);
        store.save();
        context.updateNotesLocation();
        EXPECT_FALSE(context.hasChanges()) << "the same place again is no change";
    }
}
