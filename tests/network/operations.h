// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/settings.h"
#include "toodledo/td_api.h"

#include <memory>
#include <span>
#include <string>

namespace network {

// Secrets that must not be seen anywhere but in requests.
inline constexpr std::string_view password = "canary-password";
inline constexpr std::string_view token = "canary-token";
inline constexpr std::string_view heldKey = "canary-key";

/// Whether `text` shows one of them, or what the key is made of.
[[nodiscard]] bool showsSecret(std::string_view text);

/// A client with a key in hand, before its first request to `host`.
class Bench
{
public:
    Bench(const std::string &host, toodledo::HttpTransport &transport);

    [[nodiscard]] toodledo::TDApiEnvironment environment();
    [[nodiscard]] toodledo::TDApi &client() { return *m_client; }
    void adopt(std::unique_ptr<toodledo::TDApi> client) { m_client = std::move(client); }
    /// Makes the next request for a key ask the service.
    void forgetKey();

private:
    foundation::MemorySettingsFile m_file;
    foundation::Settings m_settings;
    foundation::SystemClock m_clock;
    toodledo::HttpTransport &m_transport;
    std::unique_ptr<toodledo::TDApi> m_client;
};

/// One operation of the client: whether it came to a result that is not its failure value.
struct Operation {
    const char *name;
    std::string_view method; ///< the request that meets the fault
    bool (*perform)(Bench &bench, toodledo::TDError &error);
};

[[nodiscard]] std::span<const Operation> operations();

/// What a service in good health replies.
[[nodiscard]] std::string goodReply(const std::string &target);
[[nodiscard]] std::string methodOf(const std::string &target);

} // namespace network
