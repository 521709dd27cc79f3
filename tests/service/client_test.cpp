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

TEST(SecureClient, logsInOverHttpAndKeepsItsTasksOverHttps)
{
    InMemory place({.isSecure = true});
    User ana(place, "ana@example.org");
    const Certificate certificate;
    const auto server = service::HttpServer::start(
        place.service, {.tlsCertificate = certificate.text(), .tlsKey = certificate.keyText()});
    ASSERT_TRUE(server) << server.error();
    const std::string address = (*server)->address();
    support::TestClock clock;
    foundation::MemorySettingsFile file;
    foundation::Settings settings(file, {});
    settings.set("ToodledoHost", "localhost" + address.substr(address.rfind(':')));
    settings.set("EscapeParameterValues", true);
    for (const bool isAccepted : {false, true}) {
        settings.set("AcceptedCertificateDomain", std::string(isAccepted ? "localhost" : ""));
        toodledo::CurlTransport transport(toodledo::transportOptions(settings));
        const auto client = toodledo::TDApi::initWithUsername(
            "ana@example.org", ana.password, {.settings = settings, .transport = transport, .clock = clock});
        ASSERT_TRUE(client);
        EXPECT_EQ(client->userId(), ana.userid());
        toodledo::GtdTask task;
        task.title = "Bread; \xC3\xBC";
        EXPECT_EQ(client->addTask(task), isAccepted ? 1 : -1);
        if (isAccepted) {
            EXPECT_EQ(client->getTasks().value().at(0).title, task.title);
        }
    }
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 1);
}
