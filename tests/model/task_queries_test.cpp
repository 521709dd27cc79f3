// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_queries.h"
#include "support/test_store.h"

#include <gmock/gmock.h>

using namespace support;
using objectstore::FetchRequest;
using testing::ElementsAre;
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

TEST_F(TaskQueries, ofEachListFindWhatItShows)
{
    const auto &home = *store.records().getFolderByTitle("Home");
    const auto &inbox = *store.records().getFolderByTitle("Inbox");
    const auto &desk = *store.records().getContextByTitle("Desk");
    const std::pair<FetchRequest, Titles> cases[] = {
        {model::folderTasks(home, open), {"due", "started here", "later"}},
        {model::folderTasks(home, openHere), {"started here"}},
        {model::folderTasks(home, completed), {"due", "started here", "later", "done", "done here"}},
        {model::folderTasks(home, completedHere), {"started here", "done here"}},
        {model::folderTasks(inbox, open), {"elsewhere"}},
        {model::contextTasks(desk, open), {"due", "started here", "later"}},
        {model::contextTasks(desk, openHere), {"started here"}},
        {model::contextTasks(desk, completed), {"due", "started here", "later", "done", "done here"}},
        {model::todayTasks(now, open), {"due", "started here"}},
        {model::todayTasks(now, openHere), {"started here"}},
        {model::todayTasks(now, completed), {"due", "started here", "done", "done here"}},
        {model::todayTasks(at("2026-11-24 09:01"), open), {"due", "started here", "later"}},
        {model::todayBadgeTasks(now, false), {"due", "started here"}},
        {model::todayBadgeTasks(now, true), {"due", "started here", "done", "done here"}},
        {model::trashTasks(), {"deleted"}},
        {model::deletedTasks(), {"deleted", "emptied"}},
        {model::locationTasks(), {"started here", "done here", "deleted"}},
        {model::locationBadgeTasks(false), {"started here"}},
        {model::locationBadgeTasks(true), {"started here", "done here"}},
        {model::allTasks(open), {"due", "started here", "later", "elsewhere"}},
        {model::allTasks(openHere), {"started here"}},
        {model::allTasks(completed), {"due", "started here", "later", "done", "done here", "elsewhere"}},
    };
    for (const auto &[request, expected] : cases)
        EXPECT_EQ(found(request), expected) << request.predicate.text();
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
