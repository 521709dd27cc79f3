// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/scripted_http_server.h"

#include <openssl/ssl.h>
#include <span>
#include <string>

namespace network {

/// What a network or a server can do instead of answering.
struct Fault {
    enum class Kind {
        Bad, ///< nothing of the reply may be believed
        Odd ///< a true reply with records that make no sense: what they are worth is for others to judge
    };

    const char *name;
    /// Makes the reply from the good one and the request's target; where there is none, the requests are answered well.
    testing_support::ScriptedReply (*reply)(const std::string &good, const std::string &target);
    Kind kind = Kind::Bad;
    /// How connections are met; where neither this nor a reply is given, they are refused.
    testing_support::Greeting (*greeting)() = nullptr;

    [[nodiscard]] bool isRefusal() const { return !reply && !greeting; }
};

/// Those that any server can commit.
[[nodiscard]] std::span<const Fault> faults();
/// Those that take a server that speaks TLS.
[[nodiscard]] std::span<const Fault> tlsFaults();

/// What servers show.
struct Identities {
    testing_support::TlsIdentity good{testing_support::TestCertificate{}};
    testing_support::TlsIdentity goodForTls12{testing_support::TestCertificate{.newestProtocol = TLS1_2_VERSION}};
    testing_support::TlsIdentity expired{testing_support::TestCertificate{.validFor = -60}};
    testing_support::TlsIdentity ofAnotherHost{testing_support::TestCertificate{.hosts = "DNS:elsewhere.example"}};
    testing_support::TlsIdentity ofNobody{testing_support::TestCertificate{}};
    testing_support::TlsIdentity ofThePast{testing_support::TestCertificate{.newestProtocol = TLS1_1_VERSION}};

    /// What makes a client trust all but the last two.
    [[nodiscard]] std::string authorities() const;
};
[[nodiscard]] const Identities &identities();

/// An address that redirects lead to, and that nothing may ever ask.
[[nodiscard]] const testing_support::ScriptedHttpServer &elsewhere();

} // namespace network
