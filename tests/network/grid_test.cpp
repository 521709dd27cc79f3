// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "network/faults.h"
#include "network/operations.h"
#include "toodledo/curl_transport.h"

#include <atomic>
#include <gmock/gmock.h>
#include <mutex>
#include <thread>

using namespace network;
using testing::IsEmpty;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;
using toodledo::TDError;

namespace {

constexpr double deadline = 0.3; // seconds; a healthy exchange on the loopback takes a thousandth
constexpr std::size_t replyLimit = std::size_t{1} << 20;

/// The program's transport in a hurry.
class HurriedTransport final : public toodledo::HttpTransport
{
public:
    explicit HurriedTransport(double seconds) : m_seconds(seconds) { }

    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        toodledo::HttpRequest hurried = request;
        hurried.deadline = m_seconds;
        return m_transport.perform(hurried, body);
    }
    void setDeadline(double seconds) { m_seconds = seconds; }

private:
    double m_seconds;
    toodledo::CurlTransport m_transport{{.replyLimit = replyLimit, .acceptedCertificateDomain = {}}};
};

/// A transport without any of the real one's care: whatever the server did, the body that it sent is a good reply.
class CredulousTransport final : public toodledo::HttpTransport
{
public:
    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        body.receive(goodReply(request.url));
        return toodledo::HttpReply{200, "text/xml"};
    }
};

/// What the program has logged.
class CollectedLog
{
public:
    CollectedLog()
    {
        foundation::setLogSink([this](std::string_view line) {
            const std::scoped_lock lock(m_mutex);
            m_lines.emplace_back(line);
        });
    }
    CollectedLog(const CollectedLog &) = delete;
    CollectedLog &operator=(const CollectedLog &) = delete;
    ~CollectedLog() { foundation::setLogSink({}); }

    [[nodiscard]] const std::vector<std::string> &lines() const { return m_lines; }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

/// What is wrong with how an operation took a fault; empty when nothing is.
std::string judge(const Fault &fault, bool succeeded, Bench &bench, const TDError &error)
{
    const toodledo::TDReply &reply = bench.client().lastReply();
    if (fault.kind == Fault::Kind::Bad && succeeded && !reply.wasRefused && !reply.failure)
        return "is believed";
    if (showsSecret(error.message) || showsSecret(error.detail))
        return "shows a secret in its error: " + error.message + " / " + error.detail;
    if (reply.failure && (showsSecret(reply.failure->message) || showsSecret(reply.failure->detail)))
        return "shows a secret in the reason: " + reply.failure->detail;
    if (error && error.code == 0)
        return "has an error without a code";
    return {};
}

/// Lets one operation meet one fault, then lets it meet none; tells what is wrong.
std::string tryCell(const Operation &operation, const Fault &fault, toodledo::HttpTransport &transport,
    const std::function<void(double)> &setDeadline)
{
    std::atomic<bool> faulty = true;
    ScriptedHttpServer server([&](const std::string &target) {
        const std::string good = goodReply(target);
        return faulty && fault.reply && methodOf(target) == operation.method ? fault.reply(good, target)
                                                                             : ScriptedReply{.body = good};
    });
    Bench bench(fault.reply ? server.host() : ScriptedHttpServer::refusingHost(), transport);
    setDeadline(deadline);
    TDError error;
    const bool succeeded = operation.perform(bench, error);
    if (std::string wrong = judge(fault, succeeded, bench, error); !wrong.empty())
        return wrong;

    faulty = false;
    setDeadline(30);
    if (!fault.reply)
        return {};
    error = {};
    if (!operation.perform(bench, error) || bench.client().lastReplyWasRefused() || error)
        return "spoils the next request: " + error.message;
    return {};
}

std::vector<std::string> tryGrid()
{
    const auto cells = operations().size() * faults().size();
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::vector<std::string> wrong;
    const auto work = [&] {
        HurriedTransport transport(deadline);
        for (std::size_t cell = next++; cell < cells; cell = next++) {
            const Operation &operation = operations()[cell % operations().size()];
            const Fault &fault = faults()[cell / operations().size()];
            const std::string verdict
                = tryCell(operation, fault, transport, [&](double seconds) { transport.setDeadline(seconds); });
            const std::scoped_lock lock(mutex);
            if (!verdict.empty())
                wrong.push_back(std::string(fault.name) + ": " + operation.name + " " + verdict);
        }
    };
    {
        std::vector<std::jthread> workers;
        for (int i = 0; i < 16; ++i) // they wait more than they work
            workers.emplace_back(work);
    }
    std::printf("%zu faults, %zu operations, %zu cells, %zu failures\n", faults().size(), operations().size(), cells,
        wrong.size());
    return wrong;
}

} // namespace

TEST(NetworkGrid, F25ToF37NoFaultIsBelievedOrOutlastsItsRequest)
{
    const CollectedLog log;
    EXPECT_THAT(tryGrid(), IsEmpty());
    EXPECT_EQ(elsewhere().connections(), 0) << "a redirect was followed";
    for (const std::string &line : log.lines())
        EXPECT_FALSE(showsSecret(line)) << line;
    EXPECT_FALSE(log.lines().empty());
}

TEST(NetworkGrid, theGridCatchesAClientThatBelievesEverything)
{
    const CollectedLog log;
    CredulousTransport transport;
    const std::function<void(double)> anyDeadline = [](double) {};
    int believed = 0;
    for (const Operation &operation : operations())
        believed += tryCell(operation, faults()[1], transport, anyDeadline) == "is believed" ? 1 : 0;
    EXPECT_EQ(believed, static_cast<int>(operations().size()));

    Bench bench("localhost", transport);
    EXPECT_TRUE(showsSecret(bench.client().authenticatedRequestForURLString("localhost/").url))
        << "no secret is under way that could be seen";
}
