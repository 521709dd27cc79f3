// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop_location.h"
#include "platform/location_managers.h"
#include "support/location_service.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

#include <QElapsedTimer>
#include <QTest>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <pty.h>
#include <random>
#include <unistd.h>

using location::Coordinate;
using location::LocationErrorCode;

namespace {

std::string sentence(const std::string &content)
{
    unsigned sum = 0;
    for (const char byte : content)
        sum ^= static_cast<unsigned char>(byte);
    return QStringLiteral("$%1*%2\r\n")
        .arg(QString::fromStdString(content))
        .arg(sum, 2, 16, QLatin1Char('0'))
        .toUpper()
        .toStdString();
}

/// A fix at 13° 25' east, at a latitude in degrees and minutes and a time of the day.
std::string fix(const std::string &latitude, const std::string &time)
{
    return sentence("GPRMC," + time + ",A," + latitude + ",N,01325.000,E,0.0,0.0,241126,,,A");
}

class LocationSource : public testing::Test
{
protected:
    void start(const std::string &source) { begin(platform::makeLocationManager(source, 4800, {})); }
    void begin(std::unique_ptr<location::LocationManager> begun)
    {
        manager = std::move(begun);
        manager->startUpdatingLocation({
            .didUpdateToLocation = [this](const Coordinate &place) { places.push_back(place); },
            .didFailWithError = [this](const foundation::Error &error) { errors.push_back(error); },
        });
    }
    std::string write(const std::string &content)
    {
        const auto file = (folder.path() / "recording.nmea").string();
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }
    bool reaches(double latitude)
    {
        return QTest::qWaitFor(
            [&] { return !places.empty() && std::abs(places.back().latitude - latitude) < 1e-6; }, 10'000);
    }
    bool fails()
    {
        return QTest::qWaitFor([&] { return !errors.empty(); }, 10'000);
    }

    support::TemporaryFolder folder;
    std::unique_ptr<location::LocationManager> manager;
    std::vector<Coordinate> places;
    std::vector<foundation::Error> errors;
};

} // namespace

TEST_F(LocationSource, aRecordingIsPlayedAtItsPaceAndStaysAtItsEnd)
{
    start(write("a line of a log\n" + fix("5230.000", "120000.00") + fix("4808.000", "120001.00")));
    ASSERT_TRUE(reaches(52.5));
    QElapsedTimer pace;
    pace.start();
    ASSERT_TRUE(reaches(48 + 8 / 60.0));
    EXPECT_GT(pace.elapsed(), 500);
    EXPECT_NEAR(places.back().longitude, 13 + 25 / 60.0, 1e-6);
    QTest::qWait(300);
    EXPECT_TRUE(errors.empty());
}

TEST_F(LocationSource, aReceiverIsHeardThroughNoiseAndAFloodUntilItGoes)
{
    int receiver = -1;
    int device = -1;
    char name[64] = {};
    ASSERT_EQ(::openpty(&receiver, &device, name, nullptr, nullptr), 0);
    start(name);
    const auto send = [&](const std::string &bytes) {
        ASSERT_EQ(::write(receiver, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    };
    send("\x80\xff$GPRMC,broken*00\r\n$GPGGA,,,\r\n" + fix("5230.000", "120000.00"));
    ASSERT_TRUE(reaches(52.5));
    for (int second = 1; second < 40; ++second)
        send(fix("4808.000", "1200" + std::to_string(100 + second).substr(1) + ".00"));
    ASSERT_TRUE(reaches(48 + 8 / 60.0));
    ::fcntl(receiver, F_SETFL, O_NONBLOCK);
    char echo = 0;
    EXPECT_LT(::read(receiver, &echo, 1), 0) << "nothing is said back";
    ::close(device);
    ::close(receiver);
    ASSERT_TRUE(fails());
    EXPECT_THAT(errors[0].message, testing::HasSubstr("sends no positions any more"));
}

TEST_F(LocationSource, whatIsNoSourceSaysSoAndHoldsNobodyUp)
{
    std::mt19937 random(4711);
    std::string noise(300'000, 0);
    for (char &byte : noise)
        byte = static_cast<char>(random());
    for (const std::string &source : {std::string("/nowhere/at/all"), folder.path().string(), std::string("/dev/zero"),
             std::string("/dev/null"), write(noise), write(""), write(std::string(100'000, '$'))}) {
        errors.clear();
        start(source);
        QElapsedTimer turn;
        qint64 longest = 0;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                longest = std::max(longest, turn.isValid() ? turn.elapsed() : 0);
                turn.start();
                return !errors.empty();
            },
            10'000))
            << source;
        EXPECT_LT(longest, 500) << source;
        EXPECT_EQ(errors[0].code, static_cast<int>(LocationErrorCode::Unavailable)) << source;
    }
    EXPECT_TRUE(places.empty());
}

TEST_F(LocationSource, sentencesThatLieAreDropped)
{
    const std::string huge(400, '9');
    std::string recording;
    for (const std::string &content : {std::string("GPRMC,,,,,,,,,,,,"), std::string("GPRMC"),
             std::string("GPGGA,,,,,,"), "GPRMC,120000.00,A," + huge + ",N,01325.000,E,0.0,0.0,241126,,,A",
             std::string("GPRMC,120000.00,A,9930.000,N,01325.000,E,0.0,0.0,241126,,,A"),
             std::string("GPRMC,120000.00,A,nan,N,inf,E,0.0,0.0,241126,,,A"),
             std::string("GPRMC,996199.00,A,5230.000,N,01325.000,E,0.0,0.0,999999,,,A"),
             std::string("GPRMC,120000.00,V,5131.000,N,01325.000,E,0.0,0.0,241126,,,N")})
        recording += sentence(content);
    start(write(recording + fix("5230.000", "120000.10") + fix("5230.000", "115959.00") // back in time
        + sentence("GPRMC,120000.50,A,4808.000,N,01325.000,E,0.0,0.0,241199,,,A"))); // 73 years on
    ASSERT_TRUE(reaches(52.5));
    QTest::qWait(200);
    for (const Coordinate &place : places)
        EXPECT_TRUE(!isOnEarth(place) || std::abs(place.latitude - 52.5) < 1e-6) << place.latitude;
    manager.reset(); // while it waits for the far future
}

TEST_F(LocationSource, theDesktopsServiceTellsRefusesAndGoes)
{
    support::PrivateBus bus;
    const auto startOn = [&](const QDBusConnection &connection) {
        errors.clear();
        begin(std::make_unique<platform::DesktopLocation>(connection, QStringLiteral("org.quelvin.Quelvin")));
    };
    for (const QDBusConnection &connection : {bus.connection(), QDBusConnection(QString())}) {
        startOn(connection);
        ASSERT_TRUE(fails());
        EXPECT_EQ(errors[0].code, static_cast<int>(LocationErrorCode::Unavailable)) << errors[0].message;
    }
    auto service = std::make_unique<support::LocationService>(bus.connection());
    service->client.isAllowed = false;
    startOn(bus.connection());
    ASSERT_TRUE(fails());
    EXPECT_EQ(errors[0].code, static_cast<int>(LocationErrorCode::Denied)) << errors[0].message;

    service->client.isAllowed = true;
    startOn(bus.connection());
    ASSERT_TRUE(QTest::qWaitFor([&] { return service->client.isStarted; }));
    EXPECT_EQ(service->client.desktopId, QStringLiteral("org.quelvin.Quelvin"));
    service->tell();
    ASSERT_TRUE(reaches(52.4915));
    EXPECT_TRUE(errors.empty());
    service.reset();
    ASSERT_TRUE(fails());
    EXPECT_EQ(errors[0].code, static_cast<int>(LocationErrorCode::Unavailable));
}
