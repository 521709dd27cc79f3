// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_store.h"

#include <gmock/gmock.h>
#include <numbers>

using location::Coordinate;
using support::aTask;
using testing::ElementsAre;

namespace {

constexpr Coordinate here{52.4915, 13.4236};

Coordinate northOfHere(double metres)
{
    return {here.latitude + metres / 6'371'008.8 * 180 / std::numbers::pi, here.longitude};
}

class LocationMarks : public testing::Test
{
protected:
    model::Contexts &context(const std::string &title, const Coordinate &place)
    {
        auto &context = model::insert<model::Contexts>(store.moc());
        context.setTitle(title);
        context.setCoordinate(place);
        store.add(aTask().titled(title).doneAt(title));
        return context;
    }
    void mark(bool flag, std::optional<Coordinate> current = here)
    {
        store.records().markTasksForLocation(flag, store.records().contextsNear(current));
    }
    std::vector<std::string> markedAs(std::string_view predicate)
    {
        store.save();
        return support::titles(store.fetch(
            {.entity = "Tasks", .predicate = objectstore::Predicate::format(predicate), .sortDescriptors = {}}));
    }

    support::TestStore store;
};

} // namespace

TEST_F(LocationMarks, areOnTheTasksOfContextsLessThanAKilometreAwayOrAlwaysShown)
{
    for (const auto &[title, metres] : {std::pair{"nearly", 999.0}, {"just not", 1000.001}, {"far", 500'000.0}})
        context(title, northOfHere(metres)).setUseLocation(true);
    context("near, but tied to no place", here);
    context("anywhere", northOfHere(500'000)).setAlwaysShow(true);
    store.add(aTask().titled("no context"));
    mark(true);
    EXPECT_THAT(markedAs("isCurrentLocation == YES"), ElementsAre("nearly", "anywhere"));
    EXPECT_THAT(markedAs("isCurrentLocation != nil"), ElementsAre("nearly", "anywhere"));

    mark(true, northOfHere(1001));
    EXPECT_THAT(markedAs("isCurrentLocation != nil"), ElementsAre("nearly", "just not", "anywhere"));
    mark(true, std::nullopt);
    EXPECT_THAT(markedAs("isCurrentLocation != nil"), ElementsAre()) << "not even what is always shown";
}

TEST_F(LocationMarks, areTurnedToNoOnlyOnTasksOfNearContexts)
{
    context("near", here).setUseLocation(true);
    context("far", northOfHere(2000)).setUseLocation(true);
    mark(true, northOfHere(2000));
    mark(false);
    EXPECT_THAT(markedAs("isCurrentLocation == NO && isCurrentLocation != nil"), ElementsAre("near"));
    EXPECT_THAT(markedAs("isCurrentLocation != nil"), ElementsAre("near"));
}

TEST_F(LocationMarks, aContextWithoutCoordinatesLiesInTheGulfOfGuinea)
{
    auto &nowhere = model::insert<model::Contexts>(store.moc());
    nowhere.setTitle("nowhere");
    nowhere.setUseLocation(true);
    store.add(aTask().titled("nowhere").doneAt("nowhere"));
    mark(true, Coordinate{0, 0});
    EXPECT_THAT(markedAs("isCurrentLocation == YES"), ElementsAre("nowhere"));
}
