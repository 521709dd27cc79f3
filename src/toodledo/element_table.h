// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace toodledo {

/// A fixed table from element names to what is done with them, found in one step. A list of a hundred thousand tasks
/// has two million elements, so the names are hashed when compiling, with a factor that keeps them all apart.
template <typename Action, std::size_t Count> class ElementTable
{
public:
    struct Row {
        std::string_view name;
        Action action;
    };

    explicit consteval ElementTable(const Row (&rows)[Count])
    {
        for (std::size_t i = 0; i < Count; ++i)
            m_rows[i] = rows[i];
        while (!place())
            ++m_factor;
    }

    [[nodiscard]] constexpr const Action *find(std::string_view name) const
    {
        if (name.empty())
            return nullptr;
        const std::uint8_t row = m_slots[slotOf(name)];
        return row != 0 && m_rows[row - 1U].name == name ? &m_rows[row - 1U].action : nullptr;
    }

private:
    static constexpr std::size_t slotCount = 128;

    [[nodiscard]] constexpr std::size_t slotOf(std::string_view name) const
    {
        const auto letter
            = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(name[i])); };
        const std::size_t sum = letter(0) + letter(name.size() / 2) * 31 + letter(name.size() - 1) * 7 + name.size();
        return (sum * m_factor >> 4) % slotCount;
    }

    /// Gives every row a slot of its own; false when two want the same.
    constexpr bool place()
    {
        m_slots = {};
        for (std::size_t i = 0; i < Count; ++i) {
            std::uint8_t &slot = m_slots[slotOf(m_rows[i].name)];
            if (slot != 0)
                return false;
            slot = static_cast<std::uint8_t>(i + 1);
        }
        return true;
    }

    std::array<Row, Count> m_rows{};
    std::array<std::uint8_t, slotCount> m_slots{};
    std::size_t m_factor = 1;
};

} // namespace toodledo
