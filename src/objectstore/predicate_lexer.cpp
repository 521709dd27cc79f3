// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate_lexer.h"

#include "objectstore/predicate_node.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace objectstore {

namespace {

constexpr std::size_t maximumTokens = 16 * maximumPredicateNodes; // what takes most to say is a relative date
constexpr std::array<std::string_view, 16> reservedWords{"ALL", "AND", "ANY", "FALSE", "FALSEPREDICATE", "NIL", "NO",
    "NONE", "NOT", "NULL", "OR", "SELF", "SOME", "TRUE", "TRUEPREDICATE", "YES"};
constexpr std::array<std::string_view, 9> longSymbols{"==", "!=", "<>", "<=", "=<", ">=", "=>", "&&", "||"};
constexpr std::string_view shortSymbols = "=<>!()+-*/{},[]";

bool startsName(char letter)
{
    return std::isalpha(static_cast<unsigned char>(letter)) || letter == '_' || letter == '@' || (letter & 0x80) != 0;
}
bool continuesName(char letter)
{
    return startsName(letter) || std::isdigit(static_cast<unsigned char>(letter)) || letter == '.';
}
bool isDigit(char letter)
{
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

class Lexer
{
public:
    explicit Lexer(std::string_view text) : m_text(text) { }

    tl::expected<std::vector<Token>, ParseError> run()
    {
        std::vector<std::size_t> open;
        m_tokens.reserve(32); // what most conditions take
        while (true) {
            while (m_place < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_place])))
                ++m_place;
            Token token;
            token.position = m_place;
            if (m_place < m_text.size()) {
                if (std::string problem = read(token); !problem.empty())
                    return tl::unexpected(ParseError{std::move(problem), token.position});
            }
            token.source = m_text.substr(token.position, m_place - token.position);
            if (token.source == "(") {
                open.push_back(m_tokens.size());
            } else if (token.source == ")" && !open.empty()) {
                m_tokens[open.back()].partner = m_tokens.size();
                open.pop_back();
            }
            m_tokens.push_back(std::move(token));
            if (m_tokens.back().kind == Token::Kind::End)
                break;
            if (m_tokens.size() > maximumTokens)
                return tl::unexpected(ParseError{"The condition is too long", m_place});
        }
        if (!open.empty())
            return tl::unexpected(ParseError{"A \"(\" is never closed", m_tokens[open.back()].position});
        return std::move(m_tokens);
    }

private:
    /// Reads one token; returns what is wrong with it.
    std::string read(Token &token)
    {
        const char letter = m_text[m_place];
        if (letter == '"' || letter == '\'')
            return readText(token, letter);
        if (isDigit(letter) || (letter == '.' && m_place + 1 < m_text.size() && isDigit(m_text[m_place + 1]))) {
            readNumber(token);
        } else if (letter == '$' || letter == '%') {
            ++m_place;
            token.kind = letter == '$' ? Token::Kind::Variable : Token::Kind::Placeholder;
            const std::size_t start = m_place;
            if (letter == '%')
                m_place = std::min(m_place + 1, m_text.size());
            else
                skipName();
            token.text = m_text.substr(start, m_place - start);
            if (token.text.empty()
                || (letter == '%' && std::string_view("@idfK").find(token.text[0]) == std::string_view::npos))
                return "There is no name after " + std::string{'"', letter, '"'};
        } else if (startsName(letter)) {
            token.kind = Token::Kind::Word;
            skipName();
            token.text = m_text.substr(token.position, m_place - token.position);
        } else {
            token.kind = Token::Kind::Symbol;
            const auto fits = [this](std::string_view symbol) { return m_text.substr(m_place).starts_with(symbol); };
            const auto found = std::find_if(longSymbols.begin(), longSymbols.end(), fits);
            if (found == longSymbols.end() && shortSymbols.find(letter) == std::string_view::npos)
                return std::string{'"', letter, '"'}.append(" cannot stand here");
            m_place += found == longSymbols.end() ? 1 : found->size();
        }
        return {};
    }

    void skipName()
    {
        while (m_place < m_text.size() && continuesName(m_text[m_place]))
            ++m_place;
    }

    void readNumber(Token &token)
    {
        token.kind = Token::Kind::Integer;
        while (m_place < m_text.size()) {
            const char letter = m_text[m_place];
            const bool exponent = letter == 'e' || letter == 'E';
            if (letter == '.' || exponent)
                token.kind = Token::Kind::Decimal;
            else if (!isDigit(letter))
                break;
            ++m_place;
            if (exponent && m_place < m_text.size() && (m_text[m_place] == '-' || m_text[m_place] == '+'))
                ++m_place;
        }
    }

    std::string readText(Token &token, char quote)
    {
        token.kind = Token::Kind::Text;
        for (++m_place; m_place < m_text.size(); ++m_place) {
            char letter = m_text[m_place];
            if (letter == quote) {
                ++m_place;
                return {};
            }
            if (letter == '\\' && m_place + 1 < m_text.size()) {
                letter = m_text[++m_place];
                letter = letter == 'n' ? '\n' : letter == 't' ? '\t' : letter;
            }
            token.text += letter;
        }
        return "The text is never closed";
    }

    std::string_view m_text;
    std::size_t m_place = 0;
    std::vector<Token> m_tokens;
};

} // namespace

tl::expected<std::vector<Token>, ParseError> tokensOf(std::string_view text)
{
    return Lexer(text).run();
}

bool isVariableName(std::string_view name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), continuesName);
}

bool isKeyPath(std::string_view path)
{
    const Token token{.kind = Token::Kind::Word, .source = path, .text = std::string(path)};
    return isVariableName(path) && startsName(path[0])
        && std::none_of(reservedWords.begin(), reservedWords.end(),
            [&token](std::string_view word) { return isWord(token, word); });
}

bool isWord(const Token &token, std::string_view name)
{
    return token.kind == Token::Kind::Word
        && std::equal(token.text.begin(), token.text.end(), name.begin(), name.end(),
            [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
}

} // namespace objectstore
