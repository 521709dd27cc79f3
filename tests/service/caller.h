// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/accounts.h"
#include "service/protocol_text.h"
#include "service/service.h"

#include <gtest/gtest.h>

namespace calling {

constexpr std::int64_t noon = 1'795'521'600; // 2026-11-24 12:00 UTC

/// A service in memory with a clock that the test sets.
struct InMemory {
    std::int64_t now = noon;
    std::unique_ptr<service::Database> database = service::Database::inMemory();
    service::Service service;

    explicit InMemory(service::ServiceOptions options = {}) : service(*database, withClock(std::move(options))) { }

    service::ServiceOptions withClock(service::ServiceOptions options)
    {
        options.clock = [this] { return now; };
        return options;
    }
    std::string ask(const std::string &method, const Parameters &parameters, const std::string &from = "10.0.0.1")
    {
        return service.answer(target(method, parameters), {}, from);
    }
};

/// A user of such a service, logged in.
class User
{
public:
    User(InMemory &place, std::string email) : m_place(place), m_email(std::move(email))
    {
        m_userid = inside(m_place.ask("createAccount", {{"email", m_email}, {"pass", password}}), "added");
        logIn();
    }
    std::string logIn()
    {
        const std::string reply = m_place.ask("getToken", {{"userid", m_userid}, {"appid", "test"}});
        key = keyOf(password, inside(reply, "token"), m_userid);
        return reply;
    }
    std::string ask(const std::string &method, Parameters parameters = {})
    {
        parameters.emplace(parameters.begin(), "key", key);
        return m_place.ask(method, parameters);
    }
    /// The id of what was added.
    std::string add(const std::string &method, const Parameters &parameters)
    {
        const std::string reply = ask(method, parameters);
        EXPECT_NE(inside(reply, "added"), "(none)") << reply;
        return inside(reply, "added");
    }
    [[nodiscard]] const std::string &userid() const { return m_userid; }

    const std::string password = "long; password & more";
    std::string key;

private:
    InMemory &m_place;
    std::string m_email;
    std::string m_userid;
};

} // namespace calling
