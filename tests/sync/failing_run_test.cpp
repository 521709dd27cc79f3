// SPDX-License-Identifier: GPL-3.0-or-later
// What a run tells the user, step by step, when all goes well and when the service fails at any point.
#include "foundation/log.h"
#include "support/scripted_http_server.h"
#include "support/sync_device.h"

#include <SQLiteCpp/Database.h>
#include <algorithm>
#include <deque>
#include <gmock/gmock.h>
#include <map>
#include <mutex>
#include <thread>

using namespace support;
using syncing::SyncOutcome;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;

namespace {

/// A service that answers each method with the same text; empty lists unless a test says otherwise.
class Service
{
public:
    Service() : server([this](const std::string &target) { return replyTo(methodOf(target)); }) { }

    /// From now on the method is answered so.
    void answer(const std::string &method, ScriptedReply reply)
    {
        const std::lock_guard lock(m_mutex);
        m_replies[method] = {std::move(reply)};
    }
    /// From now on the method is answered by these in turn, and then by the last for ever.
    void answerInTurn(const std::string &method, std::deque<ScriptedReply> replies)
    {
        const std::lock_guard lock(m_mutex);
        m_replies[method] = std::move(replies);
    }
    /// From now on this happens before the method is answered.
    void before(const std::string &method, std::function<void()> happening)
    {
        const std::lock_guard lock(m_mutex);
        m_happenings[method] = std::move(happening);
    }

    static std::string methodOf(const std::string &target)
    {
        const std::size_t from = target.find("method=") + 7;
        return target.substr(from, target.find(';', from) - from);
    }
    [[nodiscard]] std::vector<std::string> methods() const
    {
        std::vector<std::string> asked;
        for (const std::string &target : server.targets())
            asked.push_back(methodOf(target));
        return asked;
    }

private:
    ScriptedReply replyTo(const std::string &method)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto &happening = m_happenings[method])
            happening();
        std::deque<ScriptedReply> &replies = m_replies[method];
        if (replies.empty())
            return {};
        ScriptedReply reply = replies.front();
        if (replies.size() > 1)
            replies.pop_front();
        return reply;
    }

    std::mutex m_mutex;
    std::map<std::string, std::function<void()>> m_happenings;
    std::map<std::string, std::deque<ScriptedReply>> m_replies{{"getUserid", {{"<userid>a1b2</userid>"}}},
        {"getToken", {{"<token>td1</token>"}}},
        {"getServerInfo", {{"<server><unixtime>1790000000</unixtime></server>"}}},
        {"getAccountInfo", {{"<account><userid>a1b2</userid><pro>0</pro><timezone>0</timezone></account>"}}},
        {"getFolders", {{"<folders></folders>"}}}, {"getContexts", {{"<contexts></contexts>"}}},
        {"getTasks", {{"<tasks></tasks>"}}}, {"getDeleted", {{"<deleted></deleted>"}}},
        {"addTask", {{"<added>41</added>"}}}, {"editTask", {{"<success>1</success>"}}}};

public:
    ScriptedHttpServer server; ///< last: its threads end before what they read
};

const std::string refusal = "<error>key did not validate</error>";
const std::string problem = "Could not synchronize with Toodledo.";
const std::string limitAlert
    = "Could not synchronize with Toodledo. The most likely cause is that you have reached the "
      "hourly synch limit of ToodleDo. Wait and try again later.";

} // namespace

TEST(SyncRun, tellsItsStepsInOrderAndStoresItsDate)
{
    Service service;
    SyncDevice device(service.server.host());
    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_THAT(device.host.statuses,
        ElementsAre("Test message", "Beginning sync process", "Logging in to Toodledo...", "Retrieving folders...",
            "Deleting folders on server.", "Retrieving contexts...", "Retrieving tasks...", "Synchronizing tasks",
            "Getting new tasks", "Sending new folders", "Getting deleted tasks", "Sending new tasks",
            "Sending deleted tasks", "Saving data", ""));
    EXPECT_THAT(
        device.host.events, ElementsAre("saveAction", "QVLSyncDidBegin", "unregister", "register", "QVLSyncDidEnd"));
    EXPECT_THAT(device.host.notifications,
        ElementsAre("Starting Toodledo sync: Toodledo sync may take a few moments.",
            "Toodledo Sync Complete: Toodledo synchronization completed."));
    EXPECT_THAT(device.host.alerts, IsEmpty());
    EXPECT_EQ(device.settings.date("dateLastSynched"), device.store.clock.now());
    EXPECT_THAT(service.methods(),
        ElementsAre("getUserid", "getToken", "getServerInfo", "getAccountInfo", "getFolders", "getContexts", "getTasks",
            "getFolders", "getContexts", "getDeleted"));
}

TEST(SyncRun, readsTasksAnewWhereTheSameBytesNameAnotherContextOrWhereOneHasChangedHere)
{
    Service service;
    const std::string list = "<tasks><task><id>5</id><title>Milk</title><context>Shop</context></task>"
                             "<task><id>6</id><title>Bread</title></task></tasks>";
    service.answer("getTasks", {list});
    service.answer("getContexts", {"<contexts><context id=\"1\">Shop</context></contexts>"});
    SyncDevice device(service.server.host());
    const auto contextOfMilk = [&device] {
        const model::Contexts *context = device.task("Milk").contexts();
        return context ? context->contextID() : 0;
    };
    const auto edits = [&service] { return std::ranges::count(service.methods(), "editTask"); };
    for (int run = 0; run < 3; ++run)
        EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_EQ(contextOfMilk(), 1);
    EXPECT_EQ(edits(), 0);

    service.answer("getContexts",
        {"<contexts><context id=\"1\">Shop of old</context><context id=\"2\">Shop</context></contexts>"});
    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_EQ(contextOfMilk(), 2);

    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    device.edit(device.task("Bread"), "title", std::string("Dark bread"));
    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_EQ(edits(), 1);
}

struct Failure {
    std::string method;
    ScriptedReply reply;
    SyncOutcome outcome;
    std::string status; ///< one of those that were shown
    std::string alert; ///< title, or empty where there is none
    std::string presented; ///< part of a sentence that was shown
    bool guards = true;

    friend void PrintTo(const Failure &failure, std::ostream *stream)
    {
        *stream << failure.method << ": " << failure.status;
    }
};

class FailingRun : public ::testing::TestWithParam<Failure>
{
};

TEST_P(FailingRun, saysWhatIsWrongAndEndsInOrder)
{
    const Failure &failure = GetParam();
    Service service;
    service.answer(failure.method, failure.reply);
    SyncDevice device(service.server.host(), failure.guards);
    device.store.add(aTask().titled("Milk"));

    EXPECT_EQ(device.sync(), failure.outcome);
    EXPECT_THAT(device.host.statuses, Contains(failure.status));
    ASSERT_THAT(device.host.alerts, SizeIs(failure.alert.empty() ? 0U : 1U));
    EXPECT_EQ(failure.alert.empty() ? "" : device.host.alerts.front().title, failure.alert);
    std::string presented;
    for (const auto &error : device.host.errors)
        presented += error.message + "\n";
    EXPECT_THAT(presented, HasSubstr(failure.presented));
    EXPECT_THAT(presented, Not(HasSubstr("secret word")));
    EXPECT_THAT(
        device.host.events, ElementsAre("saveAction", "QVLSyncDidBegin", "unregister", "register", "QVLSyncDidEnd"));
    const bool isDated = failure.outcome != SyncOutcome::Failed;
    EXPECT_EQ(device.settings.date("dateLastSynched").has_value(), isDated);
}

INSTANTIATE_TEST_SUITE_P(AtEachRequest, FailingRun,
    ::testing::Values(Failure{"getUserid", {"<userid>1</userid>"}, SyncOutcome::Failed, "Could not log on to Toodledo.",
                          "Login problem", ""},
        Failure{"getUserid", {"<nonsense>"}, SyncOutcome::Failed, "Could not log on to Toodledo.", "Login problem",
            "Cannot log into Toodledo. Your credentials may be incorrect."},
        Failure{"getUserid", {"<error>too many failed logins</error>"}, SyncOutcome::Failed,
            "Could not log on to Toodledo.", "Login problem", "too many failed logins"},
        Failure{"getFolders", {refusal}, SyncOutcome::Failed, problem, "Synchronization problem",
            "Too many synchronizations"},
        Failure{"getFolders", {refusal}, SyncOutcome::Failed, problem, "Synchronization problem", "", false},
        Failure{"getFolders", {"<html><body>Welcome to the hotel</body></html>"}, SyncOutcome::Failed, problem,
            "Synchronization problem", "could not be understood"},
        Failure{"getContexts", {"<contexts>"}, SyncOutcome::Failed, problem, "", "getting contexts."},
        Failure{"getContexts", {.body = "", .mode = ScriptedReply::Mode::CloseAtOnce}, SyncOutcome::Failed, problem, "",
            ""},
        Failure{"getTasks", {"<tasks>"}, SyncOutcome::Incomplete, "Saving data", "", "getting tasks."},
        Failure{"getTasks", {"<tasks>"}, SyncOutcome::Incomplete, "Sending new tasks", "", "getting tasks.", false},
        Failure{"getDeleted", {"<oops/>"}, SyncOutcome::Incomplete, "Sending new tasks", "", "could not be understood"},
        Failure{"addTask", {"<error>empty title</error>"}, SyncOutcome::Incomplete, "Saving data", "",
            "\"Milk\". empty title"},
        Failure{"addTask", {.body = "", .status = 500}, SyncOutcome::Incomplete, "Saving data", "", ""}));

TEST(SyncRun, F39_aRefusedAddLeavesTheTaskNewAndTheNextRunSendsIt)
{
    Service service;
    service.answer("addTask", {refusal});
    SyncDevice device(service.server.host());
    device.store.add(aTask().titled("Milk"));
    device.store.add(aTask().titled("Bread"));
    device.sync();
    EXPECT_TRUE(device.task("Milk").isNew());
    EXPECT_EQ(device.task("Milk").taskID(), 0);
    EXPECT_EQ(std::ranges::count(service.methods(), "addTask"), 1) << "after a refused key nothing more is sent";

    service.answer("addTask", {"<added>41</added>"});
    device.store.clock.advance(60);
    device.sync();
    EXPECT_FALSE(device.task("Milk").isNew());
    EXPECT_EQ(device.task("Milk").taskID(), 41);
}

TEST(SyncRun, F42_aSecondRunIsRefusedWithASentence)
{
    Service service;
    service.answer("getTasks", {.body = "", .mode = ScriptedReply::Mode::Hang});
    SyncDevice device(service.server.host());
    syncing::ToodledoSync first({device.store.store(), device.settings, device.store.clock, device.host});
    ASSERT_TRUE(first.startSyncTasks());
    syncing::ToodledoSync second({device.store.store(), device.settings, device.store.clock, device.host});
    const auto refused = second.startSyncTasks();
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().message, HasSubstr("already under way"));
    first.cancel();
    first.wait();

    const std::filesystem::path lock = device.store.store().file().string() + ".sync-lock";
    std::filesystem::remove(lock);
    std::filesystem::create_directory(lock); // in the way of a file, as a full disk or a folder to be read only is
    const auto unlocked = second.startSyncTasks();
    ASSERT_FALSE(unlocked);
    EXPECT_THAT(unlocked.error().message, HasSubstr("cannot write its lock file"));
    EXPECT_THAT(unlocked.error().detail, HasSubstr(lock.string() + ": "));
    std::filesystem::remove(lock);
    EXPECT_TRUE(second.startSyncTasks());
}

TEST(SyncRun, anAddThatWentUnansweredIsNotSentAgainBecauseAnOldListLacksIt)
{
    Service service;
    SyncDevice device(service.server.host());
    device.store.add(aTask().titled("Milk"));
    service.answer("addTask", {.body = "", .mode = ScriptedReply::Mode::CloseAtOnce});
    EXPECT_EQ(device.sync(), SyncOutcome::Incomplete);
    EXPECT_EQ(std::ranges::count(service.methods(), "addTask"), 1) << "sent twice in one run";

    service.answerInTurn(
        "getTasks", {{"<tasks></tasks>"}, {"<tasks><task><id>41</id><title>Milk</title></task></tasks>"}});
    service.answer("addTask", {"<added>42</added>"});
    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_EQ(device.task("Milk").taskID(), 41);
    EXPECT_EQ(std::ranges::count(service.methods(), "addTask"), 1);

    device.store.add(aTask().titled("Bread"));
    service.answer("addTask", {.body = "", .mode = ScriptedReply::Mode::CloseAtOnce});
    device.sync();
    service.answer("addTask", {"<added>42</added>"});
    EXPECT_EQ(device.sync(), SyncOutcome::Completed);
    EXPECT_EQ(device.task("Bread").taskID(), 42) << "two lists lack it";
    EXPECT_THAT(service.server.targets(), Not(Contains(HasSubstr("mark=")))) << "the service has not said it knows any";
}

TEST(SyncRun, aRecordThatCannotBeReadIsNotLeftWithTheIdOfAnotherAccount)
{
    Service service;
    service.answer("getFolders", {"<folders><folder id=\"7\">Hobby</folder></folders>"});
    SyncDevice device(service.server.host());
    device.store.add(aTask().titled("Milk"));
    ASSERT_EQ(device.sync(), SyncOutcome::Completed);

    const auto alter = [file = device.store.store().file().string()](
                           const char *sql) { SQLite::Database(file, SQLite::OPEN_READWRITE).exec(sql); };
    const auto mend = [&alter] { alter("ALTER TABLE Folders RENAME COLUMN hidden TO folderID"); };
    service.answer("getUserid", {"<userid>c3d4</userid>"});
    service.before("getAccountInfo", [&alter] { alter("ALTER TABLE Folders RENAME COLUMN folderID TO hidden"); });
    service.before("getFolders", mend);
    EXPECT_EQ(device.sync(), SyncOutcome::Failed);
    EXPECT_THAT(device.host.errors, SizeIs(1));
    EXPECT_THAT(device.host.statuses, Contains(problem));
    mend();
    EXPECT_EQ(device.task("Milk").taskID(), 41) << "what could be read is saved no more than the rest";
}

TEST(SyncRun, F27_aCancelledRunEndsQuietlyAndKeepsItsDate)
{
    Service service;
    SyncDevice device(service.server.host());
    service.answer("getTasks", {.body = "", .mode = ScriptedReply::Mode::Hang});
    syncing::ToodledoSync run({device.store.store(), device.settings, device.store.clock, device.host});
    ASSERT_TRUE(run.startSyncTasks());
    while (!std::ranges::count(service.methods(), "getTasks"))
        std::this_thread::yield();
    run.cancel();
    run.wait();
    EXPECT_EQ(run.outcome(), SyncOutcome::Cancelled);
    EXPECT_THAT(device.host.alerts, IsEmpty());
    EXPECT_THAT(device.host.errors, IsEmpty());
    EXPECT_EQ(device.host.events.back(), "QVLSyncDidEnd");
    EXPECT_FALSE(device.settings.date("dateLastSynched"));
}

TEST(SyncRun, F40_aMassDeletionAsksFirst)
{
    Service service;
    std::string tasks;
    std::string deleted;
    for (int id = 1; id <= 5; ++id) {
        tasks += "<task><id>" + std::to_string(id) + "</id><title>Task " + std::to_string(id)
            + "</title><modified>2026-01-01 00:00:00</modified></task>";
        deleted += "<task><id>" + std::to_string(id) + "</id><stamp>2026-01-02 00:00:00</stamp></task>";
    }
    service.answer("getTasks", {"<tasks>" + tasks + "</tasks>"});
    service.answer("getContexts", {"<contexts><context id=\"8\">Phone</context></contexts>"});
    SyncDevice device(service.server.host());
    device.sync();
    ASSERT_THAT(device.taskTitles(), SizeIs(5));

    service.answer("getTasks", {"<tasks></tasks>"});
    service.answer("getContexts", {"<contexts></contexts>"});
    service.answer("getDeleted", {"<deleted>" + deleted + "</deleted>"});
    device.store.clock.advance(60);
    EXPECT_EQ(device.sync(), SyncOutcome::Incomplete);
    EXPECT_THAT(device.host.questions,
        ElementsAre("The service says that 1 of your 1 contexts were deleted there. Delete them here too?",
            "The service says that 5 of your 5 tasks were deleted there. Delete them here too?"));
    EXPECT_THAT(device.taskTitles(), SizeIs(5));
    EXPECT_TRUE(device.store.records().getContextByTitle("Phone"));

    device.host.answer = true;
    device.sync();
    EXPECT_THAT(device.taskTitles(), IsEmpty());
    EXPECT_FALSE(device.store.records().getContextByTitle("Phone"));
}

TEST(SyncRun, F37_idsThatNoServiceGivesMatchAndDeleteNothing)
{
    Service service;
    service.answer("addTask", {"<added>0</added>"});
    service.answer("getTasks",
        {"<tasks><task><id>0</id><title>Zero</title></task><task><id>-4</id><title>Minus</title>"
         "</task><task><id>4294967338</id><title>Beyond</title></task></tasks>"});
    service.answer("getDeleted", {"<deleted><task><id>0</id></task><task><id>x</id></task></deleted>"});
    SyncDevice device(service.server.host());
    device.store.add(aTask().titled("Unsent"));
    device.store.add(aTask().titled("Trashed").inTheTrash());
    device.sync();
    EXPECT_THAT(device.taskTitles(), ElementsAre("Unsent"));
    EXPECT_TRUE(device.task("Unsent").isNew()) << "0 is no id to be known by";
    EXPECT_THAT(service.methods(), Not(Contains("deleteTask"))) << "a task that was never sent is deleted here alone";
}
