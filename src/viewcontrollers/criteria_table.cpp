// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/criteria_table.h"

#include <array>

namespace viewcontrollers {

namespace {

using objectstore::Operator;
using Test = CriterionTest;
using Kind = OperandKind;

constexpr std::array textTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "contains"), Kind::Text, Operator::Contains},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "does not contain"), Kind::Text, Operator::Contains, true},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Text, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not"), Kind::Text, Operator::NotEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "begins with"), Kind::Text, Operator::BeginsWith},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "ends with"), Kind::Text, Operator::EndsWith},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is empty"),
        .operand = Kind::None,
        .format = "%K == nil OR %K == ''"},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is not empty"),
        .operand = Kind::None,
        .format = "NOT (%K == nil OR %K == '')"},
};

constexpr std::array tagTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "include"), Kind::Title, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "do not include"), Kind::Title, Operator::Equal, true},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "include one with"), Kind::Text, Operator::Contains},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "include none with"), Kind::Text, Operator::Contains, true},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "are set"), .operand = Kind::None, .format = "tags.@count > 0"},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "are not set"),
        .operand = Kind::None,
        .format = "tags.@count == 0"},
};

constexpr std::array recordTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Title, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not"), Kind::Title, Operator::NotEqual},
};

constexpr std::array priorityTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Number, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not"), Kind::Number, Operator::NotEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at least"), Kind::Number, Operator::GreaterOrEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at most"), Kind::Number, Operator::LessOrEqual},
};

constexpr std::array flagTests{Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Flag, Operator::Equal}};

constexpr std::array dateTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at most … from now"), Kind::Span, Operator::LessOrEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is more than … from now"), Kind::Span, Operator::Greater},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at most … ago"), Kind::Span, Operator::GreaterOrEqual, false, true},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is more than … ago"), Kind::Span, Operator::Less, false, true},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is on"), Kind::Day, Operator::Between},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is before"), Kind::Day, Operator::Less},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is after"), Kind::Day, Operator::Greater},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not after"), Kind::Day, Operator::LessOrEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not before"), Kind::Day, Operator::GreaterOrEqual},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is set"), .operand = Kind::None, .format = "%K != nil"},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is not set"), .operand = Kind::None, .format = "%K == nil"},
};

constexpr std::array lengthTests{
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at most"), Kind::Minutes, Operator::LessOrEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at least"), Kind::Minutes, Operator::GreaterOrEqual},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is set"), .operand = Kind::None, .format = "%K != 0"},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is not set"), .operand = Kind::None, .format = "%K == 0"},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Minutes, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not"), Kind::Minutes, Operator::NotEqual},
};

constexpr std::array reminderTests{
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is set"), .operand = Kind::None, .format = "%K != 0"},
    Test{.text = QT_TRANSLATE_NOOP("SmartFolderEditor", "is not set"), .operand = Kind::None, .format = "%K == 0"},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is"), Kind::Number, Operator::Equal},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is not"), Kind::Number, Operator::NotEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at least"), Kind::Number, Operator::GreaterOrEqual},
    Test{QT_TRANSLATE_NOOP("SmartFolderEditor", "is at most"), Kind::Number, Operator::LessOrEqual},
};

constexpr std::array<CriterionDescription, 16> table{{
    {Criterion::Title, QT_TRANSLATE_NOOP("SmartFolderEditor", "Title"), "title", textTests},
    {Criterion::Notes, QT_TRANSLATE_NOOP("SmartFolderEditor", "Notes"), "notes", textTests},
    {Criterion::Tags, QT_TRANSLATE_NOOP("SmartFolderEditor", "Tags"), "tags.title", tagTests},
    {Criterion::Folder, QT_TRANSLATE_NOOP("SmartFolderEditor", "Folder"), "folders.title", recordTests},
    {Criterion::Context, QT_TRANSLATE_NOOP("SmartFolderEditor", "Context"), "contexts.title", recordTests},
    {Criterion::State, QT_TRANSLATE_NOOP("SmartFolderEditor", "State"), "states.state", recordTests},
    {Criterion::Priority, QT_TRANSLATE_NOOP("SmartFolderEditor", "Priority"), "priorities.priority", priorityTests},
    {Criterion::Star, QT_TRANSLATE_NOOP("SmartFolderEditor", "Star"), "star", flagTests},
    {Criterion::Complete, QT_TRANSLATE_NOOP("SmartFolderEditor", "Complete"), "complete", flagTests},
    {Criterion::Due, QT_TRANSLATE_NOOP("SmartFolderEditor", "Due date"), "dueDate", dateTests},
    {Criterion::Start, QT_TRANSLATE_NOOP("SmartFolderEditor", "Start date"), "startDate", dateTests},
    {Criterion::Created, QT_TRANSLATE_NOOP("SmartFolderEditor", "Created"), "creationDate", dateTests},
    {Criterion::Modified, QT_TRANSLATE_NOOP("SmartFolderEditor", "Modified"), "modifiedDate", dateTests},
    {Criterion::Completed, QT_TRANSLATE_NOOP("SmartFolderEditor", "Completed on"), "completedDate", dateTests},
    {Criterion::Length, QT_TRANSLATE_NOOP("SmartFolderEditor", "Length"), "length", lengthTests},
    {Criterion::Reminder, QT_TRANSLATE_NOOP("SmartFolderEditor", "Reminder"), "reminder", reminderTests},
}};

constexpr std::array<ReadyMadeFolder, 6> readyMade{{
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Next actions"), "states.state == 'Next Action' AND complete == NO"},
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Waiting"), "states.state == 'Waiting' AND complete == NO"},
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Due this week"),
        "dueDate <= RELATIVE(604800.0, 604800.0, 1, NO) AND complete == NO"},
    // a date without a time is the midnight that begins its day, and is not overdue before the day is over
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Overdue"),
        "dueDate < RELATIVE(-86400.0, -86400.0, 0, YES) AND complete == NO"},
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Starred"), "star == YES"},
    {QT_TRANSLATE_NOOP("SmartFolderEditor", "Recently completed"),
        "complete == YES AND completedDate >= RELATIVE(-604800.0, -604800.0, 1, YES)"},
}};

} // namespace

std::span<const CriterionDescription> criteria()
{
    return table;
}

const CriterionDescription &describe(Criterion criterion)
{
    return table[static_cast<std::size_t>(criterion)];
}

std::span<const ReadyMadeFolder> readyMadeFolders()
{
    return readyMade;
}

} // namespace viewcontrollers
