// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "platform/desktop_notifications.h"
#include "platform/launcher_badge.h"
#include "support/notification_server.h"
#include "support/private_bus.h"

#include <QDBusArgument>
#include <QTest>

namespace {

class Desktop : public testing::Test
{
protected:
    support::PrivateBus bus;
};

} // namespace

TEST_F(Desktop, launchersHearTheFirstNumberOfTheBadgeAndThatItGoes)
{
    support::SignalListener launcher(
        bus.connection(), QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    const auto entry = [&](int place) {
        return qdbus_cast<QVariantMap>(launcher.received.at(place).arguments().at(1).value<QDBusArgument>());
    };
    {
        platform::LauncherBadge badge(bus.connection(), QStringLiteral("quelvin"));
        badge.show(QStringLiteral("3/7"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return launcher.received.size() == 1; }));
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return launcher.received.size() == 2; }));
    EXPECT_EQ(launcher.received.at(0).arguments().at(0).toString(), QStringLiteral("application://quelvin.desktop"));
    EXPECT_EQ(entry(0).value(QStringLiteral("count")).toLongLong(), 3);
    EXPECT_TRUE(entry(0).value(QStringLiteral("count-visible")).toBool());
    EXPECT_FALSE(entry(1).value(QStringLiteral("count-visible")).toBool()) << "a program that ended waits for nobody";
}

TEST_F(Desktop, aNotificationIsShownAsPlainTextWhateverTheServerMakesOfMarkup)
{
    for (const bool hasMarkup : {false, true}) {
        support::PrivateBus desktop;
        support::NotificationServer server(desktop.connection());
        if (hasMarkup)
            server.capabilities.append(QStringLiteral("body-markup"));
        platform::DesktopNotifications notifications(
            desktop.connection(), QStringLiteral("Quelvin"), QStringLiteral("quelvin"));
        notifications.show({.title = QStringLiteral("A & B"), .body = QStringLiteral("<b>C</b>")});
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.shown.size() == 1; }));
        EXPECT_EQ(server.shown[0].title, QStringLiteral("A & B"));
        EXPECT_EQ(
            server.shown[0].body, hasMarkup ? QStringLiteral("&lt;b&gt;C&lt;/b&gt;") : QStringLiteral("<b>C</b>"));
    }
}

TEST_F(Desktop, anActionReachesItsNotificationAloneAndNoneAfterItWasClosed)
{
    support::NotificationServer server(bus.connection());
    platform::DesktopNotifications notifications(
        bus.connection(), QStringLiteral("Quelvin"), QStringLiteral("quelvin"));
    QStringList chosen;
    const auto show = [&](const char *name) {
        return notifications.show({.title = QString::fromLatin1(name),
                                      .body = {},
                                      .actions = {{QStringLiteral("stop"), QStringLiteral("Stop")}}},
            [&chosen, name](const QString &action) { chosen.append(QString::fromLatin1(name) + action); });
    };
    const int first = show("first ");
    show("second ");
    const int hasty = show("hasty ");
    notifications.close(hasty); // before the server has been asked
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.shown.size() == 2; }));
    EXPECT_EQ(server.shown[0].actions, QStringList({QStringLiteral("stop"), QStringLiteral("Stop")}));
    QTest::qWait(50); // for the answers
    Q_EMIT server.ActionInvoked(server.shown[1].id, QStringLiteral("stop"));
    Q_EMIT server.ActionInvoked(4711, QStringLiteral("stop")); // another program's
    ASSERT_TRUE(QTest::qWaitFor([&] { return !chosen.isEmpty(); }));
    notifications.close(first);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !server.closed.empty(); }));
    EXPECT_EQ(server.closed, std::vector<uint>{server.shown[0].id});
    Q_EMIT server.ActionInvoked(server.shown[0].id, QStringLiteral("stop"));
    QTest::qWait(50);
    EXPECT_EQ(chosen, QStringList{QStringLiteral("second stop")});
}

TEST_F(Desktop, aNotificationThatNobodyShowsIsInTheLog)
{
    std::vector<std::string> lines;
    foundation::setLogSink([&](std::string_view line) { lines.emplace_back(line); });
    platform::DesktopNotifications notifications(
        bus.connection(), QStringLiteral("Quelvin"), QStringLiteral("quelvin"));
    const int shown = notifications.show({.title = QStringLiteral("Sync"), .body = QStringLiteral("Complete")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !lines.empty(); }));
    foundation::setLogSink({});
    EXPECT_EQ(lines, std::vector<std::string>{"Sync: Complete"});
    notifications.close(shown);
}
