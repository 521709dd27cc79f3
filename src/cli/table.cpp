// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/table.h"

#include "cli/text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <sys/ioctl.h>
#include <unistd.h>

namespace cli {

namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t narrowest = 8; // of a column that gives way
constexpr std::size_t comfortable = 24; // less than that costs an expendable column
constexpr std::array<std::string_view, 5> codes{"", "1", "2", "31", "33"};

bool isSet(const char *variable)
{
    const char *value = std::getenv(variable);
    return value && *value;
}

} // namespace

Terminal terminalOf(int descriptor)
{
    if (!::isatty(descriptor))
        return {};
    const char *kind = std::getenv("TERM");
    Terminal terminal{.width = 80, .hasColours = !isSet("NO_COLOR") && kind && std::string_view(kind) != "dumb"};
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        terminal.width = size.ws_col;
    return terminal;
}

std::string styled(std::string_view text, Style style, const Terminal &terminal)
{
    if (style == Style::Plain || !terminal.hasColours)
        return std::string(text);
    return "\033[" + std::string(codes[static_cast<std::size_t>(style)]) + "m" + std::string(text) + "\033[0m";
}

void Table::add(std::vector<Cell> row)
{
    for (Cell &cell : row)
        cell.text = printable(cell.text);
    m_rows.push_back(std::move(row));
}

/// 0 for a column that stays out.
std::vector<std::size_t> Table::naturalWidths() const
{
    std::vector<std::size_t> widths(m_columns.size(), 0);
    for (const auto &row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
    }
    for (std::size_t i = 0; i < widths.size(); ++i) {
        if (widths[i] > 0)
            widths[i] = std::max(widths[i], displayWidth(m_columns[i].name));
    }
    return widths;
}

std::vector<std::size_t> Table::widths(const Terminal &terminal) const
{
    std::vector<std::size_t> widths = naturalWidths();
    const auto excess = [&] {
        std::size_t total = 0;
        for (const std::size_t width : widths)
            total += width > 0 ? width + gap : 0;
        return terminal.width > 0 && total > terminal.width + gap ? total - terminal.width - gap : 0;
    };
    const auto spare = [&] {
        std::size_t total = 0;
        for (std::size_t i = 0; i < widths.size(); ++i)
            total += m_columns[i].isFlexible && widths[i] > comfortable ? widths[i] - comfortable : 0;
        return total;
    };
    for (std::size_t i = widths.size(); i-- > 0 && excess() > spare();) {
        if (m_columns[i].isExpendable)
            widths[i] = 0;
    }
    for (std::size_t rest = excess(); rest > 0; --rest) {
        // the widest of the flexible columns gives way first
        std::size_t widest = widths.size();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (m_columns[i].isFlexible && widths[i] > narrowest
                && (widest == widths.size() || widths[i] > widths[widest]))
                widest = i;
        }
        if (widest == widths.size())
            break;
        --widths[widest];
    }
    return widths;
}

std::string Table::text(const Terminal &terminal) const
{
    const std::vector<std::size_t> columns = widths(terminal);
    std::string text;
    const auto addLine = [&](const auto &cellAt) {
        std::size_t blanks = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i] == 0)
                continue;
            const Cell cell = cellAt(i);
            const std::string shown = clipped(cell.text, columns[i]);
            text.append(shown.empty() ? 0 : blanks, ' ');
            text += shown.empty() ? shown : styled(shown, cell.style, terminal);
            blanks = (shown.empty() ? blanks : 0) + columns[i] - displayWidth(shown) + gap;
        }
        text += '\n';
    };
    addLine([this](std::size_t i) { return Cell{std::string(m_columns[i].name), Style::Bold}; });
    for (const auto &row : m_rows)
        addLine([&row](std::size_t i) { return i < row.size() ? row[i] : Cell{}; });
    return text;
}

} // namespace cli
