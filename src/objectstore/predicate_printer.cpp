// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_node.h"

#include "foundation/instant.h"

#include <array>
#include <charconv>
#include <cmath>

namespace objectstore {

namespace {

constexpr std::array<std::string_view, 13> operatorNames{
    "==", "!=", "<", "<=", ">", ">=", "BEGINSWITH", "ENDSWITH", "CONTAINS", "LIKE", "MATCHES", "IN", "BETWEEN"};

std::string inQuotes(std::string_view text)
{
    std::string result = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\')
            result += '\\';
        result += letter;
    }
    return result + "\"";
}

std::string number(double value)
{
    if (std::isinf(value))
        return value < 0 ? "-1e999" : "1e999";
    std::array<char, 40> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    std::string text(buffer.data(), end);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0"; // else it would be read back as an integer
    return text;
}

std::string hexadecimal(const Bytes &bytes)
{
    std::string text;
    for (const std::byte byte : bytes) {
        text += "0123456789abcdef"[std::to_integer<unsigned>(byte) >> 4U];
        text += "0123456789abcdef"[std::to_integer<unsigned>(byte) & 15U];
    }
    return text;
}

std::string date(Instant instant)
{
    const std::string text = foundation::toIso8601(instant);
    return foundation::fromIso8601(text) == instant ? "DATE(" + inQuotes(text) + ")"
                                                    : "DATE(" + number(instant.seconds) + ")";
}

std::string printed(const Value &value)
{
    return std::visit(
        [](const auto &held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>)
                return "NULL";
            else if constexpr (std::is_same_v<Held, bool>)
                return held ? "YES" : "NO";
            else if constexpr (std::is_same_v<Held, std::int64_t>)
                return std::to_string(held);
            else if constexpr (std::is_same_v<Held, double>)
                return number(held);
            else if constexpr (std::is_same_v<Held, Instant>)
                return date(held);
            else if constexpr (std::is_same_v<Held, std::string>)
                return inQuotes(held);
            else if constexpr (std::is_same_v<Held, Bytes>)
                return "BYTES(\"" + hexadecimal(held) + "\")";
            else
                return std::to_string(held.key);
        },
        value);
}

std::string printed(const Expression &expression)
{
    switch (expression.kind) {
    case Expression::Kind::Constant:
        return printed(expression.constant);
    case Expression::Kind::Record:
        return "OBJECT(" + inQuotes(expression.name) + ", " + printed(expression.constant) + ")";
    case Expression::Kind::Relative: {
        const RelativeDate &relative = expression.relative;
        return "RELATIVE(" + number(relative.timeIntervalSinceNow) + ", "
            + number(relative.timeIntervalSinceReferenceDate) + ", " + std::to_string(relative.dateUnits) + ", "
            + (relative.backward ? "YES" : "NO") + ")";
    }
    case Expression::Kind::KeyPath:
        return expression.name;
    case Expression::Kind::Self:
        return "SELF";
    case Expression::Kind::Variable:
        return "$" + expression.name;
    case Expression::Kind::Arithmetic:
        return "(" + printed(expression.parts[0]) + " " + expression.arithmetic + " " + printed(expression.parts[1])
            + ")";
    case Expression::Kind::List: {
        std::string text;
        for (const Expression &part : expression.parts)
            text += (text.empty() ? "" : ", ") + printed(part);
        return "{" + text + "}";
    }
    }
    return {};
}

std::string printed(const PredicateNode &node)
{
    const auto chain = [&node](std::string_view word) {
        std::string text;
        for (const auto &child : node.children) {
            const bool compound = child->kind == PredicateNode::Kind::And || child->kind == PredicateNode::Kind::Or;
            const std::string part = printed(*child);
            if (!text.empty())
                text += word;
            text += compound ? "(" + part + ")" : part;
        }
        return text;
    };
    switch (node.kind) {
    case PredicateNode::Kind::True:
        return "TRUEPREDICATE";
    case PredicateNode::Kind::False:
        return "FALSEPREDICATE";
    case PredicateNode::Kind::And:
        return chain(" AND ");
    case PredicateNode::Kind::Or:
        return chain(" OR ");
    case PredicateNode::Kind::Not:
        return "NOT (" + printed(*node.children[0]) + ")";
    case PredicateNode::Kind::Comparison:
        break;
    }
    std::string text = node.modifier == PredicateNode::Modifier::All ? "ALL " : "";
    text += printed(node.left) + " ";
    text += operatorNames[static_cast<std::size_t>(node.test)];
    if (node.options.any())
        text += std::string("[") + (node.options.foldCase ? "c" : "") + (node.options.foldMarks ? "d" : "") + "]";
    return text + " " + printed(node.right);
}

} // namespace

std::string Predicate::text() const
{
    return printed(*m_root);
}

} // namespace objectstore
