// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "objectstore/value.h"
#include "sync/task_content.h"
#include "toodledo/gtd_task.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace syncing {

/// What is noted of one record.
struct LedgerNote {
    std::optional<ContentMark> server; ///< what the service last had of it
    std::optional<foundation::Instant> serverDate;
    std::int64_t folder = 0; ///< where the service had the task
    std::int64_t context = 0;
    std::optional<ContentMark> local; ///< what the record looked like here then
    std::optional<ContentMark> sent; ///< what is on the way
    std::int64_t sentFolder = 0; ///< where that puts the task
    std::int64_t sentContext = 0;
    std::optional<ContentMark> replaced; ///< what the service had before `server`
    std::optional<foundation::Instant> replacedDate;
    std::optional<toodledo::SourceMark> source; ///< the bytes by which a list told of `server`
};

/// The notes on the records of one kind, by the records' keys. They lie in pages of many, since a row of its own for
/// each of a hundred thousand notes is most of what it costs to keep them; a page is written whole when one changes.
class LedgerBook
{
public:
    /// Takes over a page that lies in the store under `key`. A damaged page gives those notes that can be read, and
    /// false.
    bool addPage(std::int64_t key, std::span<const std::byte> bytes);

    [[nodiscard]] const LedgerNote *find(std::int64_t record) const;
    /// The note on `record`, made where there is none, which the caller is about to change.
    [[nodiscard]] LedgerNote &edit(std::int64_t record);
    /// Room for so many notes more, which are about to come.
    void makeRoom(std::size_t notes) { m_entries.reserve(m_entries.size() + notes); }
    void erase(std::int64_t record);
    void clear();
    /// Calls `visit` with the key of each record and its note.
    template <class Visit> void forEach(Visit visit) const
    {
        for (const auto &[record, entry] : m_entries)
            visit(record, entry.note);
    }

    /// Calls `write` with the key (0 for one that is new, to be set) and the bytes of each page that has changed; no
    /// bytes stand for a page that is to go.
    void writeChangedPages(const std::function<void(std::int64_t &key, const objectstore::Bytes &bytes)> &write);

private:
    struct Page {
        std::int64_t key = 0;
        std::vector<std::int64_t> records;
        bool isChanged = false;
    };
    struct Entry {
        LedgerNote note;
        std::size_t page = 0;
    };

    std::unordered_map<std::int64_t, Entry> m_entries;
    std::vector<Page> m_pages;
};

} // namespace syncing
