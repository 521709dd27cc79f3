// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "replies.h"
#include "support/repeated.h"

using namespace toodledo;
using namespace std::string_literals;
using support::repeated;

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
            EXPECT_TRUE(parsed.records == 0 && parsed.errorTexts.empty()) << reply.substr(0, 200);
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

} // namespace

TEST_P(HostileReplies, F32_cutOrMalformedGiveNothing)
{
    const std::string &sample = GetParam().sample;
    const std::size_t size = sample.find_last_of('>') + 1;
    for (std::size_t i = 0; i < size; ++i)
        EXPECT_FALSE(GetParam().parse(sample.substr(0, i), atOnce).isWhole) << i;
    const Parsed whole = GetParam().parse(sample.substr(0, size), 7);
    EXPECT_TRUE(whole.isWhole && whole.records > 0);
    for (const char *text : {"<a></b>", "</a>", "<a b>", "<a b='1' b='2'/>", "& ", "&unknown;", "]]>", "<!-- -- -->",
             "<?xml version='1.0'?>", "<![CDATA[", "&#0;"})
        expectBad(within(text));
    for (const std::string &reply : {elements() + elements(), elements() + "more", "text" + elements()})
        expectBad(reply);
}

TEST_P(HostileReplies, F31_thatAreNoXmlGiveNothingAndOtherXmlShowsItsRoot)
{
    for (const std::string &reply : {""s, "\xEF\xBB\xBF"s, "{\"tasks\":[]}"s, "<!DOCTYPE html><html></html>"s,
             "<html><br></html>"s, "\x1f\x8b\x08"s})
        expectBad(reply);
    const Parsed parsed = GetParam().parse("<html><body>Sign in</body></html>", atOnce);
    EXPECT_TRUE(parsed.isWhole && parsed.records == 0);
    EXPECT_EQ(parsed.root, "html");
}

TEST_P(HostileReplies, F33_withADocumentTypeAreRefusedAtItsSight)
{
    for (const char *subset :
        {"", " SYSTEM 'file:///etc/passwd'", " [<!ENTITY a 'b'>]", " [<!ENTITY % p SYSTEM 'x'> %p;]",
            " [<!ENTITY a '&b;'><!ENTITY b '&a;'>]", " [<!ELEMENT r ANY><!ATTLIST r id CDATA 'default'>]"})
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

TEST_P(HostileReplies, F35_nestedOrNamedBeyondAllReasonGiveNothing)
{
    EXPECT_TRUE(GetParam().parse(within(repeated("<a>", 60) + repeated("</a>", 60)), atOnce).isWhole);
    expectBad(within(repeated("<a>", 64) + repeated("</a>", 64)));
    expectBad(within(repeated("<a>", 1'000'000) + repeated("</a>", 1'000'000)));
    expectBad(within("<" + std::string(4096, 'n') + "/>"));
    expectBad(within("<a b='" + std::string(8 << 20, 'x') + "'/>"));
    expectBad(within("<!--" + std::string(8 << 20, 'x') + "-->"));
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
