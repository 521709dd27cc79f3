// SPDX-License-Identifier: GPL-3.0-or-later
// New tasks that are sent together, to the real service over HTTP: their order, and what befalls one of the requests.
#include "service/http_server.h"
#include "service/service.h"
#include "support/sync_device.h"
#include "toodledo/curl_transport.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <set>

using namespace support;
using syncing::SyncOutcome;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::SizeIs;

namespace {

enum class Fault { None, RequestLost, ReplyLost, CutOffAfter };

/// What the transports of a test share.
struct Line {
    std::vector<std::string> methods = {}; ///< that were asked for, in their order
    std::size_t longestBody = 0;
    std::string struck = "several"; ///< the method that the fault strikes
    std::size_t faultAt = 1; ///< which of its requests, from 1
    Fault fault = Fault::None;
    bool isCut = false;

    [[nodiscard]] std::size_t count(const std::string &method) const
    {
        return static_cast<std::size_t>(std::ranges::count(methods, method));
    }
};

class FaultyLine final : public toodledo::HttpTransport
{
public:
    explicit FaultyLine(Line &line) : m_line(line) { m_line.isCut = false; }
    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        const std::size_t from = request.url.find("method=") + 7;
        m_line.methods.push_back(request.url.substr(from, request.url.find(';', from) - from));
        m_line.longestBody = std::max(m_line.longestBody, request.body.size());
        const bool isStruck = m_line.methods.back() == m_line.struck && m_line.count(m_line.struck) == m_line.faultAt;
        const Fault fault = isStruck ? m_line.fault : Fault::None;
        if (fault == Fault::RequestLost || m_line.isCut)
            return failure();
        struct Nowhere final : toodledo::BodySink {
            bool receive(std::string_view) override { return true; }
        } nowhere;
        m_line.isCut = fault == Fault::CutOffAfter;
        auto reply = m_transport.perform(request, fault == Fault::None ? body : nowhere);
        return fault == Fault::None ? std::move(reply) : failure();
    }

private:
    static foundation::Result<toodledo::HttpReply> failure()
    {
        return foundation::Failure(foundation::Error{
            toodledo::httpErrorDomain, static_cast<int>(toodledo::HttpErrorCode::Connection), {}, "no connection"});
    }

    Line &m_line;
    toodledo::CurlTransport m_transport{toodledo::CurlTransport::Options{}};
};

class Sending : public ::testing::Test
{
protected:
    void start(int mostCalls = 128)
    {
        service = std::make_unique<service::Service>(
            *database, service::ServiceOptions{.tokensPerHour = 1000, .mostCalls = mostCalls, .clock = [this] {
                                                   return static_cast<std::int64_t>(device.store.clock.now().seconds);
                                               }});
        ask("createAccount;email=ana%40example.org;pass=secret%20word");
        server = std::move(service::HttpServer::start(*service).value());
        device.settings.set("ToodledoHost", server->address());
        device.makeTransport = [this] { return std::make_unique<FaultyLine>(line); };
    }
    std::string ask(const std::string &query) { return service->answer("/api.php?method=" + query); }
    void add(const std::string &title) { device.store.add(aTask().titled(title)); }
    /// Adds tasks called "1" to the number.
    void addNumbered(int number)
    {
        for (int i = 1; i <= number; ++i)
            add(std::to_string(i));
    }
    SyncOutcome sync()
    {
        device.store.clock.advance(60);
        return device.sync();
    }

    /// How many ids the tasks here have from the service.
    std::size_t idsHere()
    {
        std::set<std::int64_t> ids;
        for (const model::ManagedObject *task : device.store.all("Tasks"))
            ids.insert(model::as<model::Tasks>(task)->taskID());
        ids.erase(0);
        return ids.size();
    }
    /// The titles of the service's tasks, in the order of their ids.
    std::vector<std::string> sent()
    {
        SyncDevice other(server->address());
        other.store.clock.set(device.store.clock.now());
        EXPECT_EQ(other.sync(), SyncOutcome::Completed);
        std::vector<model::Tasks *> tasks;
        for (model::ManagedObject *task : other.store.all("Tasks"))
            tasks.push_back(model::as<model::Tasks>(task));
        std::ranges::sort(tasks, {}, &model::Tasks::taskID);
        std::vector<std::string> titles;
        for (const model::Tasks *task : tasks)
            titles.emplace_back(task->title());
        return titles;
    }
    static std::vector<std::string> numbers(int last)
    {
        std::vector<std::string> all;
        for (int i = 1; i <= last; ++i)
            all.push_back(std::to_string(i));
        return all;
    }

    std::unique_ptr<service::Database> database = service::Database::inMemory();
    std::unique_ptr<service::Service> service;
    std::unique_ptr<service::HttpServer> server;
    Line line;
    SyncDevice device;
};

/// What strikes a request of several calls.
class StruckSending : public Sending, public ::testing::WithParamInterface<Fault>
{
};

} // namespace

TEST_F(Sending, takesFewRequestsAndKeepsTheOrder)
{
    start();
    addNumbered(300);
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_EQ(line.count("addTask"), 1U);
    EXPECT_EQ(line.count("several"), 8U);
    EXPECT_THAT(sent(), ElementsAreArray(numbers(300)));
    line.methods.clear();
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_EQ(line.count("addTask") + line.count("several") + line.count("editTask"), 0U);
}

TEST_F(Sending, goesOneByOneToAServiceThatTakesNoMore)
{
    start(1);
    addNumbered(10);
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_EQ(line.count("addTask"), 10U);
    EXPECT_EQ(line.count("several"), 0U);
    EXPECT_THAT(sent(), ElementsAreArray(numbers(10)));
}

TEST_F(Sending, fillsNoRequestBeyondWhatServicesTake)
{
    start();
    addNumbered(7);
    for (model::ManagedObject *task : device.store.all("Tasks"))
        task->setValue("notes", std::string(200'000, 'n'));
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_EQ(line.count("several"), 3U) << "of two each";
    EXPECT_LE(line.longestBody, std::size_t{512} << 10);
    EXPECT_THAT(sent(), ElementsAreArray(numbers(7)));
}

TEST_F(Sending, sendsLengthsAfterTheTasksAndTellsOfTheOneThatIsRefused)
{
    start();
    addNumbered(2);
    add(std::string(17'000, 't'));
    device.store.add(aTask().titled("4")).setLength(45);
    EXPECT_EQ(sync(), SyncOutcome::Incomplete);
    ASSERT_THAT(device.host.errors, SizeIs(1));
    EXPECT_THAT(device.host.errors.front().message, HasSubstr("title is too long"));
    EXPECT_THAT(sent(), ElementsAre("1", "2", "4"));
    EXPECT_THAT(ask("getTasks;key=" + device.settings.text("toodledoKey")), HasSubstr("<length>45</length>"));
    EXPECT_FALSE(device.task("4").isNew());
    EXPECT_TRUE(device.task(std::string(17'000, 't')).isNew());
}

TEST_F(Sending, F02_aTaskIsThereOnceThoughAnotherComputerChangedItBeforeItsAddWasAnswered)
{
    start();
    SyncDevice work(server->address());
    const auto syncThere = [&] {
        device.store.clock.advance(60);
        work.store.clock.set(device.store.clock.now());
        EXPECT_EQ(work.sync(), SyncOutcome::Completed);
        work.store.clock.advance(30);
    };
    device.store.add(aTask().titled("Milk")).setValue("reminder", std::int64_t{5});
    line.struck = "addTask";
    line.fault = Fault::CutOffAfter;
    EXPECT_EQ(sync(), SyncOutcome::Incomplete);
    line.fault = Fault::None;
    syncThere();
    work.edit(work.task("Milk"), "title", std::string("Oat milk"));
    syncThere();

    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_THAT(device.store.all("Tasks"), SizeIs(1));
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    EXPECT_EQ(device.task("Oat milk").integer("reminder"), 5) << "it is the one that was made here";
    syncThere();
    EXPECT_THAT(work.taskTitles(), ElementsAre("Oat milk"));
}

TEST_P(StruckSending, doublesAndLosesNothing)
{
    start();
    addNumbered(5);
    add("5"); // nothing tells it from the one before
    addNumbered(12);
    line.fault = GetParam();
    line.faultAt = 2; // that of the tasks 4 to 7
    const SyncOutcome outcome = sync();
    EXPECT_EQ(outcome, line.fault == Fault::ReplyLost ? SyncOutcome::Completed : SyncOutcome::Incomplete);
    EXPECT_EQ(device.host.errors.empty(), outcome == SyncOutcome::Completed);
    EXPECT_EQ(line.count("several"), 2U) << "who knows whether such requests get through";
    EXPECT_EQ(idsHere(), line.fault == Fault::ReplyLost ? 18U : line.fault == Fault::RequestLost ? 14U : 3U);
    line.fault = Fault::None;
    EXPECT_EQ(sync(), SyncOutcome::Completed);
    auto all = numbers(12);
    for (const char *title : {"1", "2", "3", "4", "5", "5"})
        all.emplace_back(title);
    EXPECT_THAT(sent(), ::testing::UnorderedElementsAreArray(all));
    EXPECT_EQ(idsHere(), all.size());
    EXPECT_THAT(device.taskTitles(), SizeIs(all.size()));
}

INSTANTIATE_TEST_SUITE_P(
    OfTheRequest, StruckSending, ::testing::Values(Fault::RequestLost, Fault::ReplyLost, Fault::CutOffAfter));
