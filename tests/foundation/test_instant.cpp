// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/instant.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <ctime>
#include <thread>

using namespace foundation;

namespace {

/// Runs a test in one time zone, or moves it to another.
void setZone(const char *name)
{
    ::setenv("TZ", name, 1);
    localZoneChanged();
}

double utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    return static_cast<double>(timegm(&fields));
}

double local(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    const auto instant = fromLocal({year, month, day, hour, minute, second, 0});
    return instant ? instant->seconds : -1;
}

} // namespace

TEST(LocalTime, F22_skippedTimesMoveForwardByTheGap)
{
    setZone("Europe/Berlin");
    EXPECT_EQ(local(2026, 3, 29, 1, 59), utc(2026, 3, 29, 0, 59));
    EXPECT_EQ(local(2026, 3, 29, 2, 30), utc(2026, 3, 29, 1, 30)); // shown as 03:30
    EXPECT_EQ(local(2026, 3, 29, 3, 0), utc(2026, 3, 29, 1, 0));
    EXPECT_EQ(toLocal(Instant{utc(2026, 3, 29, 1, 30)}), (CivilTime{2026, 3, 29, 3, 30, 0, 0}));

    setZone("Australia/Lord_Howe"); // a clock change of half an hour
    EXPECT_EQ(local(2026, 10, 4, 2, 10), utc(2026, 10, 3, 15, 40)); // shown as 02:40
    EXPECT_EQ(toLocal(Instant{local(2026, 10, 4, 2, 10)}), (CivilTime{2026, 10, 4, 2, 40, 0, 0}));
}

TEST(LocalTime, F22_daysAreCalendarDaysAcrossClockChanges)
{
    setZone("Europe/Berlin");
    const Instant before{local(2026, 3, 28, 14, 5)};
    EXPECT_EQ(addLocalDays(before, 1).seconds, local(2026, 3, 29, 14, 5));
    EXPECT_EQ(addLocalDays(before, 1).seconds - before.seconds, 23 * 3600);
    EXPECT_EQ(addLocalDays(before, -400).seconds, local(2025, 2, 21, 14, 5));
    EXPECT_EQ(startOfLocalDay(Instant{local(2026, 3, 29, 23, 59, 59)}).seconds, local(2026, 3, 29));
    setZone("America/Sao_Paulo"); // a midnight that does not exist: the day begins at one
    EXPECT_EQ(startOfLocalDay(Instant{local(2018, 11, 4, 12)}).seconds, utc(2018, 11, 4, 3));
}

TEST(LocalTime, agreesWithTheCLibraryForEveryHourOfFiveYears)
{
    for (const char *zone : {"Europe/Berlin", "Australia/Lord_Howe", "America/New_York", "Asia/Kathmandu"}) {
        setZone(zone);
        // Backwards and on another thread too, so that a wrongly kept offset shows itself.
        const auto check = [&](double first, double step) {
            for (int i = 0; i < 5 * 366 * 24; ++i) {
                const double seconds = first + i * step;
                const auto moment = static_cast<std::time_t>(seconds);
                std::tm fields{};
                localtime_r(&moment, &fields);
                const CivilTime civil{fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                    fields.tm_min, fields.tm_sec, 0};
                ASSERT_EQ(toLocal(Instant{seconds}), civil);
                const double back = fromLocal(civil)->seconds;
                ASSERT_LE(back, seconds); // earlier only for the second coming of a doubled time
                ASSERT_EQ(toLocal(Instant{back}), civil);
            }
        };
        std::thread backwards(check, utc(2027, 1, 1), -3600);
        check(utc(2022, 1, 1), 3600);
        backwards.join();
    }
}

TEST(LocalTime, datesThatDoNotExistAreRefused)
{
    setZone("Europe/Berlin");
    for (const CivilTime &time :
        {CivilTime{2026, 2, 29}, CivilTime{2100, 2, 29}, CivilTime{2026, 0, 1}, CivilTime{2026, 13, 1},
            CivilTime{2026, 4, 31}, CivilTime{2026, 1, 1, 24}, CivilTime{10000, 1, 1}, CivilTime{2026, 1, 1, 0, 60}})
        EXPECT_FALSE(fromLocal(time)) << time.year << "-" << time.month << "-" << time.day;
    EXPECT_EQ(local(2024, 2, 29), utc(2024, 2, 28, 23));
    EXPECT_EQ(local(2106, 2, 8), utc(2106, 2, 7, 23));
    EXPECT_TRUE(fromLocal(CivilTime{0, 1, 1}));
    EXPECT_EQ(toLocal(Instant{1e300}).year, 9999);
}

RC_GTEST_PROP(Iso8601, everyMillisecondSurvives, ())
{
    setZone(*rc::gen::elementOf(std::vector<const char *>{"Europe/Berlin", "Australia/Lord_Howe", "UTC"}));
    const auto milliseconds = *rc::gen::inRange<std::int64_t>(-60'000'000'000'000, 250'000'000'000'000);
    const Instant instant{static_cast<double>(milliseconds) / 1000.0};
    const auto back = fromIso8601(toIso8601(instant));
    RC_ASSERT(back.has_value());
    RC_ASSERT(back->seconds == instant.seconds);
}

TEST(Iso8601, readsTheFormsThatPeopleAndProgramsWrite)
{
    setZone("Europe/Berlin");
    EXPECT_EQ(toIso8601(Instant{utc(2026, 12, 1, 13)}), "2026-12-01T14:00:00+01:00");
    EXPECT_EQ(toIso8601(Instant{utc(2026, 12, 1, 13) + 0.25}), "2026-12-01T14:00:00.250+01:00");
    const double noon = utc(2026, 12, 1, 12);
    for (const char *text : {"2026-12-01T12:00:00Z", "2026-12-01 13:00", "2026-12-01T13:00:00",
             "2026-12-01T07:00-05:00", "2026-12-01T12:00:00.000Z"})
        EXPECT_EQ(fromIso8601(text).value_or(Instant{}).seconds, noon) << text;
    EXPECT_EQ(fromIso8601("2026-12-01")->seconds, local(2026, 12, 1));
    for (const char *text : {"", "2026", "2026-12-1", "2026-02-30", "2026-12-01T", "2026-12-01T25:00",
             "2026-12-01T12:00:", "2026-12-01T12:00:00+1", "2026-12-01T12:00:00.Z", "2026-12-01T12:00:00Zx",
             "-026-12-01"})
        EXPECT_FALSE(fromIso8601(text)) << text;
}
