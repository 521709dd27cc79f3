// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/smart_criteria.h"

#include "model/relative_date.h"

#include <memory>
#include <numeric>

namespace viewcontrollers {

using foundation::Instant;
using objectstore::Expression;
using objectstore::Operator;
using objectstore::Predicate;
using objectstore::PredicateNode;
using objectstore::Value;

namespace {

constexpr double lastMoment = 0.001; // of a day: instants have milliseconds
constexpr std::size_t largestRow = 8; // nodes of the longest question that a row can say
constexpr int deepestGroup = 10;
constexpr std::size_t mostRows = 200; // more would be no help to anybody

Operand defaultOperand(OperandKind kind, Instant now)
{
    switch (kind) {
    case OperandKind::None:
        return {};
    case OperandKind::Text:
    case OperandKind::Title:
        return std::string();
    case OperandKind::Number:
        return std::int64_t{0};
    case OperandKind::Flag:
        return true;
    case OperandKind::Minutes:
        return std::int64_t{30};
    case OperandKind::Day:
        return foundation::startOfLocalDay(now);
    case OperandKind::Span:
        return DateSpan{};
    }
    return {};
}

Expression constant(Value value)
{
    return Expression::of(std::move(value));
}

/// The right side of the comparison that a row with an operand makes.
struct RightSide {
    const CriterionTest &test;
    Instant now;

    Expression operator()(std::monostate) const { return {}; }
    Expression operator()(const std::string &text) const { return constant(text); }
    Expression operator()(std::int64_t number) const { return constant(number); }
    Expression operator()(bool flag) const { return constant(flag); }
    Expression operator()(Instant day) const
    {
        if (test.test != Operator::Between)
            return constant(day);
        const Instant begin = foundation::startOfLocalDay(day);
        return Expression::of(
            std::vector<Value>{begin, Instant{foundation::addLocalDays(begin, 1).seconds - lastMoment}});
    }
    Expression operator()(const DateSpan &span) const
    {
        Expression expression;
        expression.kind = Expression::Kind::Relative;
        expression.relative = model::relativeDate(span.number, span.unit, test.isBackward, now);
        return expression;
    }
};

Predicate questionWithoutOperand(const CriterionDescription &criterion, std::string_view format)
{
    std::vector<objectstore::Argument> paths;
    for (std::size_t at = format.find("%K"); at != std::string_view::npos; at = format.find("%K", at + 1))
        paths.emplace_back(Value(std::string(criterion.keyPath)));
    return *Predicate::parse(format, paths);
}

Predicate predicateOf(const CriterionRow &row, Instant now)
{
    const CriterionDescription &criterion = describe(row.criterion);
    const CriterionTest &test = row.description();
    if (test.operand == OperandKind::None)
        return questionWithoutOperand(criterion, test.format);
    auto node = std::make_shared<PredicateNode>();
    node->kind = PredicateNode::Kind::Comparison;
    node->test = test.test;
    node->left.kind = Expression::Kind::KeyPath;
    node->left.name = criterion.keyPath;
    node->right = std::visit(RightSide{test, now}, row.operand);
    if (test.operand == OperandKind::Text)
        node->options = row.options;
    Predicate comparison(std::move(node));
    return test.isNegated ? Predicate::negation(std::move(comparison)) : comparison;
}

Predicate predicateOf(const CriteriaItem &item, Instant now)
{
    if (const auto *row = std::get_if<CriterionRow>(&item.content))
        return predicateOf(*row, now);
    if (const auto *group = std::get_if<CriteriaGroup>(&item.content))
        return predicateOf(*group, now);
    return std::get<Predicate>(item.content);
}

template <class T> std::optional<Operand> constantOf(const Expression &expression)
{
    const auto *value = std::get_if<T>(&expression.constant);
    if (expression.kind != Expression::Kind::Constant || !value)
        return std::nullopt;
    return *value;
}

std::optional<Operand> flagOf(const Expression &expression)
{
    if (const auto flag = constantOf<bool>(expression))
        return flag;
    const auto number = constantOf<std::int64_t>(expression);
    if (!number || (*number != Operand(std::int64_t{0}) && *number != Operand(std::int64_t{1})))
        return std::nullopt; // the row has a Yes and a No for it, and nothing else
    return *number == Operand(std::int64_t{1});
}

std::optional<Operand> spanOf(const Expression &expression, bool isBackward)
{
    if (expression.kind != Expression::Kind::Relative || expression.relative.backward != isBackward)
        return std::nullopt;
    const std::int64_t number = model::valueOfTimeDifferenceInUnits(expression.relative);
    if (number < 0 || number > model::maximumRelativeNumber)
        return std::nullopt;
    return DateSpan{number, expression.relative.dateUnits};
}

std::optional<Operand> operandOf(const Expression &expression, const CriterionTest &test)
{
    switch (test.operand) {
    case OperandKind::None:
        return std::nullopt;
    case OperandKind::Text:
    case OperandKind::Title:
        return constantOf<std::string>(expression);
    case OperandKind::Number:
    case OperandKind::Minutes:
        return constantOf<std::int64_t>(expression);
    case OperandKind::Flag:
        return flagOf(expression);
    case OperandKind::Day:
        return constantOf<Instant>(expression.parts.empty() ? expression : expression.parts.front());
    case OperandKind::Span:
        return spanOf(expression, test.isBackward);
    }
    return std::nullopt;
}

/// Whether both ask the same when their relative dates are made at the same moment.
bool askTheSame(const Predicate &left, const Predicate &right)
{
    constexpr Instant moment{objectstore::referenceDate};
    return model::withRelativeDatesAt(left, moment) == model::withRelativeDatesAt(right, moment);
}

/// The row that the test would read out of `predicate`, if it can.
std::optional<CriterionRow> readAs(const CriterionDescription &criterion, std::size_t place, const Predicate &predicate)
{
    const CriterionTest &test = criterion.tests[place];
    CriterionRow row{.criterion = criterion.criterion, .test = place, .operand = {}, .options = {}};
    if (test.operand == OperandKind::None)
        return row;
    const PredicateNode *node = &predicate.root();
    if (test.isNegated && node->kind == PredicateNode::Kind::Not)
        node = node->children.front().get();
    if (node->kind != PredicateNode::Kind::Comparison || node->test != test.test
        || node->left.name != criterion.keyPath)
        return std::nullopt;
    auto operand = operandOf(node->right, test);
    if (!operand)
        return std::nullopt;
    row.operand = std::move(*operand);
    row.options = node->options;
    return row;
}

/// A row is taken only when it says exactly what was read, so that nothing of it is lost when it is saved again.
std::optional<CriterionRow> rowOf(const Predicate &predicate)
{
    const Instant moment{objectstore::referenceDate};
    if (objectstore::sizeOf(predicate.root()).nodes > largestRow)
        return std::nullopt;
    for (const CriterionDescription &criterion : criteria()) {
        for (std::size_t place = 0; place < criterion.tests.size(); ++place) {
            auto row = readAs(criterion, place, predicate);
            if (row && askTheSame(predicateOf(*row, moment), predicate))
                return row;
        }
    }
    return std::nullopt;
}

/// YES and NO where a yes-or-no attribute is compared with the numbers 1 and 0, as other writers may have it.
Predicate withFlags(const Predicate &predicate)
{
    const PredicateNode &node = predicate.root();
    const bool isFlag = node.kind == PredicateNode::Kind::Comparison && node.test == Operator::Equal
        && (node.left.name == describe(Criterion::Star).keyPath
            || node.left.name == describe(Criterion::Complete).keyPath);
    const auto flag = isFlag ? flagOf(node.right) : std::nullopt;
    if (!flag)
        return predicate;
    auto result = std::make_shared<PredicateNode>(node);
    result->right = constant(std::get<bool>(*flag));
    return Predicate(std::move(result));
}

CriteriaItem itemOf(const Predicate &predicate, int depth);

CriteriaGroup groupOf(CriteriaGroup::Kind kind, const std::vector<PredicateNode::Pointer> &children, int depth)
{
    CriteriaGroup group{.kind = kind, .items = {}};
    for (const PredicateNode::Pointer &child : children)
        group.items.push_back(itemOf(Predicate(child), depth + 1));
    return group;
}

CriteriaItem itemOf(const Predicate &predicate, int depth)
{
    if (auto row = rowOf(withFlags(predicate)))
        return {std::move(*row)};
    if (depth > deepestGroup)
        return {predicate};
    const PredicateNode &node = predicate.root();
    switch (node.kind) {
    case PredicateNode::Kind::And:
        return {groupOf(CriteriaGroup::Kind::All, node.children, depth)};
    case PredicateNode::Kind::Or:
        return {groupOf(CriteriaGroup::Kind::Any, node.children, depth)};
    case PredicateNode::Kind::Not: {
        const PredicateNode &denied = *node.children.front();
        const bool isList = denied.kind == PredicateNode::Kind::Or && !rowOf(Predicate(node.children.front()));
        return {groupOf(CriteriaGroup::Kind::None, isList ? denied.children : node.children, depth)};
    }
    default:
        return {predicate};
    }
}

} // namespace

CriterionRow newRow(Criterion criterion, Instant now)
{
    CriterionRow row{.criterion = criterion, .test = 0, .operand = {}, .options = {.foldCase = true}};
    row.operand = defaultOperand(row.description().operand, now);
    return row;
}

CriterionRow withTest(CriterionRow row, std::size_t test, Instant now)
{
    row.test = test;
    Operand fresh = defaultOperand(row.description().operand, now);
    if (row.operand.index() != fresh.index())
        row.operand = std::move(fresh);
    return row;
}

Predicate predicateOf(const CriteriaGroup &group, Instant now)
{
    std::vector<Predicate> parts;
    for (const CriteriaItem &item : group.items)
        parts.push_back(predicateOf(item, now));
    switch (group.kind) {
    case CriteriaGroup::Kind::All:
        return Predicate::conjunction(std::move(parts));
    case CriteriaGroup::Kind::Any:
        return Predicate::disjunction(std::move(parts));
    case CriteriaGroup::Kind::None:
        break;
    }
    return Predicate::negation(Predicate::disjunction(std::move(parts)));
}

CriteriaGroup criteriaOf(const Predicate &predicate)
{
    CriteriaItem item = itemOf(predicate, 0);
    auto *group = std::get_if<CriteriaGroup>(&item.content);
    if (group && rowCount(*group) <= mostRows)
        return std::move(*group);
    if (group)
        item.content = predicate;
    return {.kind = CriteriaGroup::Kind::All, .items = {std::move(item)}};
}

std::size_t rowCount(const CriteriaGroup &group)
{
    return std::accumulate(
        group.items.begin(), group.items.end(), std::size_t{1}, [](std::size_t count, const CriteriaItem &item) {
            const auto *inner = std::get_if<CriteriaGroup>(&item.content);
            return count + (inner ? rowCount(*inner) : 1);
        });
}

} // namespace viewcontrollers
