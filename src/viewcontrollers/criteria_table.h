// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/predicate_node.h"

#include <QCoreApplication>
#include <span>
#include <string_view>

namespace viewcontrollers {

/// What a smart folder can ask of a task, in the order of the editor's menu.
enum class Criterion {
    Title,
    Notes,
    Tags,
    Folder,
    Context,
    State,
    Priority,
    Star,
    Complete,
    Due,
    Start,
    Created,
    Modified,
    Completed,
    Length,
    Reminder
};

/// What stands at the end of a row.
enum class OperandKind {
    None,
    Text,
    Title, ///< of a record: text that is picked from a list
    Number, ///< picked from a list
    Flag,
    Minutes,
    Day,
    Span ///< a number of days, weeks or months from now
};

/// A way to compare, as one line of a row's second menu.
struct CriterionTest {
    const char *text;
    OperandKind operand;
    objectstore::Operator test = objectstore::Operator::Equal;
    bool isNegated = false;
    bool isBackward = false; ///< a span that leads into the past
    const char *format = nullptr; ///< the whole question where there is no operand; `%K` is the key path
};

/// One line of a row's first menu.
struct CriterionDescription {
    Criterion criterion;
    const char *text;
    std::string_view keyPath;
    std::span<const CriterionTest> tests;
};

/// All criteria, each at the place of its number. Their texts are translated in the context "SmartFolderEditor".
[[nodiscard]] std::span<const CriterionDescription> criteria();
[[nodiscard]] const CriterionDescription &describe(Criterion criterion);

/// A smart folder that the editor offers ready-made.
struct ReadyMadeFolder {
    const char *title;
    const char *format; ///< its relative dates count from the reference date
};
[[nodiscard]] std::span<const ReadyMadeFolder> readyMadeFolders();

} // namespace viewcontrollers
