// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/csv.h"

#include <gtest/gtest.h>

namespace {

TEST(Csv, readsWhatOtherProgramsWrite)
{
    const auto rows = cli::readCsv("\xEF\xBB\xBF"
                                   "a,\"b \"\"c\"\"\",\r\n\r\n\"line\r\nline\",,d");
    ASSERT_TRUE(rows);
    EXPECT_EQ(*rows, (std::vector<cli::CsvRow>{{"a", "b \"c\"", ""}, {"line\r\nline", "", "d"}}));
}

TEST(Csv, saysInWhichLineItIsBroken)
{
    EXPECT_EQ(cli::readCsv("a\n\"b").error().message, "Line 2 begins a quoted value that never ends.");
    EXPECT_EQ(cli::readCsv("\"a\nb\"c").error().message, "Line 2 has text after the closing quote of a value.");
}

} // namespace
