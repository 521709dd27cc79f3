// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/text_test.h"

#include <QRegularExpression>
#include <QString>
#include <cstring>

namespace objectstore {

namespace {

constexpr auto lowerCase = [] {
    std::array<unsigned char, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + 32 : i);
    return table;
}();

bool isAscii(std::string_view text)
{
    std::uint64_t bits = 0;
    std::size_t i = 0;
    for (; i + sizeof bits <= text.size(); i += sizeof bits) {
        std::uint64_t chunk = 0;
        std::memcpy(&chunk, text.data() + i, sizeof chunk);
        bits |= chunk;
    }
    for (; i < text.size(); ++i)
        bits |= static_cast<unsigned char>(text[i]);
    return (bits & 0x8080808080808080ULL) == 0;
}

unsigned char lower(char letter)
{
    return lowerCase[static_cast<unsigned char>(letter)];
}

bool equalFolded(const char *text, std::string_view pattern)
{
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (lower(text[i]) != static_cast<unsigned char>(pattern[i]))
            return false;
    }
    return true;
}

/// Whether ASCII `text`, in any case, holds the folded `pattern`.
bool containsFolded(std::string_view text, std::string_view pattern)
{
    if (pattern.empty())
        return true;
    const auto first = static_cast<unsigned char>(pattern[0]);
    for (std::size_t i = 0; i + pattern.size() <= text.size(); ++i) {
        if (lower(text[i]) == first && equalFolded(text.data() + i, pattern))
            return true;
    }
    return false;
}

std::size_t nextCharacter(std::string_view text, std::size_t place)
{
    do
        ++place;
    while (place < text.size() && (static_cast<unsigned char>(text[place]) & 0xc0U) == 0x80U);
    return place;
}

/// `?` stands for one character, `*` for any number of them.
bool like(std::string_view text, std::string_view pattern)
{
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t star = std::string_view::npos;
    std::size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            t = nextCharacter(text, t);
            ++p;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++t;
            ++p;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            resume = nextCharacter(text, resume);
            t = resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

QString fromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

std::string folded(std::string_view text, TextOptions options)
{
    if (!options.any())
        return std::string(text);
    if (isAscii(text)) {
        std::string result(text);
        if (options.foldCase) {
            for (char &letter : result)
                letter = static_cast<char>(lower(letter));
        }
        return result;
    }
    QString string = fromUtf8(text);
    if (options.foldCase)
        string = string.toCaseFolded();
    if (options.foldMarks) {
        string = string.normalized(QString::NormalizationForm_D);
        string.removeIf([](QChar character) { return character.category() == QChar::Mark_NonSpacing; });
    }
    return string.toUtf8().toStdString();
}

TextTest::TextTest(Operator test, std::string_view pattern, TextOptions options)
    : m_test(test)
    , m_options(options)
    , m_pattern(test == Operator::Matches ? std::string(pattern) : folded(pattern, options))
    , m_asciiPattern(isAscii(m_pattern))
{
    if (test != Operator::Matches)
        return;
    // the limits end a pattern that would try for ever; text under [d] is searched with its marks removed
    m_expression = std::make_unique<QRegularExpression>(QStringLiteral("(*LIMIT_MATCH=100000)(*LIMIT_DEPTH=1000)")
            + QRegularExpression::anchoredPattern(fromUtf8(pattern)),
        QRegularExpression::UseUnicodePropertiesOption
            | (options.foldCase ? QRegularExpression::CaseInsensitiveOption : QRegularExpression::NoPatternOption));
}

TextTest::~TextTest() = default;
TextTest::TextTest(TextTest &&) noexcept = default;

bool TextTest::isValid() const
{
    return !m_expression || m_expression->isValid();
}

bool TextTest::matches(std::string_view text) const
{
    if (m_expression) {
        if (!m_expression->isValid())
            return false;
        const std::string stripped = m_options.foldMarks ? folded(text, {false, true}) : std::string();
        return m_expression->match(fromUtf8(m_options.foldMarks ? std::string_view(stripped) : text)).hasMatch();
    }
    if (!m_options.any())
        return compare(text);
    if (m_test == Operator::Contains && m_options.foldCase && isAscii(text))
        return m_asciiPattern && containsFolded(text, m_pattern);
    return compare(folded(text, m_options));
}

bool TextTest::compare(std::string_view text) const
{
    switch (m_test) {
    case Operator::Equal:
        return text == m_pattern;
    case Operator::BeginsWith:
        return text.starts_with(m_pattern);
    case Operator::EndsWith:
        return text.ends_with(m_pattern);
    case Operator::Contains:
        return text.find(m_pattern) != std::string_view::npos;
    case Operator::Like:
        return like(text, m_pattern);
    default:
        return false;
    }
}

} // namespace objectstore
