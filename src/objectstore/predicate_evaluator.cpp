// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_evaluator.h"

#include "objectstore/comparison.h"
#include "objectstore/predicate_node.h"
#include "objectstore/text_folding.h"

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
        if (from.kind == PredicateNode::Kind::Comparison && isOfColumn() && ColumnTest::fits(from.test, right.constant))
            column.emplace(left.path.steps[0]->slot, from.test, right.constant, prepared.get());
    }

    /// Whether one column is compared with a constant.
    [[nodiscard]] bool isOfColumn() const
    {
        return source.left.kind == Expression::Kind::KeyPath && left.path.problem.empty() && left.path.steps.size() == 1
            && !left.path.count && !left.several && source.right.isConstant();
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
            return column && isAsStored(object) ? column->answer(*object.m_row) : compared(object);
        }
        return false;
    }

    /// How far the answer is to seek, for the cheap ones among several to be asked first: a flag or a number that tells
    /// by its kind, a column's cell, a text, anything else.
    [[nodiscard]] int cost() const
    {
        int dearest = 0;
        for (const auto &child : children)
            dearest = std::max(dearest, child->cost());
        if (source.kind == PredicateNode::Kind::Comparison)
            dearest = column ? column->cost() : 4;
        return dearest;
    }

    /// Whether all that can be asked of the object lies in its row.
    [[nodiscard]] static bool isAsStored(const ManagedObject &object)
    {
        return object.m_row && !object.m_unsaved && !object.m_deleted;
    }

    /// Lays the node out before the places to go on at; its own place. Nothing where it does not ask columns alone.
    [[nodiscard]] std::optional<int> layOut(RowTest &test, int whenTrue, int whenFalse) const
    {
        std::optional<int> place = whenTrue;
        switch (source.kind) {
        case PredicateNode::Kind::True:
            return whenTrue;
        case PredicateNode::Kind::False:
            return whenFalse;
        case PredicateNode::Kind::Not:
            return children[0]->layOut(test, whenFalse, whenTrue);
        case PredicateNode::Kind::Comparison:
            return column ? std::optional(test.add(*column, whenTrue, whenFalse)) : std::nullopt;
        case PredicateNode::Kind::And:
            for (auto child = children.rbegin(); child != children.rend() && place; ++child)
                place = (*child)->layOut(test, *place, whenFalse);
            return place;
        case PredicateNode::Kind::Or:
            place = whenFalse;
            for (auto child = children.rbegin(); child != children.rend() && place; ++child)
                place = (*child)->layOut(test, whenTrue, *place);
            return place;
        }
        return std::nullopt;
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
    std::ranges::stable_sort(prepared->children, {}, [](const auto &child) { return child->cost(); });
    return prepared;
}

PredicateEvaluator::PredicateEvaluator(const Predicate &predicate, const EntityDescription &entity)
    : m_predicate(predicate.shared()), m_root(prepare(*m_predicate, entity))
{
    RowTest rowTest;
    if (const auto first = m_root->layOut(rowTest, RowTest::yes, RowTest::no)) {
        rowTest.setFirst(*first);
        m_rowTest = std::move(rowTest);
    }
}

PredicateEvaluator::~PredicateEvaluator() = default;

bool PredicateEvaluator::matches(const ManagedObject &object) const
{
    return m_rowTest && Node::isAsStored(object) ? m_rowTest->answer(*object.m_row) : m_root->answer(object);
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
            objects[i + ahead]->m_row->prefetch();
        if (matches(*objects[i]))
            found.push_back(objects[i]);
    }
    return found;
}

} // namespace objectstore
