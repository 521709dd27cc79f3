// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application_delegate.h"

#include "model/relative_date.h"
#include "model/smart_folder.h"
#include "support/test_application.h"

#include <QSignalSpy>
#include <QTest>
#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

using app::TMApplicationDelegate;
using support::at;
using support::aTask;

namespace {

class Delegate : public testing::Test
{
protected:
    TMApplicationDelegate &delegate() { return application.delegate(); }

    support::TestApplication application;
};

/// Makes the store refuse new tasks for as long as it lives, as a full disk would.
class RefusingStore
{
public:
    explicit RefusingStore(const std::filesystem::path &folder)
        : m_database((folder / "Quelvin.qvl").string(), SQLite::OPEN_READWRITE)
    {
        m_database.exec("CREATE TRIGGER refusal BEFORE INSERT ON Tasks BEGIN SELECT RAISE(ABORT, 'no'); END");
    }
    ~RefusingStore() { m_database.exec("DROP TRIGGER refusal"); }

private:
    SQLite::Database m_database;
};

} // namespace

TEST_F(Delegate, savesByItselfAMomentAfterAChange)
{
    delegate().applicationDidFinishLaunching();
    aTask().titled("Milk").addTo(application.records()); // nobody asks for a save or an announcement
    EXPECT_TRUE(QTest::qWaitFor([&] { return !application.moc().hasChanges(); }, 5000));
    const auto store = application.openStore();
    EXPECT_EQ(store->managedObjectContext().count(model::everyTask()), 1);
}

TEST_F(Delegate, bringsSmartFoldersToTheNewDay)
{
    auto &folder = model::insert<model::SmartFolder>(application.moc());
    const auto dueTomorrow = objectstore::Predicate::format("dueDate <= RELATIVE(86400.0, 86400.0, 0, NO)");
    folder.setPredicate(dueTomorrow);
    application.add(aTask().due("2026-11-26"));
    const auto found = [&] { return folder.tasks(application.user).size(); };
    delegate().applicationDidFinishLaunching();
    EXPECT_EQ(found(), 0U);
    application.clock.set(at("2026-11-25 00:00"));
    delegate().checkSecondActions();
    EXPECT_EQ(found(), 1U);
    EXPECT_EQ(folder.predicate(), model::withRelativeDatesAt(dueTomorrow, at("2026-11-25 00:00")));
}

TEST_F(Delegate, asksWhetherToQuitWhenTheSaveFails)
{
    EXPECT_TRUE(delegate().applicationShouldTerminate());
    auto &task = application.add(aTask().titled("Milk"));
    {
        const RefusingStore refusing(application.folder.path());
        application.user.answer = false;
        EXPECT_FALSE(delegate().applicationShouldTerminate());
        application.user.answer = true;
        EXPECT_TRUE(delegate().applicationShouldTerminate());
    }
    EXPECT_EQ(
        application.user.questions.value(0), QStringLiteral("Could not save changes while quitting. Quit anyway?"));
    EXPECT_EQ(application.user.errors.size(), 2U);
    EXPECT_EQ(task.title(), "Milk");
    EXPECT_TRUE(delegate().applicationShouldTerminate());
    EXPECT_FALSE(application.moc().hasChanges()) << "nothing of it was lost";
    EXPECT_EQ(application.user.questions.size(), 2);
}

TEST_F(Delegate, showsAFailingSaveOnceAndSaysWhenItIsOver)
{
    application.add(aTask());
    {
        const RefusingStore refusing(application.folder.path());
        delegate().saveAction();
        delegate().saveAction();
    }
    EXPECT_EQ(application.user.errors.size(), 1U);
    EXPECT_FALSE(delegate().statusText().isEmpty());
    delegate().saveAction();
    EXPECT_TRUE(delegate().statusText().isEmpty());
}

TEST_F(Delegate, waitsForAnotherWriterBetweenEventsAndTellsOnlyWhenItLasts)
{
    SQLite::Database other((application.folder.path() / "Quelvin.qvl").string(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN IMMEDIATE");
    auto &task = application.add(aTask().titled("Milk"));
    QSignalSpy statusTexts(&delegate(), &TMApplicationDelegate::statusTextChanged);
    delegate().saveAction();
    EXPECT_TRUE(application.moc().hasChanges());
    EXPECT_EQ(statusTexts.count(), 0) << "a short wait is nobody's concern";
    task.setTitle("Milk and bread");
    ASSERT_TRUE(QTest::qWaitFor([&] { return statusTexts.count() > 0; }, 30000));
    EXPECT_THAT(delegate().statusText().toStdString(), testing::HasSubstr("Another program"));
    other.exec("ROLLBACK");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !application.moc().hasChanges(); }, 10000));
    EXPECT_TRUE(delegate().statusText().isEmpty());
    EXPECT_TRUE(application.user.errors.empty());
    EXPECT_EQ(other.execAndGet("SELECT title FROM Tasks").getString(), "Milk and bread");
}

TEST_F(Delegate, F24_a_new_day_is_found_once_however_it_comes)
{
    QSignalSpy days(&delegate(), &TMApplicationDelegate::newDayDidBegin);
    const auto tick = [&](const char *time) {
        days.clear();
        application.clock.set(at(time));
        delegate().checkSecondActions();
        return days.count();
    };
    delegate().initTimers();
    EXPECT_EQ(tick("2026-11-24 09:00"), 1) << "the first tick always finds one";
    EXPECT_EQ(tick("2026-11-24 23:59:59"), 0);
    EXPECT_EQ(tick("2026-11-25 00:00"), 1);
    EXPECT_EQ(delegate().today(), at("2026-11-25"));
    EXPECT_EQ(tick("2026-11-22 23:59"), 1) << "set back";
    EXPECT_EQ(tick("2026-11-27 07:00"), 1) << "slept over more than one midnight";
    EXPECT_EQ(tick("2026-11-27 07:00"), 0) << "and that once";

    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Pacific/Kiritimati");
    days.clear();
    delegate().checkSecondActions();
    EXPECT_EQ(days.count(), 1) << "in another zone";
    EXPECT_EQ(delegate().today(), foundation::startOfLocalDay(application.clock.now()));
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    delegate().checkSecondActions();
    EXPECT_EQ(days.count(), 2);
    EXPECT_EQ(delegate().today(), at("2026-11-27"));
}

TEST(RepeatingSchedule, F24_is_due_once_by_the_clock_through_sleep_and_a_clock_set_back)
{
    using namespace std::chrono_literals;
    app::RepeatingSchedule schedule;
    EXPECT_FALSE(schedule.isDue(at("2026-11-24 09:00"))) << "not started";
    schedule.start(at("2026-11-24 09:00"), 15min);
    EXPECT_FALSE(schedule.isDue(at("2026-11-24 09:14:59")));
    EXPECT_TRUE(schedule.isDue(at("2026-11-24 09:15")));
    EXPECT_FALSE(schedule.isDue(at("2026-11-24 09:29")));
    EXPECT_TRUE(schedule.isDue(at("2026-11-24 17:00"))) << "after a sleep, at once";
    EXPECT_FALSE(schedule.isDue(at("2026-11-24 17:01"))) << "and not once for each quarter slept through";
    EXPECT_FALSE(schedule.isDue(at("2026-11-24 11:00"))) << "set back by six hours";
    EXPECT_TRUE(schedule.isDue(at("2026-11-24 11:15"))) << "which must not be waited for";
    schedule.stop();
    EXPECT_FALSE(schedule.isDue(at("2026-11-25 09:00")));
}

TEST_F(Delegate, synchronisesWheneverTheIntervalHasPassedAndAFailedRunFreesTheNext)
{
    application.settings.set("ToodledoHost", std::string("127.0.0.1:9")); // nothing listens there
    application.settings.set("SyncOnLaunch", true); // means nothing as long as nothing is to be synchronised
    delegate().applicationDidFinishLaunching();
    QSignalSpy ends(&delegate(), &TMApplicationDelegate::syncDidEnd);
    const auto isSyncingAfter = [&](double seconds) {
        application.clock.advance(seconds);
        delegate().checkSecondActions();
        return delegate().isSyncing();
    };
    EXPECT_FALSE(isSyncingAfter(86'400)) << "no interval is set";
    application.settings.set("SyncInterval", std::int64_t{15});
    delegate().resetTimer();
    EXPECT_FALSE(isSyncingAfter(899));
    EXPECT_TRUE(isSyncingAfter(1));
    EXPECT_TRUE(ends.wait(15000));
    EXPECT_TRUE(application.user.alerts.contains(QStringLiteral("Login problem")));
    EXPECT_TRUE(isSyncingAfter(900));
    EXPECT_TRUE(ends.wait(15000));
    EXPECT_FALSE(delegate().isSyncing());
}

TEST_F(Delegate, aDayOfAClockChangeBeginsOnceThoughItHas23Or25Hours)
{
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    foundation::localZoneChanged();
    delegate().initTimers();
    for (const char *midnight : {"2026-03-29", "2026-10-25"}) {
        application.clock.set(at(midnight));
        delegate().checkSecondActions();
        QSignalSpy days(&delegate(), &TMApplicationDelegate::newDayDidBegin);
        for (const foundation::Instant end = foundation::addLocalDays(at(midnight), 1); application.clock.now() < end;
             application.clock.advance(600))
            delegate().checkSecondActions();
        EXPECT_EQ(days.count(), 0) << midnight;
        delegate().checkSecondActions();
        EXPECT_EQ(days.count(), 1) << midnight;
    }
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    foundation::localZoneChanged();
}
