// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace service {

/// `text` with each "%XX" as the byte it stands for; a "%" without two hexadecimal digits stays what it is. A "+" stays
/// a plus: clients of this protocol never mean a blank by it.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// `text` as it can be kept and put into XML: bytes that are no UTF-8 become U+FFFD, and characters that XML cannot
/// hold are left out.
[[nodiscard]] std::string cleaned(std::string text);

/// The whole of `text` as a decimal number that fits 32 bits, which is what ids and codes of the protocol are.
[[nodiscard]] std::optional<std::int64_t> integerOf(std::string_view text);

void appendInteger(std::string &xml, std::int64_t number);
/// Appends clean text as an element's contents; a reader gets it back byte for byte.
void appendText(std::string &xml, std::string_view text);
/// Appends clean text as the inside of a double-quoted attribute.
void appendAttribute(std::string &xml, std::string_view text);

/// `<name>text</name>`, the text escaped.
[[nodiscard]] std::string element(std::string_view name, std::string_view text);
[[nodiscard]] std::string element(std::string_view name, std::int64_t number);

} // namespace service
