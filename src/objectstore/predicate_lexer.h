// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate.h"

#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

/// A word of a predicate's text.
struct Token {
    enum class Kind { End, Symbol, Word, Integer, Decimal, Text, Variable, Placeholder };

    Kind kind = Kind::End;
    std::string_view source; ///< as it stands in the text
    std::string text; ///< Text: without quotes and escapes; Word and Variable: the name
    std::size_t position = 0; ///< in bytes
    std::size_t partner = 0; ///< for "(" the number of the token that closes it
};

/// Takes text apart into tokens, the last of which is End.
[[nodiscard]] tl::expected<std::vector<Token>, ParseError> tokensOf(std::string_view text);

/// Whether text reads `path` as a key path and `name` as the name of a variable.
[[nodiscard]] bool isKeyPath(std::string_view path);
[[nodiscard]] bool isVariableName(std::string_view name);

/// Whether `token` is the word `name`, whatever its case.
[[nodiscard]] bool isWord(const Token &token, std::string_view name);

} // namespace objectstore
