// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_lexer.h"
#include "objectstore/predicate_node.h"
#include "objectstore/store.h"

#include <bit>
#include <cmath>

namespace objectstore {

// The form is documented in docs/predicate-archive.md: the letters "QPRD", a version byte, then the tree in pre-order.

namespace {

constexpr std::string_view magic = "QPRD";
constexpr std::uint8_t version = 1;

class Writer
{
public:
    void byte(std::size_t value) { m_bytes.push_back(static_cast<std::byte>(value)); }
    void number(std::uint64_t value)
    {
        for (int shift = 0; shift < 64; shift += 8)
            byte((value >> shift) & 0xffU);
    }
    void real(double value) { number(std::bit_cast<std::uint64_t>(value)); }
    void bytes(std::span<const std::byte> value)
    {
        number(value.size());
        m_bytes.insert(m_bytes.end(), value.begin(), value.end());
    }
    void text(std::string_view value) { bytes(std::as_bytes(std::span(value.data(), value.size()))); }

    void value(const Value &value)
    {
        byte(value.index());
        std::visit(
            [this](const auto &held) {
                using Held = std::decay_t<decltype(held)>;
                if constexpr (std::is_same_v<Held, bool>)
                    byte(held ? 1 : 0);
                else if constexpr (std::is_same_v<Held, std::int64_t>)
                    number(static_cast<std::uint64_t>(held));
                else if constexpr (std::is_same_v<Held, double>)
                    real(held);
                else if constexpr (std::is_same_v<Held, Instant>)
                    real(held.seconds);
                else if constexpr (std::is_same_v<Held, std::string>)
                    text(held);
                else if constexpr (std::is_same_v<Held, Bytes>)
                    bytes(held);
            },
            value);
    }
    void expression(const Expression &expression)
    {
        byte(static_cast<std::size_t>(expression.kind));
        switch (expression.kind) {
        case Expression::Kind::Constant:
            value(expression.constant);
            break;
        case Expression::Kind::Record:
            text(expression.name);
            number(static_cast<std::uint64_t>(toInteger(view(expression.constant))));
            break;
        case Expression::Kind::Relative:
            real(expression.relative.timeIntervalSinceNow);
            real(expression.relative.timeIntervalSinceReferenceDate);
            number(static_cast<std::uint64_t>(expression.relative.dateUnits));
            byte(expression.relative.backward ? 1 : 0);
            break;
        case Expression::Kind::KeyPath:
        case Expression::Kind::Variable:
            text(expression.name);
            break;
        case Expression::Kind::Self:
            break;
        case Expression::Kind::Arithmetic:
            byte(static_cast<std::size_t>(expression.arithmetic));
            [[fallthrough]];
        case Expression::Kind::List:
            number(expression.parts.size());
            for (const Expression &part : expression.parts)
                this->expression(part);
        }
    }
    void node(const PredicateNode &node)
    {
        byte(static_cast<std::size_t>(node.kind));
        if (node.kind == PredicateNode::Kind::Comparison) {
            byte(static_cast<std::size_t>(node.test));
            byte(static_cast<std::size_t>(node.modifier));
            byte(static_cast<std::size_t>(node.options.bits()));
            expression(node.left);
            expression(node.right);
            return;
        }
        number(node.children.size());
        for (const auto &child : node.children)
            this->node(*child);
    }
    [[nodiscard]] Bytes take() { return std::move(m_bytes); }

private:
    Bytes m_bytes;
};

struct Malformed {
};

class Reader
{
public:
    explicit Reader(std::span<const std::byte> bytes) : m_bytes(bytes) { }

    std::uint8_t byte(std::size_t limit = 255)
    {
        const auto value = std::to_integer<std::uint8_t>(take(1)[0]);
        if (value > limit)
            throw Malformed();
        return value;
    }
    std::uint64_t number()
    {
        std::uint64_t value = 0;
        int shift = 0;
        for (const std::byte part : take(8)) {
            value |= std::to_integer<std::uint64_t>(part) << shift;
            shift += 8;
        }
        return value;
    }
    double real()
    {
        const auto value = std::bit_cast<double>(number());
        if (std::isnan(value))
            throw Malformed();
        return value;
    }
    std::span<const std::byte> bytes() { return take(number()); }
    std::string text()
    {
        const auto read = bytes();
        return {reinterpret_cast<const char *>(read.data()), read.size()};
    }
    std::size_t items(std::size_t limit = maximumPredicateNodes)
    {
        const std::uint64_t value = number();
        if (value > limit)
            throw Malformed();
        return static_cast<std::size_t>(value);
    }

    Value value()
    {
        switch (byte()) {
        case 0:
            return {};
        case 1:
            return byte(1) == 1;
        case 2:
            return static_cast<std::int64_t>(number());
        case 3:
            return real();
        case 4:
            return Instant{real() + 0.0}; // a zero with a sign could not be told from one without in a date's text
        case 5:
            return text();
        case 6: {
            const auto read = bytes();
            return Bytes(read.begin(), read.end());
        }
        default:
            throw Malformed();
        }
    }

    Expression expression(std::size_t depth)
    {
        count(depth);
        Expression result;
        result.kind = static_cast<Expression::Kind>(byte(static_cast<std::size_t>(Expression::Kind::Arithmetic)));
        switch (result.kind) {
        case Expression::Kind::Constant:
            result.constant = value();
            break;
        case Expression::Kind::Record:
            result.name = text();
            result.constant = static_cast<std::int64_t>(number());
            break;
        case Expression::Kind::Relative:
            result.relative.timeIntervalSinceNow = real();
            result.relative.timeIntervalSinceReferenceDate = real();
            result.relative.dateUnits = static_cast<int>(static_cast<std::int32_t>(number()));
            result.relative.backward = byte(1) == 1;
            break;
        case Expression::Kind::KeyPath:
            result.name = text();
            if (!isKeyPath(result.name))
                throw Malformed();
            break;
        case Expression::Kind::Variable:
            result.name = text();
            if (!isVariableName(result.name))
                throw Malformed();
            break;
        case Expression::Kind::Self:
            break;
        case Expression::Kind::Arithmetic:
            result.arithmetic = static_cast<char>(byte());
            if (std::string_view("+-*/").find(result.arithmetic) == std::string_view::npos)
                throw Malformed();
            if (items(2) != 2)
                throw Malformed();
            result.parts.push_back(expression(depth + 1));
            result.parts.push_back(expression(depth + 1));
            break;
        case Expression::Kind::List: {
            const std::size_t number = items();
            for (std::size_t i = 0; i < number; ++i) {
                result.parts.push_back(expression(depth + 1));
                if (!result.parts.back().isConstant())
                    throw Malformed();
            }
        }
        }
        return result;
    }

    PredicateNode::Pointer node(std::size_t depth)
    {
        count(depth);
        auto result = std::make_shared<PredicateNode>();
        result->kind
            = static_cast<PredicateNode::Kind>(byte(static_cast<std::size_t>(PredicateNode::Kind::Comparison)));
        if (result->kind == PredicateNode::Kind::Comparison) {
            result->test = static_cast<Operator>(byte(static_cast<std::size_t>(Operator::Between)));
            result->modifier = static_cast<PredicateNode::Modifier>(byte(1));
            result->options = TextOptions::fromBits(byte(3));
            result->left = expression(depth + 1);
            result->right = expression(depth + 1);
            if (!settle(*result).empty())
                throw Malformed();
            return result;
        }
        const std::size_t children = items();
        const bool leaf = result->kind == PredicateNode::Kind::True || result->kind == PredicateNode::Kind::False;
        if (leaf ? children != 0 : result->kind == PredicateNode::Kind::Not ? children != 1 : children < 2)
            throw Malformed();
        for (std::size_t i = 0; i < children; ++i)
            result->children.push_back(node(depth + 1));
        return result;
    }
    [[nodiscard]] bool atEnd() const { return m_bytes.empty(); }

private:
    void count(std::size_t depth)
    {
        if (depth > maximumPredicateDepth || ++m_nodes > maximumPredicateNodes)
            throw Malformed();
    }
    std::span<const std::byte> take(std::uint64_t size)
    {
        if (size > m_bytes.size())
            throw Malformed();
        const auto taken = m_bytes.first(static_cast<std::size_t>(size));
        m_bytes = m_bytes.subspan(static_cast<std::size_t>(size));
        return taken;
    }

    std::span<const std::byte> m_bytes;
    std::size_t m_nodes = 0;
};

} // namespace

Bytes archive(const Predicate &predicate)
{
    Writer writer;
    for (const char letter : magic)
        writer.byte(static_cast<std::size_t>(letter));
    writer.byte(version);
    writer.node(predicate.root());
    return writer.take();
}

foundation::Result<Predicate> fromArchive(std::span<const std::byte> bytes)
{
    try {
        Reader reader(bytes);
        for (const char letter : magic) {
            if (reader.byte() != static_cast<std::uint8_t>(letter))
                throw Malformed();
        }
        if (reader.byte() != version)
            throw Malformed();
        auto root = reader.node(1);
        if (!reader.atEnd())
            throw Malformed();
        return Predicate(std::move(root));
    } catch (const Malformed &) {
        return foundation::Failure({"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::BadRequest),
            "A saved condition cannot be read.", std::to_string(bytes.size()) + " bytes"});
    }
}

} // namespace objectstore
