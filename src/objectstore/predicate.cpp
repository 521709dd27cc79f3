// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate.h"

#include "objectstore/predicate_evaluator.h"
#include "objectstore/predicate_node.h"
#include "objectstore/text_test.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace objectstore {

namespace {

/// What the program joins may outgrow what can be read, since each part may be as large as that; but not for ever.
Predicate bounded(PredicateNode node)
{
    if (!sizeOf(node).isWithinBounds(8))
        throw std::length_error("A predicate grew beyond its bounds");
    return Predicate(std::make_shared<const PredicateNode>(std::move(node)));
}

Predicate joined(PredicateNode::Kind kind, std::vector<Predicate> parts)
{
    if (parts.size() == 1)
        return parts.front();
    PredicateNode node;
    node.kind = parts.empty()
        ? (kind == PredicateNode::Kind::And ? PredicateNode::Kind::True : PredicateNode::Kind::False)
        : kind;
    for (const Predicate &part : parts)
        node.children.push_back(part.shared());
    return bounded(std::move(node));
}

void measure(const Expression &expression, std::size_t depth, TreeSize &size)
{
    size.depth = std::max(size.depth, depth);
    ++size.nodes;
    for (const Expression &part : expression.parts)
        measure(part, depth + 1, size);
}

void measure(const PredicateNode &node, std::size_t depth, TreeSize &size)
{
    size.depth = std::max(size.depth, depth);
    ++size.nodes;
    for (const auto &child : node.children)
        measure(*child, depth + 1, size);
    if (node.kind == PredicateNode::Kind::Comparison) {
        measure(node.left, depth + 1, size);
        measure(node.right, depth + 1, size);
    }
}

bool sameTree(const PredicateNode &left, const PredicateNode &right)
{
    return left.kind == right.kind && left.test == right.test && left.modifier == right.modifier
        && left.options == right.options && left.left == right.left && left.right == right.right
        && std::equal(left.children.begin(), left.children.end(), right.children.begin(), right.children.end(),
            [](const auto &a, const auto &b) { return sameTree(*a, *b); });
}

Expression substituted(const Expression &expression, const Variables &variables)
{
    if (expression.kind == Expression::Kind::Variable) {
        const auto found = variables.find(expression.name);
        return found == variables.end() ? expression : Expression::of(found->second);
    }
    Expression result = expression;
    for (Expression &part : result.parts)
        part = substituted(part, variables);
    return result;
}

PredicateNode::Pointer substituted(const PredicateNode::Pointer &node, const Variables &variables)
{
    auto result = std::make_shared<PredicateNode>(*node);
    for (auto &child : result->children)
        child = substituted(child, variables);
    result->left = substituted(node->left, variables);
    result->right = substituted(node->right, variables);
    if (result->kind == PredicateNode::Kind::Comparison)
        (void)settle(*result); // what cannot be asked is refused where it is compiled
    return result;
}

/// Calls `visit` with every expression of the tree.
template <typename Visit> void forEachExpression(const Expression &expression, const Visit &visit)
{
    visit(expression);
    for (const Expression &part : expression.parts)
        forEachExpression(part, visit);
}

template <typename Visit> void forEachExpression(const PredicateNode &node, const Visit &visit)
{
    for (const auto &child : node.children)
        forEachExpression(*child, visit);
    if (node.kind == PredicateNode::Kind::Comparison) {
        forEachExpression(node.left, visit);
        forEachExpression(node.right, visit);
    }
}

bool isNaN(const Value &value)
{
    return (std::holds_alternative<double>(value) || std::holds_alternative<Instant>(value))
        && std::isnan(toDouble(view(value)));
}

bool holdsList(const Expression &expression)
{
    return expression.kind == Expression::Kind::List
        || std::any_of(expression.parts.begin(), expression.parts.end(), holdsList);
}

bool isUsablePattern(const PredicateNode &node)
{
    const auto *pattern = std::get_if<std::string>(&node.right.constant);
    return node.right.kind != Expression::Kind::Constant || !pattern
        || TextTest(Operator::Matches, *pattern, node.options).isValid();
}

} // namespace

std::string settle(PredicateNode &node)
{
    const Expression::Kind right = node.right.kind;
    if (node.test == Operator::In && right == Expression::Kind::KeyPath) {
        std::swap(node.left, node.right); // "x IN tags.title" asks whether any of them is x
        node.test = Operator::Equal;
    } else if (node.test == Operator::Contains && right == Expression::Kind::Record) {
        node.test = Operator::Equal; // a relationship contains a record
    }
    const bool collection = node.test == Operator::In || node.test == Operator::Between;
    const bool list = right == Expression::Kind::List;
    if (collection && !list && right != Expression::Kind::Variable)
        return node.test == Operator::In ? "Expected a list after IN" : "Expected a list of two values after BETWEEN";
    if (node.test == Operator::Between && list && node.right.parts.size() != 2)
        return "Expected a list of two values after BETWEEN";
    if (holdsList(node.left) || (holdsList(node.right) && !(collection && list)))
        return "A list can stand only after IN or BETWEEN";
    if (node.test == Operator::Matches && !isUsablePattern(node))
        return "The pattern after MATCHES is not a regular expression";
    return {};
}

Expression Expression::of(const Argument &argument)
{
    if (const auto *values = std::get_if<std::vector<Value>>(&argument)) {
        Expression list{.kind = Kind::List, .constant = {}, .name = {}, .relative = {}, .parts = {}};
        for (const Value &value : *values)
            list.parts.push_back(of(value));
        return list;
    }
    const Value &value = std::get<Value>(argument);
    if (isNaN(value))
        return {};
    if (const auto *id = std::get_if<ObjectID>(&value))
        return *id ? record(id->entity->name(), id->key) : Expression();
    return {.kind = Kind::Constant, .constant = value, .name = {}, .relative = {}, .parts = {}};
}

ValueView Expression::constantValue() const
{
    if (kind == Kind::Relative)
        return Instant{relative.timeIntervalSinceReferenceDate + referenceDate};
    return view(constant);
}

TreeSize sizeOf(const PredicateNode &node)
{
    TreeSize size;
    measure(node, 1, size);
    return size;
}

bool ResolvedPath::isMany() const
{
    if (steps.empty())
        return false;
    const auto end = count ? steps.end() - 1 : steps.end();
    return std::any_of(steps.begin(), end, [](const Property *step) { return step->isToMany(); });
}

ResolvedPath resolve(std::string_view path, const EntityDescription &entity)
{
    ResolvedPath resolved;
    const EntityDescription *current = &entity;
    for (std::string_view rest = path; !rest.empty();) {
        const std::size_t dot = rest.find('.');
        const std::string_view name = rest.substr(0, dot);
        rest = dot == std::string_view::npos ? std::string_view() : rest.substr(dot + 1);
        if (name == "@count" && rest.empty() && !resolved.steps.empty() && resolved.steps.back()->isToMany()) {
            resolved.count = true;
            break;
        }
        const Property *property = current ? current->property(name) : nullptr;
        if (resolved.steps.size() == maximumPathSteps) {
            resolved.problem = "A key path is too long.";
            break;
        }
        if (!property || path.ends_with('.')) {
            resolved.problem = "There is no \"" + std::string(name) + "\" in \"" + std::string(path) + "\".";
            break;
        }
        resolved.steps.push_back(property);
        current = property->destination;
    }
    if (resolved.steps.empty() && resolved.problem.empty())
        resolved.problem = "A key path is empty.";
    return resolved;
}

Predicate::Predicate() : m_root(std::make_shared<const PredicateNode>()) { }

Predicate::Predicate(std::shared_ptr<const PredicateNode> root) : m_root(std::move(root)) { }

tl::expected<Predicate, ParseError> Predicate::parse(std::string_view format, std::initializer_list<Argument> arguments)
{
    return parse(format, std::span(arguments.begin(), arguments.size()));
}

Predicate Predicate::format(std::string_view format, std::initializer_list<Argument> arguments)
{
    auto parsed = parse(format, arguments);
    if (!parsed)
        throw std::logic_error(parsed.error().message + " in " + std::string(format));
    return std::move(*parsed);
}

Predicate Predicate::conjunction(std::vector<Predicate> parts)
{
    return joined(PredicateNode::Kind::And, std::move(parts));
}
Predicate Predicate::disjunction(std::vector<Predicate> parts)
{
    return joined(PredicateNode::Kind::Or, std::move(parts));
}

Predicate Predicate::negation(Predicate part)
{
    PredicateNode node;
    node.kind = PredicateNode::Kind::Not;
    node.children.push_back(std::move(part.m_root));
    return bounded(std::move(node));
}

Predicate Predicate::withVariables(const Variables &variables) const
{
    return Predicate(substituted(m_root, variables));
}

bool Predicate::isAlwaysTrue() const
{
    return m_root->kind == PredicateNode::Kind::True;
}

bool Predicate::matches(const ManagedObject &object) const
{
    return PredicateEvaluator(*this, object.entity()).matches(object);
}

bool Predicate::followsRelationships(const EntityDescription &entity) const
{
    bool follows = false;
    forEachExpression(*m_root, [&](const Expression &expression) {
        if (follows || expression.kind != Expression::Kind::KeyPath)
            return;
        const ResolvedPath path = resolve(expression.name, entity);
        follows = path.steps.size() > 1 || path.isMany() || path.count;
    });
    return follows;
}

std::optional<std::string> Predicate::problemWith(const EntityDescription &entity) const
{
    std::optional<std::string> problem;
    forEachExpression(*m_root, [&](const Expression &expression) {
        if (problem)
            return;
        if (expression.kind == Expression::Kind::KeyPath) {
            if (std::string sentence = resolve(expression.name, entity).problem; !sentence.empty())
                problem = std::move(sentence);
        } else if (expression.kind == Expression::Kind::Variable) {
            problem = "The variable $" + expression.name + " has no value.";
        }
    });
    return problem;
}

bool operator==(const Predicate &left, const Predicate &right)
{
    return left.m_root == right.m_root || sameTree(*left.m_root, *right.m_root);
}

} // namespace objectstore
