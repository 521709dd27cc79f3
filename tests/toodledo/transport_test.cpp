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
        sink.limit = sinkLimit;
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
    std::size_t sinkLimit = std::string::npos;
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
    EXPECT_EQ(failureOf({.body = body}), std::nullopt) << "the next request finds its way";
}

TEST_F(Transport, F27_endsAtTheDeadlineWhateverTheServerDoes)
{
    for (const Mode mode : {Mode::Hang, Mode::Drip, Mode::DripHeader})
        EXPECT_EQ(failureOf({.body = "<tasks/>", .mode = mode}, soon), HttpErrorCode::Deadline)
            << static_cast<int>(mode);
}

TEST_F(Transport, F27_endsWhenItIsCancelled)
{
    for (const Mode mode : {Mode::Hang, Mode::Drip, Mode::DripHeader}) {
        answerWith({.body = "<tasks/>", .mode = mode});
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
    std::stop_source stopped;
    stopped.request_stop();
    const std::size_t seen = server.targets().size();
    EXPECT_EQ(perform(30, stopped.get_token()).error().code, static_cast<int>(HttpErrorCode::Cancelled));
    EXPECT_EQ(server.targets().size(), seen);
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

TEST_F(Transport, F28_unpacksNothing)
{
    EXPECT_EQ(failureOf({.body = "\x1f\x8b\x08packed", .headers = "Content-Encoding: gzip\r\n"}), std::nullopt);
    EXPECT_EQ(sink.body, "\x1f\x8b\x08packed");
}

TEST_F(Transport, F29_followsNoRedirection)
{
    ScriptedHttpServer other([](const std::string &) { return ScriptedReply{.body = "<tasks/>"}; });
    for (const int status : {301, 302, 303, 307, 308})
        for (const std::string &place : {"http://" + other.host() + "/", std::string("file:///etc/hostname"),
                 std::string("/path"), "https://" + other.host() + "/"})
            EXPECT_EQ(failureOf({.body = "moved", .status = status, .headers = "Location: " + place + "\r\n"}),
                HttpErrorCode::Status);
    EXPECT_EQ(other.connections(), 0);
    EXPECT_EQ(sink.body, "");
}

TEST_F(Transport, F30_takesNoStatusBut200)
{
    for (const int status :
        {201, 202, 203, 206, 300, 304, 400, 401, 403, 404, 407, 410, 429, 500, 502, 503, 504, 599}) {
        const std::string body = status == 304 ? "" : "<tasks/>";
        EXPECT_EQ(failureOf({.body = body, .status = status}), HttpErrorCode::Status) << status;
        EXPECT_EQ(sink.body, "") << status;
    }
    answerWith({.status = 503});
    EXPECT_NE(perform().error().detail.find("503"), std::string::npos);
    EXPECT_EQ(failureOf({.status = 204}), HttpErrorCode::Status);
}

TEST_F(Transport, stopsWhenTheReaderWantsNoMore)
{
    sinkLimit = 100'000;
    EXPECT_EQ(failureOf({.mode = Mode::Endless}), HttpErrorCode::Unwanted);
    EXPECT_LT(sink.body.size(), limit);
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
    for (const std::int64_t senseless : {std::int64_t{0}, std::int64_t{-1}}) {
        settings.set("ReplyLimit", senseless);
        EXPECT_EQ(transportOptions(settings).replyLimit, CurlTransport::Options().replyLimit);
    }
    settings.set("ReplyLimit", INT64_MAX);
    EXPECT_GT(transportOptions(settings).replyLimit, std::size_t{1} << 30);
}

namespace {

class Clients : public ServiceClient
{
};

} // namespace

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

TEST_F(Clients, F27_keepTheDeadlineOfTheSettings)
{
    holdKey();
    settings.set("RequestTimeout", std::int64_t{1});
    restart();
    answer("getTasks", {.body = "<tasks>", .mode = Mode::Drip});
    TDError error;
    EXPECT_FALSE(client().getTasks(&error));
    EXPECT_EQ(error.code, 20);
    EXPECT_EQ(client().lastReply().failure->code, static_cast<int>(HttpErrorCode::Deadline));
}
