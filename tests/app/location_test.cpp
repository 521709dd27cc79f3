// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_application.h"

#include "objectstore/undo_manager.h"

#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>
#include <limits>

using app::LocationStatus;
using app::QVLLocationManagerDelegate;
using location::Coordinate;
using location::LocationErrorCode;
using support::aTask;

namespace {

constexpr Coordinate home{52.4915, 13.4236};
constexpr Coordinate office{48.1374, 11.5755};

class Location : public testing::Test
{
protected:
    void turn(bool isOn)
    {
        application.settings.set(model::keys::UseLocation, isOn);
        controller().applySettings();
    }
    void tick(double seconds)
    {
        application.clock.advance(seconds);
        controller().checkLocation();
    }
    QVLLocationManagerDelegate &controller() { return application.delegate().locationController(); }

    support::TestApplication application;
    support::TestLocation &computer = application.location;
};

} // namespace

TEST_F(Location, isAskedForOnlyWhileTheUserWantsIt)
{
    tick(2);
    tick(3600);
    EXPECT_EQ(computer.starts, 0);
    turn(true);
    EXPECT_EQ(controller().status(), LocationStatus::Waiting);
    computer.moveTo(home);
    EXPECT_EQ(controller().location(), home);
    turn(false);
    EXPECT_FALSE(computer.isAsked());
    EXPECT_EQ(controller().location(), std::nullopt);
    EXPECT_FALSE(controller().statusText().isEmpty());
}

TEST_F(Location, aFloodOfPositionsIsTakenOverOnceASecondAndNonsenseNever)
{
    turn(true);
    QSignalSpy updates(&controller(), &QVLLocationManagerDelegate::locationUpdated);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Coordinate &nonsense : {Coordinate{91, 0}, {0, -180.1}, {nan, 0}, {0, nan}, {1e300, 0}})
        computer.moveTo(nonsense);
    EXPECT_EQ(controller().status(), LocationStatus::Waiting);
    for (int step = 0; step < 100'000; ++step)
        computer.moveTo({home.latitude + step * 1e-6, home.longitude});
    EXPECT_EQ(updates.count(), 0) << "the first position is no update";
    EXPECT_EQ(controller().location(), home);
    ASSERT_TRUE(QTest::qWaitFor([&] { return updates.count() > 0; }));
    EXPECT_EQ(updates.count(), 1);
    EXPECT_NEAR(controller().location()->latitude, home.latitude + 0.099999, 1e-9) << "the newest";
}

TEST_F(Location, whatFailedIsTriedAgainAMinuteLaterUnlessItWasRefused)
{
    turn(true);
    computer.moveTo(home);
    computer.fail(LocationErrorCode::Unavailable, "The receiver has gone.");
    EXPECT_EQ(controller().statusText(), QStringLiteral("The receiver has gone."));
    EXPECT_EQ(controller().location(), std::nullopt);
    tick(30);
    EXPECT_EQ(computer.starts, 1);
    tick(30);
    EXPECT_EQ(computer.starts, 2);
    computer.moveTo(office);
    EXPECT_EQ(controller().location(), office);

    computer.fail(LocationErrorCode::Denied, "No.");
    for (int minute = 0; minute < 30; ++minute)
        tick(50);
    tick(36'000);
    EXPECT_EQ(computer.starts, 2) << "a user who said no is not asked again";
}

TEST_F(Location, aComputerThatSleptIsAskedAnewAndKeepsItsPositionUntilThen)
{
    turn(true);
    computer.moveTo(home);
    tick(2);
    EXPECT_EQ(computer.starts, 1);
    tick(8 * 3600);
    EXPECT_EQ(computer.starts, 2);
    EXPECT_EQ(controller().location(), home);
    computer.moveTo(office);
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller().location() == office; }));
}

TEST_F(Location, marksAreNeitherEditsToSendNorStepsToUndo)
{
    model::Tasks &task = application.add(aTask().titled("Prune the apple tree").doneAt("Home"));
    task.contexts()->setCoordinate(home);
    task.contexts()->setUseLocation(true);
    application.delegate().saveAction();
    const auto modified = task.modifiedDate();
    application.moc().undoManager()->clear();
    application.clock.advance(60);
    turn(true);
    computer.moveTo(home);
    EXPECT_TRUE(application.delegate().followLocation());
    EXPECT_TRUE(task.isCurrentLocation());
    EXPECT_FALSE(application.delegate().followLocation()) << "nothing to do for the same contexts";
    application.moc().processPendingChanges();
    EXPECT_EQ(task.modifiedDate(), modified);
    EXPECT_FALSE(application.moc().undoManager()->canUndo());
}
