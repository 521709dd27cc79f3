// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/row.h"

#include <cstdlib>
#include <new>

namespace objectstore {

ValueView Row::value(int slot, const EntityDescription *destination) const
{
    const std::int64_t stored = slots()[slot];
    const auto number = [stored] {
        double value = 0;
        std::memcpy(&value, &stored, sizeof value);
        return value;
    };
    const auto text = [this, stored] {
        const auto bits = static_cast<std::uint64_t>(stored);
        return std::string_view(bytes() + (bits & 0xffffffffU), bits >> 32U);
    };
    switch (kinds()[slot]) {
    case Kind::Nil:
        return {};
    case Kind::Boolean:
        return stored != 0;
    case Kind::Integer:
        return stored;
    case Kind::Double:
        return number();
    case Kind::Date:
        return Instant{number()};
    case Kind::Text:
        return text();
    case Kind::Binary: {
        const std::string_view held = text();
        return std::span(reinterpret_cast<const std::byte *>(held.data()), held.size());
    }
    case Kind::Reference:
        return ObjectID{destination, stored};
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
    void *block = std::malloc(sizeof(Row) + columns * (sizeof(std::int64_t) + 1) + m_bytes.size());
    if (!block)
        throw std::bad_alloc();
    Row *row = new (block) Row;
    row->m_save = m_save;
    row->m_columns = static_cast<std::int32_t>(columns);
    auto *slots = reinterpret_cast<std::int64_t *>(row + 1);
    std::memcpy(slots, m_slots.data(), columns * sizeof(std::int64_t));
    auto *kinds = reinterpret_cast<char *>(slots + columns);
    std::memcpy(kinds, m_kinds.data(), columns);
    if (!m_bytes.empty())
        std::memcpy(kinds + columns, m_bytes.data(), m_bytes.size());
    return RowPointer(row);
}

} // namespace objectstore
