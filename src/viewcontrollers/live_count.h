// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"
#include "viewcontrollers/task_catalog.h"

#include <cstdint>
#include <unordered_map>

namespace viewcontrollers {

/// How many tasks answer a request that is being edited. The answers to each condition are kept from one count to the
/// next, so that a key in one condition asks that one again, and a text from the catalog.
///
/// Main thread.
class LiveCount final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this.
    LiveCount(app::TMApplicationDelegate &delegate, const TaskCatalog &catalog);

    /// The number; `request` is for tasks and has no limit. The store is asked as a whole while the catalog is not
    /// ready.
    [[nodiscard]] objectstore::Result<std::int64_t> count(const objectstore::FetchRequest &request);

private:
    /// For each entry of the catalog, 1 where its task answers.
    using Answers = std::vector<std::uint8_t>;
    using Node = objectstore::PredicateNode;

    void forget();
    [[nodiscard]] objectstore::Result<Answers> answers(const Node &node);
    [[nodiscard]] objectstore::Result<Answers> combined(const Node &group);
    [[nodiscard]] Answers answersToText(const Node &comparison) const;
    [[nodiscard]] objectstore::Result<Answers> answersOfStore(const objectstore::Predicate &predicate) const;

    objectstore::ObjectContext &m_moc;
    const objectstore::EntityDescription &m_entity;
    const TaskCatalog &m_catalog;
    std::shared_ptr<const TaskWords> m_words; ///< what the answers go by
    std::unordered_map<std::string, Answers> m_known; ///< by the text of the condition
    std::unordered_map<std::string, Answers> m_used; ///< those of the count under way, which are to be kept
};

} // namespace viewcontrollers
