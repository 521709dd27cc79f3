// SPDX-License-Identifier: GPL-3.0-or-later
// Two writers over one store, each with a merge policy, against a few lines that say what the policies promise.
#include "objectstore/library.h"

#include <map>
#include <rapidcheck/gtest.h>

using namespace library;

namespace {

constexpr std::array<const char *, 3> fields{"pages", "price", "title"};

Value fieldValue(int field, int number)
{
    switch (field) {
    case 0:
        return std::int64_t{number};
    case 1:
        return number / 2.0;
    default:
        return std::to_string(number);
    }
}

/// What the store holds of a book.
struct Record {
    std::array<int, fields.size()> values{};
    int version = 0;
    bool exists = true;
};

/// One writer: its context, and what it should know of each book.
struct Desk {
    struct Seen {
        Record base; ///< as read
        std::map<int, int> edits;
        bool removed = false; ///< here and not saved yet
        bool stale = false; ///< merged while there were edits
    };

    std::unique_ptr<ObjectContext> context;
    MergePolicy policy = MergePolicy::Rollback;
    std::vector<ManagedObject *> books;
    std::vector<Seen> seen;

    [[nodiscard]] bool holds(std::size_t book) const { return seen[book].base.exists && !seen[book].removed; }
};

class Shop
{
public:
    Shop()
    {
        auto writer = m_library.context();
        for (int i = 0; i < 3; ++i) {
            ManagedObject &made = writer->insert("Book");
            for (int field = 0; field < static_cast<int>(fields.size()); ++field)
                made.setValue(fields[static_cast<std::size_t>(field)], fieldValue(field, 0));
            m_store.push_back({});
        }
        value(writer->save());
        for (std::size_t i = 0; i < m_desks.size(); ++i) {
            m_desks[i].policy = i == 0 ? MergePolicy::StoreTrump : MergePolicy::Rollback;
            m_desks[i].context = m_library.context(m_desks[i].policy);
            m_desks[i].books = fetch(*m_desks[i].context, "Book");
            m_desks[i].seen.resize(m_store.size());
        }
    }

    void edit(Desk &desk, std::size_t book, int field, int number)
    {
        if (!desk.holds(book))
            return;
        desk.books[book]->setValue(fields[static_cast<std::size_t>(field)], fieldValue(field, number));
        if (desk.seen[book].base.values[static_cast<std::size_t>(field)] == number)
            takeBack(desk.seen[book], field, m_store[book]);
        else
            desk.seen[book].edits[field] = number;
    }
    void remove(Desk &desk, std::size_t book)
    {
        if (!desk.holds(book))
            return;
        desk.context->remove(*desk.books[book]);
        desk.seen[book].removed = true;
    }
    void save(Desk &desk)
    {
        ++m_version;
        std::size_t discarded = 0;
        for (std::size_t book = 0; book < m_store.size(); ++book)
            discarded += settle(desk, desk.seen[book], m_store[book]);
        RC_ASSERT(value(desk.context->save()).discarded.size() == discarded);
        RC_ASSERT(!desk.context->hasChanges());
    }
    void merge(Desk &desk)
    {
        value(desk.context->mergeExternalChanges());
        for (std::size_t book = 0; book < m_store.size(); ++book) {
            Desk::Seen &seen = desk.seen[book];
            if (!m_store[book].exists)
                seen = {m_store[book], {}};
            else if (seen.edits.empty() && !seen.removed)
                seen.base = m_store[book];
            else if (seen.base.version != m_store[book].version)
                seen.stale = true;
        }
    }
    void check()
    {
        for (const Desk &desk : m_desks) {
            for (std::size_t book = 0; book < m_store.size(); ++book) {
                RC_ASSERT(desk.books[book]->isDeleted() == !desk.holds(book));
                for (int field = 0; desk.holds(book) && field < static_cast<int>(fields.size()); ++field) {
                    const auto place = static_cast<std::size_t>(field);
                    const auto edited = desk.seen[book].edits.find(field);
                    const int number
                        = edited == desk.seen[book].edits.end() ? desk.seen[book].base.values[place] : edited->second;
                    RC_ASSERT(sameValue(desk.books[book]->value(fields[place]), view(fieldValue(field, number))));
                }
            }
        }
        const std::int64_t existing
            = std::count_if(m_store.begin(), m_store.end(), [](const Record &record) { return record.exists; });
        RC_ASSERT(count(*m_library.context(), "Book", "TRUEPREDICATE") == existing);
    }
    Desk &desk(int number) { return m_desks[static_cast<std::size_t>(number)]; }

private:
    static void takeBack(Desk::Seen &seen, int field, const Record &record)
    {
        seen.edits.erase(field);
        if (seen.edits.empty() && std::exchange(seen.stale, false))
            seen.base = record;
    }

    /// What a save makes of one book; the number of values that it discards.
    std::size_t settle(const Desk &desk, Desk::Seen &seen, Record &record) const
    {
        std::size_t discarded = 0;
        if (seen.removed) {
            record.exists = false;
        } else if (seen.edits.empty()) {
            return 0;
        } else {
            const bool conflict = !record.exists || record.version != seen.base.version;
            for (const auto &[field, number] : seen.edits) {
                int &stored = record.values[static_cast<std::size_t>(field)];
                const bool changed = !record.exists || stored != seen.base.values[static_cast<std::size_t>(field)];
                if (conflict && (desk.policy == MergePolicy::Rollback || changed)) {
                    ++discarded;
                } else {
                    stored = number;
                    record.version = m_version;
                }
            }
        }
        seen = {record, {}};
        return discarded;
    }

    Library m_library;
    std::vector<Record> m_store;
    std::array<Desk, 2> m_desks;
    int m_version = 0;
};

} // namespace

RC_GTEST_PROP(TwoWriters, loseNothingButWhatTheirPoliciesDiscard, ())
{
    Shop shop;
    const auto steps = *rc::gen::scale(0.5,
        rc::gen::container<std::vector<std::tuple<int, int, int, int>>>(rc::gen::tuple(
            rc::gen::inRange(0, 9), rc::gen::inRange(0, 2), rc::gen::inRange(0, 3), rc::gen::inRange(0, 9))));
    for (const auto &[action, writer, book, number] : steps) {
        Desk &desk = shop.desk(writer);
        if (action < 5)
            shop.edit(desk, static_cast<std::size_t>(book), number % 3, number / 3);
        else if (action == 5 && number < 4)
            shop.remove(desk, static_cast<std::size_t>(book));
        else if (action < 8)
            shop.save(desk);
        else
            shop.merge(desk);
        shop.check();
    }
}
