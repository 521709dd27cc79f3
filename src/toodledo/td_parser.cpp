// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_parser.h"

#include <algorithm>
#include <exception>
#include <expat.h>

namespace toodledo {

namespace {

constexpr int greatestDepth = 64;
constexpr std::size_t longestName = 256;
constexpr std::uint64_t longestToken = std::uint64_t{4} << 20; ///< bytes without any event: one endless tag or comment
constexpr std::size_t longestText = std::size_t{16} << 20;
// A record takes fifty times the memory of its shortest markup. So many tasks with all their elements fill a reply.
constexpr std::size_t longestList = 250'000;
constexpr int feedSize = 1 << 20; ///< bytes handed over at once, so that the length of a token is looked at in time

bool isBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

template <typename Deleter> XML_Parser expat(const std::unique_ptr<void, Deleter> &parser)
{
    return static_cast<XML_Parser>(parser.get());
}

} // namespace

void TDParser::ExpatDeleter::operator()(void *parser) const
{
    XML_ParserFree(static_cast<XML_Parser>(parser));
}

/// What Expat calls. It is C, so an exception ends here: the reply counts as refused.
struct TDParser::Events {
    template <typename Action> static void guarded(void *parser, Action action) noexcept
    {
        auto &self = *static_cast<TDParser *>(parser);
        try {
            self.m_bytesAtLastEvent = self.m_bytesFed;
            action(self);
        } catch (const std::exception &exception) {
            self.refuse(exception.what());
        }
    }
    static void start(void *parser, const char *name, const char **attributes) noexcept
    {
        guarded(parser, [=](TDParser &self) { self.startElement(name, attributes); });
    }
    static void end(void *parser, const char *name) noexcept
    {
        guarded(parser, [=](TDParser &self) { self.endElement(name); });
    }
    static void text(void *parser, const char *bytes, int size) noexcept
    {
        guarded(parser, [=](TDParser &self) { self.gatherText({bytes, static_cast<std::size_t>(size)}); });
    }
    static void documentType(void *parser, const char *, const char *, const char *, int) noexcept
    {
        // Entities are declared only there: without it there are none to expand, and no file or address to open.
        guarded(parser, [](TDParser &self) { self.refuse("a document type"); });
    }
};

TDParser::TDParser() : m_expat(XML_ParserCreate(nullptr))
{
    const XML_Parser parser = expat(m_expat);
    if (!parser) {
        refuse("out of memory");
        return;
    }
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, &Events::start, &Events::end);
    XML_SetCharacterDataHandler(parser, &Events::text);
    XML_SetStartDoctypeDeclHandler(parser, &Events::documentType);
}

TDParser::~TDParser() = default;

bool TDParser::feed(std::string_view bytes) noexcept
{
    while (!bytes.empty() && !m_error) {
        const std::string_view part = bytes.substr(0, feedSize);
        bytes.remove_prefix(part.size());
        parseBytes(part, false);
    }
    return !m_error;
}

bool TDParser::finish() noexcept
{
    return !m_error && parseBytes({}, true);
}

bool TDParser::parseBytes(std::string_view bytes, bool last) noexcept
{
    const XML_Parser parser = expat(m_expat);
    m_bytesFed += bytes.size();
    const auto status = XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), last ? 1 : 0);
    if (status != XML_STATUS_OK)
        refuse(XML_ErrorString(XML_GetErrorCode(parser)));
    else if (m_bytesFed - m_bytesAtLastEvent > longestToken)
        refuse("markup without end");
    return !m_error;
}

void TDParser::refuse(const char *why)
{
    if (m_error)
        return;
    const XML_Parser parser = expat(m_expat);
    const auto line = parser ? XML_GetCurrentLineNumber(parser) : 0;
    const int code = parser ? static_cast<int>(XML_GetErrorCode(parser)) : 0;
    m_error = TDError{xmlErrorDomain, code == 0 ? static_cast<int>(XML_ERROR_ABORTED) : code, {},
        std::string(why) + ", line " + std::to_string(line)};
    m_errorTexts.clear(); // what a broken reply said is not to be relied on
    if (parser)
        XML_StopParser(parser, XML_FALSE);
}

void TDParser::startElement(const char *name, const char **attributes)
{
    const std::string_view element(name);
    if (m_depth == 0)
        m_root = element.substr(0, longestName);
    if (++m_depth > greatestDepth || element.size() > longestName) {
        refuse("markup nested too deep or named too long");
        return;
    }
    endPiece();
    noteEndOfTag();
    didStartElement(element, Attributes(attributes));
}

void TDParser::noteEndOfTag()
{
    if (m_depth != 1)
        return;
    const XML_Parser parser = expat(m_expat);
    m_endOfLastTag = static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser))
        + static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser));
}

bool TDParser::isBetweenRecords() const
{
    return !m_error && m_depth == 1 && m_endOfLastTag == m_bytesFed;
}

void TDParser::endElement(const char *name)
{
    --m_depth;
    if (m_error)
        return;
    endPiece();
    const std::string_view element(name);
    if (element == "error")
        m_errorTexts.push_back(m_text);
    noteEndOfTag();
    didEndElement(element, m_text);
    if (std::max(recordCount(), m_errorTexts.size()) > longestList)
        refuse("a list too long");
    m_text.clear();
    m_pieceStart = 0;
}

// Expat reports one run of text in several events: it splits at line ends, at entities and where a chunk of bytes
// ended. Trimming each event would eat the blanks inside "Ben &amp; Jerry", so a piece is the run between two tags.
void TDParser::gatherText(std::string_view text)
{
    if (m_text.size() == m_pieceStart)
        while (!text.empty() && isBlank(text.front()))
            text.remove_prefix(1);
    if (m_text.size() + text.size() > longestText)
        refuse("a text too long");
    else
        m_text += text;
}

void TDParser::endPiece()
{
    std::size_t size = m_text.size();
    while (size > m_pieceStart && isBlank(m_text[size - 1]))
        --size;
    m_text.resize(size);
    m_pieceStart = size;
}

void TDParser::didStartElement(std::string_view, const Attributes &) { }

void TDParser::didEndElement(std::string_view, std::string_view) { }

void TDSimpleParser::didEndElement(std::string_view name, std::string_view text)
{
    if ((!m_tagName.empty() && name == m_tagName) || name == "error")
        m_results.emplace_back(text);
}

} // namespace toodledo
