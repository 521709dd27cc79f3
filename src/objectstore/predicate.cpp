// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate.h"

#include "objectstore/predicate_evaluator.h"
#include "objectstore/predicate_node.h"

#include <algorithm>
#include <stdexcept>

namespace objectstore {

namespace {

constexpr double referenceDate = 978307200; // 2001-01-01 00:00:00 UTC

Predicate made(PredicateNode node)
{
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
    if (!sizeOf(node).isWithinBounds())
        throw std::length_error("A predicate grew beyond its bounds");
    return made(std::move(node));
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

} // namespace

Expression Expression::of(const Argument &argument)
{
    if (const auto *values = std::get_if<std::vector<Value>>(&argument)) {
        Expression list{.kind = Kind::List, .constant = {}, .name = {}, .relative = {}, .parts = {}};
        for (const Value &value : *values)
            list.parts.push_back(of(value));
        return list;
    }
    const Value &value = std::get<Value>(argument);
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
        if (!property) {
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
    if (!sizeOf(node).isWithinBounds())
        throw std::length_error("A predicate grew beyond its bounds");
    return made(std::move(node));
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

bool Predicate::followsRelationships() const
{
    bool follows = false;
    forEachExpression(*m_root, [&follows](const Expression &expression) {
        follows = follows
            || (expression.kind == Expression::Kind::KeyPath && expression.name.find('.') != std::string::npos);
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
