// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_queries.h"
#include "support/test_store.h"

#include <gmock/gmock.h>

using namespace support;
using objectstore::FetchRequest;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

using Titles = std::vector<std::string>;

/// One task for each thing that a list heeds; all are in "Home" and at "Desk".
class TaskQueries : public testing::Test
{
protected:
    TaskQueries()
    {
        add("due", aTask().due("2026-11-24"));
        add("started here", aTask().starting("2026-11-23").atTheCurrentLocation());
        add("later", aTask().due("2026-11-24 09:01").starting("2026-12-24"));
        add("done", aTask().due("2026-11-01").completed("2026-11-02"));
        add("done here", aTask().due("2026-11-01").completed("2026-11-02").atTheCurrentLocation());
        add("deleted", aTask().due("2026-11-01").atTheCurrentLocation().inTheTrash());
        add("emptied", aTask().due("2026-11-01").emptiedFromTheTrash());
        store.add(aTask().titled("elsewhere"));
    }

    void add(const char *title, TaskBuilder task) { store.add(task.titled(title).in("Home").doneAt("Desk")); }

    /// What a fetch finds, which must be the same before and after a save and as the count.
    Titles found(const FetchRequest &request)
    {
        const Titles unsaved = titles(store.fetch(request));
        store.save();
        EXPECT_EQ(titles(store.fetch(request)), unsaved);
        EXPECT_EQ(store.moc().count(request), static_cast<std::int64_t>(unsaved.size()));
        return unsaved;
    }

    TestStore store;
    const foundation::Instant now = store.clock.now();
    const model::ListFilter open;
    const model::ListFilter openHere{.showCompleted = false, .byLocation = true};
    const model::ListFilter completed{.showCompleted = true, .byLocation = false};
    const model::ListFilter completedHere{.showCompleted = true, .byLocation = true};
};

} // namespace

TEST_F(TaskQueries, foldersAndContextsHeedCompletionAndLocation)
{
    const auto &home = *store.records().getFolderByTitle("Home");
    const auto &desk = *store.records().getContextByTitle("Desk");
    const std::pair<model::ListFilter, Titles> cases[] = {
        {open, {"due", "started here", "later"}},
        {openHere, {"started here"}},
        {completed, {"due", "started here", "later", "done", "done here"}},
        {completedHere, {"started here", "done here"}},
    };
    for (const auto &[filter, expected] : cases) {
        EXPECT_THAT(found(model::folderTasks(home, filter)), ElementsAreArray(expected));
        EXPECT_THAT(found(model::contextTasks(desk, filter)), ElementsAreArray(expected));
    }
    EXPECT_THAT(found(model::folderTasks(*store.records().getFolderByTitle("Inbox"), open)), ElementsAre("elsewhere"));
}

TEST_F(TaskQueries, todayHoldsWhatIsDueOrStartedUntilNow)
{
    EXPECT_THAT(found(model::todayTasks(now, open)), ElementsAre("due", "started here"));
    EXPECT_THAT(found(model::todayTasks(now, openHere)), ElementsAre("started here"));
    EXPECT_THAT(found(model::todayTasks(now, completed)), ElementsAre("due", "started here", "done", "done here"));
    EXPECT_THAT(found(model::todayTasks(now, completedHere)), ElementsAre("started here", "done here"));
    EXPECT_THAT(found(model::todayBadgeTasks(now, false)), ElementsAre("due", "started here"));
    EXPECT_THAT(found(model::todayBadgeTasks(now, true)), ElementsAre("due", "started here", "done", "done here"));
    EXPECT_THAT(found(model::todayTasks(at("2026-11-24 09:01"), open)), ElementsAre("due", "started here", "later"));
}

TEST_F(TaskQueries, theTrashHoldsWhatIsDeletedUntilItIsEmptied)
{
    EXPECT_THAT(found(model::trashTasks()), ElementsAre("deleted"));
    EXPECT_THAT(found(model::deletedTasks()), ElementsAre("deleted", "emptied"));
}

TEST_F(TaskQueries, theLocationListShowsDeletedTasksAndItsBadgeDoesNot)
{
    EXPECT_THAT(found(model::locationTasks()), ElementsAre("started here", "done here", "deleted"));
    EXPECT_THAT(found(model::locationBadgeTasks(false)), ElementsAre("started here"));
    EXPECT_THAT(found(model::locationBadgeTasks(true)), ElementsAre("started here", "done here"));
}

TEST_F(TaskQueries, allAndEveryDifferByTheTrash)
{
    EXPECT_THAT(found(model::allTasks(open)), ElementsAre("due", "started here", "later", "elsewhere"));
    EXPECT_THAT(found(model::allTasks(openHere)), ElementsAre("started here"));
    EXPECT_THAT(found(model::allTasks(completed)), testing::SizeIs(6));
    EXPECT_THAT(found(model::everyTask()), testing::SizeIs(8));
}

TEST_F(TaskQueries, aSearchLooksIntoTitlesAndNotesOfAllTasks)
{
    store.add(aTask().titled("xABCx \"100%@\" \\"));
    store.add(aTask().titled("noted").noted("see Abc").inTheTrash());
    EXPECT_THAT(found(model::tasksContaining("abc")), ElementsAre("xABCx \"100%@\" \\", "noted"));
    EXPECT_THAT(found(model::tasksContaining("\"100%@\" \\")), testing::SizeIs(1));
    EXPECT_THAT(found(model::tasksContaining("no such text")), IsEmpty());
    EXPECT_THAT(found(model::tasksContaining("")), testing::SizeIs(10));
}
