// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <compare> // last, since Qt's moc stumbles over it where it comes first

namespace foundation {

/// A point in time: seconds since 1970-01-01 00:00:00 UTC. Whole milliseconds survive every form it is written in.
struct Instant {
    double seconds = 0;

    friend constexpr auto operator<=>(Instant, Instant) = default;
};

/// A date and time of day as a person in some time zone reads it from a calendar and a clock.
struct CivilTime {
    int year = 1970; ///< proleptic Gregorian, 0 to 9999
    int month = 1; ///< 1 to 12
    int day = 1; ///< 1 to 31
    int hour = 0; ///< 0 to 23
    int minute = 0; ///< 0 to 59
    int second = 0; ///< 0 to 60
    int millisecond = 0; ///< 0 to 999

    friend auto operator<=>(const CivilTime &, const CivilTime &) = default;
};

/// Whether the fields name a day that exists and a time within it.
[[nodiscard]] bool isValid(const CivilTime &time);

/// The instant at which the local clock shows `time`; nothing when the date does not exist.
/// A time in the gap of a clock set forward moves forward by the gap; one that comes twice means its first coming.
[[nodiscard]] std::optional<Instant> fromLocal(const CivilTime &time);

/// What the local clock shows at `instant`.
[[nodiscard]] CivilTime toLocal(Instant instant);

/// To be called when the computer has moved to another time zone (or `TZ` was set): forgets what was known of the old.
void localZoneChanged();

/// Seconds that the local clock is ahead of UTC at `instant`.
[[nodiscard]] int localOffset(Instant instant);

/// The local midnight that begins the day of `instant`.
[[nodiscard]] Instant startOfLocalDay(Instant instant);

/// `instant` moved by whole calendar days, keeping the local time of day.
[[nodiscard]] Instant addLocalDays(Instant instant, int days);

/// ISO 8601 with the local offset and, where they are not zero, milliseconds: "2026-12-01T14:00:00+01:00".
[[nodiscard]] std::string toIso8601(Instant instant);

/// Reads what `toIso8601` writes, "Z" for the offset, a blank for "T", and, as local time, text without an offset, a
/// time without seconds or a date alone (its midnight).
[[nodiscard]] std::optional<Instant> fromIso8601(std::string_view text);

} // namespace foundation
