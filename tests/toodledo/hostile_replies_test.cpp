// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "replies.h"

using namespace toodledo;
using namespace std::string_literals;

namespace {

/// Every parser, each with its own reply to spoil.
class HostileReplies : public testing::TestWithParam<Reader>
{
protected:
    static void expectBad(const std::string &reply)
    {
        for (const std::size_t chunk : {atOnce, std::max<std::size_t>(16'384, reply.size() / 64)}) {
            const Parsed parsed = GetParam().parse(reply, chunk);
            EXPECT_FALSE(parsed.isWhole) << reply.substr(0, 200);
            EXPECT_TRUE(parsed.lines.empty() && parsed.errorTexts.empty()) << reply.substr(0, 200);
        }
    }
    /// The sample's elements, without the XML declaration.
    static std::string elements()
    {
        const std::string &sample = GetParam().sample;
        const std::size_t end = sample.find("?>");
        return end == std::string::npos ? sample : sample.substr(end + 2);
    }
    /// `text` within the outermost element of the sample.
    static std::string within(const std::string &text)
    {
        const std::string all = elements();
        const std::size_t place = all.find('>') + 1;
        return all.substr(0, place) + text + all.substr(place);
    }
};

std::string repeated(std::string_view text, std::size_t times)
{
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        result += text;
    return result;
}

} // namespace

TEST_P(HostileReplies, F32_cutAtAnyByteGiveNothing)
{
    const std::string &sample = GetParam().sample;
    const std::size_t size = sample.find_last_of('>') + 1;
    for (std::size_t i = 0; i < size; ++i)
        EXPECT_FALSE(GetParam().parse(sample.substr(0, i), atOnce).isWhole) << i;
    EXPECT_TRUE(GetParam().parse(sample.substr(0, size), atOnce).isWhole);
}

TEST_P(HostileReplies, F32_malformedGiveNothing)
{
    for (const char *text : {"<a></b>", "</a>", "<a", "<a b>", "<a b=c/>", "<a b='1' b='2'/>", "& ", "&unknown;", "]]>",
             "<!-- -- -->", "<1/>", "<?xml version='1.0'?>", "<![CDATA[", "&#0;", "&#xFFFFFFFF;"})
        expectBad(within(text));
    expectBad(elements() + elements());
    expectBad(elements() + "more");
    expectBad("text" + elements());
}

TEST_P(HostileReplies, F31_thatAreNoXmlGiveNothing)
{
    for (const std::string &reply : {""s, " "s, "\xEF\xBB\xBF"s, "\xFF\xFE"s, "OK"s, "{\"tasks\":[]}"s, "[]"s,
             "<!DOCTYPE html><html></html>"s, "<html><br></html>"s, "%PDF-1.4"s, "\x1f\x8b\x08"s, "HTTP/1.1 200 OK"s})
        expectBad(reply);
}

TEST_P(HostileReplies, F31_thatAreAnotherKindOfXmlShowTheirRoot)
{
    const Parsed parsed = GetParam().parse("<html><body>Sign in</body></html>", atOnce);
    EXPECT_TRUE(parsed.isWhole);
    EXPECT_TRUE(parsed.lines.empty());
    EXPECT_EQ(parsed.root, "html");
}

TEST_P(HostileReplies, F33_withADocumentTypeAreRefusedAtItsSight)
{
    for (const char *subset : {"", " SYSTEM 'file:///etc/passwd'", " PUBLIC 'x' 'http://127.0.0.1:1/'",
             " [<!ENTITY a 'b'>]", " [<!ENTITY a SYSTEM 'file:///etc/passwd'>]", " [<!ENTITY % p SYSTEM 'x'> %p;]",
             " [<!ENTITY a '&b;'><!ENTITY b '&a;'>]", " [<!ELEMENT r ANY><!ATTLIST r id CDATA 'default'>]",
             " [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;'><!ENTITY c '&b;&b;&b;&b;&b;&b;'>]"})
        expectBad("<!DOCTYPE r" + std::string(subset) + ">" + within("&a;"));
    TDSimpleParser parser;
    EXPECT_FALSE(parser.feed("<!DOCTYPE r ["));
    EXPECT_NE(parser.error()->detail.find("a document type"), std::string::npos);
}

TEST_P(HostileReplies, F34_inAnEncodingThatTheyAreNotInGiveNothing)
{
    for (const char *name : {"UTF-7", "windows-1252", "Shift_JIS", "EBCDIC", "x", "UTF-16"})
        expectBad("<?xml version=\"1.0\" encoding=\"" + std::string(name) + "\"?>" + elements());
    for (const std::string &bytes :
        {"\xFF"s, "\xC3("s, "\xC0\xAF"s, "\xE2\x82"s, "\xED\xA0\x80"s, "\xF4\x90\x80\x80"s, "\xF8\x88\x80\x80\x80"s,
            "\x80"s, "\0"s, "\x01"s, "\x1b"s, "&#xD800;"s, "&#xDFFF;"s, "&#x1;"s, "&#xFFFE;"s})
        expectBad(within(bytes));
}

TEST_P(HostileReplies, F34_inUtf16AreReadAsWhatTheySay)
{
    std::string wide = "\xFF\xFE";
    for (const char c : within("<x>abc</x>"))
        if (static_cast<unsigned char>(c) < 0x80)
            (wide += c) += '\0';
    EXPECT_TRUE(GetParam().parse(wide, 1).isWhole);
    EXPECT_FALSE(GetParam().parse(wide, atOnce).lines.empty());
    EXPECT_FALSE(GetParam().parse(wide.substr(0, wide.size() - 1), atOnce).isWhole);
    wide.insert(wide.size() / 4 * 2, "\0\xDC"s); // the second half of a pair
    EXPECT_FALSE(GetParam().parse(wide, atOnce).isWhole);
}

TEST_P(HostileReplies, F35_nestedOrNamedBeyondAllReasonGiveNothing)
{
    EXPECT_TRUE(GetParam().parse(within(repeated("<a>", 60) + repeated("</a>", 60)), atOnce).isWhole);
    expectBad(within(repeated("<a>", 64) + repeated("</a>", 64)));
    expectBad(within(repeated("<a>", 1'000'000) + repeated("</a>", 1'000'000)));
    expectBad(within("<" + std::string(4096, 'n') + "/>"));
}

TEST_P(HostileReplies, F35_withMarkupThatNeverEndsAreRefusedEarly)
{
    std::string attributes = "<a";
    for (int i = 0; i < 1'000'000; ++i)
        attributes.append(" a").append(std::to_string(i)).append("=''");
    expectBad(within(attributes + "/>"));
    expectBad(within("<a b='" + std::string(8 << 20, 'x') + "'/>"));
    expectBad(within("<!--" + std::string(8 << 20, 'x') + "-->"));
    expectBad(within("<" + std::string(8 << 20, 'x')));
}

TEST_P(HostileReplies, F28_withAHugeTextAreReadAll)
{
    const std::string huge(6 << 20, 'x');
    const Parsed parsed = GetParam().parse(within("<error>" + huge + "</error>"), 16'384);
    EXPECT_TRUE(parsed.isWhole);
    ASSERT_FALSE(parsed.errorTexts.empty());
    EXPECT_EQ(parsed.errorTexts.front().size(), huge.size());
}

TEST_P(HostileReplies, F39_thatAreOneErrorGiveNoRecords)
{
    const Parsed parsed = GetParam().parse("<error>key did not validate</error>", atOnce);
    EXPECT_TRUE(parsed.isWhole);
    EXPECT_EQ(parsed.errorTexts, std::vector<std::string>{"key did not validate"});
    const bool takesErrors
        = std::string_view(GetParam().name) == "simple" || std::string_view(GetParam().name) == "errors";
    EXPECT_EQ(parsed.lines.size(), takesErrors ? 1U : 0U);
}

TEST_P(HostileReplies, F32_withAnyByteChangedNeverBringThePartsOfABrokenReply)
{
    const std::string &sample = GetParam().sample;
    std::size_t bad = 0;
    for (std::size_t i = 0; i < sample.size(); ++i)
        for (const char byte : {'<', '>', '&', '\0', '"', '/', '\xFF'}) {
            std::string changed = sample;
            changed[i] = byte;
            const Parsed parsed = GetParam().parse(changed, 7);
            EXPECT_EQ(parsed, GetParam().parse(changed, atOnce));
            EXPECT_TRUE(parsed.isWhole || (parsed.lines.empty() && parsed.errorTexts.empty()));
            bad += parsed.isWhole ? 0 : 1;
        }
    EXPECT_GT(bad, sample.size());
}

INSTANTIATE_TEST_SUITE_P(
    All, HostileReplies, testing::ValuesIn(readers()), [](const auto &row) { return std::string(row.param.name); });

TEST(HostileLookups, thatThrowEndAsABadReply)
{
    TDTasksParser parser([](std::string_view) -> std::int64_t { throw std::runtime_error("no store"); });
    EXPECT_FALSE(parser.parse("<tasks><task><context>Home</context></task></tasks>"));
    EXPECT_NE(parser.error()->detail.find("no store"), std::string::npos);
    EXPECT_FALSE(parser.parseResults().has_value());
}
