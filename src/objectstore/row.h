// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/value.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace objectstore {

/// One row of an entity's table as it lies in memory: one block with the kind and a slot of eight bytes for each
/// column, then the text and bytes that the slots point into. Immutable once built and shared by a count that only one
/// thread touches.
class Row
{
public:
    enum class Kind : std::uint8_t { Nil, Boolean, Integer, Double, Date, Text, Binary, Reference };

    [[nodiscard]] std::int64_t save() const { return m_save; }
    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] Kind kind(int slot) const { return kinds()[slot]; }
    /// The value in `slot` of which `kind` says that it is a flag, a whole number or a key; a double or a date; text.
    [[nodiscard]] std::int64_t integer(int slot) const { return slots()[slot]; }
    [[nodiscard]] double real(int slot) const
    {
        double value = 0;
        std::memcpy(&value, slots() + slot, sizeof value);
        return value;
    }
    [[nodiscard]] std::string_view text(int slot) const
    {
        const auto bits = static_cast<std::uint64_t>(slots()[slot]);
        return {bytes() + (bits & 0xffffffffU), bits >> 32U};
    }
    /// The value in `slot`; a reference reads as the ObjectID of `destination`.
    [[nodiscard]] ValueView value(int slot, const EntityDescription *destination) const;

private:
    friend class RowPointer;
    friend class RowBuilder;

    /// The kinds lie beside the head, so that a test of flags and of what is nothing touches little memory.
    [[nodiscard]] static int padded(int columns) { return (columns + 7) / 8 * 8; }
    [[nodiscard]] const Kind *kinds() const { return reinterpret_cast<const Kind *>(this + 1); }
    [[nodiscard]] const std::int64_t *slots() const
    {
        return reinterpret_cast<const std::int64_t *>(kinds() + padded(m_columns));
    }
    [[nodiscard]] const char *bytes() const { return reinterpret_cast<const char *>(slots() + m_columns); }

    std::int64_t m_save = 0;
    std::int32_t m_columns = 0;
    std::int32_t m_users = 0;
};

/// A counted pointer to a row.
class RowPointer
{
public:
    RowPointer() = default;
    explicit RowPointer(Row *row) : m_row(row) { take(); }
    RowPointer(const RowPointer &other) : m_row(other.m_row) { take(); }
    RowPointer(RowPointer &&other) noexcept : m_row(std::exchange(other.m_row, nullptr)) { }
    RowPointer &operator=(RowPointer other) noexcept
    {
        std::swap(m_row, other.m_row);
        return *this;
    }
    ~RowPointer() { drop(); }

    explicit operator bool() const { return m_row != nullptr; }
    const Row *operator->() const { return m_row; }
    const Row &operator*() const { return *m_row; }
    void reset() { RowPointer().swap(*this); }
    void swap(RowPointer &other) noexcept { std::swap(m_row, other.m_row); }

private:
    void take()
    {
        if (m_row)
            ++m_row->m_users;
    }
    void drop();

    Row *m_row = nullptr;
};

/// Collects the values of a row column by column and lays them out as one block.
class RowBuilder
{
public:
    void begin(int columns, std::int64_t save);
    void add(const ValueView &value);
    void addNil() { addSlot(Row::Kind::Nil, 0); }
    void addInteger(Row::Kind kind, std::int64_t value) { addSlot(kind, value); }
    void addDouble(Row::Kind kind, double value)
    {
        std::int64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        addSlot(kind, bits);
    }
    void addBytes(Row::Kind kind, const void *bytes, std::size_t size);
    [[nodiscard]] RowPointer finish();

private:
    void addSlot(Row::Kind kind, std::int64_t slot)
    {
        m_slots.push_back(slot);
        m_kinds.push_back(kind);
    }

    std::int64_t m_save = 0;
    std::vector<std::int64_t> m_slots;
    std::vector<Row::Kind> m_kinds;
    std::vector<char> m_bytes;
};

} // namespace objectstore
