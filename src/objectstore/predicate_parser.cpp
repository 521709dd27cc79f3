// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_lexer.h"
#include "objectstore/predicate_node.h"
#include "objectstore/text_test.h"

#include "foundation/instant.h"

#include <charconv>
#include <cmath>

namespace objectstore {

namespace {

/// What stops the parsing; it never leaves this file.
struct Stop {
    ParseError error;
};

struct OperatorName {
    std::string_view name;
    Operator test;
};
constexpr std::array<OperatorName, 9> symbolOperators{
    {{"==", Operator::Equal}, {"=", Operator::Equal}, {"!=", Operator::NotEqual}, {"<>", Operator::NotEqual},
        {"<=", Operator::LessOrEqual}, {"=<", Operator::LessOrEqual}, {">=", Operator::GreaterOrEqual},
        {"=>", Operator::GreaterOrEqual}, {"<", Operator::Less}}};
constexpr std::array<OperatorName, 7> wordOperators{{{"BEGINSWITH", Operator::BeginsWith},
    {"ENDSWITH", Operator::EndsWith}, {"CONTAINS", Operator::Contains}, {"LIKE", Operator::Like},
    {"MATCHES", Operator::Matches}, {"IN", Operator::In}, {"BETWEEN", Operator::Between}}};

Expression constantOf(Value value)
{
    return {.kind = Expression::Kind::Constant, .constant = std::move(value), .name = {}, .relative = {}, .parts = {}};
}

Expression named(Expression::Kind kind, std::string name)
{
    return {.kind = kind, .constant = {}, .name = std::move(name), .relative = {}, .parts = {}};
}

class Parser
{
public:
    Parser(const std::vector<Token> &tokens, std::span<const Argument> arguments)
        : m_tokens(tokens), m_arguments(arguments)
    { }

    PredicateNode::Pointer run()
    {
        auto root = disjunction(1);
        if (here().kind != Token::Kind::End)
            fail("Expected AND, OR or the end instead of \"" + std::string(here().source) + "\"");
        if (m_nextArgument < m_arguments.size())
            fail("There are more arguments than places for them");
        return root;
    }

private:
    using Pointer = PredicateNode::Pointer;

    [[noreturn]] void fail(std::string message) const
    {
        const std::size_t position = here().position;
        message += " at character " + std::to_string(position + 1);
        throw Stop{{std::move(message), position}};
    }
    [[nodiscard]] const Token &here() const { return m_tokens[m_place]; }
    [[nodiscard]] bool isSymbol(std::string_view symbol) const
    {
        return here().kind == Token::Kind::Symbol && here().source == symbol;
    }
    bool take(std::string_view symbol)
    {
        const bool found = isSymbol(symbol);
        m_place += found ? 1 : 0;
        return found;
    }
    bool takeWord(std::string_view word)
    {
        const bool found = isWord(here(), word);
        m_place += found ? 1 : 0;
        return found;
    }
    void expect(std::string_view symbol)
    {
        if (!take(symbol))
            fail("Expected \"" + std::string(symbol) + "\"");
    }
    void count(std::size_t depth)
    {
        // a guard for the stack: one level of the tree takes up to three of reading; the tree is measured at the end
        if (depth > 4 * maximumPredicateDepth)
            fail("The condition is nested too deeply");
        if (++m_nodes > 2 * maximumPredicateNodes)
            fail("The condition is too long");
    }

    template <typename Next>
    Pointer chain(
        PredicateNode::Kind kind, std::string_view symbol, std::string_view word, std::size_t depth, Next next)
    {
        count(depth);
        Pointer first = next(depth + 1);
        if (!isSymbol(symbol) && !isWord(here(), word)) {
            --m_nodes;
            return first;
        }
        auto node = std::make_shared<PredicateNode>();
        node->kind = kind;
        node->children.push_back(std::move(first));
        while (take(symbol) || takeWord(word))
            node->children.push_back(next(depth + 1));
        return node;
    }
    Pointer disjunction(std::size_t depth)
    {
        return chain(
            PredicateNode::Kind::Or, "||", "OR", depth, [this](std::size_t inner) { return conjunction(inner); });
    }
    Pointer conjunction(std::size_t depth)
    {
        return chain(PredicateNode::Kind::And, "&&", "AND", depth, [this](std::size_t inner) { return unary(inner); });
    }

    static Pointer nodeOf(PredicateNode::Kind kind, Pointer child = nullptr)
    {
        auto node = std::make_shared<PredicateNode>();
        node->kind = kind;
        if (child)
            node->children.push_back(std::move(child));
        return node;
    }

    Pointer unary(std::size_t depth)
    {
        count(depth);
        if (isSymbol("(") && !continuesExpression(m_tokens[here().partner + 1])) {
            expect("(");
            Pointer inner = disjunction(depth);
            expect(")");
            return inner;
        }
        if (take("!") || takeWord("NOT"))
            return nodeOf(PredicateNode::Kind::Not, unary(depth + 1));
        if (takeWord("NONE"))
            return nodeOf(PredicateNode::Kind::Not, comparison(depth + 1, PredicateNode::Modifier::Any));
        if (takeWord("TRUEPREDICATE"))
            return nodeOf(PredicateNode::Kind::True);
        if (takeWord("FALSEPREDICATE"))
            return nodeOf(PredicateNode::Kind::False);
        if (takeWord("ALL"))
            return comparison(depth, PredicateNode::Modifier::All);
        if (!takeWord("ANY"))
            (void)takeWord("SOME");
        return comparison(depth, PredicateNode::Modifier::Any);
    }

    /// Whether what stood before `token` in parentheses was a value rather than a condition.
    static bool continuesExpression(const Token &token)
    {
        if (token.kind == Token::Kind::Symbol)
            return token.source == ">"
                || (token.source.size() == 1 && std::string_view("+-*/").find(token.source) != std::string_view::npos)
                || std::any_of(symbolOperators.begin(), symbolOperators.end(),
                    [&](const OperatorName &entry) { return token.source == entry.name; });
        return std::any_of(wordOperators.begin(), wordOperators.end(),
            [&](const OperatorName &entry) { return isWord(token, entry.name); });
    }

    Pointer comparison(std::size_t depth, PredicateNode::Modifier modifier)
    {
        auto node = std::make_shared<PredicateNode>();
        node->kind = PredicateNode::Kind::Comparison;
        node->modifier = modifier;
        node->left = sum(depth + 1);
        node->test = readOperator();
        node->options = readOptions();
        const std::string_view written = m_tokens[m_place - 1].source;
        if (here().kind == Token::Kind::End)
            fail("Expected a value after \"" + std::string(written) + "\"");
        const std::size_t start = m_place;
        node->right = sum(depth + 1);
        if (std::string problem = settle(*node); !problem.empty()) {
            m_place = start;
            fail(std::move(problem));
        }
        return node;
    }

    Operator readOperator()
    {
        if (here().kind == Token::Kind::Symbol) {
            for (const OperatorName &entry : symbolOperators) {
                if (take(entry.name))
                    return entry.test;
            }
            if (take(">"))
                return Operator::Greater;
        }
        for (const OperatorName &entry : wordOperators) {
            if (takeWord(entry.name))
                return entry.test;
        }
        fail(here().kind == Token::Kind::End
                ? "Expected a comparison, such as == or CONTAINS"
                : "Expected a comparison instead of \"" + std::string(here().source) + "\"");
    }

    TextOptions readOptions()
    {
        TextOptions options;
        if (!take("["))
            return options;
        for (const char letter : here().kind == Token::Kind::Word ? here().text : std::string("?")) {
            if (letter == 'c')
                options.foldCase = true;
            else if (letter == 'd')
                options.foldMarks = true;
            else
                fail("Expected c or d in \"[...]\"");
        }
        ++m_place;
        expect("]");
        return options;
    }

    template <typename Next> Expression operation(std::size_t depth, std::string_view operators, Next next)
    {
        Expression left = next(depth);
        for (std::size_t steps = 0; here().kind == Token::Kind::Symbol && here().source.size() == 1
             && operators.find(here().source) != std::string_view::npos;) {
            count(depth);
            if (++steps > maximumPredicateDepth) // each step puts what was read so far one level deeper
                fail("The calculation is too long");
            Expression node{.kind = Expression::Kind::Arithmetic,
                .constant = {},
                .name = {},
                .relative = {},
                .arithmetic = here().source[0],
                .parts = {}};
            ++m_place;
            node.parts.push_back(std::move(left));
            node.parts.push_back(next(depth + 1));
            left = std::move(node);
        }
        return left;
    }
    Expression sum(std::size_t depth)
    {
        return operation(depth, "+-", [this](std::size_t inner) { return product(inner); });
    }
    Expression product(std::size_t depth)
    {
        return operation(depth, "*/", [this](std::size_t inner) { return primary(inner); });
    }

    Expression primary(std::size_t depth)
    {
        count(depth);
        const Token token = here();
        switch (token.kind) {
        case Token::Kind::Integer:
        case Token::Kind::Decimal:
            return number(false);
        case Token::Kind::Text:
            ++m_place;
            return constantOf(token.text);
        case Token::Kind::Variable:
            ++m_place;
            return named(Expression::Kind::Variable, token.text);
        case Token::Kind::Placeholder:
            return argument();
        case Token::Kind::Word:
            return word();
        case Token::Kind::Symbol:
            if (token.source == "-" && isNumber(m_tokens[m_place + 1])) {
                ++m_place;
                return number(true);
            }
            if (take("{"))
                return list(depth);
            if (take("(")) {
                Expression inner = sum(depth + 1);
                expect(")");
                return inner;
            }
            break;
        default:
            break;
        }
        fail(token.kind == Token::Kind::End ? "Expected a condition"
                                            : "Expected a value instead of \"" + std::string(token.source) + "\"");
    }

    Expression number(bool negative)
    {
        const std::string text = (negative ? "-" : "") + std::string(here().source);
        Expression result;
        std::from_chars_result read{};
        if (here().kind == Token::Kind::Integer) {
            std::int64_t value = 0;
            read = std::from_chars(text.data(), text.data() + text.size(), value);
            result = constantOf(value);
        } else {
            double value = 0;
            read = std::from_chars(text.data(), text.data() + text.size(), value);
            if (read.ec == std::errc::result_out_of_range && text.find("e-") == std::string::npos) {
                value = negative ? -HUGE_VAL : HUGE_VAL; // that is how infinity is written: 1e999
                read.ec = {};
            }
            result = constantOf(value);
        }
        if (read.ec != std::errc() || read.ptr != text.data() + text.size())
            fail("\"" + text + "\" is not a number");
        ++m_place;
        return result;
    }

    Expression argument()
    {
        if (m_nextArgument == m_arguments.size())
            fail("There is no argument for \"" + std::string(here().source) + "\"");
        Expression value = Expression::of(m_arguments[m_nextArgument++]);
        m_nodes += value.parts.size();
        if (here().text == "K") {
            const auto *path = std::get_if<std::string>(&value.constant);
            if (!path || !isKeyPath(*path))
                fail("The argument of %K is no key path");
            value = named(Expression::Kind::KeyPath, *path);
        }
        ++m_place;
        return value;
    }

    Expression list(std::size_t depth)
    {
        Expression items{.kind = Expression::Kind::List, .constant = {}, .name = {}, .relative = {}, .parts = {}};
        if (take("}"))
            return items;
        do {
            items.parts.push_back(primary(depth + 1));
            if (!items.parts.back().isConstant())
                fail("Expected a plain value in the list");
        } while (take(","));
        expect("}");
        return items;
    }

    Expression word()
    {
        const Token token = here();
        const bool call = m_place + 1 < m_tokens.size() && m_tokens[m_place + 1].source == "(";
        ++m_place;
        if (isWord(token, "YES") || isWord(token, "TRUE"))
            return constantOf(true);
        if (isWord(token, "NO") || isWord(token, "FALSE"))
            return constantOf(false);
        if (isWord(token, "NULL") || isWord(token, "NIL"))
            return constantOf({});
        if (isWord(token, "SELF"))
            return named(Expression::Kind::Self, {});
        if (call)
            return function(token);
        if (!isKeyPath(token.text)) {
            --m_place;
            fail("Expected a value instead of \"" + token.text + "\"");
        }
        return named(Expression::Kind::KeyPath, token.text);
    }

    Expression function(const Token &name)
    {
        expect("(");
        Expression result;
        if (isWord(name, "DATE")) {
            result = constantOf(instant());
        } else if (isWord(name, "OBJECT")) {
            const std::string entity = literal<std::string>("a name in quotes");
            expect(",");
            result = Expression::record(entity, literal<std::int64_t>("a whole number"));
        } else if (isWord(name, "BYTES")) {
            result = constantOf(bytes());
        } else if (isWord(name, "RELATIVE")) {
            result.kind = Expression::Kind::Relative;
            result.relative.timeIntervalSinceNow = literal<double>("a number with a point");
            expect(",");
            result.relative.timeIntervalSinceReferenceDate = literal<double>("a number with a point");
            expect(",");
            result.relative.dateUnits = static_cast<int>(literal<std::int64_t>("a whole number"));
            expect(",");
            result.relative.backward = literal<bool>("YES or NO");
        } else {
            --m_place;
            fail("There is no \"" + name.text + "(...)\"");
        }
        expect(")");
        return result;
    }

    /// A plain value of type T, of which `what` says what it is.
    template <typename T> T literal(std::string_view what)
    {
        Value value;
        const std::size_t start = m_place;
        if (const bool negative = isSymbol("-") && isNumber(m_tokens[m_place + 1]); negative || isNumber(here())) {
            m_place += negative ? 1 : 0;
            value = number(negative).constant;
        } else if (here().kind == Token::Kind::Text) {
            value = m_tokens[m_place++].text;
        } else if (isWord(here(), "YES") || isWord(here(), "NO")) {
            value = isWord(m_tokens[m_place++], "YES");
        }
        const T *found = std::get_if<T>(&value);
        if (!found) {
            m_place = start;
            fail("Expected " + std::string(what));
        }
        return *found;
    }

    Instant instant()
    {
        if (here().kind != Token::Kind::Text)
            return Instant{literal<double>("a date in quotes or its seconds since 1970, with a point")};
        const auto read = foundation::fromIso8601(here().text);
        if (!read)
            fail("\"" + here().text + "\" is not a date");
        ++m_place;
        return *read;
    }

    Bytes bytes()
    {
        const std::string text = literal<std::string>("hexadecimal digits in quotes");
        Bytes result;
        for (std::size_t i = 0; i < text.size(); i += 2) {
            unsigned value = 0;
            const std::size_t digits = std::min<std::size_t>(2, text.size() - i);
            if (std::from_chars(text.data() + i, text.data() + i + digits, value, 16).ptr != text.data() + i + 2)
                fail("Expected pairs of hexadecimal digits before this");
            result.push_back(static_cast<std::byte>(value));
        }
        return result;
    }

    static bool isNumber(const Token &token)
    {
        return token.kind == Token::Kind::Integer || token.kind == Token::Kind::Decimal;
    }

    const std::vector<Token> &m_tokens;
    std::span<const Argument> m_arguments;
    std::size_t m_place = 0;
    std::size_t m_nextArgument = 0;
    std::size_t m_nodes = 0;
};

} // namespace

tl::expected<Predicate, ParseError> Predicate::parse(std::string_view format, std::span<const Argument> arguments)
{
    const auto tokens = tokensOf(format);
    if (!tokens)
        return tl::unexpected(tokens.error());
    try {
        PredicateNode::Pointer root = Parser(*tokens, arguments).run();
        if (!sizeOf(*root).isWithinBounds())
            return tl::unexpected(ParseError{"The condition is nested too deeply or too long", 0});
        return Predicate(std::move(root));
    } catch (Stop &stop) {
        return tl::unexpected(std::move(stop.error));
    }
}

} // namespace objectstore
