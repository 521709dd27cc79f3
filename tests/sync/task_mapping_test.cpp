// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_store.h"
#include "sync/task_content.h"
#include "sync/task_mapping.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

using namespace support;
using syncing::contentOf;
using syncing::TaskMapping;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using toodledo::GtdTask;

namespace {

GtdTask aServerTask()
{
    GtdTask task;
    task.taskId = 7;
    task.title = "Call Ana";
    task.tags = {"phone", "ana"};
    task.priority = 2;
    task.status = 5; // Waiting
    task.star = true;
    task.addedDate = at("2026-01-02");
    task.modifiedDate = at("2026-03-04 05:06");
    task.startDate = at("2026-05-01");
    task.dueDate = at("2026-05-09");
    task.length = 30;
    task.timer = 4;
    task.repeat = 1;
    task.repeatAdvanced = "Every Mon";
    task.parentId = 3;
    task.children = 2;
    task.note = "about the movers";
    return task;
}

class Mapping : public ::testing::Test
{
protected:
    model::Contexts &context(const char *title, std::int64_t id)
    {
        auto &made = model::insert<model::Contexts>(store.moc());
        made.setTitle(title);
        made.setContextID(id);
        return made;
    }
    model::Folders &folder(const char *title, std::int64_t id)
    {
        auto &made = model::insert<model::Folders>(store.moc());
        made.setTitle(title);
        made.setFolderID(id);
        return made;
    }

    TestStore store;
};

} // namespace

TEST_F(Mapping, aServerTaskBecomesALocalOneWithItsPlacesAndTags)
{
    store.relaunch(); // the default context has its id from the second launch on
    folder("Home", 11);
    context("Phone", 22);
    GtdTask from = aServerTask();
    from.folder = 11;
    from.context = 22;
    from.tags = {"phone", "", "phone", "ana"};

    const auto lookups = store.records();
    const auto &task = TaskMapping(lookups).getToodledoTaskAsLocalTask(from);

    EXPECT_EQ(task.taskID(), 7);
    EXPECT_EQ(task.title(), "Call Ana");
    EXPECT_EQ(task.notes(), "about the movers");
    EXPECT_EQ(task.folders()->title(), "Home");
    EXPECT_EQ(task.contexts()->title(), "Phone");
    EXPECT_EQ(task.states()->state(), "Waiting");
    EXPECT_EQ(task.priorities()->priority(), 2);
    EXPECT_EQ(task.creationDate(), at("2026-01-02"));
    EXPECT_EQ(task.modifiedDate(), at("2026-03-04 05:06"));
    EXPECT_EQ(task.repeatAdvanced(), "Every Mon");
    EXPECT_EQ(task.length(), 30);
    EXPECT_TRUE(task.star());
    EXPECT_FALSE(task.complete());
    EXPECT_THAT(titles(task.tags()), UnorderedElementsAre("phone", "ana"));
    EXPECT_EQ(store.all("Tags").size(), 2U) << "a name that comes twice makes one tag";
}

TEST_F(Mapping, F38_aServerTaskWithoutKnownPlacesGoesToTheDefaultOnes)
{
    store.relaunch();
    GtdTask from = aServerTask();
    from.folder = 99;
    from.context = 98;
    from.status = 97;

    const auto lookups = store.records();
    const auto &task = TaskMapping(lookups).getToodledoTaskAsLocalTask(from);

    EXPECT_EQ(task.folders()->title(), "Inbox");
    EXPECT_EQ(task.contexts()->title(), "None");
    EXPECT_EQ(task.states()->stateID(), 0);
}

TEST_F(Mapping, aCompletionDateCompletesANewTaskButNotAKnownOne)
{
    GtdTask from = aServerTask();
    from.completedDate = at("2026-06-01");
    const auto lookups = store.records();
    TaskMapping mapping(lookups);
    EXPECT_TRUE(mapping.getToodledoTaskAsLocalTask(from).complete());

    auto &known = store.add(aTask().completed("2026-02-02"));
    mapping.copyToodledoTaskToLocalTask(from, known);
    EXPECT_FALSE(known.complete());
    EXPECT_EQ(known.completedDate(), at("2026-02-02"));
}

TEST_F(Mapping, aPlainCopyLeavesFolderRepetitionDatesAndTags)
{
    folder("Work", 5);
    auto &task = store.add(aTask().titled("Old").in("Work").tagged("keep").modified("2026-01-01"));
    task.setRepeat(3);
    GtdTask from = aServerTask();
    from.folder = 0;
    from.tags.reset();

    const auto lookups = store.records();
    TaskMapping mapping(lookups);
    mapping.copyToodledoTaskToLocalTask(from, task);
    EXPECT_EQ(task.title(), "Call Ana");
    EXPECT_EQ(task.folders()->title(), "Work");
    EXPECT_EQ(task.repeat(), 3);
    EXPECT_EQ(task.modifiedDate(), at("2026-01-01"));
    EXPECT_THAT(titles(task.tags()), ElementsAre("keep"));

    mapping.copyWholeToodledoTaskToLocalTask(from, task);
    EXPECT_EQ(task.folders()->title(), "Inbox");
    EXPECT_THAT(task.tags(), IsEmpty());
}

TEST_F(Mapping, aLocalTaskIsSentWithTheIdsOfItsPlaces)
{
    folder("Home", 11);
    context("Phone", 22);
    auto &task = store.add(aTask()
                               .titled("Milk")
                               .noted("2 l")
                               .in("Home")
                               .doneAt("Phone")
                               .inState("Waiting")
                               .ofPriority(3)
                               .tagged("shop")
                               .starred()
                               .due("2026-12-01")
                               .completed("2026-01-01")
                               .sentAs(40));
    task.setReminder(15);
    task.setRepeat(2);
    task.setLength(20);

    const GtdTask sent = TaskMapping::copyLocalTaskToToodledoTask(task, at("2026-11-24 10:00"));
    EXPECT_EQ(sent.taskId, 40);
    EXPECT_EQ(sent.title, "Milk");
    EXPECT_EQ(sent.folder, 11);
    EXPECT_EQ(sent.context, 22);
    EXPECT_EQ(sent.status, 5);
    EXPECT_EQ(sent.priority, 3);
    EXPECT_EQ(sent.length, 20);
    EXPECT_TRUE(sent.completed);
    EXPECT_EQ(sent.completedDate, at("2026-11-24 10:00")) << "the date of completion here is not sent";
    EXPECT_EQ(sent.tags, (std::vector<std::string>{"shop"}));
    EXPECT_EQ(sent.reminder, 0) << "reminders and repetitions do not travel";
    EXPECT_EQ(sent.repeat, 0);
}

TEST(Content, equalContentsHaveEqualMarksAndOthersDoNot)
{
    const GtdTask task = aServerTask();
    const auto marked = [&task](auto change) {
        GtdTask other = task;
        change(other);
        return contentOf(other);
    };
    const auto same = contentOf(task);
    // what does not survive every service, or does not travel at all
    EXPECT_EQ(marked([](GtdTask &t) { t.tags = {"ana", "phone"}; }), same);
    EXPECT_EQ(marked([](GtdTask &t) { t.tags = {" ana ,phone"}; }), same);
    EXPECT_EQ(marked([](GtdTask &t) { t.title = "  Call Ana\n"; }), same);
    EXPECT_EQ(marked([](GtdTask &t) { t.modifiedDate = at("2026-09-09"); }), same);
    EXPECT_EQ(marked([](GtdTask &t) { t.dueDate = at("2026-05-09 17:30"); }), same);

    const std::vector<std::function<void(GtdTask &)>> changes{[](GtdTask &t) { t.title = "Call  Ana"; },
        [](GtdTask &t) { t.note = "about the mover s"; },
        [](GtdTask &t) {
            t.title = "Call";
            t.note = "Ana about the movers";
        },
        [](GtdTask &t) { t.tags = {"phone"}; }, [](GtdTask &t) { t.tags.reset(); },
        [](GtdTask &t) { t.tags = {"phoneana"}; }, [](GtdTask &t) { t.folder = 1; }, [](GtdTask &t) { t.context = 1; },
        [](GtdTask &t) { t.parentId = 0; }, [](GtdTask &t) { t.priority = -1; }, [](GtdTask &t) { t.status = 0; },
        [](GtdTask &t) { t.star = false; }, [](GtdTask &t) { t.completed = true; },
        [](GtdTask &t) { t.startDate.reset(); }, [](GtdTask &t) { std::swap(t.startDate, t.dueDate); },
        [](GtdTask &t) { t.length = 31; }};
    std::set<syncing::ContentMark> marks{same};
    for (const auto &change : changes)
        marks.insert(marked(change));
    EXPECT_EQ(marks.size(), changes.size() + 1);

    // places are added up, so moves between few of them must not cancel out
    std::set<syncing::ContentMark> places;
    for (int folder = 0; folder < 40; ++folder) {
        for (int context = 0; context < 40; ++context)
            places.insert(marked([&](GtdTask &t) {
                t.folder = folder;
                t.context = context;
            }));
    }
    EXPECT_EQ(places.size(), 1600U);
}
