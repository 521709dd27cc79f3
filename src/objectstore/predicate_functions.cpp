// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/predicate.h"

#include "objectstore/comparison.h"
#include "objectstore/text_folding.h"
#include "objectstore/text_test.h"

#include <sqlite3.h>

namespace objectstore {

namespace {

std::optional<std::string_view> textArgument(sqlite3_value *value)
{
    if (sqlite3_value_type(value) != SQLITE_TEXT)
        return std::nullopt;
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return bytes ? std::optional(std::string_view(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))))
                 : std::nullopt;
}

/// text_test(text, pattern, operator, options): 1 or 0. The prepared pattern is kept with the statement.
void textTest(sqlite3_context *context, int, sqlite3_value **arguments)
{
    const auto text = textArgument(arguments[0]);
    const auto pattern = textArgument(arguments[1]);
    if (!text || !pattern) {
        sqlite3_result_int(context, 0);
        return;
    }
    auto *test = static_cast<TextTest *>(sqlite3_get_auxdata(context, 1));
    std::unique_ptr<TextTest> made;
    if (!test) {
        made = std::make_unique<TextTest>(static_cast<Operator>(sqlite3_value_int(arguments[2])), *pattern,
            TextOptions::fromBits(sqlite3_value_int(arguments[3])));
        test = made.get();
    }
    sqlite3_result_int(context, test->matches(*text) ? 1 : 0);
    if (made)
        sqlite3_set_auxdata(context, 1, made.release(), [](void *kept) { delete static_cast<TextTest *>(kept); });
}

/// text_fold(value, options): text folded, anything else as it is.
void textFold(sqlite3_context *context, int, sqlite3_value **arguments)
{
    if (const auto text = textArgument(arguments[0])) {
        const std::string result = folded(*text, TextOptions::fromBits(sqlite3_value_int(arguments[1])));
        sqlite3_result_text64(context, result.data(), result.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } else {
        sqlite3_result_value(context, arguments[0]);
    }
}

} // namespace

void installPredicateFunctions(sqlite3 *connection)
{
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    sqlite3_create_function_v2(connection, "text_test", 4, flags, nullptr, textTest, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(connection, "text_fold", 2, flags, nullptr, textFold, nullptr, nullptr, nullptr);
}

} // namespace objectstore
