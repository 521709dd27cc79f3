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

/// Four tasks that differ in all that rows look at; the last one lacks whatever a task can lack.
void addTasks(support::TestApplication &application)
{
    auto &milk = application.add(aTask()
                                     .titled("Milk")
                                     .noted("buy MILK")
                                     .tagged("shop")
                                     .in("House")
                                     .doneAt("Phone")
                                     .inState("Waiting")
                                     .ofPriority(2)
                                     .starred()
                                     .due("2026-03-31 10:00")
                                     .starting("2026-04-01")
                                     .reminding(15));
    milk.setLength(30);
    milk.setCreationDate(at("2026-03-30"));
    auto &bread = application.add(aTask()
                                      .titled("Bread")
                                      .tagged("shop")
                                      .tagged("shopping list")
                                      .in("Garden")
                                      .due("2026-03-30 23:59")
                                      .completed("2026-03-24 09:00")
                                      .reminding(60)
                                      .noted(""));
    bread.setLength(15);
    application.add(aTask().titled("milk tea").noted("it's \"100%K\"").ofPriority(-1).due("2026-04-07 10:01"));
    auto &bare = application.add(aTask());
    bare.setValue("title", objectstore::Value());
    for (const char *relationship : {"folders", "contexts", "states"})
        bare.setRelated(relationship, nullptr);
    application.moc().processPendingChanges();
    milk.setModifiedDate(at("2026-03-30"));
    application.delegate().saveAction();
}

/// A row, and the tasks that it is to find by their places among the four.
struct Question {
    Criterion criterion;
    std::string test;
    Operand operand;
    std::string found;
    bool foldCase = false;

    [[nodiscard]] CriterionRow row() const
    {
        CriterionRow row{.criterion = criterion, .test = 0, .operand = operand, .options = {.foldCase = foldCase}};
        while (row.description().text != test)
            ++row.test;
        return row;
    }
};

const std::vector<Question> questions{
    {Criterion::Title, "contains", "milk", "3"},
    {Criterion::Title, "contains", "milk", "13", true},
    {Criterion::Title, "does not contain", "milk", "124"},
    {Criterion::Title, "is", "Milk", "1"},
    {Criterion::Title, "is", "MILK", "1", true},
    {Criterion::Title, "is not", "Milk", "234"},
    {Criterion::Title, "begins with", "M", "1"},
    {Criterion::Title, "ends with", "ea", "3"},
    {Criterion::Title, "is empty", {}, "4"},
    {Criterion::Title, "is not empty", {}, "123"},
    {Criterion::Notes, "contains", "'s \"100%K", "3"},
    {Criterion::Notes, "is empty", {}, "24"},
    {Criterion::Tags, "include", "shop", "12"},
    {Criterion::Tags, "do not include", "shopping list", "134"},
    {Criterion::Tags, "include one with", "LIST", "2", true},
    {Criterion::Tags, "include none with", "list", "134"},
    {Criterion::Tags, "are set", {}, "12"},
    {Criterion::Tags, "are not set", {}, "34"},
    {Criterion::Folder, "is", "House", "1"},
    {Criterion::Folder, "is not", "House", "234"},
    {Criterion::Context, "is", "Phone", "1"},
    {Criterion::State, "is", "Waiting", "1"},
    {Criterion::Priority, "is", std::int64_t{0}, "24"},
    {Criterion::Priority, "is not", std::int64_t{0}, "13"},
    {Criterion::Priority, "is at least", std::int64_t{0}, "124"},
    {Criterion::Priority, "is at most", std::int64_t{0}, "234"},
    {Criterion::Star, "is", true, "1"},
    {Criterion::Complete, "is", false, "134"},
    {Criterion::Due, "is at most … from now", DateSpan{1, 1}, "12"},
    {Criterion::Due, "is more than … from now", DateSpan{7, 0}, "3"},
    {Criterion::Due, "is at most … ago", DateSpan{0, 0}, "13"},
    {Criterion::Due, "is more than … ago", DateSpan{0, 2}, "2"},
    {Criterion::Due, "is on", at("2026-03-31 15:00"), "1"},
    {Criterion::Due, "is on", at("2026-03-30"), "2"},
    {Criterion::Due, "is before", at("2026-03-31 10:00"), "2"},
    {Criterion::Due, "is after", at("2026-03-31 10:00"), "3"},
    {Criterion::Due, "is not after", at("2026-03-31 10:00"), "12"},
    {Criterion::Due, "is not before", at("2026-03-31 10:00"), "13"},
    {Criterion::Due, "is set", {}, "123"},
    {Criterion::Due, "is not set", {}, "4"},
    {Criterion::Start, "is after", at("2026-03-31"), "1"},
    {Criterion::Created, "is before", at("2026-03-31"), "1"},
    {Criterion::Modified, "is on", at("2026-03-30"), "1"},
    {Criterion::Completed, "is at most … ago", DateSpan{1, 2}, "2"},
    {Criterion::Length, "is at most", std::int64_t{15}, "234"},
    {Criterion::Length, "is at least", std::int64_t{15}, "12"},
    {Criterion::Length, "is set", {}, "12"},
    {Criterion::Length, "is not set", {}, "34"},
    {Criterion::Length, "is", std::int64_t{15}, "2"},
    {Criterion::Length, "is not", std::int64_t{15}, "134"},
    {Criterion::Reminder, "is set", {}, "12"},
    {Criterion::Reminder, "is not set", {}, "34"},
    {Criterion::Reminder, "is", std::int64_t{15}, "1"},
    {Criterion::Reminder, "is not", std::int64_t{15}, "234"},
    {Criterion::Reminder, "is at least", std::int64_t{15}, "12"},
    {Criterion::Reminder, "is at most", std::int64_t{15}, "134"},
};

int draw(int below)
{
    return *rc::gen::inRange(0, below);
}

/// Rows within groups, and the tasks that they are to find.
std::pair<CriteriaGroup, std::string> drawGroup(int depth)
{
    CriteriaGroup group{.kind = static_cast<CriteriaGroup::Kind>(draw(3)), .items = {}};
    std::map<char, std::size_t> answers{{'1', 0}, {'2', 0}, {'3', 0}, {'4', 0}};
    for (int count = 1 + draw(3); count > 0; --count) {
        const Question &question = questions[static_cast<std::size_t>(draw(static_cast<int>(questions.size())))];
        std::pair<CriteriaItem, std::string> item{{question.row()}, question.found};
        if (depth > 0 && draw(3) == 0) {
            auto [inner, found] = drawGroup(depth - 1);
            item = {{std::move(inner)}, std::move(found)};
        }
        group.items.push_back(std::move(item.first));
        for (const char task : item.second)
            ++answers[task];
    }
    std::string all;
    for (const auto &[task, count] : answers) {
        if (group.kind == CriteriaGroup::Kind::All ? count == group.items.size()
                                                   : (count > 0) == (group.kind == CriteriaGroup::Kind::Any))
            all += task;
    }
    return {group, all};
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

/// The store with the four tasks.
class FourTasks
{
public:
    FourTasks()
    {
        addTasks(application);
        all = application.moc().fetch(model::everyTask()).value();
    }
    std::string found(const Predicate &predicate)
    {
        const auto tasks = application.moc().fetch({.entity = "Tasks", .predicate = predicate, .sortDescriptors = {}});
        std::string places;
        for (const objectstore::ManagedObject *task : tasks.value())
            places += static_cast<char>('1' + (std::find(all.begin(), all.end(), task) - all.begin()));
        return places;
    }

private:
    support::TestApplication application;
    std::vector<objectstore::ManagedObject *> all;
};

} // namespace

TEST(SmartCriteria, eachRowFindsWhatItSays)
{
    FourTasks tasks;
    for (const Question &question : questions) {
        const Predicate predicate = predicateOf({.items = {{question.row()}}}, now);
        EXPECT_EQ(tasks.found(predicate), question.found) << predicate.text();
        EXPECT_TRUE(isWhollyInRows(readBack(predicate))) << predicate.text();
        EXPECT_EQ(predicateOf(readBack(predicate), now), predicate);
    }
}

TEST(SmartCriteria, comeBackFromTheStoreAndFindWhatTheySay)
{
    FourTasks tasks; // one for all draws: to fill a store costs more than to ask it
    EXPECT_TRUE(rc::check([&] {
        const auto [rows, expected] = drawGroup(2);
        const Predicate predicate = predicateOf(rows, now);
        RC_LOG() << predicate.text();
        const CriteriaGroup shown = readBack(predicate);
        RC_ASSERT(isWhollyInRows(shown));
        RC_ASSERT(predicateOf(shown, now) == predicate);
        RC_ASSERT(tasks.found(predicate) == expected);
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
