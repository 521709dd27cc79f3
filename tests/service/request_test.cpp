// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/request.h"

#include "service/caller.h"
#include "service/result.h"
#include "service/text.h"

#include <rapidcheck/gtest.h>
#include <set>

using namespace service;

RC_GTEST_PROP(Request, isReadAsItWasWritten, (const std::vector<std::pair<std::string, std::string>> &drawn))
{
    calling::Parameters sent;
    std::set<std::string> names{"method"};
    for (const auto &[name, value] : drawn)
        if (sent.size() < 60 && !cleaned(name).empty() && names.insert(cleaned(name)).second)
            sent.emplace_back(cleaned(name), cleaned(value));
    std::string query = "method=addTask;";
    for (const auto &[name, value] : sent)
        query += calling::escaped(name) + "=" + calling::escaped(value) + (*rc::gen::arbitrary<bool>() ? ";" : "&");
    const Request request = Request::parse(query);
    RC_ASSERT(request.method() == "addTask");
    RC_ASSERT(request.parameters() == sent);
}

TEST(Request, takesTheFirstOfDoubledNamesAndKeepsAPlusAndABrokenEscape)
{
    const Request request = Request::parse("method=a;key=1;method=b;key=2;&;x;a=1+1%;b=%zz%4;c=a=b");
    EXPECT_EQ(request.method(), "a");
    for (const auto &[name, value] : {std::pair{"key", "1"}, {"x", ""}, {"a", "1+1%"}, {"b", "%zz%4"}, {"c", "a=b"}})
        EXPECT_EQ(request.text(name), value) << name;
    ASSERT_NE(request.find("x"), nullptr);
}

TEST(Request, repairsTextsThatAreNoUtf8)
{
    const Request request = Request::parse("a=x%FFy;b=%C0%80;c=%ED%A0%80;d=a%00b%1F;e=%EF%BF%BEz;f=%F0%9F%8D%9E%F0%9F");
    EXPECT_EQ(request.text("a"), "x\xEF\xBF\xBDy");
    EXPECT_EQ(calling::countOf(std::string(request.text("b")), "\xEF\xBF\xBD"), 2);
    EXPECT_EQ(calling::countOf(std::string(request.text("c")), "\xEF\xBF\xBD"), 3);
    EXPECT_EQ(request.text("d"), "ab");
    EXPECT_EQ(request.text("e"), "z");
    EXPECT_TRUE(request.text("f").starts_with("\xF0\x9F\x8D\x9E\xEF\xBF\xBD"));
}

TEST(Request, refusesNumbersThatAreNone)
{
    const Request request = Request::parse("id=0;a=12x;b=4294967296;c=-3;d=;e=2");
    EXPECT_THROW((void)request.id(), Refusal);
    for (const char *name : {"a", "b", "d"})
        EXPECT_THROW((void)request.integer(name), Refusal) << name;
    EXPECT_EQ(request.integer("c"), -3);
    EXPECT_EQ(request.integer("f"), std::nullopt);
    EXPECT_THROW((void)request.flag("e"), Refusal);
}

TEST(Request, withThousandsOfParametersIsRefused)
{
    std::string query;
    for (int i = 0; i < 5000; ++i)
        query += "p" + std::to_string(i) + "=1;";
    EXPECT_THROW((void)Request::parse(query), Refusal);
}
