// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/main_thread_sync_host.h"

#include "support/test_application.h"

#include <QTest>
#include <QThread>
#include <atomic>
#include <thread>

namespace {

class SyncHost : public testing::Test
{
protected:
    support::TestApplication application;
    int saves = 0;
    app::MainThreadSyncHost host{
        application.moc(), application.delegate().editTracking(), application.user, [this] { ++saves; }};
};

/// Notes on which thread the user was asked.
class ThreadNotingUser final : public support::TestUser
{
public:
    bool ask(const QString &, const QString &, const QString &) override
    {
        thread = QThread::currentThread();
        return true;
    }

    std::atomic<QThread *> thread = nullptr;
};

} // namespace

TEST_F(SyncHost, asksOnTheMainThreadWhileOnlyTheRunWaits)
{
    ThreadNotingUser user;
    app::MainThreadSyncHost asking(application.moc(), application.delegate().editTracking(), user, [] {});
    std::atomic<bool> isAllowed = false;
    std::atomic<bool> isOver = false;
    std::thread run([&] {
        isAllowed = asking.allowsDeletions("Delete 3 of 4?");
        isOver = true;
    });
    QTest::qWait(20);
    EXPECT_TRUE(QTest::qWaitFor([&] { return isOver.load(); }, 5000));
    run.join();
    EXPECT_TRUE(isAllowed);
    EXPECT_EQ(user.thread, QThread::currentThread());
}

TEST_F(SyncHost, keepsTheOrderOfWhatARunSays)
{
    QStringList said;
    QObject::connect(&host, &app::MainThreadSyncHost::statusChanged, &host, [&](const QString &text) { said += text; });
    QObject::connect(&host, &app::MainThreadSyncHost::syncDidEnd, &host, [&] { said += QStringLiteral("end"); });
    std::thread run([&] {
        host.unregisterForChangeNotifications();
        host.updateStatus("Retrieving tasks...");
        host.updateStatus("");
        host.registerForChangeNotifications();
        host.post(syncing::SyncNotification::QVLSyncDidEnd);
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return said.contains(QStringLiteral("end")); }, 5000));
    run.join();
    EXPECT_EQ(said.join(QLatin1Char('|')).toStdString(), "Retrieving tasks...||end");
    EXPECT_TRUE(application.delegate().editTracking().isRegistered());
}

TEST_F(SyncHost, freesARunThatWaitsWhenTheProgramEnds)
{
    std::atomic<bool> isOver = false;
    std::thread run([&] {
        host.displayAlert("Login problem", "Nobody will ever see this.");
        isOver = host.allowsDeletions("Delete everything?") == false;
    });
    // the event loop does not turn: only this can end the wait
    host.stopServing();
    run.join();
    EXPECT_TRUE(isOver);
    QTest::qWait(10);
    EXPECT_TRUE(application.user.alerts.isEmpty()) << "what came too late is dropped";
}
