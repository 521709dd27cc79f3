// SPDX-License-Identifier: GPL-3.0-or-later
// The text of a predicate. It is refused with a place and a sentence, or it is a tree that prints and archives as
// itself and gives the same answers in memory and in SQL.
#include "fuzz/bookcase.h"

namespace {

using namespace objectstore;

/// Two trees that differ only in a number that is none are the same here.
bool same(const Predicate &a, const Predicate &b)
{
    return a == b || archive(a) == archive(b);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static fuzz::Bookcase bookcase;
    static const std::vector<Argument> arguments{Value(std::string("Novel")), Value(std::int64_t{320}),
        std::vector<Value>{Value(std::string("a")), Value()}, Value(std::string("shelf.title"))};
    const std::string_view text(reinterpret_cast<const char *>(data), size);

    const auto parsed = Predicate::parse(text, arguments);
    if (!parsed) {
        fuzz::require(parsed.error().position <= text.size(), "a mistake has a place in the text", text);
        fuzz::require(!parsed.error().message.empty(), "a mistake has a sentence", text);
        return 0;
    }
    const std::string printed = parsed->text();
    const auto again = Predicate::parse(printed);
    fuzz::require(again.has_value(), "what is printed can be read", printed);
    fuzz::require(same(*again, *parsed), "what is printed reads as the same tree", printed);
    fuzz::require(again->text() == printed, "and prints as the same text", printed);
    const auto restored = fromArchive(archive(*parsed));
    fuzz::require(restored && same(*restored, *parsed), "what is archived is restored", printed);
    bookcase.ask(*parsed);
    return 0;
}
