// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace toodledo {

// How the values of replies and requests are read and written.

/// Leading blanks, an optional sign, digits up to the first other character; 0 without digits, the nearest end of the
/// range beyond it.
[[nodiscard]] std::int64_t integerOf(std::string_view text);

/// True when the text, after blanks, a sign and zeros, begins with Y, y, T, t or a digit from 1 to 9.
[[nodiscard]] bool booleanOf(std::string_view text);

/// A number of seconds with an optional fraction; 0 when it is none.
[[nodiscard]] double secondsOf(std::string_view text);

/// Reads "yyyy-MM-dd" as a local midnight; "0000-00-00" and other dates that do not exist are none.
[[nodiscard]] std::optional<foundation::Instant> dateOf(std::string_view text);

/// Reads "yyyy-MM-dd HH:mm:ss" as local time.
[[nodiscard]] std::optional<foundation::Instant> dateTimeOf(std::string_view text);

/// The local date as "yyyy-MM-dd".
[[nodiscard]] std::string dateText(foundation::Instant instant);

/// The local date and time as "yyyy-MM-dd HH:mm:ss".
[[nodiscard]] std::string dateTimeText(foundation::Instant instant);

/// The local time as "hh:mm am" or "hh:mm pm".
[[nodiscard]] std::string timeText(foundation::Instant instant);

/// The low 32 bits of a number as a signed decimal, which is how the service's parameters are written.
[[nodiscard]] std::string decimalText(std::int64_t number);

/// Lower-case hexadecimal MD5 of the bytes of `text`.
[[nodiscard]] std::string md5Hex(std::string_view text);

/// Whether `id` can be an id that the service gave: 1 to 2^31-1. Anything else must match, delete and send nothing.
[[nodiscard]] constexpr bool isServiceId(std::int64_t id)
{
    return id > 0 && id <= INT32_MAX;
}

} // namespace toodledo
