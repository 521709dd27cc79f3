// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/value.h"

#include <cmath>

namespace objectstore {

ValueView view(const Value &value)
{
    return std::visit(
        [](const auto &held) -> ValueView {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::string>)
                return std::string_view(held);
            else if constexpr (std::is_same_v<Held, Bytes>)
                return std::span<const std::byte>(held);
            else
                return held;
        },
        value);
}

Value copy(const ValueView &value)
{
    return std::visit(
        [](const auto &held) -> Value {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::string_view>)
                return std::string(held);
            else if constexpr (std::is_same_v<Held, std::span<const std::byte>>)
                return Bytes(held.begin(), held.end());
            else
                return held;
        },
        value);
}

std::int64_t toInteger(const ValueView &value)
{
    if (const auto *integer = std::get_if<std::int64_t>(&value))
        return *integer;
    if (const auto *boolean = std::get_if<bool>(&value))
        return *boolean ? 1 : 0;
    if (const auto *number = std::get_if<double>(&value)) {
        constexpr double limit = 9.2e18;
        return std::isfinite(*number) && std::abs(*number) < limit ? static_cast<std::int64_t>(*number) : 0;
    }
    return 0;
}

double toDouble(const ValueView &value)
{
    if (const auto *number = std::get_if<double>(&value))
        return *number;
    if (const auto *instant = std::get_if<Instant>(&value))
        return instant->seconds;
    return static_cast<double>(toInteger(value));
}

bool toBoolean(const ValueView &value)
{
    return toDouble(value) != 0;
}

std::string_view toText(const ValueView &value)
{
    const auto *text = std::get_if<std::string_view>(&value);
    return text ? *text : std::string_view();
}

bool sameValue(const ValueView &left, const ValueView &right)
{
    if (left.index() != right.index()) {
        const bool flagAndNumber = (std::holds_alternative<bool>(left) && std::holds_alternative<std::int64_t>(right))
            || (std::holds_alternative<std::int64_t>(left) && std::holds_alternative<bool>(right));
        return flagAndNumber && toInteger(left) == toInteger(right);
    }
    return std::visit(
        [&right](const auto &held) {
            using Held = std::decay_t<decltype(held)>;
            const Held &other = std::get<Held>(right);
            if constexpr (std::is_same_v<Held, std::span<const std::byte>>)
                return std::equal(held.begin(), held.end(), other.begin(), other.end());
            else
                return held == other;
        },
        left);
}

} // namespace objectstore
