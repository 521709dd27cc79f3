// SPDX-License-Identifier: GPL-3.0-or-later
// What a run does, rule by rule, over HTTP with the real service; with the guards off unless a test is about them.
#include "service/http_server.h"
#include "service/service.h"
#include "support/sync_device.h"

#include <gmock/gmock.h>

using namespace support;
using objectstore::Value;
using syncing::SyncOutcome;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

/// A service with one account, and computers that synchronise with it; all clocks show the same time.
class Rules : public ::testing::TestWithParam<bool>
{
protected:
    Rules()
    {
        EXPECT_NE(
            service.answer("/api.php?method=createAccount;email=ana%40example.org;pass=secret%20word").find("added"),
            std::string::npos);
        server = std::move(service::HttpServer::start(service).value());
    }

    SyncDevice &device(bool guards)
    {
        devices.push_back(std::make_unique<SyncDevice>(server->address(), guards));
        devices.back()->store.clock.set(now);
        return *devices.back();
    }

    void pass(double seconds)
    {
        now.seconds += seconds;
        for (auto &each : devices)
            each->store.clock.set(now);
    }

    /// A minute later, a run that must go well.
    void sync(SyncDevice &device)
    {
        pass(60);
        const SyncOutcome outcome = device.sync();
        EXPECT_TRUE(outcome == SyncOutcome::Completed
            || (outcome == SyncOutcome::Incomplete && !device.settings.boolean("SyncGuards")));
        for (const auto &error : device.host.errors)
            ADD_FAILURE() << error.message << " " << error.detail;
        pass(60);
    }

    static model::Folders &folder(SyncDevice &device, const char *title)
    {
        auto &made = model::insert<model::Folders>(device.store.moc());
        made.setTitle(title);
        return made;
    }
    static model::Contexts &context(SyncDevice &device, const char *title)
    {
        auto &made = model::insert<model::Contexts>(device.store.moc());
        made.setTitle(title);
        return made;
    }
    static std::vector<std::string> folderTitles(SyncDevice &device) { return titles(device.store.all("Folders")); }
    static std::vector<std::string> contextTitles(SyncDevice &device) { return titles(device.store.all("Contexts")); }

    foundation::Instant now = at("2026-11-24 09:00");
    std::unique_ptr<service::Database> database = service::Database::inMemory();
    service::Service service{
        *database, {.tokensPerHour = 1000, .clock = [this] { return static_cast<std::int64_t>(now.seconds); }}};
    std::unique_ptr<service::HttpServer> server;
    std::vector<std::unique_ptr<SyncDevice>> devices;
};

/// The rules that hold with and without guards.
class AnyRules : public Rules
{
protected:
    SyncDevice &home = device(GetParam());
    SyncDevice &work = device(GetParam());
};

std::string guardsName(const ::testing::TestParamInfo<bool> &info)
{
    return info.param ? "guarded" : "bare";
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Sync, AnyRules, ::testing::Bool(), guardsName);

TEST_P(AnyRules, aNewTaskIsSentOnceAndArrivesElsewhereWithAllThatTravels)
{
    const std::string odd = "a; b = c & d + e % f # \"g\" <h> \xF0\x9F\x8D\x9E\nsecond line";
    auto &task = home.store.add(aTask()
                                    .titled(odd)
                                    .noted("Note: " + odd)
                                    .inState("Waiting")
                                    .ofPriority(2)
                                    .tagged("shop")
                                    .tagged("tea; milk")
                                    .starred()
                                    .starting("2026-12-01")
                                    .due("2026-12-24"));
    sync(home);
    EXPECT_GT(task.taskID(), 0);
    EXPECT_FALSE(task.isNew());
    sync(home);
    EXPECT_THAT(home.taskTitles(), SizeIs(1)) << "its own task is no new one";
    sync(work);
    ASSERT_THAT(work.taskTitles(), ElementsAre(odd));
    const model::Tasks &copy = work.task(odd);
    EXPECT_EQ(copy.notes(), "Note: " + odd);
    EXPECT_EQ(copy.states()->state(), "Waiting");
    EXPECT_EQ(copy.priorities()->priority(), 2);
    EXPECT_THAT(titles(copy.tags()), UnorderedElementsAre("shop", "tea; milk"));
    EXPECT_TRUE(copy.star());
    EXPECT_EQ(copy.startDate(), at("2026-12-01"));
    EXPECT_EQ(copy.dueDate(), at("2026-12-24"));
    EXPECT_FALSE(copy.isNew());
    EXPECT_EQ(copy.folders()->title(), "Inbox");
}

TEST_P(AnyRules, anEditGoesToTheOtherSideAndOfTwoEditsTheServicesRemains)
{
    home.store.add(aTask().titled("Milk"));
    home.store.add(aTask().titled("Bread"));
    sync(home);
    sync(work);
    work.edit(work.task("Milk"), "title", std::string("Oat milk"));
    home.edit(home.task("Bread"), "complete", true);
    sync(work);
    sync(home);
    sync(work);
    for (SyncDevice *each : {&home, &work}) {
        EXPECT_THAT(each->taskTitles(), UnorderedElementsAre("Oat milk", "Bread"));
        EXPECT_TRUE(each->task("Bread").complete());
    }
    work.edit(work.task("Oat milk"), "title", std::string("Rice milk"));
    home.edit(home.task("Oat milk"), "title", std::string("Soy milk"));
    sync(work);
    sync(home);
    EXPECT_THAT(home.taskTitles(), UnorderedElementsAre("Rice milk", "Bread"));
}

TEST_P(AnyRules, deletionsTravelBothWays)
{
    for (const char *title : {"Milk", "Bread", "Tea", "Salt", "Rice"})
        home.store.add(aTask().titled(title));
    sync(home);
    sync(work);
    home.edit(home.task("Milk"), "deleteOnSync", true);
    work.edit(work.task("Bread"), "deleteOnSync", true);
    work.edit(work.task("Bread"), "markedDeleted", true);
    home.edit(home.task("Bread"), "title", std::string("Rye bread")); // what is deleted there goes, edited or not
    sync(home);
    sync(work);
    sync(home);
    sync(work);
    for (SyncDevice *each : {&home, &work})
        EXPECT_THAT(each->taskTitles(), UnorderedElementsAre("Tea", "Salt", "Rice"));
}

TEST_P(AnyRules, foldersAndContextsTravelWithTheirTasksAndTheirNewNamesWhereTheyAreOlder)
{
    auto &hobby = folder(home, "Hobby");
    hobby.setPrivate(true);
    context(home, "Phone");
    home.store.save();
    sync(home);
    sync(home); // without guards the id of a new folder is known from the second run on
    home.store.add(aTask().titled("Call Ana").in("Hobby").doneAt("Phone"));
    sync(home);
    sync(work);
    EXPECT_EQ(work.task("Call Ana").folders()->title(), "Hobby");
    EXPECT_EQ(work.task("Call Ana").contexts()->title(), "Phone");
    EXPECT_TRUE(work.store.records().getFolderByTitle("Hobby")->isPrivate());
    EXPECT_THAT(contextTitles(work), UnorderedElementsAre("None", "Phone"));
    EXPECT_THAT(folderTitles(work), Contains("Inbox"));

    work.store.records().getFolderByTitle("Hobby")->setPrivate(false);
    work.edit(*work.store.records().getFolderByTitle("Hobby"), "title", std::string("Pastime"));
    work.edit(*work.store.records().getContextByTitle("Phone"), "title", std::string("Telephone"));
    sync(work);
    sync(home);
    EXPECT_THAT(folderTitles(home), Contains("Pastime"));
    EXPECT_FALSE(home.store.records().getFolderByTitle("Pastime")->isPrivate());
    EXPECT_THAT(contextTitles(home), UnorderedElementsAre("None", "Telephone"));
}

TEST_P(AnyRules, aFolderMarkedForDeletionGoesOnBothSidesAndItsTasksStayInSight)
{
    folder(home, "Hobby");
    home.store.save();
    sync(home);
    sync(work);
    work.store.add(aTask().titled("Paint").in("Hobby"));
    work.store.save();
    work.store.records().getFolderByTitle("Hobby")->setMarkedForDeletion(true);
    sync(work);
    EXPECT_THAT(folderTitles(work), ElementsAre("Inbox"));
    EXPECT_EQ(work.task("Paint").folders()->title(), "Inbox");
    EXPECT_EQ(service.answer("/api.php?method=getFolders;key=" + work.settings.text("toodledoKey")).find("Hobby"),
        std::string::npos);
}

TEST_P(AnyRules, aContextMissingThereIsDeletedHereUnlessItWasMadeSince)
{
    context(home, "Phone");
    context(home, "Car");
    context(home, "Shop");
    home.store.save();
    sync(home);
    sync(work);
    work.store.records().getContextByTitle("Car")->setMarkedForDeletion(true);
    sync(work);
    context(home, "Train").setDate("creationDate", now);
    home.store.save();
    sync(home);
    EXPECT_THAT(contextTitles(home), UnorderedElementsAre("None", "Phone", "Shop", "Train"));
    sync(work);
    EXPECT_THAT(contextTitles(work), UnorderedElementsAre("None", "Phone", "Shop", "Train"));
}

TEST_F(Rules, withoutGuardsANewFolderIsThereTwiceAfterTheSecondRun)
{
    SyncDevice &home = device(false);
    folder(home, "Hobby");
    home.store.save();
    sync(home);
    EXPECT_EQ(home.store.records().getFolderByTitle("Hobby")->folderID(), -1);
    sync(home);
    EXPECT_THAT(folderTitles(home), UnorderedElementsAre("Inbox", "Hobby", "Hobby"));

    SyncDevice &guarded = device(true);
    folder(guarded, "Garden");
    guarded.store.save();
    sync(guarded);
    sync(guarded);
    EXPECT_THAT(folderTitles(guarded), UnorderedElementsAre("Inbox", "Hobby", "Garden"));
}

TEST_F(Rules, F43_withoutGuardsAnEditMadeDuringARunIsLeftBehindAndWithThemItIsSent)
{
    for (const bool guards : {false, true}) {
        SyncDevice &home = device(guards);
        const std::string title = guards ? "Tea" : "Milk";
        home.store.add(aTask().titled(title));
        sync(home);
        // while a run is under way edits are not stamped, and its end makes every stamp before it old
        home.task(title).setStar(true);
        home.store.save();
        sync(home);
        SyncDevice &work = device(true);
        sync(work);
        EXPECT_EQ(work.task(title).star(), guards);
    }
}

TEST_F(Rules, whatChangesAfterQuietRunsIsSentThoughOtherTasksAreNotLookedAt)
{
    SyncDevice &home = device(true);
    SyncDevice &work = device(true);
    auto &edited = home.store.add(aTask().titled("Edited"));
    home.store.add(aTask().titled("Tagged").tagged("shop"));
    auto &behind = home.store.add(aTask().titled("Changed long before"));
    home.store.save();
    for (int run = 0; run < 3; ++run)
        sync(home);

    edited.setTitle("Edited later");
    home.store.save();
    sync(home);
    home.store.all("Tags").front()->setValue("title", std::string("market")); // which writes no task
    home.store.save();
    sync(home);
    sync(work);
    EXPECT_THAT(titles(work.store.all("Tasks")), UnorderedElementsAre("Edited later", "Tagged", "Changed long before"));
    EXPECT_THAT(titles(work.store.all("Tags")), ElementsAre("market"));

    behind.setTitle("Changed");
    home.store.save();
    for (int save = 0; save < 400; ++save) { // more than the store remembers
        edited.setTitle("Edited " + std::to_string(save));
        home.store.save();
    }
    sync(home);
    sync(work);
    EXPECT_THAT(titles(work.store.all("Tasks")), UnorderedElementsAre("Edited 399", "Tagged", "Changed"));
}

TEST_F(Rules, withGuardsAMoveAndTheLastTagTravelToo)
{
    SyncDevice &home = device(true);
    SyncDevice &work = device(true);
    folder(home, "Hobby");
    home.store.add(aTask().titled("Paint").tagged("art"));
    sync(home);
    sync(work);
    work.task("Paint").setRelated("folders", work.store.records().getFolderByTitle("Hobby"));
    work.task("Paint").setTags({});
    work.store.save();
    sync(work);
    sync(home);
    EXPECT_EQ(home.task("Paint").folders()->title(), "Hobby");
    EXPECT_THAT(home.task("Paint").tags(), IsEmpty());
}

TEST_F(Rules, withGuardsAnEditHereKeepsWhatOnlyTheServiceHas)
{
    SyncDevice &home = device(true);
    home.store.add(aTask().titled("Pay rent"));
    sync(home);
    const std::string key = ";key=" + home.settings.text("toodledoKey");
    const std::string id = ";id=" + std::to_string(home.task("Pay rent").taskID());
    ASSERT_NE(service.answer("/api.php?method=editTask" + key + id + ";repeat=2;reminder=60").find("success"),
        std::string::npos);
    home.edit(home.task("Pay rent"), "star", true);
    sync(home);
    const std::string listed = service.answer("/api.php?method=getTasks" + key);
    EXPECT_NE(listed.find("<repeat>2</repeat>"), std::string::npos) << listed;
    EXPECT_NE(listed.find("<reminder>60</reminder>"), std::string::npos);
    EXPECT_NE(listed.find("<star>1</star>"), std::string::npos);
}

TEST_F(Rules, theLengthOfANewTaskArrivesThoughAddingTakesNone)
{
    SyncDevice &home = device(true);
    home.store.add(aTask().titled("Paint")).setLength(45);
    sync(home);
    SyncDevice &work = device(true);
    sync(work);
    EXPECT_EQ(work.task("Paint").length(), 45);
}

TEST_F(Rules, aStoreThatMovesToAnotherAccountIsSentThereAsNew)
{
    SyncDevice &home = device(true);
    folder(home, "Hobby");
    context(home, "Phone");
    home.store.add(aTask().titled("Paint").in("Hobby").doneAt("Phone"));
    sync(home);
    ASSERT_NE(service.answer("/api.php?method=createAccount;email=bob%40example.org;pass=secret%20word").find("added"),
        std::string::npos);
    home.settings.set("ToodleDoUsername", std::string("bob@example.org"));
    sync(home);
    EXPECT_THAT(home.taskTitles(), ElementsAre("Paint"));
    SyncDevice &work = device(true);
    work.settings.set("ToodleDoUsername", std::string("bob@example.org"));
    sync(work);
    EXPECT_EQ(work.task("Paint").folders()->title(), "Hobby");
    EXPECT_EQ(work.task("Paint").contexts()->title(), "Phone");

    home.settings.set("ToodleDoUsername", std::string("ana@example.org"));
    sync(home);
    sync(home);
    EXPECT_THAT(home.taskTitles(), ElementsAre("Paint")) << "the account knows the task of old";
}

TEST_F(Rules, F60_aRestoredStoreWithNewerSettingsLosesNothing)
{
    SyncDevice &home = device(true);
    home.store.add(aTask().titled("Milk"));
    sync(home);
    home.edit(home.task("Milk"), "star", true);
    home.settings.set("dateLastSynched", foundation::Instant{now.seconds + 86400}); // from a life after the backup
    sync(home);
    SyncDevice &work = device(true);
    sync(work);
    EXPECT_TRUE(work.task("Milk").star());
}
