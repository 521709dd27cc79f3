// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace service {

/// MD5 as 32 lower-case hexadecimal digits, which is what the protocol's keys are made of.
[[nodiscard]] std::string md5(std::string_view text);

/// SHA-256 as 64 lower-case hexadecimal digits.
[[nodiscard]] std::string sha256(std::string_view text);

/// Unpredictable hexadecimal digits, two for each of `bytes`. Throws std::runtime_error when the system gives none.
[[nodiscard]] std::string randomHexadecimal(std::size_t bytes);

/// Whether the texts are equal, found in a time that does not tell where they differ.
[[nodiscard]] bool equalInConstantTime(std::string_view left, std::string_view right);

} // namespace service
