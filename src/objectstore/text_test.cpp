// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/text_test.h"

#include "objectstore/text_folding.h"

#include <QRegularExpression>
#include <QString>

namespace objectstore {

namespace {

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

TextTest::TextTest(Operator test, std::string_view pattern, TextOptions options)
    : m_test(test)
    , m_options(options)
    , m_pattern(test == Operator::Matches ? std::string(pattern) : folded(pattern, options))
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
    static thread_local std::string buffer; // a search through many texts folds them all in one place
    return compare(foldInto(buffer, text, m_options));
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
