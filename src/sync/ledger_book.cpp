// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ledger_book.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace syncing {

namespace {

constexpr std::size_t notesInAPage = 128;
// The first byte of a page. The first form had neither the bytes' mark nor the places of what is on the way.
constexpr std::byte pageForm{2};
constexpr std::byte oldestPageForm{1};

/// Calls `visit` with each part of a note that may be missing, in the order in which they lie in a page.
template <class Note, class Visit> void forEachPart(Note &note, Visit visit)
{
    visit(note.server);
    visit(note.serverDate);
    visit(note.local);
    visit(note.sent);
    visit(note.replaced);
    visit(note.replacedDate);
    visit(note.source);
}

class PageWriter
{
public:
    PageWriter() : m_bytes{pageForm} { }

    /// The key, a byte that tells which parts follow, the parts, and where the task was.
    void add(std::int64_t record, const LedgerNote &note)
    {
        put(record);
        unsigned parts = 0;
        unsigned bit = 1;
        forEachPart(note, [&](const auto &part) {
            parts |= part ? bit : 0;
            bit <<= 1U;
        });
        m_bytes.push_back(static_cast<std::byte>(parts));
        forEachPart(note, [this](const auto &part) {
            if (part)
                put(*part);
        });
        put(note.folder);
        put(note.context);
        if (note.sent) {
            put(note.sentFolder);
            put(note.sentContext);
        }
    }
    [[nodiscard]] const objectstore::Bytes &bytes() const { return m_bytes; }

private:
    template <class Number> void put(const Number &number)
    {
        static_assert(sizeof(Number) == 8 && std::is_trivially_copyable_v<Number>);
        const auto *from = reinterpret_cast<const std::byte *>(&number);
        m_bytes.insert(m_bytes.end(), from, from + sizeof number);
    }

    objectstore::Bytes m_bytes;
};

class PageReader
{
public:
    explicit PageReader(std::span<const std::byte> bytes) : m_rest(bytes)
    {
        m_form = m_rest.empty() ? std::byte{} : m_rest.front();
        m_isWhole = m_form >= oldestPageForm && m_form <= pageForm;
        m_rest = m_isWhole ? m_rest.subspan(1) : std::span<const std::byte>();
    }

    /// Reads the next note; false at the end, and where what is left is no note.
    bool next(std::int64_t &record, LedgerNote &note)
    {
        if (m_rest.empty())
            return false;
        note = {};
        std::byte parts{};
        take(record);
        take(parts);
        unsigned bit = 1;
        forEachPart(note, [&](auto &part) {
            if ((std::to_integer<unsigned>(parts) & bit) != 0)
                take(part.emplace());
            bit <<= 1U;
        });
        take(note.folder);
        take(note.context);
        if (note.sent && m_form != oldestPageForm) {
            take(note.sentFolder);
            take(note.sentContext);
        }
        return m_isWhole;
    }
    [[nodiscard]] bool isWhole() const { return m_isWhole; }

private:
    template <class Number> void take(Number &number)
    {
        m_isWhole = m_isWhole && m_rest.size() >= sizeof number;
        if (!m_isWhole)
            return;
        std::memcpy(&number, m_rest.data(), sizeof number);
        m_rest = m_rest.subspan(sizeof number);
    }

    std::span<const std::byte> m_rest;
    std::byte m_form{};
    bool m_isWhole = true;
};

} // namespace

bool LedgerBook::addPage(std::int64_t key, std::span<const std::byte> bytes)
{
    Page &page = m_pages.emplace_back();
    page.key = key;
    PageReader reader(bytes);
    std::int64_t record = 0;
    for (LedgerNote note; reader.next(record, note);) {
        if (m_entries.try_emplace(record, Entry{note, m_pages.size() - 1}).second)
            page.records.push_back(record);
    }
    page.isChanged = page.records.empty() || !reader.isWhole();
    return reader.isWhole();
}

const LedgerNote *LedgerBook::find(std::int64_t record) const
{
    const auto found = m_entries.find(record);
    return found == m_entries.end() ? nullptr : &found->second.note;
}

LedgerNote &LedgerBook::edit(std::int64_t record)
{
    const auto [found, isNew] = m_entries.try_emplace(record);
    Entry &entry = found->second;
    if (isNew) {
        if (m_pages.empty() || m_pages.back().records.size() >= notesInAPage)
            m_pages.emplace_back();
        entry.page = m_pages.size() - 1;
        m_pages.back().records.push_back(record);
    }
    m_pages[entry.page].isChanged = true;
    return entry.note;
}

void LedgerBook::erase(std::int64_t record)
{
    const auto found = m_entries.find(record);
    if (found == m_entries.end())
        return;
    Page &page = m_pages[found->second.page];
    std::erase(page.records, record);
    page.isChanged = true;
    m_entries.erase(found);
}

void LedgerBook::clear()
{
    m_entries.clear();
    for (Page &page : m_pages) {
        page.records.clear();
        page.isChanged = true;
    }
}

void LedgerBook::writeChangedPages(const std::function<void(std::int64_t &key, const objectstore::Bytes &bytes)> &write)
{
    for (Page &page : m_pages) {
        if (!std::exchange(page.isChanged, false) || (page.records.empty() && page.key == 0))
            continue;
        PageWriter writer;
        for (const std::int64_t record : page.records)
            writer.add(record, m_entries.at(record).note);
        write(page.key, page.records.empty() ? objectstore::Bytes() : writer.bytes());
        if (page.records.empty())
            page.key = 0;
    }
}

} // namespace syncing
