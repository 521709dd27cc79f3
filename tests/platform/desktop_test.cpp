// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/launcher_badge.h"
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
