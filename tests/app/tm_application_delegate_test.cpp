// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application_delegate.h"

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

TEST_F(Delegate, noticesWhatAnotherProgramSaves)
{
    delegate().applicationDidFinishLaunching();
    QSignalSpy changes(&delegate(), &TMApplicationDelegate::storeDidChangeElsewhere);
    const auto other = application.openStore();
    aTask().titled("Milk").addTo({other->managedObjectContext(), application.user});
    ASSERT_TRUE(other->managedObjectContext().save());
    EXPECT_TRUE(changes.wait(5000));
    EXPECT_EQ(application.moc().count(model::everyTask()), 1);
}

TEST_F(Delegate, quitsAtOnceWithoutChangesAndAfterASave)
{
    EXPECT_TRUE(delegate().applicationShouldTerminate());
    application.add(aTask());
    EXPECT_TRUE(delegate().applicationShouldTerminate());
    EXPECT_FALSE(application.moc().hasChanges());
    EXPECT_TRUE(application.user.questions.isEmpty());
}

TEST_F(Delegate, asksWhetherToQuitWhenTheSaveFails)
{
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
    delegate().saveAction();
    EXPECT_FALSE(application.moc().hasChanges()) << "nothing of it was lost";
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

TEST_F(Delegate, findsANewDayAtTheFirstTickAndAtMidnight)
{
    QSignalSpy days(&delegate(), &TMApplicationDelegate::newDayDidBegin);
    delegate().initTimers();
    delegate().checkSecondActions();
    EXPECT_EQ(days.count(), 1) << "the first tick always finds one";
    delegate().checkSecondActions();
    EXPECT_EQ(days.count(), 1);
    application.clock.set(at("2026-11-25 00:00"));
    delegate().checkSecondActions();
    EXPECT_EQ(days.count(), 2);
    EXPECT_EQ(delegate().today(), at("2026-11-25"));
}

TEST_F(Delegate, badgeCountsTodayAndTheInbox)
{
    EXPECT_EQ(delegate().dockBadge(), QString());
    for (int number = 0; number < 5; ++number)
        application.add(aTask());
    EXPECT_EQ(delegate().dockBadge(), QStringLiteral("5"));
    application.add(aTask().in("House").due("2026-11-24"));
    application.add(aTask().in("House").starting("2026-11-23"));
    EXPECT_EQ(delegate().dockBadge(), QStringLiteral("2/5"));
    application.settings.set("ShowTodayInBadge", false);
    EXPECT_EQ(delegate().dockBadge(), QStringLiteral("5"));
    application.settings.set("ShowInboxInBadge", false);
    EXPECT_EQ(delegate().dockBadge(), QString());
}

TEST_F(Delegate, synchronisesAtLaunchOnlyWhenBothSettingsSaySo)
{
    application.settings.set("SyncOnLaunch", true);
    delegate().applicationDidFinishLaunching();
    EXPECT_FALSE(delegate().isSyncing());
}

TEST_F(Delegate, aRunWithoutAnAddressEndsWithAnAlertAndFreesTheNext)
{
    delegate().applicationDidFinishLaunching();
    QSignalSpy ends(&delegate(), &TMApplicationDelegate::syncDidEnd);
    application.settings.set("ToodledoHost", std::string("127.0.0.1:9")); // nothing listens there
    delegate().synchronizeTasks();
    EXPECT_TRUE(delegate().isSyncing());
    EXPECT_TRUE(ends.wait(15000));
    EXPECT_FALSE(delegate().isSyncing());
    EXPECT_TRUE(application.user.alerts.contains(QStringLiteral("Login problem")));
    delegate().synchronizeTasks();
    EXPECT_TRUE(ends.wait(15000));
}
