// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace service {

/// One request of a client: a method and its parameters, decoded and cleaned. A value; any thread.
class Request
{
public:
    /// Reads what stands between "?" and the end of a request target, `method=NAME;name=value;...`. Both ";" and "&"
    /// separate, and of parameters with one name the first holds. Throws Refusal over too many parameters.
    [[nodiscard]] static Request parse(std::string_view query);

    [[nodiscard]] const std::string &method() const { return m_method; }

    /// The parameter's value, or nullptr where the client did not send it.
    [[nodiscard]] const std::string *find(std::string_view name) const;
    [[nodiscard]] std::string_view text(std::string_view name) const;
    /// The parameter as a number. Throws Refusal where it is there and is none.
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) const;
    /// The parameter as a flag, which is written "1" or "0". Throws Refusal where it is neither.
    [[nodiscard]] std::optional<bool> flag(std::string_view name) const;
    /// The id of the record that is meant. Throws Refusal where it is missing or 0.
    [[nodiscard]] std::int64_t id() const;

    [[nodiscard]] const std::vector<std::pair<std::string, std::string>> &parameters() const { return m_parameters; }

private:
    std::string m_method;
    std::vector<std::pair<std::string, std::string>> m_parameters;
};

} // namespace service
