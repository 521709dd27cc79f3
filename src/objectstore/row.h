// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/value.h"

#include <bit>
#include <cstdint>
#include <utility>

namespace objectstore {

/// One row of an entity's table as it lies in memory: one block with the kind of each column, a cell of eight bytes for
/// each value that its kind does not tell already, then the text and bytes that cells point into. Its values never
/// change while it is shared, which a count tells that only one thread touches. Has at most 64 columns.
class Row
{
public:
    /// The kinds up to Zero are values in themselves; those from False to Reference are whole numbers.
    enum class Kind : std::uint8_t { Nil, False, True, Zero, Integer, Reference, Double, Date, Text, Binary };
    static constexpr std::size_t maximumColumns = 64;

    [[nodiscard]] std::int64_t save() const { return m_save; }
    /// Asks the processor for the kinds and the cells ahead of their use; a row of many columns takes three cache
    /// lines.
    void prefetch() const
    {
        constexpr int cacheLine = 64;
        for (int line = 0; line < 3; ++line)
            __builtin_prefetch(reinterpret_cast<const char *>(this) + line * cacheLine);
    }
    /// The value in `slot`; a reference reads as the ObjectID of `destination`.
    [[nodiscard]] ValueView value(int slot, const EntityDescription *destination) const;

    [[nodiscard]] Kind kind(int slot) const { return kinds()[slot]; }
    /// The value in `slot`, of which the kind says that it is a whole number; a double or a date; text or bytes.
    [[nodiscard]] std::int64_t integer(int slot) const
    {
        return kind(slot) > Kind::Zero ? cell(slot) : kind(slot) == Kind::True ? 1 : 0;
    }
    [[nodiscard]] double real(int slot) const { return std::bit_cast<double>(cell(slot)); }
    [[nodiscard]] std::string_view text(int slot) const
    {
        const auto bits = static_cast<std::uint64_t>(cell(slot));
        return {bytes() + (bits & 0xffffffffU), bits >> 32U};
    }

private:
    friend class RowPointer;
    friend class RowBuilder;

    // the kinds lie beside the head, so that a test of flags and of what is nothing touches little memory
    [[nodiscard]] static int padded(int columns) { return (columns + 7) / 8 * 8; }
    [[nodiscard]] const Kind *kinds() const { return reinterpret_cast<const Kind *>(this + 1); }
    [[nodiscard]] const std::int64_t *cells() const
    {
        return reinterpret_cast<const std::int64_t *>(kinds() + padded(m_columns));
    }
    [[nodiscard]] int cellIndex(int slot) const
    {
        return std::popcount(m_withCell & ((std::uint64_t{1} << static_cast<unsigned>(slot)) - 1));
    }
    [[nodiscard]] std::int64_t cell(int slot) const { return cells()[cellIndex(slot)]; }
    [[nodiscard]] const char *bytes() const
    {
        return reinterpret_cast<const char *>(cells() + std::popcount(m_withCell));
    }

    std::int64_t m_save = 0;
    std::uint64_t m_withCell = 0; ///< a bit for each column
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
    /// Makes the row one of `save` without a copy, which takes that nobody else points at it.
    [[nodiscard]] bool becomeOfSave(std::int64_t save)
    {
        if (!m_row || m_row->m_users != 1)
            return false;
        m_row->m_save = save;
        return true;
    }
    /// Puts `value` into `slot` without a copy, which takes that nobody else points at the row, and that the value
    /// needs as much room as the one before: a flag for a flag, a number for a number.
    [[nodiscard]] bool replace(int slot, const ValueView &value);

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
    void begin(std::int64_t save);
    void add(const ValueView &value);
    void addNil() { m_kinds.push_back(Row::Kind::Nil); }
    void addFlag(bool flag) { m_kinds.push_back(flag ? Row::Kind::True : Row::Kind::False); }
    void addInteger(std::int64_t value)
    {
        if (value == 0)
            m_kinds.push_back(Row::Kind::Zero);
        else
            addCell(Row::Kind::Integer, value);
    }
    void addReference(std::int64_t key) { addCell(Row::Kind::Reference, key); }
    /// A Double or a Date.
    void addReal(Row::Kind kind, double value) { addCell(kind, std::bit_cast<std::int64_t>(value)); }
    /// What `row` holds in `slot`.
    void addFrom(const Row &row, int slot);
    /// A Text or a Binary.
    void addBytes(Row::Kind kind, const void *bytes, std::size_t size);
    [[nodiscard]] RowPointer finish();

private:
    void addCell(Row::Kind kind, std::int64_t cell)
    {
        m_withCell |= std::uint64_t{1} << m_kinds.size();
        m_kinds.push_back(kind);
        m_cells.push_back(cell);
    }

    std::int64_t m_save = 0;
    std::uint64_t m_withCell = 0;
    std::vector<Row::Kind> m_kinds;
    std::vector<std::int64_t> m_cells;
    std::vector<char> m_bytes;
};

} // namespace objectstore
