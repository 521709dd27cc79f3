// SPDX-License-Identifier: GPL-3.0-or-later
#include "service_client.h"

#include "collecting_sink.h"

#include <cstdlib>
#include <future>
#include <mutex>

using namespace toodledo;
using Mode = ScriptedReply::Mode;

namespace {

constexpr double soon = 0.5; // seconds, where the deadline is what ends a request

class Transport : public testing::Test
{
protected:
    foundation::Result<HttpReply> perform(double deadline = 30, std::stop_token stop = {})
    {
        sink = CollectingSink();
        return transport.perform({"http://" + server.host() + "/path", deadline, std::move(stop)}, sink);
    }
    /// The code of the error that a reply ends in; nothing when it is a reply.
    std::optional<HttpErrorCode> failureOf(ScriptedReply scripted, double deadline = 30)
    {
        answerWith(std::move(scripted));
        const auto result = perform(deadline);
        if (result)
            return std::nullopt;
        EXPECT_EQ(result.error().domain, httpErrorDomain);
        EXPECT_FALSE(result.error().detail.empty());
        return static_cast<HttpErrorCode>(result.error().code);
    }

    static constexpr std::size_t limit = std::size_t{1} << 20;
    /// What every request from now on is answered with.
    void answerWith(ScriptedReply scripted)
    {
        const std::scoped_lock lock(replyMutex);
        reply = std::move(scripted);
    }

    std::mutex replyMutex;
    ScriptedReply reply;
    CollectingSink sink;
    CurlTransport transport{CurlTransport::Options{.replyLimit = limit, .acceptedCertificateDomain = {}}};
    ScriptedHttpServer server{[this](const std::string &) {
        const std::scoped_lock lock(replyMutex);
        return reply;
    }};
};

} // namespace

TEST_F(Transport, bringsTheBodyAndKeepsTheConnection)
{
    const std::string body(limit, 'x');
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(failureOf({.body = body}), std::nullopt);
        EXPECT_EQ(sink.body, body);
    }
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(perform()->contentType, "text/xml");
}

TEST_F(Transport, F25_failsWhereNobodyListens)
{
    for (const std::string &url : {"http://" + ScriptedHttpServer::refusingHost() + "/", std::string("http:///x"),
             std::string("http://no.such.host.invalid/"), std::string("file:///etc/hostname"), std::string("ftp://h/"),
             std::string("")}) {
        const auto result = transport.perform({.url = url, .stop = {}}, sink);
        ASSERT_FALSE(result) << url;
        EXPECT_EQ(result.error().code, static_cast<int>(HttpErrorCode::Connection)) << url;
    }
    EXPECT_EQ(sink.body, "");
    EXPECT_FALSE(transport.perform({.url = "http:///" + server.host() + "/", .stop = {}}, sink));
    EXPECT_EQ(server.connections(), 0) << "what follows an empty host is no host";
}

TEST_F(Transport, F26_failsWhenTheReplyBreaksOff)
{
    const std::string body(1000, 'x');
    for (const Mode mode : {Mode::CloseAtOnce, Mode::ResetInBody, Mode::CutLength, Mode::BadChunk})
        EXPECT_EQ(failureOf({.body = body, .mode = mode}), HttpErrorCode::Connection) << static_cast<int>(mode);
}

TEST_F(Transport, F27_endsAtTheDeadlineAndWhenItIsCancelled)
{
    for (const Mode mode : {Mode::Hang, Mode::Drip, Mode::DripHeader}) {
        EXPECT_EQ(failureOf({.body = "<tasks/>", .mode = mode}, soon), HttpErrorCode::Deadline);
        std::stop_source stop;
        const std::size_t seen = server.targets().size();
        std::jthread canceller([&] {
            while (server.targets().size() == seen)
                std::this_thread::yield();
            stop.request_stop();
        });
        const auto result = perform(3600, stop.get_token()); // the test's own time limit is far below
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().code, static_cast<int>(HttpErrorCode::Cancelled));
    }
}

TEST_F(Transport, F28_dropsWhatIsTooLarge)
{
    EXPECT_EQ(failureOf({.mode = Mode::Endless}), HttpErrorCode::TooLarge);
    EXPECT_LE(sink.body.size(), limit);
    EXPECT_EQ(failureOf({.body = std::string(limit + 1, 'x')}), HttpErrorCode::TooLarge);
    EXPECT_NE(failureOf({.body = "x", .headers = "X-Long: " + std::string(20 << 20, 'h') + "\r\n"}), std::nullopt);
    std::string many;
    for (int i = 0; i < 100'000; ++i)
        many += "X-Many: h\r\n";
    EXPECT_EQ(failureOf({.body = "x", .headers = many}), HttpErrorCode::TooLarge);
}

TEST_F(Transport, F29_followsNoRedirection)
{
    ScriptedHttpServer other([](const std::string &) { return ScriptedReply{.body = "<tasks/>"}; });
    for (const std::string &place : {"http://" + other.host() + "/", std::string("/path")})
        EXPECT_EQ(failureOf({.body = "moved", .status = 302, .headers = "Location: " + place + "\r\n"}),
            HttpErrorCode::Status);
    EXPECT_EQ(other.connections(), 0);
    EXPECT_EQ(sink.body, "");
}

TEST_F(Transport, F30_takesNoStatusBut200)
{
    for (const int status : {201, 204, 206, 300, 304, 400, 401, 403, 404, 407, 429, 500, 502, 503, 599}) {
        EXPECT_EQ(failureOf({.body = status == 304 || status == 204 ? "" : "<tasks/>", .status = status}),
            HttpErrorCode::Status);
        EXPECT_EQ(sink.body, "") << status;
        EXPECT_NE(perform().error().detail.find(std::to_string(status)), std::string::npos);
    }
}

TEST_F(Transport, asksNoProxyThatTheEnvironmentNames)
{
    for (const char *name : {"http_proxy", "ALL_PROXY"})
        ::setenv(name, "http://127.0.0.1:1", 1);
    EXPECT_EQ(failureOf({.body = "<tasks/>"}), std::nullopt);
    for (const char *name : {"http_proxy", "ALL_PROXY"})
        ::unsetenv(name);
}

TEST(TransportOptions, comeFromTheSettings)
{
    foundation::MemorySettingsFile file;
    foundation::Settings settings(file, {});
    EXPECT_EQ(transportOptions(settings).replyLimit, CurlTransport::Options().replyLimit);
    EXPECT_EQ(transportOptions(settings).acceptedCertificateDomain, "");
    settings.set("ReplyLimit", std::int64_t{2});
    settings.set("AcceptedCertificateDomain", std::string("example.org"));
    EXPECT_EQ(transportOptions(settings).replyLimit, std::size_t{2} << 20);
    EXPECT_EQ(transportOptions(settings).acceptedCertificateDomain, "example.org");
    settings.set("ReplyLimit", std::int64_t{0}); // senseless
    EXPECT_EQ(transportOptions(settings).replyLimit, CurlTransport::Options().replyLimit);
    settings.set("ReplyLimit", INT64_MAX);
    EXPECT_GT(transportOptions(settings).replyLimit, std::size_t{1} << 30);
}

using Clients = ServiceClient;

TEST_F(Clients, F27_makeNoRequestOnceCancelled)
{
    holdKey();
    std::stop_source stop;
    auto stoppable = environment();
    stoppable.stop = stop.get_token();
    TDApi api(stoppable);
    answer("getTasks", "<tasks/>");
    EXPECT_TRUE(api.getTasks());
    stop.request_stop();
    TDError error;
    EXPECT_FALSE(api.getTasks(&error));
    EXPECT_EQ(error.code, 20);
    EXPECT_EQ(requests().size(), 1U);
}

TEST_F(Clients, F28_readAReplyAsItArrivesAndStopWhereItIsBad)
{
    holdKey();
    answer("getTasks", {.mode = Mode::Endless}); // the limit of the transport is far away
    TDError error;
    EXPECT_FALSE(client().getTasks(&error));
    EXPECT_EQ(error.code, 30);
    EXPECT_EQ(error.message, "Toodledo returned a bad result while getting tasks.");
    EXPECT_NE(error.detail.find("markup without end"), std::string::npos) << error.detail;
}
