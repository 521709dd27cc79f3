// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"
#include "objectstore/store.h"

#include <memory>
#include <string>
#include <vector>

namespace viewcontrollers {

/// The title and the notes of every task of a store, folded, as they were when it was read. Immutable; any thread may
/// use it.
class TaskWords
{
public:
    struct Entry {
        std::int64_t key = 0;
        std::uint32_t rank = 0; ///< by title; the same where the order makes no difference
        std::uint32_t title = 0; ///< where its words begin
        std::uint32_t notes = 0;
    };
    static constexpr objectstore::TextOptions folding{.foldCase = true, .foldMarks = false};

    /// Takes a connection of its own. Null where the tasks cannot be read, which is logged, or are too many.
    [[nodiscard]] static std::shared_ptr<const TaskWords> read(objectstore::Store &store);

    /// By key.
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }
    /// The entry of a task, sought from `from` on where tasks are asked for in the order of their keys; null for none.
    [[nodiscard]] const Entry *entry(std::int64_t key, std::size_t &from) const;
    [[nodiscard]] std::string_view title(std::size_t entry) const
    {
        return words(m_entries[entry].title, m_entries[entry].notes);
    }
    [[nodiscard]] std::string_view notes(std::size_t entry) const
    {
        return words(m_entries[entry].notes,
            entry + 1 < m_entries.size() ? std::size_t{m_entries[entry + 1].title} : m_words.size());
    }
    /// The first entry from `from` on with `folded` in its title or its notes; the number of entries where none has.
    [[nodiscard]] std::size_t find(std::string_view folded, std::size_t from) const;

private:
    [[nodiscard]] std::string_view words(std::size_t begin, std::size_t end) const
    {
        return std::string_view(m_words).substr(begin, end - begin - 1);
    }

    std::vector<Entry> m_entries;
    std::string m_words; ///< with a zero after each title and each text of notes
};

} // namespace viewcontrollers
