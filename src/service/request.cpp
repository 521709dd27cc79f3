// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/request.h"

#include "service/result.h"
#include "service/text.h"

#include <algorithm>

namespace service {

namespace {

constexpr std::size_t mostParameters = 64; // a task has about twenty

Refusal unreadable(std::string_view name, std::string_view expected)
{
    return Refusal(std::string(name).append(" is not ").append(expected));
}

} // namespace

Request Request::parse(std::string_view query)
{
    Request request;
    bool hasMethod = false;
    while (!query.empty()) {
        const std::size_t end = std::min(query.find_first_of(";&"), query.size());
        const std::string_view pair = query.substr(0, end);
        query.remove_prefix(std::min(end + 1, query.size()));
        if (pair.empty())
            continue;
        const std::size_t equals = std::min(pair.find('='), pair.size());
        std::string name = cleaned(percentDecoded(pair.substr(0, equals)));
        std::string value = cleaned(percentDecoded(pair.substr(std::min(equals + 1, pair.size()))));
        if (name == "method") {
            if (!std::exchange(hasMethod, true))
                request.m_method = std::move(value);
        } else if (!request.find(name)) {
            if (request.m_parameters.size() == mostParameters)
                throw Refusal("too many parameters");
            request.m_parameters.emplace_back(std::move(name), std::move(value));
        }
    }
    return request;
}

const std::string *Request::find(std::string_view name) const
{
    const auto found = std::find_if(
        m_parameters.begin(), m_parameters.end(), [name](const auto &parameter) { return parameter.first == name; });
    return found == m_parameters.end() ? nullptr : &found->second;
}

std::string_view Request::text(std::string_view name) const
{
    const std::string *value = find(name);
    return value ? std::string_view(*value) : std::string_view();
}

std::optional<std::int64_t> Request::integer(std::string_view name) const
{
    const std::string *value = find(name);
    if (!value)
        return std::nullopt;
    const auto number = integerOf(*value);
    if (!number)
        throw unreadable(name, "a number");
    return number;
}

std::optional<bool> Request::flag(std::string_view name) const
{
    const std::string *value = find(name);
    if (!value)
        return std::nullopt;
    if (*value != "0" && *value != "1")
        throw unreadable(name, "0 or 1");
    return *value == "1";
}

std::int64_t Request::id() const
{
    const auto number = integer("id");
    if (!number)
        throw Refusal("missing id");
    if (*number == 0)
        throw Refusal("id number was 0");
    return *number;
}

} // namespace service
