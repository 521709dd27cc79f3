// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/scripted_http_server.h"
#include "support/test_clock.h"
#include "toodledo/curl_transport.h"
#include "toodledo/td_api.h"

#include <gtest/gtest.h>

namespace toodledo {

using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;

/// A test with a client, a service that answers each method as the test says, and real HTTP between the two. Nobody
/// has logged in: `holdKey` gives the client a key as an earlier run would have left it.
class ServiceClient : public testing::Test
{
protected:
    ServiceClient()
    {
        settings.set("ToodledoHost", server.host());
        settings.set("EscapeParameterValues", true);
    }

    void holdKey(double age = 60)
    {
        settings.set("toodledoKey", "thekey");
        settings.set("lastKeyUpdate", foundation::Instant{clock.now().seconds - age});
        static_cast<void>(client().key());
    }
    void forgetKey()
    {
        settings.remove("toodledoKey");
        settings.remove("toodledoKeyUserId");
        restart();
    }

    /// What the service says to `method` from now on; to all others it says an empty `error`.
    void answer(const std::string &method, ScriptedReply reply)
    {
        const std::scoped_lock lock(m_mutex);
        m_replies[method] = std::move(reply);
    }
    void answer(const std::string &method, const char *body) { answer(method, ScriptedReply{.body = body}); }
    void answerLogin()
    {
        answer("getUserid", "<userid>u42</userid>");
        answer("getToken", "<token>td1</token>");
        answer("getServerInfo", "<server><unixtime>0</unixtime></server>");
        answer("getAccountInfo", "<account><userid>u42</userid><pro>0</pro></account>");
    }

    TDApi &client()
    {
        if (!m_client)
            m_client = std::make_unique<TDApi>(environment());
        return *m_client;
    }
    /// A client as the next run would make it.
    void restart() { m_client.reset(); }

    TDApiEnvironment environment()
    {
        return {.settings = settings, .transport = transport, .clock = clock, .contextByTitle = {}, .stop = {}};
    }

    /// The requests, each as its method and parameters: "getTasks;key=k;".
    [[nodiscard]] std::vector<std::string> requests() const
    {
        const std::string front = "/api.php?method=";
        std::vector<std::string> all;
        for (const std::string &target : server.targets())
            all.push_back(target.starts_with(front) ? target.substr(front.size()) : target);
        return all;
    }
    [[nodiscard]] std::string lastRequest() const
    {
        const auto all = requests();
        return all.empty() ? std::string() : all.back();
    }

    support::TestClock clock;
    foundation::MemorySettingsFile file;
    foundation::Settings settings{file, {}};
    CurlTransport transport{CurlTransport::Options()};

private:
    ScriptedReply reply(const std::string &target)
    {
        const std::size_t begin = target.find('=') + 1;
        const std::string method = target.substr(begin, target.find(';') - begin);
        const std::scoped_lock lock(m_mutex);
        const auto found = m_replies.find(method);
        return found == m_replies.end() ? ScriptedReply{.body = "<error></error>"} : found->second;
    }

    std::mutex m_mutex;
    std::map<std::string, ScriptedReply> m_replies;
    std::unique_ptr<TDApi> m_client;

protected:
    ScriptedHttpServer server{[this](const std::string &target) { return reply(target); }};
};

} // namespace toodledo
