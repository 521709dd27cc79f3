// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate.h"

#include "objectstore/object_model.h"

#include <memory>
#include <string>
#include <vector>

namespace objectstore {

constexpr std::size_t maximumPredicateDepth = 64;
constexpr std::size_t maximumPredicateNodes = 4096;
constexpr std::size_t maximumPathSteps = 16;
constexpr double referenceDate = 978307200; ///< 2001-01-01 00:00:00 UTC, from which relative dates count

/// An instant that was given relative to the moment it was made: it compares as the instant it then meant, and keeps
/// the offset and the unit to show again.
struct RelativeDate {
    double timeIntervalSinceNow = 0; ///< seconds
    double timeIntervalSinceReferenceDate = 0; ///< seconds since 2001-01-01 00:00:00 UTC
    int dateUnits = 0; ///< 0 days, 1 weeks, 2 months
    bool backward = false; ///< it was given as so many units ago

    friend bool operator==(const RelativeDate &, const RelativeDate &) = default;
};

/// One side of a comparison.
struct Expression {
    enum class Kind { Constant, Record, Relative, List, KeyPath, Self, Variable, Arithmetic };

    Kind kind = Kind::Constant;
    Value constant; ///< Constant; for Record the key
    std::string name; ///< KeyPath, Variable; for Record the entity
    RelativeDate relative;
    char arithmetic = 0; ///< one of + - * /
    std::vector<Expression> parts; ///< the items of a List, the two operands of Arithmetic

    friend bool operator==(const Expression &, const Expression &) = default;

    [[nodiscard]] static Expression record(std::string entity, std::int64_t key)
    {
        return {.kind = Kind::Record, .constant = key, .name = std::move(entity), .relative = {}, .parts = {}};
    }
    /// What an argument stands for.
    [[nodiscard]] static Expression of(const Argument &argument);
    [[nodiscard]] bool isConstant() const
    {
        return kind == Kind::Constant || kind == Kind::Record || kind == Kind::Relative;
    }
    /// The value that a constant, a record or a relative date compares as.
    [[nodiscard]] ValueView constantValue() const;
};

enum class Operator {
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    BeginsWith,
    EndsWith,
    Contains,
    Like,
    Matches,
    In,
    Between,
};

[[nodiscard]] inline bool isTextTest(Operator test)
{
    return test >= Operator::BeginsWith && test <= Operator::Matches;
}

/// How text is compared.
struct TextOptions {
    bool foldCase = false; ///< [c]
    bool foldMarks = false; ///< [d]

    friend bool operator==(TextOptions, TextOptions) = default;
    [[nodiscard]] bool any() const { return foldCase || foldMarks; }
    [[nodiscard]] int bits() const { return (foldCase ? 1 : 0) | (foldMarks ? 2 : 0); }
    [[nodiscard]] static TextOptions fromBits(int bits) { return {(bits & 1) != 0, (bits & 2) != 0}; }
};

/// A node of a predicate's tree.
struct PredicateNode {
    enum class Kind { True, False, And, Or, Not, Comparison };
    enum class Modifier { Any, All };
    using Pointer = std::shared_ptr<const PredicateNode>;

    Kind kind = Kind::True;
    std::vector<Pointer> children; ///< of And, Or, Not
    Operator test = Operator::Equal;
    Modifier modifier = Modifier::Any; ///< what a to-many key path asks for
    TextOptions options;
    Expression left;
    Expression right;
};

/// The depth and the number of nodes of a tree, expressions included.
struct TreeSize {
    std::size_t depth = 0;
    std::size_t nodes = 0;

    [[nodiscard]] bool isWithinBounds(std::size_t times = 1) const
    {
        return depth <= times * maximumPredicateDepth && nodes <= times * maximumPredicateNodes;
    }
};
[[nodiscard]] TreeSize sizeOf(const PredicateNode &node);

/// Gives a comparison the one form that its question has. Returns a sentence where it cannot be asked.
[[nodiscard]] std::string settle(PredicateNode &comparison);

/// A key path taken apart along the properties of an entity.
struct ResolvedPath {
    std::vector<const Property *> steps;
    bool count = false; ///< ends in "@count": the number of members of the last step
    std::string problem; ///< a sentence where the path does not resolve

    /// Whether the path can lead to several values.
    [[nodiscard]] bool isMany() const;
};
[[nodiscard]] ResolvedPath resolve(std::string_view path, const EntityDescription &entity);

} // namespace objectstore
