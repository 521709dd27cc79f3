// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/row.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace objectstore {

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
    std::visit(
        [this](const auto &held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>)
                addNil();
            else if constexpr (std::is_same_v<Held, bool>)
                addFlag(held);
            else if constexpr (std::is_same_v<Held, std::int64_t>)
                addInteger(held);
            else if constexpr (std::is_same_v<Held, double>)
                addReal(Row::Kind::Double, held);
            else if constexpr (std::is_same_v<Held, Instant>)
                addReal(Row::Kind::Date, held.seconds);
            else if constexpr (std::is_same_v<Held, std::string_view>)
                addBytes(Row::Kind::Text, held.data(), held.size());
            else if constexpr (std::is_same_v<Held, ObjectID>)
                addReference(held.key);
            else
                addBytes(Row::Kind::Binary, held.data(), held.size());
        },
        value);
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
