// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/live_count.h"

#include "model/task_queries.h"
#include "objectstore/object_context.h"
#include "objectstore/predicate_evaluator.h"
#include "objectstore/text_folding.h"
#include "objectstore/text_test.h"

#include <algorithm>
#include <numeric>

namespace viewcontrollers {

using foundation::Failure;
using objectstore::Expression;
using objectstore::ManagedObject;
using objectstore::ObjectID;
using objectstore::Operator;
using objectstore::Predicate;
using objectstore::PredicateNode;
using objectstore::Result;

namespace {

const std::string *constantText(const PredicateNode &comparison)
{
    return comparison.right.kind == Expression::Kind::Constant ? std::get_if<std::string>(&comparison.right.constant)
                                                               : nullptr;
}

/// Whether the words of the catalog tell: an empty text would be found in no notes, which look there like empty ones.
bool asksForWords(const PredicateNode &node)
{
    if (node.kind != PredicateNode::Kind::Comparison || node.left.kind != Expression::Kind::KeyPath)
        return false;
    const bool isTest
        = node.test == Operator::Contains || node.test == Operator::BeginsWith || node.test == Operator::EndsWith;
    const std::string *text = constantText(node);
    return isTest && node.options == TaskWords::folding && (node.left.name == "title" || node.left.name == "notes")
        && text && !text->empty();
}

bool hasWords(const PredicateNode &node)
{
    return asksForWords(node)
        || std::any_of(node.children.begin(), node.children.end(), [](const auto &child) { return hasWords(*child); });
}

} // namespace

LiveCount::LiveCount(app::TMApplicationDelegate &delegate, const TaskCatalog &catalog)
    : m_moc(delegate.managedObjectContext())
    , m_entity(*m_moc.store().model().entity(model::Tasks::entityName))
    , m_catalog(catalog)
{
    connect(&delegate, &app::TMApplicationDelegate::objectsDidChange, this, &LiveCount::forget);
    connect(&delegate, &app::TMApplicationDelegate::storeDidChangeElsewhere, this, &LiveCount::forget);
}

void LiveCount::forget()
{
    m_known.clear();
}

Result<std::int64_t> LiveCount::count(const objectstore::FetchRequest &request)
{
    const auto words = m_catalog.words(); // announces what is pending
    if (!words || !hasWords(request.predicate.root()))
        return m_moc.count(request);
    if (std::exchange(m_words, words) != words)
        m_known.clear();
    auto answering = answers(request.predicate.root());
    m_known = std::exchange(m_used, {});
    if (!answering)
        return Failure(answering.error());
    const objectstore::PredicateEvaluator evaluator(request.predicate, m_entity);
    std::int64_t number = 0;
    std::size_t from = 0;
    for (const std::int64_t key : m_catalog.changed()) {
        if (const TaskWords::Entry *entry = words->entry(key, from))
            (*answering)[static_cast<std::size_t>(entry - words->entries().data())] = 0;
        const ManagedObject *task = m_moc.existingObject({&m_entity, key});
        if (task && evaluator.matches(*task))
            ++number;
    }
    return std::accumulate(answering->begin(), answering->end(), number);
}

/// A predicate is taken apart as far as it asks for words; the store answers the rest in as few pieces as there are.
Result<LiveCount::Answers> LiveCount::answers(const Node &node)
{
    if (!asksForWords(node) && hasWords(node))
        return combined(node);
    const Predicate condition(std::make_shared<const Node>(node));
    const std::string text = condition.text();
    if (const auto known = m_known.find(text); known != m_known.end())
        return m_used.insert(*known).first->second;
    auto found = asksForWords(node) ? Result<Answers>(answersToText(node)) : answersOfStore(condition);
    if (found)
        m_used.emplace(text, *found);
    return found;
}

Result<LiveCount::Answers> LiveCount::combined(const Node &group)
{
    const bool isOr = group.kind == Node::Kind::Or;
    Node rest{.kind = group.kind, .children = {}, .left = {}, .right = {}};
    std::vector<std::shared_ptr<const Node>> parts;
    for (const auto &child : group.children)
        (hasWords(*child) || group.kind == Node::Kind::Not ? parts : rest.children).push_back(child);
    if (!rest.children.empty())
        parts.push_back(std::make_shared<const Node>(std::move(rest)));
    Answers together(m_words->entries().size(), isOr ? 0 : 1);
    for (const auto &part : parts) {
        const auto found = answers(*part);
        if (!found)
            return found;
        std::transform(together.begin(), together.end(), found->begin(), together.begin(),
            [isOr](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(isOr ? a | b : a & b); });
    }
    if (group.kind == Node::Kind::Not)
        std::transform(together.begin(), together.end(), together.begin(),
            [](std::uint8_t answer) { return static_cast<std::uint8_t>(1 - answer); });
    return together;
}

LiveCount::Answers LiveCount::answersToText(const Node &comparison) const
{
    const objectstore::TextTest test(
        comparison.test, objectstore::folded(*constantText(comparison), TaskWords::folding), {});
    const bool isTitle = comparison.left.name == "title";
    Answers found(m_words->entries().size());
    for (std::size_t i = 0; i < found.size(); ++i)
        found[i] = test.matches(isTitle ? m_words->title(i) : m_words->notes(i)) ? 1 : 0;
    return found;
}

Result<LiveCount::Answers> LiveCount::answersOfStore(const Predicate &predicate) const
{
    objectstore::FetchRequest request = model::everyTask();
    request.predicate = predicate;
    Answers found(m_words->entries().size());
    std::size_t from = 0;
    const auto read = m_moc.fetchIDs(request, [&](const ObjectID &task) {
        if (const TaskWords::Entry *entry = m_words->entry(task.key, from))
            found[static_cast<std::size_t>(entry - m_words->entries().data())] = 1;
    });
    return read ? Result<Answers>(std::move(found)) : Failure(read.error());
}

} // namespace viewcontrollers
