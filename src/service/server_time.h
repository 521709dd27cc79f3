// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace service {

/// Tells the seconds since 1970. The service is handed one, so that a test can set the time.
using Clock = std::function<std::int64_t()>;

/// The computer's own clock.
[[nodiscard]] std::int64_t systemSeconds();

// The protocol's times are the server's local time. A date is kept as the text "YYYY-MM-DD", no date as "".

/// The local date of an instant.
[[nodiscard]] std::string dateOf(std::int64_t seconds);

/// An instant as local "YYYY-MM-DD HH:MM:SS".
[[nodiscard]] std::string stampOf(std::int64_t seconds);

/// An instant as mail writes it: "Sat, 31 Jan 2026 09:30:00 +0100".
[[nodiscard]] std::string mailDateOf(std::int64_t seconds);

/// Reads "YYYY-MM-DD"; "" and "0000-00-00" are no date and give "". Nothing for other texts and for days that no
/// calendar has.
[[nodiscard]] std::optional<std::string> readDate(std::string_view text);

/// Reads local "YYYY-MM-DD HH:MM:SS", or "YYYY-MM-DD" as the day's first second. A time that the clocks show twice is
/// its first occurrence.
[[nodiscard]] std::optional<std::int64_t> readStamp(std::string_view text);

constexpr std::int64_t noTime = -1;

/// Reads "h:mm am", "h:mmpm" or "H:MM" as minutes after midnight; "" and "0" are `noTime`.
[[nodiscard]] std::optional<std::int64_t> readTime(std::string_view text);

/// Minutes after midnight as "h:mmam" or "h:mmpm"; `noTime` as nothing.
void appendTime(std::string &xml, std::int64_t minutes);

} // namespace service
