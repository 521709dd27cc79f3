// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/date_reader.h"

#include "cli/command_error.h"
#include "support/test_clock.h"

#include <gtest/gtest.h>

namespace {

using support::at;

const foundation::Instant now = at("2026-11-24 09:00"); // a Tuesday

TEST(DateReader, readsWhatPeopleType)
{
    const std::pair<const char *, const char *> cases[]{
        {"2026-12-24", "2026-12-24"},
        {"2026-12-24T17:00", "2026-12-24 17:00"},
        {"today", "2026-11-24"},
        {"Today 8:05", "2026-11-24 08:05"},
        {"tomorrow", "2026-11-25"},
        {"yesterday", "2026-11-23"},
        {"+3d", "2026-11-27"},
        {"+2w 7:30", "2026-12-08 07:30"},
        {"-1d", "2026-11-23"},
        {"17:00", "2026-11-24 17:00"},
        {"fri 17:00", "2026-11-27 17:00"},
        {"SATURDAY", "2026-11-28"},
    };
    for (const auto &[text, expected] : cases) {
        const auto date = cli::readDate(text, now);
        ASSERT_TRUE(date) << text;
        EXPECT_EQ(foundation::toIso8601(*date), foundation::toIso8601(at(expected))) << text;
    }
}

TEST(DateReader, everyWeekdayNameIsTheNextSuchDayFromEveryDayOfTheWeek)
{
    const char *const names[]{"friday", "saturday", "sunday", "monday", "tuesday", "wednesday", "thursday"};
    const auto friday = at("2027-02-26");
    for (int start = 0; start < 7; ++start) {
        for (int ahead = 1; ahead <= 7; ++ahead) {
            const auto date = cli::readDate(names[(start + ahead) % 7], foundation::addLocalDays(friday, start));
            ASSERT_TRUE(date);
            EXPECT_EQ(*date, foundation::addLocalDays(friday, start + ahead)) << start << " days on";
        }
    }
}

TEST(DateReader, refusesWhatIsNoDateAndSaysWhat)
{
    for (const char *text : {"", " ", "fryday", "fr", "+3", "+d", "3d", "+-3d", "today 25:00", "today 9:5", "9:60",
             "friday 17", "tomorrow tomorrow", "2026-13-01", "2026-02-30", "+99999999999d", "+400001d"}) {
        const auto date = cli::readDate(text, now);
        ASSERT_FALSE(date) << text;
        EXPECT_EQ(cli::exitStatus(date.error()), 2);
        EXPECT_NE(date.error().message.find('"' + std::string(text) + '"'), std::string::npos) << date.error().message;
    }
}

TEST(DateReader, aDayAfterTheClockChangeStillBeginsAtMidnight)
{
    const char *before = std::getenv("TZ");
    const std::string kept = before ? before : "";
    ::setenv("TZ", "Europe/Berlin", 1);
    ::tzset();
    foundation::localZoneChanged();
    const auto date = cli::readDate("tomorrow", at("2026-10-25 00:30")); // 25 hours long
    EXPECT_EQ(foundation::toIso8601(*date), "2026-10-26T00:00:00+01:00");
    before ? ::setenv("TZ", kept.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
    foundation::localZoneChanged();
}

} // namespace
