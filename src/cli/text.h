// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// Takes one code point off the front of `text`; one byte, and nothing, where the bytes are not UTF-8.
std::optional<char32_t> takeCodePoint(std::string_view &text);

[[nodiscard]] bool isUtf8(std::string_view text);

/// How many columns of a terminal the text takes; wide letters and most emoji take two.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// The text, or as much of it as goes into `width` columns with an ellipsis at its end.
[[nodiscard]] std::string clipped(std::string_view text, std::size_t width);

/// The text on one line without anything that steers a terminal: control characters become blanks.
[[nodiscard]] std::string printable(std::string_view text);

/// The same for a text of several lines, which stay.
[[nodiscard]] std::string printableLines(std::string_view text);

/// The text with the letters A to Z in lower case.
[[nodiscard]] std::string lowered(std::string_view text);

/// The candidate that `word` was most likely meant to be; nothing when none is near.
[[nodiscard]] std::optional<std::string> closest(std::string_view word, const std::vector<std::string> &candidates);

/// " Did you mean \"...\"?", or nothing.
[[nodiscard]] std::string suggestion(std::string_view word, const std::vector<std::string> &candidates);

/// The text between double quotes, on one line.
[[nodiscard]] std::string inQuotes(std::string_view text);

} // namespace cli
