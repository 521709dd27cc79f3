// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/smart_folder.h"

#include "model/relative_date.h"
#include "objectstore/undo_manager.h"
#include "support/test_store.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>

using model::DateUnit;
using model::SmartFolder;
using objectstore::Predicate;
using support::at;
using support::aTask;

namespace {

class SmartFolders : public testing::Test
{
protected:
    SmartFolder &folder(std::string_view predicate)
    {
        auto &made = model::insert<SmartFolder>(store.moc());
        made.setPredicate(Predicate::format(predicate));
        return made;
    }
    SmartFolder &stored()
    {
        store.save();
        store.relaunch();
        return *model::as<SmartFolder>(store.all("SmartFolder").front());
    }
    std::string found(SmartFolder &asked)
    {
        std::string all;
        for (const std::string &title : support::titles(asked.tasks(store.errors)))
            all += all.empty() ? title : "|" + title;
        return all;
    }

    support::TestStore store;
};

objectstore::RelativeDate date(std::int64_t number, DateUnit unit, bool backward, std::string_view now)
{
    return model::relativeDate(number, static_cast<int>(unit), backward, at(now));
}

std::string instant(const objectstore::RelativeDate &date)
{
    return foundation::toIso8601({date.timeIntervalSinceReferenceDate + objectstore::referenceDate}).substr(0, 16);
}

Predicate due(const objectstore::RelativeDate &limit)
{
    objectstore::PredicateNode node;
    node.kind = objectstore::PredicateNode::Kind::Comparison;
    node.test = objectstore::Operator::LessOrEqual;
    node.left.kind = objectstore::Expression::Kind::KeyPath;
    node.left.name = "dueDate";
    node.right.kind = objectstore::Expression::Kind::Relative;
    node.right.relative = limit;
    return Predicate(std::make_shared<const objectstore::PredicateNode>(node));
}

} // namespace

TEST_F(SmartFolders, aNewOneFindsTaskInTheTitleAndNothingSetIsTheSame)
{
    store.add(aTask().titled("A task"));
    store.add(aTask().titled("Milk"));
    auto &made = model::insert<SmartFolder>(store.moc());
    EXPECT_EQ(made.integer("priority"), 2);
    EXPECT_EQ(found(made), "A task");
    made.setPredicate(Predicate());
    EXPECT_EQ(found(made), "A task|Milk");
    made.setPredicate(std::nullopt);
    EXPECT_EQ(found(stored()), "A task");
}

TEST_F(SmartFolders, keepsItsTasksUntilOneChanges)
{
    auto &task = store.add(aTask().titled("Milk"));
    auto &milk = folder("title CONTAINS 'Milk'");
    EXPECT_EQ(found(milk), "Milk");
    const auto *kept = &milk.tasks(store.errors);
    auto &place = model::insert<model::Folders>(store.moc());
    place.setTitle("Kitchen");
    EXPECT_EQ(&milk.tasks(store.errors), kept);
    task.setTitle("Bread");
    EXPECT_EQ(found(milk), "");
    store.add(aTask().titled("More Milk"));
    EXPECT_EQ(found(milk), "More Milk");
    store.moc().remove(*milk.tasks(store.errors).front());
    EXPECT_EQ(found(milk), "");
}

TEST_F(SmartFolders, undoOfANewPredicateFindsTheOldTasksAgain)
{
    store.moc().enableUndo();
    store.add(aTask().titled("Milk"));
    store.add(aTask().titled("Bread"));
    auto &shown = folder("title == 'Milk'");
    store.moc().processPendingChanges();
    EXPECT_EQ(found(shown), "Milk");
    shown.setPredicate(Predicate::format("title == 'Bread'"));
    EXPECT_EQ(found(shown), "Bread");
    store.moc().undoManager()->undo();
    EXPECT_EQ(found(shown), "Milk");
}

TEST_F(SmartFolders, aPredicateThatCannotBeReadCountsAsNoneAndKeepsItsBytes)
{
    store.add(aTask().titled("Milk"));
    auto &damaged = folder("title == 'Bread'");
    const auto archive
        = objectstore::archive(Predicate::format("(title == 'Bread' OR star == YES) AND complete == NO"));
    std::vector<objectstore::Bytes> hostile{{}, objectstore::archive(Predicate::format("noSuchThing == 1")),
        objectstore::archive(Predicate::format("tags.title.colour == 'red'"))};
    for (std::size_t length = 0; length < archive.size(); ++length)
        hostile.emplace_back(archive.begin(), archive.begin() + static_cast<std::ptrdiff_t>(length));
    for (const objectstore::Bytes &bytes : hostile) {
        damaged.setValue("predicateData", bytes);
        EXPECT_EQ(damaged.predicate(), std::nullopt);
        EXPECT_EQ(found(damaged), "Milk");
    }
    damaged.setValue("predicateData", objectstore::Value());
    EXPECT_EQ(found(damaged), "Milk");
    ASSERT_TRUE(model::renewSmartFolders(store.moc(), store.clock.now()));
    EXPECT_TRUE(objectstore::isNil(damaged.value("predicateData")));
    EXPECT_TRUE(store.errors.errors.empty());
}

TEST_F(SmartFolders, sayHowMuchWorkTheirTasksAre)
{
    auto &all = folder("TRUEPREDICATE");
    for (const char *text : {"0 tasks, 0.00 days", "1 tasks, 0.33 days", "2 tasks, 0.67 days", "3 tasks, 1.00 day",
             "4 tasks, 1.33 day", "5 tasks, 1.67 day", "6 tasks, 2.00 days"}) {
        EXPECT_EQ(all.summaryString(store.errors), text);
        store.add(aTask());
    }
}

TEST(RelativeDate, countsByTheCalendar)
{
    EXPECT_EQ(instant(date(3, DateUnit::Weeks, false, "2026-03-01 10:00")), "2026-03-22T10:00");
    EXPECT_EQ(instant(date(1, DateUnit::Months, true, "2026-03-31 10:00")), "2026-02-28T10:00");
    EXPECT_EQ(instant(date(14, DateUnit::Months, false, "2026-12-31 10:00")), "2028-02-29T10:00");
    EXPECT_EQ(instant(date(13, DateUnit::Months, true, "2026-01-15 10:00")), "2024-12-15T10:00");
    EXPECT_EQ(instant(model::relativeDate(3, 7, false, at("2026-03-01 10:00"))), "2026-03-01T10:00");
}

TEST(RelativeDate, tellsTheNumberItWasMadeWithWheneverItIsAsked)
{
    setenv("TZ", "Europe/Berlin", 1); // days of 23 and of 25 hours
    foundation::localZoneChanged();
    for (int day = 0; day < 370; ++day) {
        const foundation::Instant now = foundation::addLocalDays(at("2026-01-01 10:17"), day);
        for (const int unit : {0, 1, 2}) {
            for (const bool backward : {false, true}) {
                for (const std::int64_t number : {0, 1, 2, 31, 365}) {
                    auto made = model::relativeDate(number, unit, backward, now);
                    made.timeIntervalSinceNow -= day % 2 * 2e-6; // as read off a clock that had gone on
                    EXPECT_EQ(model::valueOfTimeDifferenceInUnits(made), number) << day << ' ' << unit << backward;
                }
            }
        }
    }
    unsetenv("TZ");
    foundation::localZoneChanged();
}

TEST(RelativeDate, ofImpossibleValuesHasNoNumberAndStaysAsItIs)
{
    constexpr double endless = std::numeric_limits<double>::infinity();
    const std::vector<objectstore::RelativeDate> impossible{{1e300, 0, 0, false}, {endless, endless, 2, false},
        {-86400, 0, 0, false}, {86400, 0, 0, true}, {0, 1e18, 1, false}, {86400, 0, 3, false}, {86400, 0, -1, true}};
    for (const objectstore::RelativeDate &date : impossible) {
        EXPECT_EQ(model::valueOfTimeDifferenceInUnits(date), -1);
        EXPECT_EQ(model::withRelativeDatesAt(due(date), at("2026-11-24")), due(date));
    }
}

TEST_F(SmartFolders, aDayThatBeginsMovesTheirRelativeDatesAndOnlyThem)
{
    store.add(aTask().titled("Milk").due("2026-11-26"));
    folder("star == YES");
    auto &shown = folder("TRUEPREDICATE");
    shown.setPredicate(Predicate::negation(due(date(1, DateUnit::Days, false, "2026-11-24 09:00"))));
    store.save();
    EXPECT_EQ(found(shown), "Milk");
    store.relaunch();
    const auto folders = store.all("SmartFolder");
    auto &reopened = *model::as<SmartFolder>(folders.back());
    EXPECT_EQ(found(reopened), "Milk");
    ASSERT_TRUE(model::renewSmartFolders(store.moc(), at("2026-11-25 00:00")));
    EXPECT_EQ(found(reopened), "");
    EXPECT_FALSE(folders.front()->hasChanges());
    EXPECT_TRUE(reopened.hasChanges());
}
