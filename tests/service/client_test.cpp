// SPDX-License-Identifier: GPL-3.0-or-later
// The real client against the real service: it logs in over plain http and then talks https to the same port.
#include "foundation/settings.h"
#include "service/caller.h"
#include "service/certificate.h"
#include "service/http_server.h"
#include "support/test_clock.h"
#include "toodledo/curl_transport.h"
#include "toodledo/td_api.h"

using namespace calling;

namespace {

struct SecureClient : ::testing::Test {
    InMemory place{{.isSecure = true}};
    User ana{place, "ana@example.org"};
    Certificate certificate;
    std::unique_ptr<service::HttpServer> server;
    support::TestClock clock;
    foundation::MemorySettingsFile file;
    foundation::Settings settings{file, {}};

    void start(bool isTlsOnly = false)
    {
        auto started = service::HttpServer::start(place.service,
            {.tlsCertificate = certificate.text(), .tlsKey = certificate.keyText(), .isTlsOnly = isTlsOnly});
        ASSERT_TRUE(started) << started.error();
        server = std::move(*started);
        const std::string &address = server->address();
        settings.set("ToodledoHost", "localhost" + address.substr(address.rfind(':')));
        settings.set("EscapeParameterValues", true);
    }
    std::unique_ptr<toodledo::TDApi> logIn(toodledo::HttpTransport &transport)
    {
        return toodledo::TDApi::initWithUsername(
            "ana@example.org", ana.password, {.settings = settings, .transport = transport, .clock = clock});
    }
};

toodledo::GtdTask titled(const char *title)
{
    toodledo::GtdTask task;
    task.title = title;
    return task;
}

} // namespace

TEST_F(SecureClient, logsInOverHttpAndKeepsItsTasksOverHttps)
{
    start();
    settings.set("AcceptedCertificateDomain", "localhost");
    toodledo::CurlTransport transport(toodledo::transportOptions(settings));
    const auto client = logIn(transport);
    ASSERT_TRUE(client);
    EXPECT_EQ(client->userId(), ana.userid());
    EXPECT_EQ(client->addTask(titled("Milk")), 1);
    EXPECT_EQ(client->addTask(titled("Bread; \xC3\xBC")), 2);
    const auto tasks = client->getTasks();
    ASSERT_TRUE(tasks);
    ASSERT_EQ(tasks->size(), 2U);
    EXPECT_EQ(tasks->back().title, "Bread; \xC3\xBC");
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 2);
}

TEST_F(SecureClient, sendsNoTaskWhereTheCertificateIsNotAccepted)
{
    start();
    toodledo::CurlTransport transport(toodledo::transportOptions(settings));
    const auto client = logIn(transport); // plain
    ASSERT_TRUE(client);
    EXPECT_EQ(client->addTask(titled("Milk")), -1);
    ASSERT_TRUE(client->lastReply().failure);
    EXPECT_EQ(client->lastReply().failure->code, static_cast<int>(toodledo::HttpErrorCode::Certificate));
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 0);
}

TEST_F(SecureClient, cannotLogInWherePlainHttpIsRefused)
{
    start(true);
    settings.set("AcceptedCertificateDomain", "localhost");
    toodledo::CurlTransport transport(toodledo::transportOptions(settings));
    EXPECT_FALSE(logIn(transport));
}
