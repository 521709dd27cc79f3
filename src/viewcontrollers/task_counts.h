// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/object_context.h"
#include "objectstore/predicate_evaluator.h"

#include <bitset>
#include <unordered_set>

namespace viewcontrollers {

/// The keys of some records, in blocks of bits.
class KeySet
{
public:
    void insert(std::int64_t key);
    void erase(std::int64_t key);
    [[nodiscard]] std::int64_t size() const { return m_size; }

private:
    static constexpr std::int64_t blockSize = 1024;
    std::unordered_map<std::int64_t, std::bitset<blockSize>> m_blocks;
    std::int64_t m_size = 0;
};

/// How many tasks answer each of many requests. The store is asked once; after that each task that changes is asked in
/// memory, and the numbers follow it.
///
/// Belongs to the thread of the context. Requests have no limit.
class TaskCounts
{
public:
    /// `moc` must outlive the counts, which are told of its changes by `follow`.
    explicit TaskCounts(objectstore::ObjectContext &moc) : m_moc(moc) { }

    /// The number under `id` while it is known to be right.
    [[nodiscard]] std::optional<std::int64_t> known(std::uintptr_t id) const;
    /// The number of the tasks that answer, kept under `id`; counts only where `request` asks for something new.
    [[nodiscard]] objectstore::Result<std::int64_t> count(std::uintptr_t id, const objectstore::FetchRequest &request);
    /// Lets the numbers follow what changed.
    void follow(const objectstore::ObjectsChange &change);
    /// The request of `id` may have changed.
    void doubt(std::uintptr_t id);
    void doubtAll();
    /// Whether nothing of a record is unsaved but which others are its members.
    [[nodiscard]] static bool hasOnlyOtherMembers(const objectstore::ManagedObject &object);
    /// Forgets every number: something changed that was not announced object by object.
    void forget() { m_entries.clear(); }

private:
    struct Entry {
        objectstore::FetchRequest request;
        std::string text; ///< of the predicate
        std::unique_ptr<objectstore::PredicateEvaluator> evaluator;
        bool followsRelationships = false;
        bool isInDoubt = false;
        KeySet members;
    };

    [[nodiscard]] bool changesAnswers(const objectstore::ManagedObject &object);
    void ask(Entry &entry, const std::vector<objectstore::ManagedObject *> &tasks);

    objectstore::ObjectContext &m_moc;
    std::unordered_map<std::uintptr_t, Entry> m_entries;
    std::unordered_set<const objectstore::ManagedObject *> m_edited; ///< records, other than tasks, with unsaved values
};

} // namespace viewcontrollers
