// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/row.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace objectstore {

namespace {

/// The kind and the cell of a value that needs no bytes.
std::pair<Row::Kind, std::int64_t> plain(const ValueView &value)
{
    if (const auto *flag = std::get_if<bool>(&value))
        return {*flag ? Row::Kind::True : Row::Kind::False, 0};
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return {*number == 0 ? Row::Kind::Zero : Row::Kind::Integer, *number};
    if (const auto *number = std::get_if<double>(&value))
        return {Row::Kind::Double, std::bit_cast<std::int64_t>(*number)};
    if (const auto *date = std::get_if<Instant>(&value))
        return {Row::Kind::Date, std::bit_cast<std::int64_t>(date->seconds)};
    if (const auto *reference = std::get_if<ObjectID>(&value))
        return {Row::Kind::Reference, reference->key};
    return {Row::Kind::Nil, 0};
}

bool hasBytes(const ValueView &value)
{
    return std::holds_alternative<std::string_view>(value) || std::holds_alternative<std::span<const std::byte>>(value);
}

} // namespace

ValueView Row::value(int slot, const EntityDescription *destination) const
{
    switch (kind(slot)) {
    case Kind::Nil:
        return {};
    case Kind::False:
        return false;
    case Kind::True:
        return true;
    case Kind::Zero:
        return std::int64_t{0};
    case Kind::Integer:
        return cell(slot);
    case Kind::Reference:
        return ObjectID{destination, cell(slot)};
    case Kind::Double:
        return real(slot);
    case Kind::Date:
        return Instant{real(slot)};
    case Kind::Text:
        return text(slot);
    case Kind::Binary:
        return std::as_bytes(std::span(text(slot)));
    }
    return {};
}

void RowPointer::drop()
{
    if (m_row && --m_row->m_users == 0)
        std::free(m_row);
}

bool RowPointer::replace(int slot, const ValueView &value)
{
    if (!m_row || m_row->m_users != 1 || hasBytes(value) || m_row->kind(slot) >= Row::Kind::Text)
        return false;
    const auto [kind, cell] = plain(value);
    if ((kind > Row::Kind::Zero) != (m_row->kind(slot) > Row::Kind::Zero))
        return false;
    auto *kinds = reinterpret_cast<Row::Kind *>(m_row + 1);
    kinds[slot] = kind;
    if (kind > Row::Kind::Zero)
        reinterpret_cast<std::int64_t *>(kinds + Row::padded(m_row->m_columns))[m_row->cellIndex(slot)] = cell;
    return true;
}

void RowBuilder::begin(std::int64_t save)
{
    m_save = save;
    m_withCell = 0;
    m_kinds.clear();
    m_cells.clear();
    m_bytes.clear();
}

void RowBuilder::add(const ValueView &value)
{
    if (const auto *text = std::get_if<std::string_view>(&value)) {
        addBytes(Row::Kind::Text, text->data(), text->size());
    } else if (const auto *bytes = std::get_if<std::span<const std::byte>>(&value)) {
        addBytes(Row::Kind::Binary, bytes->data(), bytes->size());
    } else {
        const auto [kind, cell] = plain(value);
        if (kind <= Row::Kind::Zero)
            m_kinds.push_back(kind);
        else
            addCell(kind, cell);
    }
}

void RowBuilder::addFrom(const Row &row, int slot)
{
    const Row::Kind kind = row.kind(slot);
    if (kind <= Row::Kind::Zero)
        m_kinds.push_back(kind);
    else if (kind >= Row::Kind::Text)
        addBytes(kind, row.text(slot).data(), row.text(slot).size());
    else
        addCell(kind, row.cell(slot));
}

void RowBuilder::addBytes(Row::Kind kind, const void *bytes, std::size_t size)
{
    addCell(kind, static_cast<std::int64_t>((static_cast<std::uint64_t>(size) << 32U) | m_bytes.size()));
    const auto *begin = static_cast<const char *>(bytes);
    m_bytes.insert(m_bytes.end(), begin, begin + size);
}

RowPointer RowBuilder::finish()
{
    const auto columns = static_cast<int>(m_kinds.size());
    const auto kinds = static_cast<std::size_t>(Row::padded(columns));
    const std::size_t cells = m_cells.size() * sizeof(std::int64_t);
    void *block = std::malloc(sizeof(Row) + kinds + cells + m_bytes.size());
    if (!block)
        throw std::bad_alloc();
    Row *row = new (block) Row;
    row->m_save = m_save;
    row->m_withCell = m_withCell;
    row->m_columns = columns;
    auto *place = reinterpret_cast<char *>(row + 1);
    const auto append = [&place](const auto &part, std::size_t room) {
        if (!part.empty())
            std::memcpy(place, part.data(), part.size() * sizeof(part[0]));
        place += room;
    };
    append(m_kinds, kinds);
    append(m_cells, cells);
    append(m_bytes, m_bytes.size());
    return RowPointer(row);
}

} // namespace objectstore
