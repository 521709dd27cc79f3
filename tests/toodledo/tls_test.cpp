// SPDX-License-Identifier: GPL-3.0-or-later
#include "collecting_sink.h"
#include "support/scripted_http_server.h"
#include "toodledo/curl_transport.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <signal.h>

using namespace toodledo;
using testing_support::Greeting;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;
using testing_support::TestCertificate;
using testing_support::TlsIdentity;

namespace {

/// A server that answers every request with "<tasks/>", or as it is told; bare where it has no certificate.
class Server
{
public:
    explicit Server(const std::optional<TestCertificate> &certificate, ScriptedReply reply = {.body = "<tasks/>"})
        : m_reply(std::move(reply))
    {
        ::signal(SIGPIPE, SIG_IGN); // clients hang up in the middle of the greeting
        if (certificate)
            m_identity.emplace(*certificate);
    }

    /// The code of the error of a request to `host`; nothing when the reply came.
    std::optional<HttpErrorCode> failure(const std::string &host, const std::string &acceptedDomain = {})
    {
        CurlTransport transport({.replyLimit = 1 << 20, .acceptedCertificateDomain = acceptedDomain});
        CollectingSink sink;
        const std::string address = m_server.host();
        const std::string url = "https://" + host + address.substr(address.find(':')) + "/";
        const auto result = transport.perform({.url = url, .deadline = 2, .stop = {}}, sink);
        EXPECT_EQ(sink.body, result ? "<tasks/>" : "");
        return result ? std::nullopt : std::optional(static_cast<HttpErrorCode>(result.error().code));
    }
    /// How many requests came through.
    [[nodiscard]] std::size_t requests() const { return m_server.targets().size(); }

private:
    std::optional<TlsIdentity> m_identity;
    ScriptedReply m_reply;
    ScriptedHttpServer m_server{[this](const std::string &) { return m_reply; },
        [this] { return Greeting{.identity = m_identity ? &*m_identity : nullptr}; }};
};

} // namespace

TEST(Tls, F44_refusesACertificateThatSignedItself)
{
    Server server(TestCertificate{});
    EXPECT_EQ(server.failure("localhost"), HttpErrorCode::Certificate);
    EXPECT_EQ(server.requests(), 0) << "nothing of the request may go out";
}

TEST(Tls, F44_overlooksCertificateErrorsOfTheAcceptedDomainAlone)
{
    Server expired(TestCertificate{.hosts = "DNS:elsewhere.example", .validFor = -3600});
    EXPECT_EQ(expired.failure("localhost", "localhost"), std::nullopt);
    EXPECT_EQ(expired.failure("api.localhost", "LocalHost"), std::nullopt);
    EXPECT_EQ(expired.requests(), 2);
    for (const char *domain : {"ocalhost", "api.localhost", "localhost.", ".localhost", "host", "example"})
        EXPECT_EQ(expired.failure("localhost", domain), HttpErrorCode::Certificate) << domain;
    EXPECT_EQ(expired.requests(), 2);
}

TEST(Tls, F44_refusesOldProtocolsAndPlainAnswers)
{
    Server old(TestCertificate{.newestProtocol = TLS1_1_VERSION});
    EXPECT_EQ(old.failure("localhost", "localhost"), HttpErrorCode::Connection);
    Server plain(std::nullopt);
    EXPECT_NE(plain.failure("localhost", "localhost"), std::nullopt);
    EXPECT_EQ(plain.requests(), 0);
}

TEST(Tls, F26_aReplyThatEndsWithItsConnectionWantsAGoodbye)
{
    using enum ScriptedReply::Mode;
    Server polite(TestCertificate{}, {.body = "HTTP/1.1 200 OK\r\n\r\n<tasks/>", .mode = Bytes});
    EXPECT_EQ(polite.failure("localhost", "localhost"), std::nullopt);
    const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n8\r\n<tasks/>\r\n0\r\n\r\n";
    Server curt(TestCertificate{}, {.body = chunked, .mode = Bytes, .tear = testing_support::Tear::NoGoodbye});
    EXPECT_EQ(curt.failure("localhost", "localhost"), std::nullopt) << "it ended before its connection";
}

TEST(CertificateRule, F44_holdsForTheDomainAndWhatIsBelowIt)
{
    for (const char *host : {"example.org", "API.Example.Org", "a.b.example.org"})
        EXPECT_TRUE(allowsAnyHttpsCertificate(host, "example.org")) << host;
    for (const char *host : {"evilexample.org", "example.org.evil.net", "org", "example.orgx", "", "xample.org"})
        EXPECT_FALSE(allowsAnyHttpsCertificate(host, "example.org")) << host;
    EXPECT_FALSE(allowsAnyHttpsCertificate("example.org.", "") || allowsAnyHttpsCertificate("", ""));
}
