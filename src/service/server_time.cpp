// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server_time.h"

#include "service/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

namespace service {

namespace {

std::tm localParts(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm parts{};
    ::localtime_r(&time, &parts);
    return parts;
}

void appendDigits(std::string &text, int number, int digits)
{
    for (int power = digits == 4 ? 1000 : 10; power > 0; power /= 10)
        text += static_cast<char>('0' + number / power % 10);
}

void appendJoined(std::string &text, std::array<int, 3> numbers, char separator)
{
    appendDigits(text, numbers[0], separator == '-' ? 4 : 2);
    appendDigits(text += separator, numbers[1], 2);
    appendDigits(text += separator, numbers[2], 2);
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Takes `fewest` to `most` digits off the front of `text`.
std::optional<int> takeNumber(std::string_view &text, std::size_t fewest, std::size_t most)
{
    int number = 0;
    std::size_t count = 0;
    for (; count < most && count < text.size() && isDigit(text[count]); ++count)
        number = number * 10 + (text[count] - '0');
    text.remove_prefix(count);
    return count < fewest ? std::nullopt : std::optional(number);
}

bool take(std::string_view &text, char expected)
{
    if (!text.starts_with(expected))
        return false;
    text.remove_prefix(1);
    return true;
}

/// The instant at which local clocks show `parts`, the earlier one where they show it twice.
std::optional<std::int64_t> instantOf(const std::tm &parts)
{
    std::optional<std::int64_t> earliest;
    for (const int summer : {0, 1}) {
        std::tm asked = parts;
        asked.tm_isdst = summer;
        const std::time_t time = std::mktime(&asked);
        if (asked.tm_isdst == summer && time != -1)
            earliest = std::min<std::int64_t>(earliest.value_or(time), time);
    }
    if (earliest)
        return earliest;
    std::tm asked = parts; // a time that the clocks leave out
    asked.tm_isdst = -1;
    const std::time_t time = std::mktime(&asked);
    return time == -1 ? std::nullopt : std::optional<std::int64_t>(time);
}

} // namespace

std::int64_t systemSeconds()
{
    return std::time(nullptr);
}

std::string dateOf(std::int64_t seconds)
{
    const std::tm parts = localParts(seconds);
    std::string text;
    appendJoined(text, {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday}, '-');
    return text;
}

std::string stampOf(std::int64_t seconds)
{
    const std::tm parts = localParts(seconds);
    std::string text;
    text.reserve(19);
    appendJoined(text, {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday}, '-');
    appendJoined(text += ' ', {parts.tm_hour, parts.tm_min, parts.tm_sec}, ':');
    return text;
}

std::string mailDateOf(std::int64_t seconds)
{
    const std::tm parts = localParts(seconds);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S %z", &parts)};
}

std::optional<std::string> readDate(std::string_view text)
{
    if (text.empty() || text == "0000-00-00")
        return std::string();
    std::string_view rest = text;
    const auto year = takeNumber(rest, 4, 4);
    const auto month = take(rest, '-') ? takeNumber(rest, 2, 2) : std::nullopt;
    const auto day = take(rest, '-') ? takeNumber(rest, 2, 2) : std::nullopt;
    if (!year || !month || !day || !rest.empty() || *year == 0)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
        std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(std::string(text)) : std::nullopt;
}

std::optional<std::int64_t> readStamp(std::string_view text)
{
    const auto date = readDate(text.substr(0, 10));
    if (!date || date->empty())
        return std::nullopt;
    std::tm parts{};
    parts.tm_year = std::stoi(date->substr(0, 4)) - 1900;
    parts.tm_mon = std::stoi(date->substr(5, 2)) - 1;
    parts.tm_mday = std::stoi(date->substr(8, 2));
    std::string_view rest = text.substr(10);
    if (rest.empty())
        return instantOf(parts);
    const auto hour = take(rest, ' ') ? takeNumber(rest, 2, 2) : std::nullopt;
    const auto minute = take(rest, ':') ? takeNumber(rest, 2, 2) : std::nullopt;
    const auto second = take(rest, ':') ? takeNumber(rest, 2, 2) : std::nullopt;
    if (!hour || !minute || !second || !rest.empty() || *hour > 23 || *minute > 59 || *second > 59)
        return std::nullopt;
    parts.tm_hour = *hour;
    parts.tm_min = *minute;
    parts.tm_sec = *second;
    return instantOf(parts);
}

std::optional<std::int64_t> readTime(std::string_view text)
{
    if (text.empty() || text == "0")
        return noTime;
    const auto hour = takeNumber(text, 1, 2);
    const auto minute = take(text, ':') ? takeNumber(text, 2, 2) : std::nullopt;
    if (!hour || !minute || *minute > 59)
        return std::nullopt;
    if (text.empty())
        return *hour < 24 ? std::optional<std::int64_t>(*hour * 60 + *minute) : std::nullopt;
    (void)take(text, ' ');
    const bool isMorning = text == "am" || text == "AM";
    const bool isAfternoon = text == "pm" || text == "PM";
    if ((!isMorning && !isAfternoon) || *hour < 1 || *hour > 12)
        return std::nullopt;
    return (*hour % 12 + (isAfternoon ? 12 : 0)) * 60 + *minute;
}

void appendTime(std::string &xml, std::int64_t minutes)
{
    if (minutes == noTime)
        return;
    const std::int64_t hour = minutes / 60 % 12;
    appendInteger(xml, hour == 0 ? 12 : hour);
    xml += ':';
    xml += static_cast<char>('0' + minutes % 60 / 10);
    xml += static_cast<char>('0' + minutes % 10);
    xml += minutes < 720 ? "am" : "pm";
}

} // namespace service
