// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/accounts.h"
#include "service/digest.h"
#include "service/service.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace calling {

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// Everything but letters and digits as "%XX".
inline std::string escaped(const std::string &text)
{
    std::string result;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if ((byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z')) {
            result += static_cast<char>(byte);
        } else {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", byte);
            result += code;
        }
    }
    return result;
}

inline std::string target(const std::string &method, const Parameters &parameters)
{
    std::string text = "/api.php?method=" + method + ";";
    for (const auto &[name, value] : parameters)
        text += name + "=" + escaped(value) + ";";
    return text;
}

/// What stands inside the first element `name` of `xml`, as it stands there; "(none)" without one.
inline std::string inside(const std::string &xml, const std::string &name)
{
    std::size_t start = xml.find("<" + name + ">");
    if (start == std::string::npos)
        start = xml.find("<" + name + " ");
    if (start == std::string::npos)
        return "(none)";
    start = xml.find('>', start) + 1;
    return xml.substr(start, xml.find("</" + name + ">", start) - start);
}

inline int countOf(const std::string &xml, const std::string &part)
{
    int count = 0;
    for (std::size_t at = 0; (at = xml.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

inline std::string keyOf(const std::string &password, const std::string &token, const std::string &userid)
{
    return service::md5(service::md5(password) + token + userid);
}

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
