// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/text.h"

#include <algorithm>
#include <cwchar>
#include <numeric>

namespace cli {

namespace {

constexpr char32_t zeroWidthJoiner = 0x200D;
constexpr char32_t emojiPresentation = 0xFE0F;
constexpr std::string_view ellipsis = "…";

bool isControl(char32_t point)
{
    // C0, DEL and C1 steer terminals; the bidirectional controls could make a line show what it does not say
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || (point >= 0x202A && point <= 0x202E)
        || (point >= 0x2066 && point <= 0x2069);
}

/// Most texts are, and each letter of such a text is one byte and one column.
bool isPlainAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char letter) { return letter >= 0x20 && letter < 0x7F; });
}

std::string withoutControls(std::string_view text, bool keepLines)
{
    if (isPlainAscii(text))
        return std::string(text);
    std::string safe;
    safe.reserve(text.size());
    while (!text.empty()) {
        const std::string_view before = text;
        const auto point = takeCodePoint(text);
        if (!point)
            safe += "\uFFFD";
        else if (isControl(*point) && !(keepLines && *point == '\n'))
            safe += ' ';
        else
            safe += before.substr(0, before.size() - text.size());
    }
    return safe;
}

std::size_t editDistance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t replaced = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

/// Adds up the columns of code points one by one, with those that belong to the one before.
class WidthCounter
{
public:
    std::size_t add(std::optional<char32_t> point)
    {
        const bool joined = m_last == zeroWidthJoiner;
        const bool widened = point == emojiPresentation && m_lastWidth == 1;
        m_last = point.value_or(U'\uFFFD');
        if (widened)
            return m_lastWidth = 1; // one more for the symbol before, which shows as an emoji
        const int width = joined ? 0 : ::wcwidth(static_cast<wchar_t>(m_last));
        m_lastWidth = width < 0 ? 1 : static_cast<std::size_t>(width);
        return m_lastWidth;
    }

private:
    char32_t m_last = 0;
    std::size_t m_lastWidth = 0;
};

} // namespace

std::optional<char32_t> takeCodePoint(std::string_view &text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1
        : first >= 0xC2 && first < 0xE0     ? 2
        : (first & 0xF0) == 0xE0            ? 3
        : first >= 0xF0 && first < 0xF5     ? 4
                                            : 0;
    const auto fail = [&text] {
        text.remove_prefix(1);
        return std::nullopt;
    };
    if (length == 0 || length > text.size())
        return fail();
    char32_t point = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80)
            return fail();
        point = point << 6 | (next & 0x3FU);
    }
    const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    if (overlong || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000))
        return fail();
    text.remove_prefix(length);
    return point;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        if (!takeCodePoint(text))
            return false;
    }
    return true;
}

std::size_t displayWidth(std::string_view text)
{
    if (isPlainAscii(text))
        return text.size();
    WidthCounter counter;
    std::size_t width = 0;
    while (!text.empty())
        width += counter.add(takeCodePoint(text));
    return width;
}

std::string clipped(std::string_view text, std::size_t width)
{
    if (displayWidth(text) <= width)
        return std::string(text);
    if (width == 0)
        return {};
    WidthCounter counter;
    std::size_t used = 0;
    std::string_view rest = text;
    std::size_t kept = 0;
    while (!rest.empty()) {
        used += counter.add(takeCodePoint(rest));
        if (used > width - 1)
            break;
        kept = text.size() - rest.size();
    }
    return std::string(text.substr(0, kept)) + std::string(ellipsis);
}

std::string printable(std::string_view text)
{
    return withoutControls(text, false);
}

std::string printableLines(std::string_view text)
{
    return withoutControls(text, true);
}

std::string lowered(std::string_view text)
{
    std::string low(text);
    std::ranges::transform(
        low, low.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return low;
}

std::optional<std::string> closest(std::string_view word, const std::vector<std::string> &candidates)
{
    const std::string wanted = lowered(word);
    std::size_t best = std::max<std::size_t>(wanted.size() / 2, 1) + 1;
    std::optional<std::string> found;
    for (const std::string &candidate : candidates) {
        const std::string low = lowered(candidate);
        const bool begins = !wanted.empty() && low.starts_with(wanted);
        const std::size_t distance = begins ? 1 : editDistance(wanted, low);
        if (distance < best && !candidate.empty()) {
            best = distance;
            found = candidate;
        }
    }
    return found;
}

std::string suggestion(std::string_view word, const std::vector<std::string> &candidates)
{
    const auto near = closest(word, candidates);
    return near ? " Did you mean " + inQuotes(*near) + "?" : std::string();
}

std::string inQuotes(std::string_view text)
{
    return '"' + printable(text) + '"';
}

} // namespace cli
