// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/text.h"

#include "cli/table.h"

#include <clocale>
#include <gtest/gtest.h>

namespace {

class Text : public testing::Test
{
protected:
    Text() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    ~Text() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Text, wideLettersAndEmojiTakeTwoColumnsAndMarksNone)
{
    EXPECT_EQ(cli::displayWidth("Milk"), 4U);
    EXPECT_EQ(cli::displayWidth("海苔"), 4U);
    EXPECT_EQ(cli::displayWidth("🍞"), 2U);
    EXPECT_EQ(cli::displayWidth("e\u0301"), 1U);
    EXPECT_EQ(cli::displayWidth("❤\uFE0F"), 2U);
    EXPECT_EQ(cli::displayWidth("👩\u200D💻"), 2U);
}

TEST_F(Text, clippingNeverExceedsTheWidthNorSplitsALetter)
{
    const std::string text = "買い物 für Ömer 🍞 and more";
    for (std::size_t width = 0; width < 30; ++width) {
        const std::string clipped = cli::clipped(text, width);
        EXPECT_LE(cli::displayWidth(clipped), width);
        EXPECT_TRUE(cli::isUtf8(clipped));
    }
    EXPECT_EQ(cli::clipped("Milk", 4), "Milk");
    EXPECT_EQ(cli::clipped("Milky", 4), "Mil…");
}

TEST_F(Text, whatSteersATerminalDoesNotReachIt)
{
    EXPECT_EQ(cli::printable("a\033[31mb\nc\x7F"), "a [31mb c ");
    EXPECT_EQ(cli::printable("a\u009Bb\u202Ec"), "a b c");
    EXPECT_EQ(cli::printable("a\xFF"), "a\uFFFD");
    EXPECT_EQ(cli::printableLines("a\n\033b"), "a\n b");
}

TEST_F(Text, onlyUtf8IsUtf8)
{
    for (const char *text : {"", "abc", "ü", "海", "🍞", "\U0010FFFF"})
        EXPECT_TRUE(cli::isUtf8(text)) << text;
    for (const char *text :
        {"\xFF", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xF0\x9F\x8D"})
        EXPECT_FALSE(cli::isUtf8(text));
}

TEST_F(Text, theClosestNameIsSuggestedAndAFarOneIsNot)
{
    const std::vector<std::string> names{"Home", "Garden", "Groceries", ""};
    EXPECT_EQ(cli::closest("hme", names), "Home");
    EXPECT_EQ(cli::closest("Gar", names), "Garden");
    EXPECT_EQ(cli::closest("garten", names), "Garden");
    EXPECT_EQ(cli::closest("Accounting", names), std::nullopt);
    EXPECT_EQ(cli::closest("", names), std::nullopt);
}

TEST_F(Text, aTableAlignsLeavesEmptyColumnsOutAndFitsTheTerminal)
{
    cli::Table table({{"ID"}, {"TITLE", true}, {"NEVER"}, {"DUE"}});
    table.add({{"1"}, {"海苔、味噌、米"}, {""}, {"2026-12-24"}});
    table.add({{"22"}, {"Buy oat milk, eggs and rye bread"}, {""}, {""}});
    EXPECT_EQ(table.text({}),
        "ID  TITLE                             DUE\n"
        "1   海苔、味噌、米                    2026-12-24\n"
        "22  Buy oat milk, eggs and rye bread\n");
    EXPECT_EQ(table.text({.width = 32}),
        "ID  TITLE             DUE\n"
        "1   海苔、味噌、米    2026-12-24\n"
        "22  Buy oat milk, e…\n");
    EXPECT_NE(table.text({.width = 80, .hasColours = true}).find("\033[1mTITLE\033[0m"), std::string::npos);
}

TEST_F(Text, anExpendableColumnGoesBeforeATitleIsHardlyLeft)
{
    cli::Table table({{.name = "TITLE", .isFlexible = true}, {.name = "STATE", .isExpendable = true}, {.name = "DUE"}});
    table.add({{"Buy oat milk, eggs and rye bread"}, {"Waiting"}, {"2026-12-24"}});
    EXPECT_NE(table.text({.width = 50}).find("STATE"), std::string::npos);
    EXPECT_EQ(table.text({.width = 36}),
        "TITLE                     DUE\n"
        "Buy oat milk, eggs and …  2026-12-24\n");
}

} // namespace
