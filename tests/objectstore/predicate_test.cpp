// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/connection.h"
#include "objectstore/library.h"
#include "objectstore/predicate_node.h"
#include "support/repeated.h"

#include <gmock/gmock.h>

using namespace library;
using support::repeated;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Books on two shelves, saved and asked by a second context, so that SQL answers, and in memory, which must agree.
class PredicateOverBooks : public testing::Test
{
protected:
    PredicateOverBooks()
    {
        auto writer = m_library.context();
        ManagedObject &attic = named(*writer, "Shelf", "Attic");
        ManagedObject &cellar = named(*writer, "Shelf", "Cellar");
        ManagedObject &old = named(*writer, "Label", "old");
        ManagedObject &rare = named(*writer, "Label", "Rare");
        ManagedObject &emma = book(*writer, "Emma", 474);
        ManagedObject &faust = book(*writer, "Faust", 300);
        ManagedObject &strasse = book(*writer, "Die Straße", 120);
        ManagedObject &loose = book(*writer, "loose leaves");
        emma.setRelated("shelf", &attic);
        faust.setRelated("shelf", &attic);
        strasse.setRelated("shelf", &cellar);
        emma.setObjects("labels", {&old, &rare});
        faust.setObjects("labels", {&old});
        emma.setRelated("sequel", &faust);
        emma.setDate("bought", Instant{1000});
        faust.setDate("bought", Instant{100000});
        faust.setValue("lent", true);
        loose.setValue("lent", Value());
        value(writer->save());
        m_context = m_library.context();
    }

    std::vector<std::string> answer(std::string_view text, std::initializer_list<Argument> arguments = {})
    {
        auto found = fetch(*m_context, "Book", text, arguments);
        const Predicate predicate = Predicate::format(text, arguments);
        auto all = fetch(*m_context, "Book");
        std::erase_if(all, [&](const ManagedObject *object) { return !predicate.matches(*object); });
        EXPECT_EQ(titles(all), titles(found)) << text;
        return titles(found);
    }
    Value record(const char *entity, const char *title)
    {
        return fetch(*m_context, entity, "title == %@", {Value(std::string(title))}).at(0)->objectID();
    }

private:
    static ManagedObject &named(ObjectContext &context, const char *entity, const char *title)
    {
        ManagedObject &made = context.insert(entity);
        made.setValue("title", std::string(title));
        return made;
    }

    Library m_library;
    std::unique_ptr<ObjectContext> m_context;
};

ParseError mistake(std::string_view text, std::initializer_list<Argument> arguments = {})
{
    const auto parsed = Predicate::parse(text, arguments);
    return parsed ? ParseError{"was read as " + parsed->text(), 0} : parsed.error();
}

} // namespace

TEST_F(PredicateOverBooks, textTestsFoldCaseAndMarksOnlyWhenAsked)
{
    EXPECT_THAT(answer("title contains 'A'"), IsEmpty());
    EXPECT_THAT(answer("title contains [c] 'A'"), ElementsAre("Emma", "Faust", "Die Straße", "loose leaves"));
    EXPECT_THAT(answer("title BEGINSWITH[c] %@", {Value(std::string("fA"))}), ElementsAre("Faust"));
    EXPECT_THAT(answer("title ENDSWITH[c] 'STRAßE'"), ElementsAre("Die Straße"));
    EXPECT_THAT(answer("title LIKE 'E??a' OR title LIKE[c] '*LEAVE?'"), ElementsAre("Emma", "loose leaves"));
    EXPECT_THAT(answer("title MATCHES '[A-F]\\\\w+'"), ElementsAre("Emma", "Faust"));
    EXPECT_THAT(answer("title ==[cd] 'émma'"), ElementsAre("Emma"));
    EXPECT_THAT(answer("title == 'émma'"), IsEmpty());
    EXPECT_THAT(answer("pages CONTAINS '4'"), IsEmpty());
}

TEST_F(PredicateOverBooks, nothingEqualsNothingAndIsInNoOrder)
{
    EXPECT_THAT(answer("lent == NULL"), ElementsAre("loose leaves"));
    EXPECT_THAT(answer("lent != YES"), ElementsAre("Emma", "Die Straße", "loose leaves"));
    EXPECT_THAT(answer("NOT lent > NO"), ElementsAre("Emma", "Die Straße", "loose leaves"));
    EXPECT_THAT(answer("bought < 2000 OR NOT (bought >= 0)"), ElementsAre("Emma", "Die Straße", "loose leaves"));
    EXPECT_THAT(answer("lent IN {NULL, YES}"), ElementsAre("Faust", "loose leaves"));
    EXPECT_THAT(answer("lent == 0 AND lent=NO"), ElementsAre("Emma", "Die Straße"));
}

TEST_F(PredicateOverBooks, calculatesWithDatesAndNumbers)
{
    EXPECT_THAT(
        answer("pages != 0 AND (bought - pages * 60 <= %@ AND lent == NO)", {Value(Instant{0})}), ElementsAre("Emma"));
    EXPECT_THAT(answer("(pages) <= 300 AND (pages + 0) > 0"), ElementsAre("Faust", "Die Straße"));
    EXPECT_THAT(
        answer("10 - 2 - 3 == 5 AND 2 + 3 * 4 == 14 AND 8 / 4 / 2 == 1 AND 3 - -1 == 4").size(), testing::Eq(4U));
    EXPECT_THAT(answer("pages / 0 == NULL").size(), testing::Eq(4U));
    EXPECT_THAT(answer("pages BETWEEN {120, 300}"), ElementsAre("Faust", "Die Straße"));
}

TEST_F(PredicateOverBooks, keyPathsLeadThroughRelationshipsOfBothKinds)
{
    EXPECT_THAT(answer("shelf.title == 'Attic'"), ElementsAre("Emma", "Faust"));
    EXPECT_THAT(answer("shelf.title != 'Attic'"), ElementsAre("Die Straße", "loose leaves"));
    EXPECT_THAT(answer("shelf == %@", {record("Shelf", "Cellar")}), ElementsAre("Die Straße"));
    EXPECT_THAT(answer("labels.title ==[c] 'rare'"), ElementsAre("Emma"));
    EXPECT_THAT(answer("ANY labels.title != 'old'"), ElementsAre("Emma"));
    EXPECT_THAT(answer("ALL labels.title == 'old'"), ElementsAre("Faust", "Die Straße", "loose leaves"));
    EXPECT_THAT(answer("NONE labels.title == 'old'"), ElementsAre("Die Straße", "loose leaves"));
    EXPECT_THAT(answer("'Rare' IN labels.title"), ElementsAre("Emma"));
    EXPECT_THAT(answer("labels CONTAINS %@", {record("Label", "Rare")}), ElementsAre("Emma"));
    EXPECT_THAT(answer("labels.@count == 1 OR shelf.books.@count == 1"), ElementsAre("Faust", "Die Straße"));
    EXPECT_THAT(answer("sequel.shelf.books.title == 'Faust'"), ElementsAre("Emma"));
    EXPECT_THAT(answer("%K == %@ AND SELF IN %@",
                    {Value(std::string("sequel.title")), Value(std::string("Faust")),
                        std::vector<Value>{record("Book", "Emma"), record("Book", "Faust")}}),
        ElementsAre("Emma"));
    EXPECT_THAT(answer("SELF == '1' OR labels == '1'"), IsEmpty());
}

TEST(PredicateVariables, stayUntilTheyAreReplaced)
{
    const Predicate predicate = Predicate::format("title == $TITLE AND (pages IN $LIST OR labels CONTAINS $LABEL)");
    EXPECT_EQ(predicate.problemWith(*model().entity("Book")), "The variable $TITLE has no value.");
    const Predicate bound = predicate.withVariables(
        {{"TITLE", Value(std::string("say \"$LIST\""))}, {"LIST", std::vector<Value>{std::int64_t{1}, Value()}},
            {"LABEL", Value(ObjectID{model().entity("Label"), 9})}});
    EXPECT_EQ(
        bound.text(), "title == \"say \\\"$LIST\\\"\" AND (pages IN {1, NULL} OR labels == OBJECT(\"Label\", 9))");
    EXPECT_EQ(bound.problemWith(*model().entity("Book")), std::nullopt);
    EXPECT_EQ(bound.problemWith(*model().entity("Shelf")), "There is no \"pages\" in \"pages\".");
}

TEST(PredicateText, saysWhatIsWrongAndWhere)
{
    EXPECT_EQ(mistake("title === 3").message, "Expected a value instead of \"=\" at character 9");
    EXPECT_EQ(mistake("title").message, "Expected a comparison, such as == or CONTAINS at character 6");
    EXPECT_EQ(mistake("(title == 3").position, 0U);
    EXPECT_EQ(mistake("title == 'x").position, 9U);
    EXPECT_EQ(mistake("pages == 3 pages == 4").position, 11U);
    EXPECT_EQ(mistake("pages BETWEEN {1}").message, "Expected a list of two values after BETWEEN at character 15");
    EXPECT_EQ(mistake("pages IN 3").position, 9U);
    EXPECT_EQ(mistake("title == {1}").position, 9U);
    EXPECT_EQ(
        mistake("title MATCHES '('").message, "The pattern after MATCHES is not a regular expression at character 15");
    EXPECT_EQ(mistake("title == %@").message, "There is no argument for \"%@\" at character 10");
    EXPECT_THAT(mistake("title == 3", {Value(true)}).message, testing::HasSubstr("more arguments"));
    EXPECT_EQ(mistake("%K == 3", {Value(std::string("no"))}).position, 0U);
    EXPECT_EQ(mistake("pages == 99999999999999999999").position, 9U);
    EXPECT_EQ(mistake("pages == -(1)").position, 9U);
    EXPECT_EQ(mistake("bought == DATE('soon')").position, 15U);
}

TEST(PredicateBounds, deepAndWideConditionsAreAnsweredOrRefused)
{
    Library library;
    auto writer = library.context();
    book(*writer, "Novel", 1);
    value(writer->save());
    auto context = library.context();
    const auto wide = "pages == 1" + repeated(" AND pages == 1", 1300);
    EXPECT_EQ(count(*context, "Book", wide), 1);
    for (int depth = 1; depth < 31; ++depth) { // the deeper ones are beyond what SQLite's parser takes
        const std::string nested = repeated("NOT (pages < 1 OR ", depth) + "1 == 2" + repeated(")", depth);
        EXPECT_EQ(count(*context, "Book", nested), depth % 2) << depth;
        const std::string sum
            = repeated("(pages + (1 - ", depth) + "0" + repeated("))", depth) + "== " + std::to_string(depth % 2 * 2);
        EXPECT_EQ(count(*context, "Book", sum), 1) << depth;
    }
    for (int depth = 1; depth < 16; ++depth)
        EXPECT_EQ(count(*context, "Book", "ALL " + repeated("prequels.", depth) + "pages == 2"), 1) << depth;
    for (const auto &[open, close] :
        {std::pair("NOT (", ")"), {"(", ")"}, {"!", ""}, {"1 + (", ")"}, {"{", "}"}, {"DATE(", ")"}, {"-", ""}})
        EXPECT_FALSE(Predicate::parse(repeated(open, 100000) + "1" + repeated(close, 100000))) << open;
    EXPECT_FALSE(Predicate::parse("1 == 1" + repeated(" + 1", 100)));
    EXPECT_FALSE(Predicate::parse(wide + repeated(" OR pages == 1", 1300)));
    EXPECT_FALSE(context->count({.entity = "Book",
        .predicate = Predicate::format("SELF." + repeated("sequel.", 100) + "pages == 1"),
        .sortDescriptors = {}}));
}

TEST(PredicateBounds, aPatternThatWouldTryForEverGivesUp)
{
    Library library;
    auto context = library.context();
    book(*context, repeated("a", 5000));
    EXPECT_EQ(count(*context, "Book", "title MATCHES '(a+)+b'"), 0);
    EXPECT_EQ(count(*context, "Book", "title MATCHES '(a|aa)*c'"), 0);
    EXPECT_EQ(count(*context, "Book", "title LIKE '*a*a*a*a*a*b'"), 0);
    EXPECT_EQ(count(*context, "Book", "title MATCHES 'a+'"), 1);
}

TEST(PredicateSql, looksMembersUpInsteadOfReadingAllOfThemForEachObject)
{
    const Library library;
    const auto connection = value(library.store->connect());
    for (const char *text : {"ANY labels.title == 'rare'", "labels.@count > 1", "ALL labels.books.pages > 3"}) {
        const SqlCondition condition = value(compileToSql(Predicate::format(text), *model().entity("Book")));
        Statement plan = connection->prepare("EXPLAIN QUERY PLAN SELECT t._key FROM Book t WHERE " + condition.sql);
        while (plan.step()) {
            const std::string step = plan.text(3);
            EXPECT_TRUE(!step.starts_with("SCAN") || step.starts_with("SCAN t")) << text << ": " << step;
        }
    }
}

TEST(PredicateArchive, isReadAsItWasWrittenInVersionOne)
{
    const Predicate predicate
        = Predicate::format("title contains [c] 'x' AND bought >= RELATIVE(-86400.0, 8e8, 1, YES)");
    std::string hex;
    for (const std::byte byte : archive(predicate)) {
        hex += "0123456789abcdef"[std::to_integer<unsigned>(byte) >> 4U];
        hex += "0123456789abcdef"[std::to_integer<unsigned>(byte) & 15U];
    }
    EXPECT_EQ(hex,
        "5150524401020200000000000000" // magic and version; AND of two
        "05080001" // a comparison: CONTAINS, of one, folding case
        "0405000000000000007469746c65" // key path
        "0005010000000000000078" // constant text
        "05050000" // a comparison: >=
        "040600000000000000626f75676874" // key path
        "02000000000018f5c00000000084d7c741010000000000000001"); // relative date
}

TEST(PredicateArchive, refusesLaterVersionsAndWhatIsCut)
{
    Bytes bytes = archive(Predicate::format("NOT (pages IN {1, 2})"));
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(fromArchive(std::span(bytes).first(size))) << size;
    bytes.push_back(std::byte{0});
    EXPECT_FALSE(fromArchive(bytes));
    bytes.pop_back();
    bytes[4] = std::byte{2};
    EXPECT_FALSE(fromArchive(bytes));
}
