// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/csv.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

RC_GTEST_PROP(Csv, whateverIsWrittenIsReadBack, (std::vector<cli::CsvRow> rows))
{
    std::string text;
    std::erase_if(rows, [](const cli::CsvRow &row) { return row.empty(); });
    for (const cli::CsvRow &row : rows)
        cli::appendCsv(text, row);
    const auto read = cli::readCsv(text);
    RC_ASSERT(read.has_value());
    RC_ASSERT(*read == rows);
}

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
