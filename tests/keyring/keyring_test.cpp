// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyring/keyring.h"

#include "support/private_bus.h"

#include <QDBusVirtualObject>
#include <QProcess>
#include <gtest/gtest.h>
#include <thread>

using keyring::Keyring;

namespace {

/// The programs of a test share one bus: the library below keeps the first that it meets.
class Keyrings : public testing::Test
{
protected:
    Keyrings() { qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8()); }

    support::PrivateBus bus;
};

class KeyringOnABus : public Keyrings
{
protected:
    KeyringOnABus()
    {
        service.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(SECRET_SERVICE)});
        if (!service.waitForReadyRead(10'000))
            throw std::runtime_error("no secret service: " + service.readAllStandardError().toStdString());
    }
    ~KeyringOnABus() override
    {
        service.kill();
        service.waitForFinished();
    }

    QProcess service;
};

/// Holds the name of a keyring and answers nothing, as one does whose user has not typed its password yet.
class SilentService final : public QDBusVirtualObject
{
public:
    explicit SilentService(QDBusConnection bus)
    {
        bus.registerVirtualObject(QStringLiteral("/org/freedesktop/secrets"), this, QDBusConnection::SubPath);
        bus.registerService(QStringLiteral("org.freedesktop.secrets"));
    }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &, const QDBusConnection &) override { return true; }
};

} // namespace

TEST_F(KeyringOnABus, givesBackWhatItWasGivenAndToNobodyElse)
{
    Keyring ours("/home/ana/settings.json");
    Keyring others("/home/ana/other.json");
    EXPECT_EQ(ours.read("password"), std::nullopt);
    for (const std::string secret : {"first", "pass=word; \xc3\xa9\n", "\xff\xfe"}) {
        ASSERT_TRUE(ours.write("password", secret));
        EXPECT_EQ(ours.read("password"), secret);
    }
    EXPECT_EQ(others.read("password"), std::nullopt);
    EXPECT_EQ(ours.read("other"), std::nullopt);
    EXPECT_TRUE(others.remove("password"));
    EXPECT_TRUE(ours.read("password").value());
    EXPECT_TRUE(ours.remove("password"));
    EXPECT_EQ(ours.read("password"), std::nullopt);
}

TEST_F(Keyrings, sayAtOnceThatThereIsNoBus)
{
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nonexistent");
    Keyring keyring("settings.json");
    EXPECT_FALSE(keyring.read("password").error().message.empty());
    EXPECT_FALSE(keyring.write("password", "x").error().message.empty());
    EXPECT_FALSE(keyring.remove("password").error().message.empty());
}

TEST_F(Keyrings, letTheProgramEndWhileTheUserIsBeingAsked)
{
    SilentService silent(bus.connection());
    Keyring keyring("settings.json");
    std::jthread quitting([&keyring] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        keyring.cancel();
    });
    EXPECT_FALSE(keyring.read("password"));
    EXPECT_FALSE(keyring.write("password", "x")); // nor does it wait later
}
