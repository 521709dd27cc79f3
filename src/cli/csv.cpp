// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/csv.h"

#include "cli/command_error.h"

#include <algorithm>

namespace cli {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Reads value after value; a line that only ends is no row.
class CsvReader
{
public:
    explicit CsvReader(std::string_view text) : m_rest(text) { }

    foundation::Result<std::vector<CsvRow>> read()
    {
        std::vector<CsvRow> rows;
        while (!m_rest.empty()) {
            if (takeLineEnd())
                continue;
            CsvRow row;
            do {
                auto value = m_rest.starts_with('"') ? takeQuoted() : takePlain();
                if (!value)
                    return foundation::Failure(std::move(value.error()));
                row.push_back(std::move(*value));
            } while (take(','));
            if (!m_rest.empty() && !takeLineEnd())
                return notUnderstood(where() + " has text after the closing quote of a value.");
            rows.push_back(std::move(row));
        }
        return rows;
    }

private:
    bool take(char wanted)
    {
        if (!m_rest.starts_with(wanted))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool takeLineEnd()
    {
        const bool windows = m_rest.starts_with("\r\n");
        if (!windows && !m_rest.starts_with('\n'))
            return false;
        m_rest.remove_prefix(windows ? 2 : 1);
        ++m_line;
        return true;
    }

    foundation::Result<std::string> takePlain()
    {
        std::size_t end = std::min(m_rest.find_first_of(",\n"), m_rest.size());
        if (end < m_rest.size() && m_rest[end] == '\n' && end > 0 && m_rest[end - 1] == '\r')
            --end;
        std::string value(m_rest.substr(0, end));
        m_rest.remove_prefix(end);
        return value;
    }

    foundation::Result<std::string> takeQuoted()
    {
        const std::string begin = where();
        std::string value;
        m_rest.remove_prefix(1);
        for (;;) {
            const std::size_t quote = m_rest.find('"');
            if (quote == std::string_view::npos)
                return notUnderstood(begin + " begins a quoted value that never ends.");
            const std::string_view part = m_rest.substr(0, quote);
            m_line += static_cast<std::size_t>(std::ranges::count(part, '\n'));
            value += part;
            m_rest.remove_prefix(quote + 1);
            if (!take('"'))
                return value;
            value += '"';
        }
    }

    [[nodiscard]] std::string where() const { return "Line " + std::to_string(m_line); }

    std::string_view m_rest;
    std::size_t m_line = 1;
};

} // namespace

void appendCsv(std::string &out, const CsvRow &row)
{
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0)
            out += ',';
        const std::string &value = row[i];
        // an empty value alone on its line would read as no row at all
        if (value.find_first_of(",\"\r\n") == std::string::npos && !(value.empty() && row.size() == 1)
            && !(i == 0 && value.starts_with(byteOrderMark))) {
            out += value;
            continue;
        }
        out += '"';
        for (const char letter : value) {
            if (letter == '"')
                out += '"';
            out += letter;
        }
        out += '"';
    }
    out += '\n';
}

foundation::Result<std::vector<CsvRow>> readCsv(std::string_view text)
{
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    return CsvReader(text).read();
}

} // namespace cli
