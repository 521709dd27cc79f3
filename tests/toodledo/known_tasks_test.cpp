// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "replies.h"

#include <algorithm>

using namespace toodledo;

namespace {

struct Sifted {
    bool isWhole = false;
    std::vector<GtdTask> read;
    std::vector<std::int64_t> unchanged;

    [[nodiscard]] std::vector<std::int64_t> ids() const
    {
        std::vector<std::int64_t> all = unchanged;
        for (const GtdTask &task : read)
            all.push_back(task.taskId);
        std::ranges::sort(all);
        return all;
    }
};

Sifted sift(std::string_view reply, const KnownTasks *known, std::size_t chunk = atOnce)
{
    TDTasksParser parser({}, known);
    for (std::size_t i = 0; i < reply.size() && parser.feed(reply.substr(i, chunk)); i += chunk) { }
    Sifted result;
    result.isWhole = parser.finish();
    result.read = parser.parseResults().value_or(std::vector<GtdTask>());
    if (result.isWhole)
        result.unchanged = parser.takeUnchanged();
    return result;
}

/// What is known after a reply was read.
KnownTasks learntFrom(std::string_view reply)
{
    KnownTasks known(1);
    for (const GtdTask &task : sift(reply, &known).read) {
        if (task.source)
            known.add(*task.source, task.taskId);
    }
    return known;
}

/// A list put together of records, and of what might be taken for one or for the end of one.
std::string listOf(const std::vector<std::string> &pieces)
{
    std::string reply = "<?xml version=\"1.0\"?><tasks num=\"3\">\n";
    for (const std::string &piece : pieces)
        reply += piece;
    return reply + "</tasks>";
}

rc::Gen<std::vector<std::string>> pieces()
{
    return rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>("<task><id>1</id></task>",
        "<task><id>1</id></task>", "<task><id>2</id><title>a &amp; b</title></task>", "\n ",
        "<task id=\"5\"><id>3</id></task>", "<task><id>4</id><note><![CDATA[</task>]]></note></task>",
        "<!-- <task><id>1</id></task> -->", "<![CDATA[ <task><id>1</id></task> ]]>",
        "<task><id>5</id><task><id>1</id></task></task>", "<task><id>6</id></task ><task><id>7</id></task>", "<task/>",
        "<other><task><id>1</id></task></other>", "text", "<task><id>8</id>", "</task>", "<!--", "-->"));
}

} // namespace

RC_GTEST_PROP(KnownTasks, makeNoOtherListThanReadingAll, ())
{
    const KnownTasks known = learntFrom(listOf(*pieces()));
    const std::string reply = listOf(*pieces());
    const Sifted all = sift(reply, nullptr);
    const auto chunk = *rc::gen::inRange<std::size_t>(1, reply.size() + 1);
    const Sifted rest = sift(reply, &known, chunk);
    RC_ASSERT(rest.isWhole == all.isWhole);
    RC_ASSERT(rest.ids() == all.ids());
}

TEST(KnownTasks, arePassedOverAndTheChangedOnesRead)
{
    const std::string first = "<task><id>1</id><title>a</title></task>";
    const KnownTasks known = learntFrom("<tasks>" + first + "<task><id>2</id><title>b</title></task></tasks>");
    const Sifted again = sift("<tasks>\n" + first + " <task><id>2</id><title>c</title></task></tasks>", &known);
    EXPECT_TRUE(again.isWhole);
    EXPECT_EQ(again.unchanged, std::vector<std::int64_t>{1});
    ASSERT_EQ(again.read.size(), 1U);
    EXPECT_EQ(again.read[0].title, "c");
    EXPECT_TRUE(again.read[0].source);
}
