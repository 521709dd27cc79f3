// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/date_text.h"
#include "viewcontrollers/task_cells.h"
#include "viewcontrollers/value_transformers.h"

#include "app/text.h"
#include "support/test_application.h"

using namespace viewcontrollers;
using support::at;
using support::aTask;

namespace {

const foundation::Instant tuesday = at("2026-11-24 09:00");

std::string read(const char *text)
{
    const auto date = parseDate(QString::fromUtf8(text), tuesday);
    return date ? foundation::toIso8601(*date).substr(0, 16) : "nothing";
}

} // namespace

TEST(DateText, readsDatesAsPeopleTypeThem)
{
    const std::pair<const char *, const char *> cases[] = {
        {"today", "2026-11-24T00:00"},
        {"Tomorrow 14:00", "2026-11-25T14:00"},
        {"tomorrow, 9pm", "2026-11-25T21:00"},
        {"12 am", "2026-11-24T00:00"},
        {"fri", "2026-11-27T00:00"},
        {"tuesday", "2026-12-01T00:00"}, // not today: one would say so
        {"next week", "2026-11-30T00:00"}, // Monday, as the calendar's button says
        {"in 3 days", "2026-11-27T00:00"},
        {"+2w", "2026-12-08T00:00"},
        {"26 Nov", "2026-11-26T00:00"},
        {"3 Feb", "2027-02-03T00:00"}, // past this year
        {"29 Feb", "2028-02-29T00:00"},
        {"26 Nov 2027", "2027-11-26T00:00"},
        {"2026-12-01 9:30", "2026-12-01T09:30"},
        {"26.11.2026", "2026-11-26T00:00"},
        {"14:00", "2026-11-24T14:00"},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(read(text), expected) << text;
    for (const char *text : {"", "soon", "31 Feb", "25:00", "12", "tomorrow 99:99"})
        EXPECT_EQ(read(text), "nothing") << text;
}

TEST(NearDate, saysTheDaysNearNowInWords)
{
    const std::pair<const char *, const char *> cases[]
        = {{"2026-11-24 14:00", "Today 14:00"}, {"2026-11-23", "Yesterday"}, {"2026-11-25", "Tomorrow"},
            {"2026-11-27", "Fri"}, {"2026-12-15", "15 Dec"}, {"2027-12-15", "15 Dec 2027"}};
    for (const auto &[date, text] : cases)
        EXPECT_EQ(nearDate(at(date), tuesday).toStdString(), text);
}

TEST(Overdue, comesAtTheTimeOrAtTheEndOfTheDay)
{
    support::TestApplication application;
    EXPECT_FALSE(isOverdue(application.add(aTask().due("2026-11-24")), tuesday));
    EXPECT_TRUE(isOverdue(application.add(aTask().due("2026-11-24 08:59")), tuesday));
    EXPECT_TRUE(isOverdue(application.add(aTask().due("2026-11-23")), tuesday));
    EXPECT_FALSE(isOverdue(application.add(aTask().due("2026-11-23").completed("2026-11-23")), tuesday));
}

TEST(Reminders, readOneWayAndTheOtherExceptForThreeWeeks)
{
    for (const QString &label : reminderLabels()) {
        if (label != QStringLiteral("4 weeks")) {
            EXPECT_EQ(reminderLabel(reminderMinutes(label)), label);
        }
    }
    EXPECT_EQ(reminderLabel(43200), QStringLiteral("3 weeks"));
    EXPECT_EQ(reminderMinutes(QStringLiteral("3 weeks")), 0);
    EXPECT_EQ(reminderMinutes(QStringLiteral("4 weeks")), 43200);
    EXPECT_EQ(reminderLabel(10), QStringLiteral("No Reminder"));
}

TEST(Length, isReadInEveryUsualForm)
{
    const std::pair<const char *, std::optional<std::int64_t>> cases[]
        = {{"45", 45}, {"45 min", 45}, {"1:30", 90}, {"1h30", 90}, {"1.5 h", 90}, {"2 hours", 120}, {"", 0},
            {"1 h 15 min", 75}, {"long", std::nullopt}, {"-5", std::nullopt}, {"1:75", std::nullopt}};
    for (const auto &[text, minutes] : cases)
        EXPECT_EQ(parseLength(QString::fromUtf8(text)), minutes) << text;
    for (const std::int64_t minutes : {5, 60, 61, 600, 6001})
        EXPECT_EQ(parseLength(lengthText(minutes)), minutes);
}
