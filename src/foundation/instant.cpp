// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/instant.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <ctime>

namespace foundation {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;
constexpr std::int64_t firstSecond = -62'167'219'200; // 0000-01-01 00:00:00 UTC
constexpr std::int64_t lastSecond = 253'402'300'799; // 9999-12-31 23:59:59 UTC

bool isLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int year, int month)
{
    constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

/// Days from 1970-01-01 to a date. Years are counted from March, so that the leap day is a year's last.
std::int64_t daysFromCivil(int year, int month, int day)
{
    const std::int64_t y = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146'097 + dayOfEra - 719'468;
}

void setDate(CivilTime &time, std::int64_t days)
{
    days += 719'468;
    const std::int64_t era = (days >= 0 ? days : days - 146'096) / 146'097;
    const std::int64_t dayOfEra = days - era * 146'097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    time.day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    time.month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    time.year = static_cast<int>(yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0));
}

/// The seconds since the epoch that the fields would mean in UTC.
std::int64_t secondsAsUtc(const CivilTime &time)
{
    return daysFromCivil(time.year, time.month, time.day) * secondsPerDay + time.hour * 3600 + time.minute * 60
        + time.second;
}

Instant instantOf(std::int64_t seconds, int millisecond)
{
    return Instant{static_cast<double>(seconds * 1000 + millisecond) / 1000.0};
}

/// Whole milliseconds, kept within the years that a calendar date can name. The first and the last local days of all
/// reach a day further where the local clock is ahead of UTC or behind it.
std::int64_t milliseconds(Instant instant)
{
    if (std::isnan(instant.seconds))
        return 0;
    const double first = static_cast<double>(firstSecond - secondsPerDay) * 1000;
    const double last = static_cast<double>(lastSecond + secondsPerDay) * 1000;
    return std::llround(std::fmax(first, std::fmin(last, instant.seconds * 1000)));
}

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

int offsetAt(std::int64_t utcSeconds)
{
    const auto moment = static_cast<std::time_t>(utcSeconds);
    std::tm fields{};
    return localtime_r(&moment, &fields) ? static_cast<int>(fields.tm_gmtoff) : 0;
}

/// One local day whose offset is the same from the day before to the day after, so that no clock change is near.
struct PlainDay {
    std::int64_t day = 0;
    int offset = 0;
    unsigned generation = 0; ///< 0: empty
    long zone = 0;
};

std::atomic<unsigned> zoneGeneration{1};

/// The offset of every time on a local day, where that is one number.
std::optional<int> plainOffset(std::int64_t day)
{
    // Asking the C library takes a lock and a search; bulk readers ask for the same few hundred days again and again.
    thread_local std::array<PlainDay, 1024> cache;
    PlainDay &entry = cache[static_cast<std::size_t>(day) % cache.size()];
    const unsigned generation = zoneGeneration.load(std::memory_order_relaxed);
    if (entry.day == day && entry.generation == generation && entry.zone == ::timezone)
        return entry.offset;
    const int before = offsetAt((day - 1) * secondsPerDay);
    const int after = offsetAt((day + 2) * secondsPerDay);
    if (before != after)
        return std::nullopt;
    entry = {day, before, generation, ::timezone};
    return before;
}

/// The UTC seconds at which the local clock shows what `local` would show in UTC.
std::int64_t utcFromLocal(std::int64_t local)
{
    if (const auto offset = plainOffset(floorDivide(local, secondsPerDay)))
        return local - *offset;
    const int before = offsetAt(local - secondsPerDay);
    const int after = offsetAt(local + secondsPerDay);
    // The offset from before the change answers the first coming of a doubled time, and moves a skipped one forward.
    const bool secondHolds = offsetAt(local - after) == after;
    const bool firstHolds = offsetAt(local - before) == before;
    return local - (!firstHolds && secondHolds ? after : before);
}

std::string digits(int number, std::size_t width)
{
    std::string text = std::to_string(number);
    if (text.size() < width)
        text.insert(0, width - text.size(), '0');
    return text;
}

/// Takes exactly `count` digits from the front of `text`.
std::optional<int> takeDigits(std::string_view &text, std::size_t count)
{
    if (text.size() < count)
        return std::nullopt;
    int number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        number = number * 10 + (text[i] - '0');
    }
    text.remove_prefix(count);
    return number;
}

bool take(std::string_view &text, char character)
{
    if (text.empty() || text.front() != character)
        return false;
    text.remove_prefix(1);
    return true;
}

/// Takes two digits that follow `separator` into `number`; what is absent stays, what is wrong fails.
bool takeOptionalPair(std::string_view &text, char separator, int &number)
{
    if (!take(text, separator))
        return true;
    const auto pair = takeDigits(text, 2);
    if (pair)
        number = *pair;
    return pair.has_value();
}

/// Takes ".5", ".25", ".123456": what is finer than a millisecond is cut.
bool takeFraction(std::string_view &text, int &millisecond)
{
    if (!take(text, '.'))
        return true;
    int scale = 100;
    bool any = false;
    while (const auto digit = takeDigits(text, 1)) {
        millisecond += *digit * scale;
        scale /= 10;
        any = true;
    }
    return any;
}

/// Takes an offset such as "Z", "+01:00" or "-00:01:15"; nothing when there is none, failure when it is malformed.
bool takeOffset(std::string_view &text, std::optional<int> &offset)
{
    if (text.empty())
        return true;
    if (take(text, 'Z')) {
        offset = 0;
        return true;
    }
    const bool behind = text.front() == '-';
    if (!take(text, '+') && !take(text, '-'))
        return false;
    const auto hours = takeDigits(text, 2);
    int minutes = 0;
    int seconds = 0;
    if (!hours || !takeOptionalPair(text, ':', minutes) || !takeOptionalPair(text, ':', seconds))
        return false;
    offset = (*hours * 3600 + minutes * 60 + seconds) * (behind ? -1 : 1);
    return *hours < 24 && minutes < 60 && seconds < 60;
}

bool takeDate(std::string_view &text, CivilTime &time)
{
    const auto year = takeDigits(text, 4);
    if (!year || !take(text, '-'))
        return false;
    const auto month = takeDigits(text, 2);
    if (!month || !take(text, '-'))
        return false;
    const auto day = takeDigits(text, 2);
    if (!day)
        return false;
    time.year = *year;
    time.month = *month;
    time.day = *day;
    return true;
}

bool takeTime(std::string_view &text, CivilTime &time)
{
    const auto hour = takeDigits(text, 2);
    if (!hour || !take(text, ':'))
        return false;
    const auto minute = takeDigits(text, 2);
    if (!minute || !takeOptionalPair(text, ':', time.second))
        return false;
    time.hour = *hour;
    time.minute = *minute;
    return takeFraction(text, time.millisecond);
}

} // namespace

bool isValid(const CivilTime &time)
{
    const auto within = [](int value, int low, int high) { return value >= low && value <= high; };
    return within(time.year, 0, 9999) && within(time.month, 1, 12)
        && within(time.day, 1, daysInMonth(time.year, time.month)) && within(time.hour, 0, 23)
        && within(time.minute, 0, 59) && within(time.second, 0, 60) && within(time.millisecond, 0, 999);
}

std::optional<Instant> fromLocal(const CivilTime &time)
{
    if (!isValid(time))
        return std::nullopt;
    return instantOf(utcFromLocal(secondsAsUtc(time)), time.millisecond);
}

CivilTime toLocal(Instant instant)
{
    const std::int64_t total = milliseconds(instant);
    const std::int64_t utc = floorDivide(total, 1000);
    const std::int64_t local = std::max(firstSecond, std::min(lastSecond, utc + offsetAt(utc)));
    const std::int64_t days = floorDivide(local, secondsPerDay);
    const auto rest = static_cast<int>(local - days * secondsPerDay);
    CivilTime time;
    setDate(time, days);
    time.hour = rest / 3600;
    time.minute = rest / 60 % 60;
    time.second = rest % 60;
    time.millisecond = static_cast<int>(total - utc * 1000);
    return time;
}

void localZoneChanged()
{
    tzset();
    zoneGeneration.fetch_add(1);
}

int localOffset(Instant instant)
{
    return offsetAt(floorDivide(milliseconds(instant), 1000));
}

Instant startOfLocalDay(Instant instant)
{
    const CivilTime time = toLocal(instant);
    return instantOf(utcFromLocal(daysFromCivil(time.year, time.month, time.day) * secondsPerDay), 0);
}

Instant addLocalDays(Instant instant, int days)
{
    const CivilTime time = toLocal(instant);
    return instantOf(utcFromLocal(secondsAsUtc(time) + days * secondsPerDay), time.millisecond);
}

std::string toIso8601(Instant instant)
{
    const CivilTime time = toLocal(instant);
    const int offset = localOffset(instant);
    const int distance = std::abs(offset);
    std::string text = digits(time.year, 4) + '-' + digits(time.month, 2) + '-' + digits(time.day, 2) + 'T'
        + digits(time.hour, 2) + ':' + digits(time.minute, 2) + ':' + digits(time.second, 2);
    if (time.millisecond != 0)
        text += '.' + digits(time.millisecond, 3);
    text += (offset < 0 ? '-' : '+') + digits(distance / 3600, 2) + ':' + digits(distance / 60 % 60, 2);
    if (distance % 60 != 0) // local mean times of the nineteenth century
        text += ':' + digits(distance % 60, 2);
    return text;
}

std::optional<Instant> fromIso8601(std::string_view text)
{
    CivilTime time;
    std::optional<int> offset;
    if (!takeDate(text, time))
        return std::nullopt;
    if (!text.empty() && !((take(text, 'T') || take(text, ' ')) && takeTime(text, time) && takeOffset(text, offset)))
        return std::nullopt;
    if (!text.empty() || !isValid(time))
        return std::nullopt;
    if (!offset)
        return fromLocal(time);
    return instantOf(secondsAsUtc(time) - *offset, time.millisecond);
}

} // namespace foundation
