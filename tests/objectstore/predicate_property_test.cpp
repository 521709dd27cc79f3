// SPDX-License-Identifier: GPL-3.0-or-later
// Random predicates over random stores with random unsaved changes: however a predicate is asked, the answer is one.
#include "objectstore/library.h"
#include "objectstore/predicate_evaluator.h"
#include "objectstore/predicate_node.h"

#include <limits>
#include <rapidcheck/gtest.h>

using namespace library;

namespace {

/// A number below the limit, of a small case as well, which would else know the first choices alone.
int draw(int below)
{
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, below));
}

template <typename T, std::size_t N> const T &oneOf(const std::array<T, N> &choices)
{
    return choices[static_cast<std::size_t>(draw(static_cast<int>(N)))];
}

/// Values that differ in what comparisons look at: case, marks, signs, kinds, the edges of the numbers.
Value text()
{
    static const std::array<std::string, 16> choices{"", "a", "A", "ab", "aBa", "\xc3\xa4", "\xc3\x84", "e\xcc\x81",
        "stra\xc3\x9f"
        "e",
        "STRASSE", "1", "*", "a?b", "\xe2\x84\xaa", "bad \xff byte", std::string("a\0b", 3)};
    return oneOf(choices);
}
Value number()
{
    static const std::array<Value, 15> choices{std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{2},
        std::int64_t{9007199254740993}, std::numeric_limits<std::int64_t>::max(),
        std::numeric_limits<std::int64_t>::min(), 0.0, -0.5, 1.0, 9007199254740992.0, 1e300,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()};
    return oneOf(choices);
}
Value date()
{
    static const std::array<Value, 4> choices{
        Instant{1796083200.125}, Instant{0}, Instant{-1}, Instant{1796083200.125 + 60}};
    return oneOf(choices);
}
Value bytes()
{
    static const std::array<Value, 3> choices{Bytes{}, Bytes{std::byte{0}}, Bytes{std::byte{'a'}, std::byte{255}}};
    return oneOf(choices);
}
Value anyValue()
{
    switch (draw(7)) {
    case 0:
        return {};
    case 1:
        return draw(2) == 0;
    case 2:
        return date();
    case 3:
        return bytes();
    case 4:
        return number();
    default:
        return text();
    }
}
Value integer()
{
    Value value = number();
    return std::holds_alternative<std::int64_t>(value) ? value : Value(std::int64_t{3});
}
Value real()
{
    return toDouble(view(number()));
}

/// A store of a few books and the context that holds unsaved changes over it.
class Shop
{
public:
    Shop()
    {
        for (int i = draw(3); i >= 0; --i)
            change(0);
        for (int i = draw(10); i > 0; --i)
            change(draw(actions));
        value(context().save());
        m_other = m_library.context();
        for (int i = draw(6); i > 0; --i)
            change(draw(actions));
    }

    /// The ids that predicates may name, those of deleted and of unsaved objects among them.
    [[nodiscard]] std::vector<Value> records() const
    {
        std::vector<Value> ids;
        for (const ManagedObject *object : m_made)
            ids.emplace_back(object->objectID());
        return ids;
    }
    ObjectContext &context() { return *m_context; }
    ObjectContext &savedOnly() { return *m_other; }

private:
    static constexpr int actions = 9;

    ManagedObject *some(const char *entity)
    {
        const auto found = fetch(context(), entity);
        return found.empty() ? nullptr : found[static_cast<std::size_t>(draw(static_cast<int>(found.size())))];
    }
    void insert(const char *entity)
    {
        ManagedObject &made = context().insert(entity);
        if (draw(4) > 0)
            made.setValue("title", text());
        m_made.push_back(&made);
    }
    void change(int action)
    {
        if (action < 4)
            return insert(std::array{"Book", "Shelf", "Label", "Chapter"}[static_cast<std::size_t>(action)]);
        ManagedObject *book = some("Book");
        if (!book)
            return;
        switch (action) {
        case 4:
            book->setValue("pages", integer());
            book->setValue("price", real());
            book->setValue("lent", draw(3) == 0 ? Value() : Value(draw(2) == 0));
            break;
        case 5:
            book->setValue("bought", date());
            book->setValue("cover", bytes());
            book->setValue("title", draw(5) == 0 ? Value() : text());
            break;
        case 6:
            book->setRelated("shelf", some("Shelf"));
            book->setRelated("sequel", some("Book"));
            break;
        case 7:
            if (ManagedObject *label = some("Label"))
                draw(3) > 0 ? book->addObject("labels", *label) : label->removeObject("books", *book);
            if (ManagedObject *chapter = some("Chapter"))
                chapter->setRelated("book", book);
            break;
        default:
            context().remove(*book);
        }
    }

    Library m_library;
    std::unique_ptr<ObjectContext> m_context = m_library.context();
    std::unique_ptr<ObjectContext> m_other;
    std::vector<ManagedObject *> m_made;
};

/// Writes predicates as text with arguments, as the program does.
class Writer
{
public:
    explicit Writer(std::vector<Value> records) : m_records(std::move(records)) { }

    std::string condition(int depth)
    {
        switch (depth == 0 ? 0 : draw(7)) {
        case 1:
            return "(" + condition(depth - 1) + ") && " + condition(0);
        case 2:
            return "(" + condition(depth - 1) + " OR (" + condition(depth - 1) + "))";
        case 3:
            return "NOT (" + condition(depth - 1) + ")";
        case 4:
            return "!" + condition(0);
        default:
            return comparison();
        }
    }
    std::vector<Argument> arguments;

private:
    std::string comparison()
    {
        static constexpr std::array<const char *, 4> modifiers{"ANY ", "ALL ", "NONE ", ""};
        static constexpr std::array<const char *, 12> operators{
            "==", "!=", "=", "<>", "<", "<=", ">", ">=", "<=", "==", "!=", "=>"};
        static constexpr std::array<const char *, 5> textTests{"BEGINSWITH", "ENDSWITH", "contains", "LIKE", "MATCHES"};
        static constexpr std::array<const char *, 4> options{"", " [c]", "[d]", "[cd]"};
        if (draw(20) == 0)
            return draw(2) == 0 ? "TRUEPREDICATE" : "FALSEPREDICATE";
        if (draw(8) == 0)
            return oneOf(modifiers) + constant() + " IN" + oneOf(options) + " " + path();
        const std::string start = oneOf(modifiers) + side();
        switch (draw(7)) {
        case 0:
            return start + " IN" + oneOf(options) + " " + list(draw(4));
        case 1:
            return start + " BETWEEN" + oneOf(options) + " " + list(2);
        case 2:
        case 3: {
            const std::string test = oneOf(textTests);
            return start + " " + test + oneOf(options) + " " + (test == "MATCHES" ? pattern() : side());
        }
        default:
            return start + " " + oneOf(operators) + oneOf(options) + " " + side();
        }
    }
    std::string side()
    {
        const int kind = draw(8);
        return kind < 4 ? path()
            : kind < 7  ? constant()
                        : "(" + side() + " " + oneOf(std::array{"+", "-", "*", "/"}) + " " + side() + ")";
    }
    static std::string path()
    {
        static constexpr std::array<const char *, 28> paths{"title", "pages", "price", "bought", "lent", "cover",
            "shelf", "sequel", "labels", "labels", "prequels", "chapters", "title", "pages", "shelf.title",
            "labels.title", "labels.@count", "chapters.title", "sequel.title", "sequel.shelf.title",
            "shelf.books.pages", "prequels.labels.title", "labels.books", "sequel.labels.@count",
            "prequels.chapters.@count", "prequels.shelf", "sequel.sequel.sequel.bought", "shelf.books.@count"};
        return oneOf(paths);
    }
    std::string constant()
    {
        switch (draw(6)) {
        case 0:
            return oneOf(std::array{"YES", "NULL", "-1", "0", "1.5", "\"a\"", "'\\'x\\\\'"});
        case 1:
            return argument(m_records.empty()
                    ? Value()
                    : m_records[static_cast<std::size_t>(draw(static_cast<int>(m_records.size())))]);
        case 2:
            return oneOf(std::array{"RELATIVE(-86400.0, 817776000.125, 0, YES)", "DATE(\"2026-12-01T00:00:00Z\")",
                "DATE(-1.0)", "DATE(1e20)"});
        default:
            return argument(anyValue());
        }
    }
    std::string list(int size)
    {
        std::string items;
        for (int i = 0; i < size; ++i)
            items += (items.empty() ? "" : ", ") + constant();
        return "{" + items + "}";
    }
    static std::string pattern()
    {
        return oneOf(std::array{"'a+'", "'.*'", "'(?i)A[b-c]?.*'", "'\\\\w*'", "'(a|b)*c'", "''"});
    }
    std::string argument(Value value)
    {
        arguments.emplace_back(std::move(value));
        return "%@";
    }

    std::vector<Value> m_records;
};

std::vector<std::int64_t> keys(const std::vector<ManagedObject *> &objects)
{
    std::vector<std::int64_t> result;
    for (const ManagedObject *object : objects)
        result.push_back(object->objectID().key);
    return result;
}

Predicate parsed(const std::string &text, std::span<const Argument> arguments = {})
{
    auto predicate = Predicate::parse(text, arguments);
    if (!predicate)
        RC_FAIL(text + ": " + predicate.error().message);
    return std::move(*predicate);
}

/// The text and the archive form give the same tree back.
void readsBack(const Predicate &predicate)
{
    RC_ASSERT(parsed(predicate.text()) == predicate);
    RC_ASSERT(fromArchive(archive(predicate)).value() == predicate);
}

/// `context` answers the same in every way that it can be asked.
void agree(ObjectContext &context, const Predicate &predicate)
{
    FetchRequest request{.entity = "Book", .predicate = predicate, .sortDescriptors = {}};
    std::vector<ManagedObject *> inMemory = fetch(context, "Book");
    std::erase_if(inMemory, [&](const ManagedObject *object) { return !predicate.matches(*object); });
    std::vector<std::int64_t> visited;
    RC_ASSERT(context.fetchIDs(request, [&](const ObjectID &id) { visited.push_back(id.key); }).has_value());
    std::sort(visited.begin(), visited.end());
    RC_ASSERT(visited == keys(inMemory));

    request.limit = draw(4); // 0 is none
    if (request.limit > 0 && inMemory.size() > static_cast<std::size_t>(request.limit))
        inMemory.resize(static_cast<std::size_t>(request.limit));
    RC_ASSERT(keys(value(context.fetch(request))) == keys(inMemory));
    RC_ASSERT(value(context.count(request)) == static_cast<std::int64_t>(inMemory.size()));
    const std::vector<std::string> columns{"title", "pages", "shelf"};
    visited.clear();
    const auto visit = [&](const ObjectID &id, std::span<const ValueView> values) {
        for (std::size_t i = 0; i < columns.size(); ++i)
            RC_ASSERT(sameValue(values[i], context.object(id)->value(columns[i])));
        visited.push_back(id.key);
    };
    RC_ASSERT(context.fetchValues(request, columns, visit).has_value());
    RC_ASSERT(visited == keys(inMemory));
}

} // namespace

RC_GTEST_PROP(Predicate, answersAlikeInMemoryInSqlAndInCounts, ())
{
    Shop shop;
    for (int i = 0; i < 8; ++i) {
        Writer writer(shop.records());
        const std::string text = writer.condition(draw(4));
        const Predicate predicate = parsed(text, writer.arguments);
        RC_LOG() << predicate.text() << std::endl;
        readsBack(predicate);
        if (!compileToSql(predicate, *model().entity("Book"))) {
            const FetchRequest request{.entity = "Book", .predicate = predicate, .sortDescriptors = {}};
            RC_ASSERT(!shop.context().fetch(request));
            RC_ASSERT(!shop.context().count(request));
            continue;
        }
        for (ObjectContext *context : {&shop.savedOnly(), &shop.context()}) {
            agree(*context, predicate);
            agree(*context, Predicate::negation(predicate));
        }
    }
}

RC_GTEST_PROP(Predicate, hostileTextIsRefusedOrUnderstoodButNeverCrashes, ())
{
    static constexpr std::array<const char *, 34> pieces{"(", ")", "title", "==", "AND", "OR", "NOT", "!", "{", "}",
        ",", "%@", "%K", "$X", "\"", "'", "\\", "IN", "BETWEEN", "MATCHES", "'('", "-", "*", "1", "1e999", "ALL", "[c]",
        "[", "DATE(", "OBJECT(", "RELATIVE(", ".", "labels.@count", "\xff"};
    std::string text;
    for (const int piece :
        *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, static_cast<int>(pieces.size()) + 1)))
        text += piece < static_cast<int>(pieces.size()) ? std::string(pieces[static_cast<std::size_t>(piece)]) + " "
                                                        : *rc::gen::string<std::string>();
    const std::array<Argument, 2> arguments{Argument(Value(std::string("title"))), Argument(std::vector<Value>{})};
    const auto read = Predicate::parse(text, std::span(arguments).first(static_cast<std::size_t>(draw(3))));
    if (read) {
        readsBack(*read);
    } else {
        RC_ASSERT(!read.error().message.empty());
        RC_ASSERT(read.error().position <= text.size());
    }
}

RC_GTEST_PROP(Predicate, aHostileArchiveIsRefusedOrUnderstoodButNeverCrashes, ())
{
    Writer writer({Value(ObjectID{model().entity("Book"), -7})});
    const std::string text = writer.condition(3);
    Bytes bytes = archive(parsed(text, writer.arguments));
    for (int damage = draw(4); damage >= 0 && !bytes.empty(); --damage) {
        const auto place = static_cast<std::size_t>(draw(static_cast<int>(bytes.size())));
        if (draw(4) == 0)
            bytes.resize(place);
        else
            bytes[place] = static_cast<std::byte>(draw(2) == 0 ? draw(256) : draw(8));
    }
    if (const auto read = fromArchive(bytes))
        readsBack(*read);
}
