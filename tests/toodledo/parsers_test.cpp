// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_clock.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "replies.h"

using namespace toodledo;
using support::at;
using Texts = std::vector<std::string>;

namespace {

template <typename Parser, typename... Arguments> auto resultsOf(std::string_view reply, Arguments... arguments)
{
    Parser parser(arguments...);
    EXPECT_TRUE(parser.parse(reply)) << reply;
    return parser.parseResults().value();
}

GtdTask taskOf(const std::string &elements, ContextLookup lookup = {})
{
    const auto tasks = resultsOf<TDTasksParser>("<tasks><task>" + elements + "</task></tasks>", std::move(lookup));
    EXPECT_EQ(tasks.size(), 1U);
    return tasks.at(0);
}

} // namespace

TEST(Replies, giveEveryFieldOfATask)
{
    const auto reader = std::ranges::find(readers(), std::string_view("tasks"), &Reader::name);
    const auto tasks = resultsOf<TDTasksParser>(reader->sample, ContextLookup(&lengthAsContext));
    ASSERT_EQ(tasks.size(), 1U);
    const GtdTask &task = tasks.front();
    EXPECT_EQ(task.taskId, 1234);
    EXPECT_EQ(task.parentId, 1122);
    EXPECT_EQ(task.children, 3);
    EXPECT_EQ(task.title, "Buy Milk & \xE2\x82\xAC 5");
    EXPECT_EQ(task.tags, (Texts{"After work", "home"}));
    EXPECT_EQ(task.folder, 123);
    EXPECT_EQ(task.context, 4) << "by the context's name, not by the attribute";
    EXPECT_EQ(task.goal, 12);
    EXPECT_EQ(task.addedDate, at("2006-01-23"));
    EXPECT_EQ(task.modifiedDate, at("2006-01-25 05:12:45"));
    EXPECT_EQ(task.startDate, at("2006-01-24"));
    EXPECT_EQ(task.dueDate, at("2006-02-01"));
    EXPECT_FALSE(task.hasStartTime || task.hasDueTime || task.hasDueDate);
    EXPECT_EQ(task.completedDate, at("2006-02-03"));
    EXPECT_TRUE(task.completed);
    EXPECT_EQ(task.reminder, 60);
    EXPECT_EQ(task.repeat, 1);
    EXPECT_EQ(task.repeatAdvanced, std::nullopt);
    EXPECT_EQ(task.status, 4);
    EXPECT_TRUE(task.star);
    EXPECT_EQ(task.priority, -1);
    EXPECT_EQ(task.length, 20);
    EXPECT_EQ(task.timer, 7);
    EXPECT_EQ(task.note, "line 1\n line 2");
}

TEST(Replies, leaveUnsetWhatATaskDoesNotSay)
{
    EXPECT_EQ(taskOf("").context + taskOf("").priority, 0);
    const GtdTask task
        = taskOf("<title/><tag/><completed/><duedate></duedate><star>0</star><uid>5</uid><note> </note>");
    EXPECT_EQ(task.title, "");
    EXPECT_EQ(task.note, "");
    EXPECT_EQ(task.tags, std::nullopt);
    EXPECT_FALSE(task.completed || task.completedDate || task.dueDate || task.star);
    EXPECT_EQ(task.taskId, 5);
    EXPECT_TRUE(taskOf("<completed>soon</completed>").completed) << "any text completes a task";
    EXPECT_EQ(taskOf("<tag>a, b,,</tag>").tags, (Texts{"a", " b", "", ""}));
}

TEST(Replies, nameTheContextOfATaskByItsTitle)
{
    int asked = 0;
    const ContextLookup lookup = [&](std::string_view title) {
        ++asked;
        return std::int64_t{title == "Home" ? 9 : 0};
    };
    const auto tasks = resultsOf<TDTasksParser>("<tasks><task><context id='1'>Home</context></task>"
                                                "<task><context>Away</context></task><task id='5'><context/></task>"
                                                "<task><context>Home</context></task></tasks>",
        lookup);
    ASSERT_EQ(tasks.size(), 4U);
    EXPECT_EQ(tasks[0].context, 9);
    EXPECT_EQ(tasks[1].context, 0);
    EXPECT_EQ(tasks[2].context, 0);
    EXPECT_EQ(tasks[3].context, 9);
    EXPECT_EQ(asked, 2) << "once for each title";
}

TEST(Replies, giveFoldersContextsAndNotes)
{
    const auto folders = resultsOf<TDFoldersParser>(
        "<folders><folder id='123' private='0' archived='1' order='2'>A</folder><folder>B</folder></folders>");
    ASSERT_EQ(folders.size(), 2U);
    EXPECT_EQ(folders[0].description(), "<GtdFolder folderId='123' title='A' private='0' archived='1' order='2'>");
    EXPECT_EQ(folders[1].description(), "<GtdFolder folderId='0' title='B' private='0' archived='0' order='0'>");
    const auto contexts = resultsOf<TDContextsParser>("<contexts><context id='7'/></contexts>");
    ASSERT_EQ(contexts.size(), 1U);
    EXPECT_EQ(contexts[0].description(), "<GtdContext contextId='7' title=''>");
    const auto notes
        = resultsOf<TDNotesParser>("<notes><note id='1' private='1' folder='3' added='2006-01-23 10:00:00' "
                                   "modified='x' title='Old' text='Body'>New</note></notes>");
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].description(), "<GtdNote uid='1' note='Body'>");
    EXPECT_EQ(notes[0].title, "New");
    EXPECT_EQ(notes[0].folder, 3);
    EXPECT_TRUE(notes[0].isPrivate);
    EXPECT_EQ(notes[0].dateCreated, at("2006-01-23 10:00"));
    EXPECT_EQ(notes[0].dateModified, std::nullopt);
}

TEST(Replies, giveOneAccountTwice)
{
    const auto accounts = resultsOf<TDUserInfoParser>("<account><userid>u</userid><pro>1</pro><dateformat>2</"
                                                      "dateformat><alias></alias><unknown>x</unknown></account>");
    ASSERT_EQ(accounts.size(), 2U);
    EXPECT_EQ(accounts[0], accounts[1]);
    const AccountInfo &account = *accounts[0];
    EXPECT_EQ(account.at("userid"), "u");
    EXPECT_EQ(account.at("dateformat"), "2");
    EXPECT_EQ(account.at("dateFormat"), "");
    EXPECT_EQ(account.at("lastgoaledit"), "");
    EXPECT_EQ(account.count("alias"), 0U) << "an empty element removes the entry";
    EXPECT_EQ(account.count("unknown"), 0U);
    EXPECT_TRUE(resultsOf<TDUserInfoParser>("<accounts/>").empty());
    EXPECT_EQ(resultsOf<TDUserInfoParser>("<r><account/><account><pro>1</pro></account></r>").size(), 2U)
        << "there is one account, whatever follows";
}

TEST(Replies, takeAnErrorForTheAwaitedValue)
{
    EXPECT_EQ(resultsOf<TDSimpleParser>("<error>key did not validate</error>", "token"), Texts{"key did not validate"});
    EXPECT_EQ(
        resultsOf<TDSimpleParser>("<r><added>1</added><error/><added>2</added></r>", "added"), (Texts{"1", "", "2"}));
    EXPECT_EQ(resultsOf<TDSimpleParser>("<r><added>1</added><error>e</error></r>"), Texts{"e"});
    TDTasksParser parser;
    EXPECT_TRUE(parser.parse("<tasks><task/><error>half</error></tasks>"));
    EXPECT_EQ(parser.errorTexts(), Texts{"half"});
}

TEST(Replies, keepTheBlanksWithinATextAndNoneAround)
{
    const std::vector<std::pair<const char *, const char *>> texts{{"  a  b \n", "a  b"},
        {"Ben &amp; Jerry", "Ben & Jerry"}, {" &lt; x &#62; ", "< x >"}, {"one\n two", "one\n two"},
        {"a <!-- b --> c", "a  c"}, {" \t\r\n ", ""}, {"<![CDATA[ <b> ]]>", "<b>"}, {" a <i/> b ", "b"},
        {"&#x1F600;", "\xF0\x9F\x98\x80"}};
    for (const auto &[xml, text] : texts)
        EXPECT_EQ(resultsOf<TDSimpleParser>("<t>" + std::string(xml) + "</t>", "t"), Texts{text}) << xml;
}

TEST(Replies, F36_keepRecordsWithTheSameIdInTheirOrder)
{
    const auto tasks = resultsOf<TDTasksParser>("<tasks><task><id>1</id><title>a</title></task>"
                                                "<task><id>1</id><title>b</title></task></tasks>");
    ASSERT_EQ(tasks.size(), 2U);
    EXPECT_EQ(tasks[0].title, "a");
    EXPECT_EQ(tasks[1].title, "b");
    EXPECT_EQ(resultsOf<TDDeletedParser>("<deleted><id>9</id><task><id>1</id><stamp>2</stamp></task><task><uid>1</uid>"
                                         "</task><task><id>x</id></task><task/></deleted>"),
        (std::vector<std::int64_t>{1, 1, 0, 0}));
}

TEST(Replies, F37_giveIdsBeyondAllRangesAsSuchNotWrappedAround)
{
    const std::vector<std::pair<const char *, std::int64_t>> ids{{"0", 0}, {"-5", -5}, {"4294967301", 4'294'967'301},
        {"99999999999999999999999", INT64_MAX}, {"-99999999999999999999999", INT64_MIN}, {"abc", 0}, {"", 0}};
    for (const auto &[text, id] : ids) {
        EXPECT_EQ(taskOf("<id>" + std::string(text) + "</id>").taskId, id);
        const std::string folder = "<folders><folder id='" + std::string(text) + "'/></folders>";
        EXPECT_EQ(resultsOf<TDFoldersParser>(folder).at(0).folderId, id);
    }
}
