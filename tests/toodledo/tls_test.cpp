// SPDX-License-Identifier: GPL-3.0-or-later
#include "collecting_sink.h"
#include "support/scripted_http_server.h"
#include "tls_server.h"
#include "toodledo/curl_transport.h"

#include <gtest/gtest.h>
#include <signal.h>

using namespace toodledo;

namespace {

class Tls : public testing::Test
{
protected:
    Tls() { ::signal(SIGPIPE, SIG_IGN); } // clients hang up in the middle of the greeting

    /// The code of the error of a request to `host`; nothing when the reply came.
    static std::optional<HttpErrorCode> failure(
        const std::string &host, const std::string &port, const std::string &acceptedDomain = {})
    {
        CurlTransport transport({.replyLimit = 1 << 20, .acceptedCertificateDomain = acceptedDomain});
        CollectingSink sink;
        const auto reply = transport.perform({.url = "https://" + host + ":" + port + "/", .stop = {}}, sink);
        EXPECT_EQ(sink.body, reply ? "<tasks/>" : "");
        return reply ? std::nullopt : std::optional(static_cast<HttpErrorCode>(reply.error().code));
    }
};

} // namespace

TEST_F(Tls, F44_refusesACertificateThatSignedItself)
{
    TlsServer server({});
    EXPECT_EQ(failure("localhost", server.port()), HttpErrorCode::Certificate);
    EXPECT_EQ(server.requests(), 0) << "nothing of the request may go out";
}

TEST_F(Tls, F44_overlooksCertificateErrorsOfTheAcceptedDomainAlone)
{
    TlsServer expired({.name = "elsewhere.example", .validFor = -3600});
    EXPECT_EQ(failure("localhost", expired.port(), "localhost"), std::nullopt);
    EXPECT_EQ(failure("api.localhost", expired.port(), "LocalHost"), std::nullopt);
    EXPECT_EQ(expired.requests(), 2);
    for (const char *domain : {"ocalhost", "api.localhost", "localhost.", ".localhost", "host", "example"})
        EXPECT_EQ(failure("localhost", expired.port(), domain), HttpErrorCode::Certificate) << domain;
    EXPECT_EQ(expired.requests(), 2);
}

TEST_F(Tls, F44_refusesOldProtocolsAndPlainAnswers)
{
    TlsServer old({});
    old.speakOnlyOldProtocols();
    EXPECT_EQ(failure("localhost", old.port(), "localhost"), HttpErrorCode::Connection);
    testing_support::ScriptedHttpServer plain([](const std::string &) { return testing_support::ScriptedReply{}; });
    const std::string port = plain.host().substr(plain.host().find(':') + 1);
    CurlTransport transport({.replyLimit = 1 << 20, .acceptedCertificateDomain = "localhost"});
    CollectingSink sink;
    EXPECT_FALSE(transport.perform({.url = "https://localhost:" + port + "/", .deadline = 1, .stop = {}}, sink));
    EXPECT_TRUE(plain.targets().empty());
}

TEST(CertificateRule, F44_holdsForTheDomainAndWhatIsBelowIt)
{
    for (const char *host : {"example.org", "API.Example.Org", "a.b.example.org"})
        EXPECT_TRUE(allowsAnyHttpsCertificate(host, "example.org")) << host;
    for (const char *host : {"evilexample.org", "example.org.evil.net", "org", "example.orgx", "", "xample.org"})
        EXPECT_FALSE(allowsAnyHttpsCertificate(host, "example.org")) << host;
    EXPECT_FALSE(allowsAnyHttpsCertificate("example.org", "") || allowsAnyHttpsCertificate("", ""));
}
