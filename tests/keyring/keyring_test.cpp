// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyring/keyring.h"

#include "support/private_bus.h"

#include <QDBusVirtualObject>
#include <QProcess>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

using keyring::Keyring;

#ifdef __SANITIZE_ADDRESS__
// So that what GIO loses is seen to be GIO's: for each call a few bytes, as the loop that would free them has ended.
extern "C" const char *__asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
#endif

namespace {

constexpr int refused = static_cast<int>(foundation::SecretStoreErrorCode::Refused);

/// Every test has the same bus: the library below keeps the first that it meets.
class Keyrings : public testing::Test
{
protected:
    static void SetUpTestSuite() { bus = std::make_unique<support::PrivateBus>(); }
    static void TearDownTestSuite() { bus.reset(); }

    Keyrings() { qputenv("DBUS_SESSION_BUS_ADDRESS", bus->address().toUtf8()); }
    ~Keyrings() override
    {
        service.kill();
        service.waitForFinished();
    }

    void startService()
    {
        service.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(SECRET_SERVICE)});
        waitFor("ready\n");
    }
    /// From now on it asks its user, who closes each prompt.
    void lock()
    {
        service.write("lock\n");
        waitFor("locked\n");
    }
    void waitFor(const QByteArray &line)
    {
        while (!service.canReadLine() && service.waitForReadyRead(10'000)) { }
        if (service.readLine() != line)
            throw std::runtime_error("the secret service: " + service.readAllStandardError().toStdString());
    }

    static inline std::unique_ptr<support::PrivateBus> bus;
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
        m_bus = bus.name();
    }
    ~SilentService() override { QDBusConnection::disconnectFromBus(m_bus); }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &, const QDBusConnection &) override { return true; }

private:
    QString m_bus;
};

} // namespace

TEST_F(Keyrings, giveBackWhatTheyWereGivenAndToNobodyElse)
{
    startService();
    Keyring ours("/home/ana/settings.json");
    Keyring others("/home/ana/other.json");
    EXPECT_EQ(ours.read("password", {}), std::nullopt);
    for (const std::string secret : {"first", "pass=word; \xc3\xa9\n", "\xff\xfe"}) {
        ASSERT_TRUE(ours.write("password", secret, {}));
        EXPECT_EQ(ours.read("password", {}), secret);
    }
    EXPECT_EQ(others.read("password", {}), std::nullopt);
    EXPECT_EQ(ours.read("other", {}), std::nullopt);
    EXPECT_TRUE(others.remove("password", {}));
    EXPECT_TRUE(ours.read("password", {}).value());
    EXPECT_TRUE(ours.remove("password", {}));
    EXPECT_EQ(ours.read("password", {}), std::nullopt);
}

TEST_F(Keyrings, sayAtOnceThatThereIsNoBus)
{
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nonexistent");
    Keyring keyring("settings.json");
    EXPECT_FALSE(keyring.read("password", {}).error().message.empty());
    EXPECT_FALSE(keyring.write("password", "x", {}).error().message.empty());
    EXPECT_FALSE(keyring.remove("password", {}).error().message.empty());
}

TEST_F(Keyrings, keepNobodyWaitingWhoWillNotWait)
{
    SilentService silent(bus->connection());
    Keyring keyring("settings.json");
    const auto begin = std::chrono::steady_clock::now();
    std::stop_source stop;
    std::jthread quitting([&stop] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        stop.request_stop();
    });
    EXPECT_EQ(keyring.read("password", {.stop = stop.get_token()}).error().code, refused);
    EXPECT_EQ(keyring.write("password", "x", {.patience = std::chrono::milliseconds(100)}).error().code, refused);
    // the bus itself gives up after half a minute
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
}

TEST_F(Keyrings, answerWhenTheyAreStartedAnew)
{
    startService();
    Keyring keyring("settings.json");
    ASSERT_TRUE(keyring.write("password", "first", {}));
    service.kill();
    service.waitForFinished();
    EXPECT_EQ(keyring.read("password", {}).error().code, static_cast<int>(foundation::SecretStoreErrorCode::NoStore));
    startService();
    ASSERT_TRUE(keyring.write("password", "second", {}));
    EXPECT_EQ(keyring.read("password", {}), "second");
}

TEST_F(Keyrings, sayThatTheirUserDidNotUnlockThem)
{
    startService();
    Keyring keyring("settings.json");
    ASSERT_TRUE(keyring.write("password", "kept", {}));
    lock();
    EXPECT_EQ(keyring.read("password", {}).error().code, refused);
    EXPECT_EQ(keyring.write("password", "new", {}).error().code, refused);
    EXPECT_EQ(keyring.remove("password", {}).error().code, refused);
}
