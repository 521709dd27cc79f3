// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/row.h"

#include <cstdlib>
#include <new>

namespace objectstore {

ValueView Row::value(int slot, const EntityDescription *destination) const
{
    switch (kind(slot)) {
    case Kind::Nil:
        return {};
    case Kind::Boolean:
        return integer(slot) != 0;
    case Kind::Integer:
        return integer(slot);
    case Kind::Double:
        return real(slot);
    case Kind::Date:
        return Instant{real(slot)};
    case Kind::Text:
        return text(slot);
    case Kind::Binary:
        return std::as_bytes(std::span(text(slot)));
    case Kind::Reference:
        return ObjectID{destination, integer(slot)};
    }
    return {};
}

void RowPointer::drop()
{
    if (m_row && --m_row->m_users == 0)
        std::free(m_row);
}

void RowBuilder::begin(int columns, std::int64_t save)
{
    m_save = save;
    m_slots.clear();
    m_kinds.clear();
    m_bytes.clear();
    m_slots.reserve(static_cast<std::size_t>(columns));
    m_kinds.reserve(static_cast<std::size_t>(columns));
}

void RowBuilder::add(const ValueView &value)
{
    std::visit(
        [this](const auto &held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>)
                addNil();
            else if constexpr (std::is_same_v<Held, bool>)
                addInteger(Row::Kind::Boolean, held ? 1 : 0);
            else if constexpr (std::is_same_v<Held, std::int64_t>)
                addInteger(Row::Kind::Integer, held);
            else if constexpr (std::is_same_v<Held, double>)
                addDouble(Row::Kind::Double, held);
            else if constexpr (std::is_same_v<Held, Instant>)
                addDouble(Row::Kind::Date, held.seconds);
            else if constexpr (std::is_same_v<Held, std::string_view>)
                addBytes(Row::Kind::Text, held.data(), held.size());
            else if constexpr (std::is_same_v<Held, ObjectID>)
                addInteger(Row::Kind::Reference, held.key);
            else
                addBytes(Row::Kind::Binary, held.data(), held.size());
        },
        value);
}

void RowBuilder::addBytes(Row::Kind kind, const void *bytes, std::size_t size)
{
    addSlot(kind, static_cast<std::int64_t>((static_cast<std::uint64_t>(size) << 32U) | m_bytes.size()));
    const auto *begin = static_cast<const char *>(bytes);
    m_bytes.insert(m_bytes.end(), begin, begin + size);
}

RowPointer RowBuilder::finish()
{
    const std::size_t columns = m_slots.size();
    const auto kinds = static_cast<std::size_t>(Row::padded(static_cast<int>(columns)));
    const std::size_t slots = columns * sizeof(std::int64_t);
    void *block = std::malloc(sizeof(Row) + kinds + slots + m_bytes.size());
    if (!block)
        throw std::bad_alloc();
    Row *row = new (block) Row;
    row->m_save = m_save;
    row->m_columns = static_cast<std::int32_t>(columns);
    auto *place = reinterpret_cast<char *>(row + 1);
    std::memcpy(place, m_kinds.data(), columns);
    std::memcpy(place + kinds, m_slots.data(), slots);
    if (!m_bytes.empty())
        std::memcpy(place + kinds + slots, m_bytes.data(), m_bytes.size());
    return RowPointer(row);
}

} // namespace objectstore
