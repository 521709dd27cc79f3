// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever rows a person can put together: they come back from the store as they were, and find what they say.
#include "viewcontrollers/smart_criteria.h"

#include "model/smart_folder.h"
#include "support/test_application.h"
#include "viewcontrollers/criterion_choices.h"
#include "viewcontrollers/task_cells.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck.h>

using foundation::Instant;
using objectstore::Predicate;
using support::at;
using support::aTask;
using namespace viewcontrollers;

namespace {

const Instant now = at("2026-03-31 10:00");

int draw(int below)
{
    return *rc::gen::inRange(0, below);
}
template <class T> T oneOf(const std::vector<T> &choices)
{
    return choices[static_cast<std::size_t>(draw(static_cast<int>(choices.size())))];
}

const std::vector<std::string> words{"", "a", "A", "Milk", "milk", "buy MILK", "it's \"a\"", "Zo\xc3\xab", "%K"};
const std::vector<std::int64_t> numbers{0, 15, 30, 60, 1440, -1, 3};
const std::vector<std::string> dates{"2026-03-31 10:00", "2026-03-31", "2026-03-30 23:59", "2026-04-01", "2026-02-28",
    "2026-04-30 10:00", "2026-04-07 10:00", "2026-03-24 10:00", "2026-03-24 09:59", "2026-02-28 10:00", "2025-12-31"};

std::vector<Operand> operandsOf(OperandKind kind)
{
    std::vector<Operand> operands;
    switch (kind) {
    case OperandKind::None:
        return {Operand()};
    case OperandKind::Text:
    case OperandKind::Title:
        return {words.begin(), words.end()};
    case OperandKind::Number:
    case OperandKind::Minutes:
        return {numbers.begin(), numbers.end()};
    case OperandKind::Flag:
        return {true, false};
    case OperandKind::Day:
        std::transform(
            dates.begin(), dates.end(), std::back_inserter(operands), [](const auto &date) { return at(date); });
        return operands;
    case OperandKind::Span:
        for (const std::int64_t number : {0, 1, 2}) {
            for (const int unit : {0, 1, 2})
                operands.emplace_back(DateSpan{number, unit});
        }
    }
    return operands;
}

CriterionRow drawRow()
{
    const CriterionDescription &criterion = criteria()[static_cast<std::size_t>(draw(16))];
    CriterionRow row{.criterion = criterion.criterion,
        .test = static_cast<std::size_t>(draw(static_cast<int>(criterion.tests.size()))),
        .operand = {},
        .options = {}};
    row.operand = oneOf(operandsOf(row.description().operand));
    if (row.description().operand == OperandKind::Text)
        row.options.foldCase = draw(2) == 0;
    return row;
}

CriteriaGroup drawGroup(int depth)
{
    CriteriaGroup group{.kind = static_cast<CriteriaGroup::Kind>(draw(3)), .items = {}};
    for (int count = 1 + draw(3); count > 0; --count) {
        if (depth > 0 && draw(3) == 0)
            group.items.push_back({drawGroup(depth - 1)});
        else
            group.items.push_back({drawRow()});
    }
    return group;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
    return text;
}

/// The text that a row looks at; nothing where the task has none.
std::optional<std::string> textOf(const model::Tasks &task, std::string_view attribute)
{
    const objectstore::ValueView value = task.value(attribute);
    return objectstore::isNil(value) ? std::nullopt : std::optional(std::string(objectstore::toText(value)));
}

bool textAnswers(std::optional<std::string> text, std::string wanted, const std::string &test, bool foldCase)
{
    if (test.starts_with("is empty") || test == "is not empty")
        return text.value_or("").empty() == (test == "is empty");
    if (foldCase) {
        text = text ? std::optional(lower(*text)) : std::nullopt;
        wanted = lower(wanted);
    }
    if (test == "is")
        return text == wanted;
    if (test == "is not")
        return text != wanted;
    if (test == "begins with")
        return text && text->starts_with(wanted);
    if (test == "ends with")
        return text && text->ends_with(wanted);
    const bool contains = text && text->find(wanted) != std::string::npos;
    return test == "contains" ? contains : !contains;
}

bool tagsAnswer(const model::Tasks &task, const CriterionRow &row, const std::string &test)
{
    if (test == "are set" || test == "are not set")
        return task.tags().empty() == (test == "are not set");
    const bool isWhole = test == "include" || test == "do not include";
    const bool found = std::any_of(task.tags().begin(), task.tags().end(), [&](const objectstore::ManagedObject *tag) {
        return textAnswers(std::string(tag->text("title")), std::get<std::string>(row.operand),
            isWhole ? "is" : "contains", row.options.foldCase);
    });
    return found == (test == "include" || test == "include one with");
}

bool numberAnswers(std::int64_t number, const Operand &operand, const std::string &test)
{
    if (test == "is set" || test == "is not set")
        return (number != 0) == (test == "is set");
    const std::int64_t wanted = std::get<std::int64_t>(operand);
    return test == "is"         ? number == wanted
        : test == "is not"      ? number != wanted
        : test == "is at least" ? number >= wanted
                                : number <= wanted;
}

QDateTime spanEnd(const DateSpan &span, int direction)
{
    const int number = static_cast<int>(span.number) * direction;
    const QDateTime start = toDateTime(now);
    return span.unit == 0 ? start.addDays(number)
        : span.unit == 1  ? start.addDays(7 * number)
                          : start.addMonths(number);
}

bool dateAnswers(std::optional<Instant> date, const Operand &operand, const std::string &test)
{
    if (test == "is set" || test == "is not set")
        return date.has_value() == (test == "is set");
    if (!date)
        return false;
    const QDateTime asked = toDateTime(*date);
    if (const auto *span = std::get_if<DateSpan>(&operand)) {
        const QDateTime end = spanEnd(*span, test.ends_with("ago") ? -1 : 1);
        return test == "is at most … from now"  ? asked <= end
            : test == "is more than … from now" ? asked > end
            : test == "is at most … ago"        ? asked >= end
                                                : asked < end;
    }
    const QDateTime day = toDateTime(std::get<Instant>(operand));
    return test == "is on"       ? asked.date() == day.date()
        : test == "is before"    ? asked < day
        : test == "is after"     ? asked > day
        : test == "is not after" ? asked <= day
                                 : asked >= day;
}

std::string titleOf(const objectstore::ManagedObject *record, std::string_view attribute)
{
    return record ? std::string(record->text(attribute)) : "no record";
}

/// What the row says in words, asked of one task without predicates.
bool answers(const model::Tasks &task, const CriterionRow &row)
{
    const std::string test = row.description().text;
    const auto isTitled
        = [&](const std::string &title) { return (title == std::get<std::string>(row.operand)) == (test == "is"); };
    switch (row.criterion) {
    case Criterion::Title:
    case Criterion::Notes: {
        const auto *wanted = std::get_if<std::string>(&row.operand);
        return textAnswers(textOf(task, row.criterion == Criterion::Title ? "title" : "notes"),
            wanted ? *wanted : std::string(), test, row.options.foldCase);
    }
    case Criterion::Tags:
        return tagsAnswer(task, row, test);
    case Criterion::Folder:
        return isTitled(titleOf(task.folders(), "title"));
    case Criterion::Context:
        return isTitled(titleOf(task.contexts(), "title"));
    case Criterion::State:
        return isTitled(titleOf(task.states(), "state"));
    case Criterion::Priority:
        return numberAnswers(task.priorities()->priority(), row.operand, test);
    case Criterion::Star:
        return task.star() == std::get<bool>(row.operand);
    case Criterion::Complete:
        return task.complete() == std::get<bool>(row.operand);
    case Criterion::Due:
        return dateAnswers(task.dueDate(), row.operand, test);
    case Criterion::Start:
        return dateAnswers(task.startDate(), row.operand, test);
    case Criterion::Created:
        return dateAnswers(task.creationDate(), row.operand, test);
    case Criterion::Modified:
        return dateAnswers(task.modifiedDate(), row.operand, test);
    case Criterion::Completed:
        return dateAnswers(task.completedDate(), row.operand, test);
    case Criterion::Length:
        return numberAnswers(task.length(), row.operand, test);
    case Criterion::Reminder:
        return numberAnswers(task.reminder(), row.operand, test);
    }
    return false;
}

bool answers(const model::Tasks &task, const CriteriaGroup &group)
{
    const auto holds = [&task](const CriteriaItem &item) {
        const auto *inner = std::get_if<CriteriaGroup>(&item.content);
        return inner ? answers(task, *inner) : answers(task, std::get<CriterionRow>(item.content));
    };
    switch (group.kind) {
    case CriteriaGroup::Kind::All:
        return std::all_of(group.items.begin(), group.items.end(), holds);
    case CriteriaGroup::Kind::Any:
        return std::any_of(group.items.begin(), group.items.end(), holds);
    case CriteriaGroup::Kind::None:
        break;
    }
    return std::none_of(group.items.begin(), group.items.end(), holds);
}

/// Tasks that differ in all that rows look at.
void addTasks(support::TestApplication &application)
{
    for (std::size_t number = 0; number < 36; ++number) {
        const auto pick
            = [number](const auto &choices, std::size_t step) { return choices[number * step % choices.size()]; };
        auto builder = aTask().ofPriority(static_cast<int>(number % 7) - 1);
        if (number % 3 != 0)
            builder.noted(pick(words, 2));
        if (number % 4 == 1)
            builder.tagged(pick(words, 1));
        if (number % 8 == 1)
            builder.tagged("milk shop");
        if (number % 5 != 0)
            builder.in(pick(words, 5)).doneAt(pick(words, 7));
        if (number % 2 == 0)
            builder.due(pick(dates, 1));
        if (number % 3 == 0)
            builder.starting(pick(dates, 2));
        if (number % 6 == 0)
            builder.completed(pick(dates, 5));
        if (number % 7 == 0)
            builder.starred();
        model::Tasks &task = application.add(builder.titled(pick(words, 4)));
        task.setCreationDate(at(pick(dates, 4)));
        task.setModifiedDate(at(pick(dates, 7)));
        task.setLength(pick(numbers, 3));
        task.setReminder(pick(numbers, 2));
    }
    application.add(aTask()).setValue("title", objectstore::Value());
    application.delegate().saveAction();
}

CriteriaGroup readBack(const Predicate &predicate)
{
    return criteriaOf(*objectstore::fromArchive(objectstore::archive(predicate)));
}

bool isWhollyInRows(const CriteriaGroup &group)
{
    return std::all_of(group.items.begin(), group.items.end(), [](const CriteriaItem &item) {
        const auto *inner = std::get_if<CriteriaGroup>(&item.content);
        return inner ? isWhollyInRows(*inner) : std::holds_alternative<CriterionRow>(item.content);
    });
}

} // namespace

TEST(SmartCriteria, eachRowFindsWhatItSays)
{
    support::TestApplication application;
    addTasks(application);
    const auto everyTask = application.moc().fetch(model::everyTask());
    const auto check = [&](const CriterionRow &row) {
        const Predicate predicate = predicateOf({.items = {{row}}}, now);
        const auto found = application.moc().fetch({.entity = "Tasks", .predicate = predicate, .sortDescriptors = {}});
        std::vector<objectstore::ManagedObject *> expected;
        std::copy_if(everyTask->begin(), everyTask->end(), std::back_inserter(expected),
            [&](const auto *task) { return answers(*model::as<model::Tasks>(task), row); });
        EXPECT_TRUE(found == expected) << predicate.text();
        EXPECT_EQ(predicateOf(readBack(predicate), now), predicate);
    };
    for (const CriterionDescription &criterion : criteria()) {
        for (std::size_t test = 0; test < criterion.tests.size(); ++test) {
            for (const Operand &operand : operandsOf(criterion.tests[test].operand)) {
                check({.criterion = criterion.criterion, .test = test, .operand = operand, .options = {}});
                if (criterion.tests[test].operand == OperandKind::Text)
                    check({.criterion = criterion.criterion,
                        .test = test,
                        .operand = operand,
                        .options = {.foldCase = true}});
            }
        }
    }
}

TEST(SmartCriteria, comeBackFromTheStoreAndFindWhatTheySay)
{
    support::TestApplication application; // one for all draws: to fill a store costs more than to ask it
    addTasks(application);
    EXPECT_TRUE(rc::check([&] {
        const CriteriaGroup rows = drawGroup(2);
        auto &folder = model::insert<model::SmartFolder>(application.moc());
        folder.setPredicate(predicateOf(rows, now));
        application.delegate().saveAction();

        const auto stored = folder.predicate();
        RC_ASSERT(stored);
        const CriteriaGroup shown = criteriaOf(*stored);
        RC_ASSERT(isWhollyInRows(shown));
        RC_ASSERT(predicateOf(shown, now) == *stored);

        std::vector<objectstore::ManagedObject *> expected;
        const auto everyTask = application.moc().fetch(model::everyTask());
        for (objectstore::ManagedObject *task : *everyTask) {
            RC_ASSERT(answers(*model::as<model::Tasks>(task), rows) == answers(*model::as<model::Tasks>(task), shown));
            if (answers(*model::as<model::Tasks>(task), rows))
                expected.push_back(task);
        }
        RC_LOG() << stored->text();
        RC_ASSERT(folder.tasks(application.user) == expected);
        application.moc().remove(folder);
    }));
}

TEST(SmartCriteria, keepWhatNoRowCanSayAndSaveItUnchanged)
{
    for (const char *text : {"TRUEPREDICATE", "title MATCHES 'a+'", "folders.archived == YES", "star == 2",
             "star != YES", "title == nil", "length > 15", "dueDate < $NOW", "NOT star == YES AND repeat == 1",
             "ALL tags.title CONTAINS 'x'", "dueDate BETWEEN {nil, nil}", "title IN {'a', 'b'}", "dueDate > startDate",
             "priorities.priority + 1 > 2", "dueDate <= RELATIVE(60.0, 0.0, 9, NO)",
             "(title CONTAINS 'a' OR (star == YES AND NOT (length == 3 OR notes LIKE 'b*')))",
             "NOT NOT NOT (star == YES)", "title CONTAINS[d] 'a'", "folders.title ==[c] 'home'"}) {
        const auto predicate = Predicate::parse(text);
        ASSERT_TRUE(predicate) << text;
        EXPECT_EQ(predicateOf(readBack(*predicate), now), *predicate) << text;
    }
    EXPECT_FALSE(isWhollyInRows(readBack(Predicate::format("title MATCHES 'a+'"))));
    EXPECT_FALSE(isWhollyInRows(readBack(Predicate::format("star == 2"))));
}

TEST(SmartCriteria, keepWhatNobodyCouldReadAsRowsUnchanged)
{
    Predicate deep = Predicate::format("star == YES");
    for (int depth = 0; depth < 40; ++depth)
        deep = depth % 2 == 0 ? Predicate::conjunction({deep, Predicate::format("complete == NO")})
                              : Predicate::disjunction({Predicate::negation(deep), Predicate::format("length > 3")});
    const auto many = [](std::size_t count) {
        return Predicate::disjunction(std::vector(count, Predicate::format("title CONTAINS 'a'")));
    };
    for (const Predicate &predicate : {deep, many(1300)}) {
        EXPECT_EQ(predicateOf(readBack(predicate), now), predicate);
        EXPECT_LT(rowCount(readBack(predicate)), 60U);
    }
    EXPECT_EQ(rowCount(readBack(many(150))), 151U);
}

TEST(SmartCriteria, showTheNumbersOneAndZeroAsYesAndNo)
{
    const CriteriaGroup group = readBack(Predicate::format("complete == 1 AND star == 0"));
    ASSERT_TRUE(isWhollyInRows(group));
    EXPECT_EQ(predicateOf(group, now), Predicate::format("complete == YES AND star == NO"));
}

TEST(SmartCriteria, countRelativeDatesFromTheMomentTheyAreMadeAt)
{
    CriterionRow row = newRow(Criterion::Due, now);
    row.operand = DateSpan{3, 1};
    const CriteriaGroup later = readBack(predicateOf({.items = {{row}}}, now));
    EXPECT_EQ(std::get<CriterionRow>(later.items.front().content).operand, Operand(DateSpan{3, 1}));
    EXPECT_EQ(predicateOf(later, at("2026-03-01 10:00")), predicateOf({.items = {{row}}}, at("2026-03-01 10:00")));
}

TEST(SmartCriteria, keepTheOperandThatAnotherTestTakesToo)
{
    CriterionRow row = newRow(Criterion::Title, now);
    row.operand = std::string("milk");
    EXPECT_EQ(withTest(row, 3, now).operand, Operand(std::string("milk")));
    EXPECT_EQ(withTest(row, 6, now).operand, Operand());
    EXPECT_EQ(withTest(withTest(row, 6, now), 0, now).operand, Operand(std::string()));
}

TEST(SmartCriteria, offerReadyMadeFoldersThatFindWhatTheirNamesSay)
{
    support::TestApplication application;
    application.add(aTask().titled("next").inState("Next Action").due("2026-04-07 09:00"));
    application.add(aTask().titled("waiting").inState("Waiting").due("2026-03-31"));
    application.add(aTask().titled("late").due("2026-03-30").starred());
    application.add(aTask().titled("done").inState("Waiting").due("2026-03-30").completed("2026-03-29"));
    application.add(aTask().titled("done long ago").completed("2026-03-20"));
    const std::vector<std::pair<std::string, std::string>> expected{{"Next actions", "next"}, {"Waiting", "waiting"},
        {"Due this week", "next waiting late"}, {"Overdue", "late"}, {"Starred", "late"},
        {"Recently completed", "done"}};
    std::vector<std::pair<std::string, std::string>> found;
    for (const ReadyMadeFolder &folder : readyMadeFolders()) {
        const CriteriaGroup rows = criteriaOf(Predicate::format(folder.format));
        EXPECT_TRUE(isWhollyInRows(rows)) << folder.title;
        std::string titles;
        const auto tasks
            = application.moc().fetch({.entity = "Tasks", .predicate = predicateOf(rows, now), .sortDescriptors = {}});
        for (const auto *task : *tasks)
            titles += (titles.empty() ? "" : " ") + std::string(task->text("title"));
        found.emplace_back(folder.title, titles);
    }
    EXPECT_EQ(found, expected);
}

TEST(SmartCriteria, offerEveryTitledRecordOnce)
{
    support::TestApplication application;
    application.addRecord<model::Folders>("Garden");
    application.addRecord<model::Folders>("Garden");
    application.addRecord<model::Folders>("Attic").setArchived(true);
    application.addRecord<model::Folders>("x").setValue("title", objectstore::Value());
    QStringList titles;
    for (const CriterionChoice &choice : criterionChoices(application.records(), Criterion::Folder))
        titles.append(choice.text);
    EXPECT_EQ(titles, (QStringList{QStringLiteral("Attic"), QStringLiteral("Garden"), QStringLiteral("Inbox")}));
    EXPECT_EQ(choiceText(Criterion::Reminder, std::int64_t{43200}), QStringLiteral("4 weeks"));
    EXPECT_EQ(choiceText(Criterion::State, std::string()), QStringLiteral("None"));
}
