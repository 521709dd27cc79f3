// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toodledo {

/// Names and values of a request's parameters, in the order in which they are sent.
using Parameters = std::vector<std::pair<std::string, std::string>>;

/// `value` with everything but letters, digits, "-", ".", "_" and "~" percent-escaped, so that it can hold a ";" or a
/// "=" without ending there.
[[nodiscard]] std::string escapedValue(std::string_view value);

/// A whole URL with what no URL may hold percent-escaped; what separates its parts stays.
[[nodiscard]] std::string escapedText(std::string_view text);

/// "http://", `urlText` and each parameter as "name=value;", its value escaped.
[[nodiscard]] std::string plainUrl(std::string_view urlText, const Parameters &parameters);

/// How an authenticated request is written.
struct Authentication {
    std::string_view key;
    bool secure = false; ///< https
    bool escapeValues = true; ///< each value by itself; otherwise the whole text at once
};

/// The scheme, `urlText`, "key=" and the key, and each parameter as "name=value;".
[[nodiscard]] std::string authenticatedUrl(
    std::string_view urlText, const Authentication &authentication, const Parameters &parameters);

/// One call of a request that holds several: the method and each parameter as "name=value;", its value escaped, and the
/// line's end.
[[nodiscard]] std::string callLine(std::string_view method, const Parameters &parameters);

/// Whether `host`, which may carry a port, is this computer.
[[nodiscard]] bool isLoopback(std::string_view host);

} // namespace toodledo
