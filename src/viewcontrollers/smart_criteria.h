// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"
#include "objectstore/predicate.h"
#include "viewcontrollers/criteria_table.h"

#include <optional>
#include <variant>
#include <vector>

namespace viewcontrollers {

/// A number of days, weeks or months; the test says whether from now or ago.
struct DateSpan {
    std::int64_t number = 1;
    int unit = 0; ///< as in a relative date

    friend bool operator==(const DateSpan &, const DateSpan &) = default;
};

/// What a row compares with; which kind it is follows from the row's test.
using Operand = std::variant<std::monostate, std::string, std::int64_t, bool, foundation::Instant, DateSpan>;

/// One row of the editor: "Title contains milk".
struct CriterionRow {
    Criterion criterion = Criterion::Title;
    std::size_t test = 0; ///< the place among the tests of the criterion
    Operand operand;
    objectstore::TextOptions options; ///< of a text that is typed

    [[nodiscard]] const CriterionTest &description() const { return describe(criterion).tests[test]; }
};

struct CriteriaItem;

/// Rows of which all, any or none must hold. Without rows, it says what no rows say: all hold, none does.
struct CriteriaGroup {
    enum class Kind { All, Any, None };

    Kind kind = Kind::All;
    std::vector<CriteriaItem> items;
};

/// A row, a group within a group, or a condition that has no row and is kept as it is.
struct CriteriaItem {
    std::variant<CriterionRow, CriteriaGroup, objectstore::Predicate> content;
};

/// A row as it is first shown, with the operand that its test wants.
[[nodiscard]] CriterionRow newRow(Criterion criterion, foundation::Instant now);
/// `row` with another test. What was to be compared with stays where the test takes it.
[[nodiscard]] CriterionRow withTest(CriterionRow row, std::size_t test, foundation::Instant now);

/// The predicate that the rows say; its relative dates count from `now`. A condition that was kept is left alone.
[[nodiscard]] objectstore::Predicate predicateOf(const CriteriaGroup &group, foundation::Instant now);

/// The rows that say `predicate`: the way back of `predicateOf`, for whatever predicate. What no rows can say, and what
/// would take more rows or deeper groups than a person can read, becomes a condition that is kept.
[[nodiscard]] CriteriaGroup criteriaOf(const objectstore::Predicate &predicate);

/// How many rows stand below one another when the group is shown, its own heading included.
[[nodiscard]] std::size_t rowCount(const CriteriaGroup &group);

} // namespace viewcontrollers
