// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"

#include <gtest/gtest.h>

using foundation::redacted;

TEST(Redaction, hidesEverySecretParameterAndNothingElse)
{
    EXPECT_EQ(redacted("http://h/api.php?method=getUserid;email=a%40b.c;pass=s3cr%3Bet;"),
        "http://h/api.php?method=getUserid;email=a%40b.c;pass=***;");
    EXPECT_EQ(redacted("method=getTasks;key=abc;key=abc;modafter=x"), "method=getTasks;key=***;key=***;modafter=x");
    EXPECT_EQ(redacted("?token=t&userid=u&monkey=banana"), "?token=***&userid=***&monkey=banana");
    EXPECT_EQ(redacted("key=last"), "key=***");
    EXPECT_EQ(redacted("the key of my house; key"), "the key of my house; key");
}

TEST(Redaction, hidesTheTextOfTokenElements)
{
    EXPECT_EQ(redacted("<?xml?><token>td12</token><tokenexpires>4</tokenexpires>"),
        "<?xml?><token>***</token><tokenexpires>4</tokenexpires>");
    EXPECT_EQ(redacted("<token a=\"1\">td12"), "<token a=\"1\">***");
}

TEST(Log, writesOneRedactedLine)
{
    std::vector<std::string> lines;
    foundation::setLogSink([&](std::string_view line) { lines.emplace_back(line); });
    foundation::logLine("first\nforged key=canary");
    foundation::setLogSink({});
    EXPECT_EQ(lines, std::vector<std::string>{"first forged key=***"});
}
