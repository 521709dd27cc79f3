// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/date_reader.h"

#include "cli/command_error.h"
#include "cli/text.h"

#include <array>
#include <charconv>
#include <optional>

namespace cli {

using foundation::CivilTime;
using foundation::Instant;

namespace {

constexpr std::array<std::string_view, 7> weekdays{
    "sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};
constexpr std::size_t shortestWeekday = 3;
constexpr int farthestDays = 400'000; // beyond a thousand years nobody plans, and the calendar ends

struct NamedDay {
    std::string_view name;
    int days;
};
constexpr std::array<NamedDay, 3> namedDays{{{"today", 0}, {"tomorrow", 1}, {"yesterday", -1}}};

std::optional<int> number(std::string_view digits)
{
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isNumber = error == std::errc() && end == digits.data() + digits.size() && digits.front() != '-';
    return isNumber ? std::optional(value) : std::nullopt;
}

/// "17:00" or "9:30".
std::optional<CivilTime> timeOfDay(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == 0 || colon == std::string_view::npos || colon > 2 || text.size() - colon != 3)
        return std::nullopt;
    const auto hour = number(text.substr(0, colon));
    const auto minute = number(text.substr(colon + 1));
    if (!hour || !minute || *hour > 23 || *minute > 59)
        return std::nullopt;
    return CivilTime{.hour = *hour, .minute = *minute};
}

/// 0 for Sunday.
int weekday(const CivilTime &day)
{
    constexpr std::array<int, 12> shift{0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const int year = day.year - (day.month < 3 ? 1 : 0);
    return (year + year / 4 - year / 100 + year / 400 + shift[static_cast<std::size_t>(day.month - 1)] + day.day) % 7;
}

/// "+3d" or "-2w" as a number of days.
std::optional<int> daysFromToday(std::string_view text)
{
    if (text.size() < 3 || (text.front() != '+' && text.front() != '-') || (text.back() != 'd' && text.back() != 'w'))
        return std::nullopt;
    const auto count = number(text.substr(1, text.size() - 2));
    const int unit = text.back() == 'w' ? 7 : 1;
    if (!count || *count > farthestDays / unit)
        return std::nullopt;
    return *count * unit * (text.front() == '-' ? -1 : 1);
}

/// How many days from today the day that `text` names is.
std::optional<int> relativeDay(std::string_view text, const CivilTime &today)
{
    for (const NamedDay &day : namedDays) {
        if (text == day.name)
            return day.days;
    }
    for (std::size_t i = 0; i < weekdays.size() && text.size() >= shortestWeekday; ++i) {
        if (weekdays[i].starts_with(text)) {
            const int ahead = (static_cast<int>(i) - weekday(today) + 7) % 7;
            return ahead == 0 ? 7 : ahead;
        }
    }
    return daysFromToday(text);
}

std::optional<Instant> at(Instant day, const CivilTime &time)
{
    CivilTime civil = foundation::toLocal(day);
    civil.hour = time.hour;
    civil.minute = time.minute;
    civil.second = 0;
    civil.millisecond = 0;
    return foundation::fromLocal(civil);
}

std::optional<Instant> relativeDate(std::string_view text, Instant now)
{
    const std::size_t blank = text.find(' ');
    const std::string_view last = blank == std::string_view::npos ? text : text.substr(blank + 1);
    const auto time = timeOfDay(last);
    if (blank != std::string_view::npos && !time)
        return std::nullopt;
    int days = 0;
    if (blank != std::string_view::npos || !time) {
        const auto relative = relativeDay(text.substr(0, blank), foundation::toLocal(now));
        if (!relative)
            return std::nullopt;
        days = *relative;
    }
    return at(foundation::addLocalDays(foundation::startOfLocalDay(now), days), time.value_or(CivilTime{}));
}

} // namespace

foundation::Result<Instant> readDate(std::string_view text, Instant now)
{
    if (const auto instant = foundation::fromIso8601(text))
        return *instant;
    if (const auto instant = relativeDate(lowered(text), now))
        return *instant;
    return notUnderstood(inQuotes(text)
        + " is not a date. Write for instance 2026-12-24, 2026-12-24T17:00, today, tomorrow, +3d or \"friday 17:00\".");
}

} // namespace cli
