// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_evaluator.h"

#include "objectstore/comparison.h"
#include "objectstore/predicate_node.h"
#include "objectstore/text_folding.h"
#include "objectstore/text_test.h"

#include <algorithm>

namespace objectstore {

/// One side of a comparison with its key path resolved.
struct PredicateEvaluator::Operand {
    Operand(const Expression &source, const EntityDescription &entity) : expression(source)
    {
        if (source.kind == Expression::Kind::KeyPath)
            path = resolve(source.name, entity);
        else if (source.isConstant())
            constant = source.constantValue();
        for (const Expression &part : source.parts)
            parts.emplace_back(part, entity);
        several = path.problem.empty() && path.isMany();
    }

    /// The value for `object` of an operand that has one.
    [[nodiscard]] ValueView value(const ManagedObject &object) const
    {
        switch (expression.kind) {
        case Expression::Kind::KeyPath:
            return atPath(object);
        case Expression::Kind::Self:
            return object.objectID();
        case Expression::Kind::Arithmetic:
            return calculate(expression.arithmetic, parts[0].value(object), parts[1].value(object));
        default:
            return constant;
        }
    }

    /// Calls `visit` with each value until it returns true; whether one did.
    template <typename Visit> bool anyValue(const ManagedObject &object, const Visit &visit) const
    {
        return several ? anyAlong(object, 0, visit) : visit(value(object));
    }

    const Expression &expression;
    ResolvedPath path;
    ValueView constant;
    std::vector<Operand> parts;
    bool several = false;

private:
    [[nodiscard]] ValueView atPath(const ManagedObject &object) const
    {
        if (several || !path.problem.empty())
            return {};
        const ManagedObject *current = &object;
        for (std::size_t i = 0; i + 1 < path.steps.size(); ++i) {
            current = current->related(*path.steps[i]);
            if (!current)
                return {};
        }
        const Property &last = *path.steps.back();
        return path.count ? ValueView(static_cast<std::int64_t>(current->objects(last).size())) : current->value(last);
    }

    template <typename Visit> bool anyAlong(const ManagedObject &object, std::size_t step, const Visit &visit) const
    {
        const Property &property = *path.steps[step];
        const bool last = step + 1 == path.steps.size();
        if (property.isToMany()) {
            if (last && path.count)
                return visit(static_cast<std::int64_t>(object.objects(property).size()));
            const auto &members = object.objects(property);
            return std::any_of(members.begin(), members.end(), [&](const ManagedObject *member) {
                return last ? visit(member->objectID()) : anyAlong(*member, step + 1, visit);
            });
        }
        if (last)
            return visit(object.value(property));
        const ManagedObject *next = object.related(property);
        return next && anyAlong(*next, step + 1, visit);
    }
};

/// A comparison of one column with a constant, read straight from a row: what most predicates of lists are made of.
class PredicateEvaluator::ColumnTest
{
public:
    ColumnTest(const PredicateNode &node, int slot, const ValueView &constant, const TextTest *textTest)
        : m_slot(slot)
        , m_test(node.test)
        , m_constant(constant)
        , m_whole(toInteger(constant))
        , m_real(toDouble(constant))
        , m_isReal(std::holds_alternative<double>(constant) || std::holds_alternative<Instant>(constant))
        , m_textTest(textTest)
    { }

    /// Whether `node` is such a comparison.
    static bool fits(const PredicateNode &node, const Operand &left, const Operand &right)
    {
        const bool column = node.left.kind == Expression::Kind::KeyPath && left.path.problem.empty()
            && left.path.steps.size() == 1 && !left.path.count && !left.several;
        const bool number
            = right.constant.index() > 0 && right.constant.index() < 5 && node.test <= Operator::GreaterOrEqual;
        const bool text = std::holds_alternative<std::string_view>(right.constant) && isTextTest(node.test);
        return column && node.right.isConstant() && (number || text);
    }

    [[nodiscard]] bool answer(const Row &row) const
    {
        const Row::Kind kind = row.kind(m_slot);
        if (m_textTest)
            return kind == Row::Kind::Text && m_textTest->matches(row.text(m_slot));
        if (kind == Row::Kind::Nil)
            return m_test == Operator::NotEqual;
        if (!m_isReal && kind <= Row::Kind::Reference) {
            const std::int64_t value = row.integer(m_slot);
            return answers(m_test, value < m_whole ? -1 : value > m_whole ? 1 : 0) == (m_test != Operator::NotEqual);
        }
        if (m_isReal && (kind == Row::Kind::Date || kind == Row::Kind::Double)) {
            const double value = row.real(m_slot);
            return answers(m_test, value < m_real ? -1 : value > m_real ? 1 : 0) == (m_test != Operator::NotEqual);
        }
        return answers(m_test, compareStored(row.value(m_slot, nullptr), m_constant)) == (m_test != Operator::NotEqual);
    }

private:
    int m_slot;
    Operator m_test;
    ValueView m_constant;
    std::int64_t m_whole;
    double m_real;
    bool m_isReal;
    const TextTest *m_textTest;
};

struct PredicateEvaluator::Node {
    Node(const PredicateNode &from, const EntityDescription &entity)
        : source(from), left(from.left, entity), right(from.right, entity)
    {
        const auto *text = std::get_if<std::string_view>(&right.constant);
        const bool textOperator = isTextTest(from.test)
            || ((from.test == Operator::Equal || from.test == Operator::NotEqual) && from.options.any());
        if (from.kind == PredicateNode::Kind::Comparison && text && textOperator)
            prepared = std::make_unique<TextTest>(
                from.test == Operator::NotEqual ? Operator::Equal : from.test, *text, from.options);
        if (from.kind == PredicateNode::Kind::Comparison && ColumnTest::fits(from, left, right))
            column.emplace(from, left.path.steps[0]->slot, right.constant, prepared.get());
    }

    [[nodiscard]] bool answer(const ManagedObject &object) const
    {
        switch (source.kind) {
        case PredicateNode::Kind::True:
            return true;
        case PredicateNode::Kind::False:
            return false;
        case PredicateNode::Kind::And:
            return std::all_of(
                children.begin(), children.end(), [&](const auto &child) { return child->answer(object); });
        case PredicateNode::Kind::Or:
            return std::any_of(
                children.begin(), children.end(), [&](const auto &child) { return child->answer(object); });
        case PredicateNode::Kind::Not:
            return !children[0]->answer(object);
        case PredicateNode::Kind::Comparison:
            return column && object.m_row && !object.m_unsaved && !object.m_deleted ? column->answer(*object.m_row)
                                                                                    : compared(object);
        }
        return false;
    }

    [[nodiscard]] bool compared(const ManagedObject &object) const
    {
        if (left.several && right.several)
            return false; // refused where it would be compiled
        const bool all = source.modifier == PredicateNode::Modifier::All && (left.several || right.several);
        const auto holds = [&](const ValueView &a, const ValueView &b) { return compare(a, b) != all; };
        const bool found = right.several
            ? right.anyValue(object, [&, a = left.value(object)](const ValueView &b) { return holds(a, b); })
            : left.anyValue(object, [&](const ValueView &a) { return holds(a, right.value(object)); });
        return found != all;
    }

    [[nodiscard]] bool compare(const ValueView &a, const ValueView &b) const
    {
        switch (source.test) {
        case Operator::Equal:
            return equal(a, b);
        case Operator::NotEqual:
            return !equal(a, b);
        case Operator::In:
            return std::any_of(
                right.parts.begin(), right.parts.end(), [&](const Operand &part) { return equal(a, part.constant); });
        case Operator::Between:
            return right.parts.size() == 2 && ordered(Operator::GreaterOrEqual, a, right.parts[0].constant)
                && ordered(Operator::LessOrEqual, a, right.parts[1].constant);
        case Operator::Less:
        case Operator::LessOrEqual:
        case Operator::Greater:
        case Operator::GreaterOrEqual:
            return ordered(source.test, a, b);
        default:
            return textual(source.test, a, b);
        }
    }

    [[nodiscard]] bool equal(const ValueView &a, const ValueView &b) const
    {
        if (source.options.any() && std::holds_alternative<std::string_view>(a)
            && std::holds_alternative<std::string_view>(b))
            return textual(Operator::Equal, a, b);
        return equalStored(a, b);
    }

    [[nodiscard]] bool ordered(Operator test, const ValueView &a, const ValueView &b) const
    {
        if (isNil(a) || isNil(b))
            return false;
        if (source.options.any() && std::holds_alternative<std::string_view>(a)
            && std::holds_alternative<std::string_view>(b)) {
            const std::string first = folded(toText(a), source.options);
            const std::string second = folded(toText(b), source.options);
            return answers(test, compareStored(std::string_view(first), std::string_view(second)));
        }
        return answers(test, compareStored(a, b));
    }

    [[nodiscard]] bool textual(Operator test, const ValueView &a, const ValueView &b) const
    {
        if (!std::holds_alternative<std::string_view>(a) || !std::holds_alternative<std::string_view>(b))
            return false;
        if (prepared && source.test != Operator::In)
            return prepared->matches(toText(a));
        return TextTest(test, toText(b), source.options).matches(toText(a));
    }

    const PredicateNode &source;
    Operand left;
    Operand right;
    std::vector<std::unique_ptr<Node>> children;
    std::unique_ptr<TextTest> prepared;
    std::optional<ColumnTest> column;
};

std::unique_ptr<PredicateEvaluator::Node> PredicateEvaluator::prepare(
    const PredicateNode &node, const EntityDescription &entity)
{
    auto prepared = std::make_unique<Node>(node, entity);
    for (const auto &child : node.children)
        prepared->children.push_back(prepare(*child, entity));
    return prepared;
}

PredicateEvaluator::PredicateEvaluator(const Predicate &predicate, const EntityDescription &entity)
    : m_predicate(predicate.shared()), m_root(prepare(*m_predicate, entity))
{ }

PredicateEvaluator::~PredicateEvaluator() = default;

bool PredicateEvaluator::matches(const ManagedObject &object) const
{
    return m_root->answer(object);
}

std::vector<ManagedObject *> PredicateEvaluator::matching(std::span<ManagedObject *const> objects) const
{
    // objects and rows lie all over the memory: asking for them ahead of their turn hides most of the way there
    constexpr std::size_t ahead = 16;
    std::vector<ManagedObject *> found;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (i + 2 * ahead < objects.size())
            __builtin_prefetch(objects[i + 2 * ahead]);
        if (i + ahead < objects.size() && objects[i + ahead]->m_row)
            __builtin_prefetch(&*objects[i + ahead]->m_row);
        if (m_root->answer(*objects[i]))
            found.push_back(objects[i]);
    }
    return found;
}

} // namespace objectstore
