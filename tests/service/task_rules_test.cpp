// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/recurrence.h"
#include "service/server_time.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace service;

namespace {

std::string next(const char *start, const char *due, int repeat, const char *today)
{
    const auto dates = nextOccurrence({start, due}, repeat, today);
    return dates ? dates->start + "|" + dates->due : "none";
}

/// The process's time zone while it lives.
class InZone
{
public:
    explicit InZone(const char *zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~InZone()
    {
        ::unsetenv("TZ");
        ::tzset();
    }
};

} // namespace

TEST(Recurrence, takesOneStepOfEachRhythm)
{
    const char *expected[] = {"none", "|2026-02-07", "|2026-02-28", "|2027-01-31", "|2026-02-01", "|2026-02-14",
        "|2026-03-31", "|2026-07-31", "|2026-04-30", "none"};
    for (int repeat = 0; repeat < 10; ++repeat)
        EXPECT_EQ(next("", "2026-01-31", repeat, "2026-01-31"), expected[repeat]) << repeat;
    EXPECT_EQ(next("", "2026-01-31", -1, "2026-01-31"), "none");
    EXPECT_EQ(next("", "2028-02-29", 3, "2026-01-31"), "|2029-02-28");
    EXPECT_EQ(next("", "2026-01-05", 1, "2026-03-02"), "|2026-03-09"); // today itself counts as past
    EXPECT_EQ(next("", "2026-01-31", 2, "2026-03-01"), "|2026-03-31"); // not the 28th, where February ended
    EXPECT_EQ(next("", "9999-12-31", 4, "2026-03-01"), "none");
    EXPECT_EQ(next("2026-01-29", "2026-01-31", 1, "2026-01-30"), "2026-02-05|2026-02-07");
    EXPECT_EQ(next("2026-01-29", "", 4, "2026-01-29"), "2026-01-30|");
    EXPECT_EQ(next("", "", 4, "2026-01-29"), "|2026-01-30");
}

TEST(ServerTime, readsDatesThatTheCalendarHas)
{
    EXPECT_EQ(readDate("2028-02-29"), "2028-02-29");
    EXPECT_EQ(readDate("0000-00-00"), "");
    EXPECT_EQ(readDate(""), "");
    for (const char *none : {"2026-02-29", "2026-13-01", "26-01-01", "2026-1-1", "2026-01-01x", "0000-01-01"})
        EXPECT_EQ(readDate(none), std::nullopt) << none;
}

TEST(ServerTime, readsAndWritesTimesOfDay)
{
    const std::pair<const char *, const char *> cases[] = {{"09:05 pm", "9:05pm"}, {"12:00 am", "12:00am"},
        {"12:30pm", "12:30pm"}, {"1:00am", "1:00am"}, {"23:59", "11:59pm"}, {"0", ""}, {"", ""}};
    for (const auto &[text, written] : cases) {
        const auto minutes = readTime(text);
        ASSERT_TRUE(minutes) << text;
        std::string xml;
        appendTime(xml, *minutes);
        EXPECT_EQ(xml, written);
    }
    for (const char *none : {"24:00", "13:00 pm", "9:60", "0:30 am", "noon", "9:05 xm"})
        EXPECT_EQ(readTime(none), std::nullopt) << none;
}

TEST(ServerTime, comesBackFromTheTextThatItWasWrittenAs)
{
    const InZone zone("Europe/Berlin");
    for (const std::int64_t seconds : {0LL, 1'795'521'600LL, 1'774'746'000LL, 4'102'444'800LL})
        EXPECT_EQ(readStamp(stampOf(seconds)), seconds);
    const std::int64_t firstHalfPastTwo = 1'792'888'200; // 2026-10-25 02:30, an hour before the clocks show it again
    EXPECT_EQ(stampOf(firstHalfPastTwo), stampOf(firstHalfPastTwo + 3600));
    EXPECT_EQ(readStamp(stampOf(firstHalfPastTwo + 3600)), firstHalfPastTwo);
    EXPECT_TRUE(readStamp("2026-03-29 02:30:00")); // left out by the clocks
    for (const char *none : {"", "2026-01-01 24:00:00", "2026-01-01T10:00:00", "2026-01-01 1:00:00", "soon"})
        EXPECT_EQ(readStamp(none), std::nullopt) << none;
}
