// SPDX-License-Identifier: GPL-3.0-or-later
// The bytes of an archived predicate. They are refused, or make a tree within its bounds that archives and prints as
// itself, can be asked of any object, and becomes rows of the smart folders' editor and a predicate again.
#include "fuzz/bookcase.h"
#include "objectstore/predicate_node.h"
#include "viewcontrollers/smart_criteria.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace objectstore;
    static fuzz::Bookcase bookcase;

    const auto restored = fromArchive(std::as_bytes(std::span(data, size)));
    if (!restored) {
        fuzz::require(!restored.error().message.empty(), "a refusal is a sentence");
        return 0;
    }
    const std::string printed = restored->text();
    fuzz::require(sizeOf(restored->root()).isWithinBounds(), "a tree is within its bounds", printed);
    const Bytes archived = archive(*restored);
    const auto again = fromArchive(archived);
    fuzz::require(again && archive(*again) == archived, "what is restored can be archived", printed);
    const auto parsed = Predicate::parse(printed);
    fuzz::require(parsed && archive(*parsed) == archived, "what is restored can be printed and read", printed);
    const auto rows = viewcontrollers::criteriaOf(*restored);
    fuzz::require(viewcontrollers::rowCount(rows) > 0, "an editor shows at least its heading", printed);
    fuzz::require(!viewcontrollers::predicateOf(rows, {1795510800}).text().empty(), "rows say something", printed);
    bookcase.ask(*restored);
    return 0;
}
