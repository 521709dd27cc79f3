// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_request.h"
#include "toodledo/td_text.h"

#include "support/test_clock.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace toodledo;
using support::at;

namespace {

const Authentication escaping{.key = "k", .secure = false, .escapeValues = true};
const Authentication bare{.key = "k", .secure = false, .escapeValues = false};

std::string decoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size();
        result += isEscape ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)) : text[i];
        i += isEscape ? 2 : 0;
    }
    return result;
}

/// A query as a server takes it apart: at ";" and "&", then at the first "=".
Parameters parsed(std::string_view query)
{
    Parameters parameters;
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find_first_of(";&"));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        const std::size_t equals = pair.find('=');
        parameters.emplace_back(
            decoded(pair.substr(0, equals)), equals == pair.npos ? std::string() : decoded(pair.substr(equals + 1)));
    }
    return parameters;
}

std::string query(const std::string &url)
{
    return url.substr(url.find('?') + 1);
}

/// A value of any bytes, most of them such as mean something in a URL.
rc::Gen<std::string> value()
{
    return rc::gen::container<std::string>(
        rc::gen::weightedOneOf<char>({{3, rc::gen::element(';', '=', '&', '%', '#', '?', '+', ' ', '/', '\n', '\0')},
            {1, rc::gen::arbitrary<char>()}}));
}

} // namespace

RC_GTEST_PROP(Requests, F45_noValueCanChangeAnotherParameterOrTheMethod, ())
{
    const auto title = *value();
    const auto note = *value();
    const Parameters sent{{"id", "5"}, {"title", title}, {"note", note}};
    const Parameters received{{"method", "editTask"}, {"key", "k"}, {"id", "5"}, {"title", title}, {"note", note}};
    RC_ASSERT(parsed(query(authenticatedUrl("h/api.php?method=editTask;", escaping, sent))) == received);
    const Parameters login{{"method", "getUserid"}, {"email", title}, {"pass", note}};
    RC_ASSERT(parsed(query(plainUrl("h/api.php?method=getUserid;", {{"email", title}, {"pass", note}}))) == login);
}

TEST(Requests, escapeEachValueByItself)
{
    EXPECT_EQ(escapedValue("!*'();:@&=+$,/?%#[]"), "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D");
    EXPECT_EQ(escapedValue("azAZ09-._~"), "azAZ09-._~");
    EXPECT_EQ(escapedValue("\xC3\xA9 \x7f"), "%C3%A9%20%7F");
}

TEST(Requests, canLeaveValuesAsTheyAreAndEscapeTheWholeText)
{
    const Parameters parameters{{"title", "a;b=c&d+e f"}, {"note", "50% [x] \xC3\xA9 #1"}};
    EXPECT_EQ(authenticatedUrl("h/api.php?method=editTask;", bare, parameters),
        "http://h/api.php?method=editTask;key=k;title=a;b=c&d+e%20f;note=50%25%20%5Bx%5D%20%C3%A9%20%231;");
}

TEST(Requests, nameTheHostsThatAreThisComputer)
{
    for (const char *host : {"localhost", "localhost:8080", "127.0.0.1", "127.1.2.3:80", "[::1]:80", "a.localhost"})
        EXPECT_TRUE(isLoopback(host)) << host;
    for (const char *host :
        {"", "example.org", "localhost.example.org", "127.0.0.1.example.org:80", "notlocalhost", "128.0.0.1", "[::2]"})
        EXPECT_FALSE(isLoopback(host)) << host;
}

TEST(Texts, areReadAsTheServiceWritesThem)
{
    const std::vector<std::pair<const char *, std::int64_t>> integers{{"", 0}, {"12", 12}, {" \t-7x", -7}, {"+5", 5},
        {"+-5", 0}, {"--5", 0}, {"x1", 0}, {"1e3", 1}, {"007", 7}, {"99999999999999999999", INT64_MAX},
        {"-99999999999999999999", INT64_MIN}, {"4294967297", 4'294'967'297}};
    for (const auto &[text, number] : integers)
        EXPECT_EQ(integerOf(text), number) << text;
    for (const char *text : {"1", "9", "Yes", "y", "True", "t", "  +001", "-1", "010"})
        EXPECT_TRUE(booleanOf(text)) << text;
    for (const char *text : {"", "0", "000", "no", "false", "+", "x1", "--1"})
        EXPECT_FALSE(booleanOf(text)) << text;
    EXPECT_EQ(secondsOf(" 12.5"), 12.5);
    for (const char *text : {"", "x", "inf", "nan", "1e300"})
        EXPECT_EQ(secondsOf(text), 0) << text;
}

TEST(Texts, F23_ofDatesThatDoNotExistAreNoDates)
{
    EXPECT_EQ(dateOf("2009-06-01"), at("2009-06-01"));
    EXPECT_EQ(dateTimeOf("2009-06-01 14:05:09"), at("2009-06-01 14:05:09"));
    EXPECT_TRUE(dateOf("2028-02-29") && dateOf("2106-02-08") && dateOf("9999-12-31"));
    for (const char *text : {"", "0000-00-00", "2026-02-29", "2026-13-01", "2026-11-31", "26-11-01", "2026-11",
             "2026-11-01x", "2026-11-01 10:00:00", "-2026-11-01", "20260-1-1"})
        EXPECT_EQ(dateOf(text), std::nullopt) << text;
    for (const char *text : {"2026-11-01", "2026-11-01 24:00:00", "2026-11-01 10:00", "2026-11-01T10:00:00",
             "2026-11-01 10:60:00", "2026-11-01 10:00:00Z", "0000-00-00 00:00:00"})
        EXPECT_EQ(dateTimeOf(text), std::nullopt) << text;
}

TEST(Texts, ofTimesHaveTwelveHours)
{
    for (const auto &[clock, text] :
        {std::pair{"00:59", "12:59 am"}, {"11:59", "11:59 am"}, {"12:00", "12:00 pm"}, {"21:05", "09:05 pm"}})
        EXPECT_EQ(timeText(at(std::string("2026-12-01 ") + clock)), text);
}
