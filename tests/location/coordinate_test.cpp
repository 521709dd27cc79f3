// SPDX-License-Identifier: GPL-3.0-or-later
#include "location/coordinate_text.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

using location::Coordinate;
using location::CoordinateErrorCode;
using location::readCoordinate;

TEST(Coordinates, areReadAsPeopleAndMapsWriteThem)
{
    const Coordinate garden{52.4915, 13.4236};
    const std::pair<const char *, Coordinate> cases[] = {
        {"52.4915, 13.4236", garden},
        {"  52.4915 13.4236 ", garden},
        {"52,4915 13,4236", garden},
        {"52,4915, 13,4236", garden},
        {"52,4915; 13,4236", garden},
        {"+52.4915,+13.4236", garden},
        {"52.4915° N, 13.4236° E", garden},
        {"E 13.4236 N 52.4915", garden},
        {"geo:52.4915,13.4236,34;crs=wgs84?z=12", garden},
        {"52°29.49'N 13°25.416'E", garden},
        {"N52 29,49 E13 25,416", garden},
        {"52° 29′ 29.4″ N, 13° 25′ 24.96″ E", garden},
        {"52 29 29.4 13 25 24.96", garden},
        {"52:29:29.4 13:25:24.96", garden},
        {"52° 29' 29.4'' 13.4236", garden},
        {"33° 51′ 24″ s, 151° 12′ 54″ e", {-33.856666666666667, 151.215}},
        {"\u221222.9519, \u221243.2105", {-22.9519, -43.2105}},
        {"0,0", {0, 0}},
        {"-90 180", {-90, 180}},
    };
    for (const auto &[text, expected] : cases) {
        const auto read = readCoordinate(text);
        ASSERT_TRUE(read) << text << ": " << read.error().message;
        EXPECT_NEAR(read->latitude, expected.latitude, 1e-9) << text;
        EXPECT_NEAR(read->longitude, expected.longitude, 1e-9) << text;
    }
}

TEST(Coordinates, thatAreNoneOrAreAmbiguousAreRefusedWithASentence)
{
    using enum CoordinateErrorCode;
    const std::pair<std::string, CoordinateErrorCode> cases[] = {
        {"", NoCoordinate},
        {"at home", NoCoordinate},
        {"52.4915", NoCoordinate},
        {"52 29 13", NoCoordinate}, // which of them are minutes?
        {"52,4915,13,4236", NoCoordinate},
        {"52.4915 N", NoCoordinate},
        {"52.4915 N, 13.4236 N", NoCoordinate},
        {"-52.4915 N, 13.4236 E", NoCoordinate},
        {"52.5 29 N, 13 25 E", NoCoordinate},
        {"nan, inf", NoCoordinate},
        {"1e1, 1e1", NoCoordinate},
        {"52.4915, 13.4236, 34", NoCoordinate},
        {std::string(100'000, '1'), NoCoordinate},
        {std::string("52\0 13", 6), NoCoordinate},
        {"52° 60' N, 13° 25' E", MinutesOutOfRange},
        {"52° 29' 60\" N, 13° 25' 0\" E", MinutesOutOfRange},
        {"90.0001, 13", LatitudeOutOfRange},
        {"89° 60.1' S, 13° 0' E", MinutesOutOfRange},
        {"52, -180.01", LongitudeOutOfRange},
        {"99999999999999999999999, 13", LatitudeOutOfRange},
    };
    for (const auto &[text, code] : cases) {
        const auto read = readCoordinate(text);
        ASSERT_FALSE(read) << text;
        EXPECT_EQ(read.error().code, static_cast<int>(code)) << text;
        EXPECT_THAT(read.error().message, testing::EndsWith("."));
    }
}

RC_GTEST_PROP(Coordinates, readBackAsTheyAreShown, ())
{
    const Coordinate place{
        *rc::gen::inRange(-90'000'000, 90'000'001) / 1e6, *rc::gen::inRange(-180'000'000, 180'000'001) / 1e6};
    RC_ASSERT(readCoordinate(coordinateText(place)).value() == place);
}

TEST(Distances, areThoseOverTheGround)
{
    const std::tuple<Coordinate, Coordinate, double> cases[] = {
        {{52.4915, 13.4236}, {52.4915, 13.4236}, 0},
        {{0, 0}, {0, 1}, 111'195},
        {{52.52, 13.405}, {48.8566, 2.3522}, 877'460}, // Berlin and Paris
        {{0, 179.9999}, {0, -179.9999}, 22.24}, // across the date line
        {{90, 0}, {90, 120}, 0},
        {{0, 0}, {0, 180}, 20'015'115},
    };
    for (const auto &[one, other, metres] : cases)
        EXPECT_NEAR(metresBetween(one, other), metres, 1 + metres * 1e-4);
}
