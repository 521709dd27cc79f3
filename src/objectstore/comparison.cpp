// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/comparison.h"

#include <cmath>
#include <cstring>

namespace objectstore {

namespace {

enum class Class { Nothing, Number, Text, Bytes };

Class classOf(const ValueView &value)
{
    switch (value.index()) {
    case 0:
        return Class::Nothing;
    case 5:
        return Class::Text;
    case 6:
        return Class::Bytes;
    default:
        return Class::Number;
    }
}

bool isReal(const ValueView &value)
{
    return std::holds_alternative<double>(value) || std::holds_alternative<Instant>(value);
}

std::int64_t whole(const ValueView &value)
{
    const auto *id = std::get_if<ObjectID>(&value);
    return id ? id->key : toInteger(value);
}

int sign(bool less, bool greater)
{
    return less ? -1 : greater ? 1 : 0;
}

/// Exact, where a conversion of either to the other's type would round.
int compareMixed(std::int64_t integer, double real)
{
    constexpr double limit = 9223372036854775808.0;
    if (real >= limit)
        return -1;
    if (real < -limit)
        return 1;
    const auto truncated = static_cast<std::int64_t>(real);
    if (integer != truncated)
        return sign(integer < truncated, true);
    const double rest = real - static_cast<double>(truncated);
    return sign(rest > 0, rest < 0);
}

int compareNumbers(const ValueView &left, const ValueView &right)
{
    if (isReal(left) && isReal(right))
        return sign(toDouble(left) < toDouble(right), toDouble(left) > toDouble(right));
    if (isReal(left))
        return -compareMixed(whole(right), toDouble(left));
    if (isReal(right))
        return compareMixed(whole(left), toDouble(right));
    return sign(whole(left) < whole(right), whole(left) > whole(right));
}

int compareBytes(const void *left, std::size_t leftSize, const void *right, std::size_t rightSize)
{
    const std::size_t common = std::min(leftSize, rightSize);
    const int order = common == 0 ? 0 : std::memcmp(left, right, common);
    return order != 0 ? order : sign(leftSize<rightSize, leftSize> rightSize);
}

} // namespace

int compareStored(const ValueView &left, const ValueView &right)
{
    const Class leftClass = classOf(left);
    const Class rightClass = classOf(right);
    if (leftClass != rightClass)
        return sign(leftClass < rightClass, true);
    if (leftClass == Class::Number)
        return compareNumbers(left, right);
    if (leftClass == Class::Text) {
        const auto a = std::get<std::string_view>(left);
        const auto b = std::get<std::string_view>(right);
        return compareBytes(a.data(), a.size(), b.data(), b.size());
    }
    if (leftClass == Class::Bytes) {
        const auto a = std::get<std::span<const std::byte>>(left);
        const auto b = std::get<std::span<const std::byte>>(right);
        return compareBytes(a.data(), a.size(), b.data(), b.size());
    }
    return 0;
}

bool equalStored(const ValueView &left, const ValueView &right)
{
    return compareStored(left, right) == 0;
}

bool answers(Operator test, int order)
{
    switch (test) {
    case Operator::Less:
        return order < 0;
    case Operator::LessOrEqual:
        return order <= 0;
    case Operator::Greater:
        return order > 0;
    case Operator::GreaterOrEqual:
        return order >= 0;
    default:
        return order == 0;
    }
}

ValueView calculate(char operation, const ValueView &left, const ValueView &right)
{
    if (classOf(left) != Class::Number || classOf(right) != Class::Number)
        return {};
    const auto real
        = [](const ValueView &value) { return isReal(value) ? toDouble(value) : static_cast<double>(whole(value)); };
    const double a = real(left);
    const double b = real(right);
    const double result = operation == '+' ? a + b
        : operation == '-'                 ? a - b
        : operation == '*'                 ? a * b
        : b == 0                           ? std::nan("")
                                           : a / b;
    return std::isnan(result) ? ValueView() : ValueView(result);
}

} // namespace objectstore
