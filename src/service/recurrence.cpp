// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/recurrence.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace service {

namespace {

using namespace std::chrono;

struct Rhythm {
    int days = 0;
    int months = 0;
};

/// By the protocol's codes.
constexpr std::array<Rhythm, 9> rhythms{{
    {}, // none
    {.days = 7},
    {.months = 1},
    {.months = 12},
    {.days = 1},
    {.days = 14},
    {.months = 2},
    {.months = 6},
    {.months = 3},
}};

sys_days dayOf(const std::string &date)
{
    return year_month_day{year(std::stoi(date.substr(0, 4))),
        month(static_cast<unsigned>(std::stoi(date.substr(5, 2)))),
        day(static_cast<unsigned>(std::stoi(date.substr(8, 2))))};
}

std::string textOf(sys_days days)
{
    const year_month_day date{days};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text.data();
}

/// `count` steps from `first`. Months are counted from the first day, so that the 31st comes back after a short month.
sys_days advanced(sys_days first, Rhythm rhythm, int count)
{
    if (rhythm.days > 0)
        return first + days(rhythm.days * count);
    const year_month_day from{first};
    const year_month target = from.year() / from.month() + months(rhythm.months * count);
    const year_month_day wanted = target / from.day();
    return wanted.ok() ? sys_days(wanted) : sys_days(target / last);
}

} // namespace

std::optional<TaskDates> nextOccurrence(const TaskDates &dates, std::int64_t repeat, const std::string &today)
{
    if (repeat <= 0 || repeat >= static_cast<std::int64_t>(rhythms.size()))
        return std::nullopt;
    const Rhythm rhythm = rhythms[static_cast<std::size_t>(repeat)];
    const bool onlyStarts = dates.due.empty() && !dates.start.empty();
    const sys_days base = dayOf(onlyStarts ? dates.start : dates.due.empty() ? today : dates.due);
    int count = 1;
    while (advanced(base, rhythm, count) <= dayOf(today))
        ++count;
    const sys_days next = advanced(base, rhythm, count);
    if (year_month_day(next).year() > year(9999))
        return std::nullopt;
    if (onlyStarts)
        return TaskDates{textOf(next), ""};
    return TaskDates{dates.start.empty() ? "" : textOf(dayOf(dates.start) + (next - base)), textOf(next)};
}

} // namespace service
