// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// How wide the lines may be (0: as wide as they like) and whether colours are welcome.
struct Terminal {
    std::size_t width = 0;
    bool hasColours = false;
};

/// What stands behind a descriptor: a terminal has a width and, unless NO_COLOR or TERM=dumb is set, colours.
[[nodiscard]] Terminal terminalOf(int descriptor);

enum class Style { Plain, Bold, Dim, Red, Yellow };

struct Cell {
    std::string text;
    Style style = Style::Plain;
};

/// Rows in aligned columns under their names. Columns without a value stay out. When the terminal is narrow, expendable
/// columns go, the last first, and then the flexible ones give way.
class Table
{
public:
    struct Column {
        std::string_view name;
        bool isFlexible = false;
        bool isExpendable = false;
    };

    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) { }

    void add(std::vector<Cell> row);
    [[nodiscard]] bool isEmpty() const { return m_rows.empty(); }
    [[nodiscard]] std::string text(const Terminal &terminal) const;

private:
    [[nodiscard]] std::vector<std::size_t> naturalWidths() const;
    [[nodiscard]] std::vector<std::size_t> widths(const Terminal &terminal) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

/// The text in a style, where colours are welcome.
[[nodiscard]] std::string styled(std::string_view text, Style style, const Terminal &terminal);

} // namespace cli
