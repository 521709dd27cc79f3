// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/caller.h"
#include "service/http_client.h"
#include "service/http_server.h"

#include <atomic>
#include <thread>

using namespace calling;
using namespace std::chrono_literals;

namespace {

struct Http : ::testing::Test {
    InMemory place;
    User ana{place, "ana@example.org"};
    std::unique_ptr<service::HttpServer> server;

    void start(service::HttpOptions options = {})
    {
        auto started = service::HttpServer::start(place.service, std::move(options));
        ASSERT_TRUE(started) << started.error();
        server = std::move(*started);
    }
    std::string url(const std::string &method, Parameters parameters)
    {
        parameters.emplace(parameters.begin(), "key", ana.key);
        return "http://" + server->address() + target(method, parameters);
    }
};

} // namespace

TEST_F(Http, answersGetAndPost)
{
    start();
    HttpClient client;
    EXPECT_EQ(inside(client.get(url("addTask", {{"title", "By GET; ü"}})).body, "added"), "1");
    std::string note;
    for (int i = 0; i < 32'000; ++i) // the longest, all of it escaped
        note += "\xF0\x9F\x8D\x9E";
    const std::string body = "method=addTask&key=" + ana.key + "&title=By%20POST&note=" + escaped(note);
    EXPECT_EQ(inside(client.post("http://" + server->address() + "/api.php", body).body, "added"), "2");
    const auto list = client.get(url("getTasks", {}));
    EXPECT_EQ(list.status, 200);
    EXPECT_EQ(list.type, "text/xml; charset=utf-8");
    EXPECT_EQ(inside(list.body, "title"), "By GET; ü");
    EXPECT_NE(list.body.find("<note>" + note + "</note>"), std::string::npos);
    EXPECT_EQ(client.get("http://" + server->address() + "/other").status, 404);
    EXPECT_EQ(client.get("http://" + server->address() + "/api.php?method=none").status, 200);
}

TEST_F(Http, refusesRequestsThatAreTooLargeAsAWhole)
{
    start();
    HttpClient client;
    const std::string huge(2'000'000, 'x');
    const auto line = client.get(url("addTask", {{"title", "x"}, {"note", huge}}));
    EXPECT_TRUE(line.status == 0 || line.status >= 400) << line.status; // cut while it is still sent, or told
    const auto body = client.post(url("addTask", {{"title", "x"}}), "note=" + huge);
    EXPECT_EQ(body.status, 413);
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 0);
    EXPECT_EQ(client.get(url("getTasks", {})).status, 200);
}

TEST_F(Http, F58_survivesTornRequests)
{
    start();
    const std::string whole = "GET " + target("addTask", {{"key", ana.key}, {"title", "Torn"}}) + " HTTP/1.1\r\n\r\n";
    for (std::size_t length = 1; length < whole.size() - 2; length += 7)
        RawSocket(server->address()).send(whole.substr(0, length));
    for (const char *nonsense : {"\r\n\r\n", "GET\r\n\r\n", "\x16\x03\x01", "GET / HTTP/9\r\n\r\n",
             "POST /api.php HTTP/1.1\r\n"
             "Content-Length: -1\r\n\r\n"})
        RawSocket(server->address()).send(nonsense);
    HttpClient client;
    EXPECT_EQ(inside(client.get(url("addTask", {{"title", "Whole"}})).body, "added"), "1");
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 1);
}

TEST_F(Http, endsWhileRequestsThatItRefusesArrive)
{
    for (int i = 0; i < 200; ++i) {
        start();
        for (int client = 0; client < 8; ++client)
            RawSocket(server->address()).send("POST /api.php HTTP/1.1\r\nContent-Length: -1\r\n\r\n");
        std::this_thread::sleep_for(i % 20 * 10us);
        server.reset();
    }
}

TEST_F(Http, F58_cutsAClientThatTricklesOrSaysNothing)
{
    start({.requestTime = 200ms});
    EXPECT_TRUE(RawSocket(server->address()).isCut());
    RawSocket socket(server->address());
    socket.send("GET /api.php?");
    bool isCut = false;
    for (int i = 0; i < 400 && !isCut; ++i) { // a byte now and then, so that it is never idle
        isCut = !socket.send("a");
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_TRUE(isCut);
}

TEST_F(Http, F58_countsConnectionsThatSayNothingUntilTheyEnd)
{
    for (const service::HttpOptions &options :
        {service::HttpOptions{.mostConnections = 3}, service::HttpOptions{.mostConnectionsOfAnAddress = 3}}) {
        start(options);
        HttpClient client;
        {
            const RawSocket first(server->address());
            const RawSocket second(server->address());
            EXPECT_EQ(client.get(url("getTasks", {})).status, 200); // the third
            EXPECT_TRUE(RawSocket(server->address()).isCut());
        }
        bool hasRoom = false;
        for (int i = 0; i < 400 && !hasRoom; ++i) {
            std::this_thread::sleep_for(5ms); // until the service has seen their end
            hasRoom = HttpClient().get(url("getTasks", {})).status == 200;
        }
        EXPECT_TRUE(hasRoom);
    }
}

TEST_F(Http, cutsTlsWhereThereIsNoCertificate)
{
    start();
    RawSocket socket(server->address());
    socket.send("\x16\x03\x01");
    EXPECT_TRUE(socket.isCut());
}

TEST(HttpServer, tellsWhyItCannotListen)
{
    InMemory place;
    const auto first = service::HttpServer::start(place.service);
    ASSERT_TRUE(first);
    for (const std::string &address : {(*first)->address(), std::string("nowhere"), std::string("127.0.0.1:x"),
             std::string("127.0.0.1:70000"), std::string("192.0.2.1:0")}) {
        const auto second = service::HttpServer::start(place.service, {.listenAt = address});
        ASSERT_FALSE(second) << address;
        EXPECT_TRUE(second.error().ends_with(".")) << second.error();
    }
}

TEST_F(Http, takesARequestInPieces)
{
    start();
    RawSocket socket(server->address());
    const std::string whole
        = "GET " + target("addTask", {{"key", ana.key}, {"title", "Slow"}}) + " HTTP/1.1\r\nHost: x\r\n\r\n";
    for (const char character : whole)
        socket.send(std::string(1, character));
    EXPECT_NE(socket.receiveUntil("</added>").find("<added>1</added>"), std::string::npos);
}

TEST_F(Http, servesManyClientsAtOnce)
{
    start();
    std::atomic<int> added = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 16; ++t)
        threads.emplace_back([&] {
            HttpClient client;
            for (int i = 0; i < 25; ++i)
                added += inside(client.get(url("addTask", {{"title", "x"}})).body, "added") != "(none)";
        });
    threads.clear();
    EXPECT_EQ(added, 400);
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 400);
}
