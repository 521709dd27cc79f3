// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/database.h"
#include "service/server_time.h"

#include <memory>
#include <string>
#include <string_view>

namespace service {

/// What the owner decides.
struct ServiceOptions {
    int tokensPerHour = 10; ///< for each account
    int mostCalls = 128; ///< that one request may hold, see `Service::answer`
    bool isSecure = false; ///< clients are told to talk https
    bool allowsSignUp = true; ///< whether `createAccount` makes accounts
    Clock clock = systemSeconds;
};

/// The server's side of the protocol without any HTTP: takes a request and gives the reply's XML.
///
/// Any number of threads may call it. Nothing is thrown: what goes wrong is the reply's `error` element, and a reply
/// that tells of a change is given once the change is on the disk.
class Service
{
public:
    explicit Service(Database &database, ServiceOptions options = {});
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Answers `target`, such as "/api.php?method=getTasks;key=K;"; only what follows its "?" counts. `body` holds the
    /// parameters that a POST brings, or the calls, one a line, of the method `several`. `address` says who asks, so
    /// that failed logins can be slowed down.
    [[nodiscard]] std::string answer(
        std::string_view target, std::string_view body = {}, std::string_view address = {});

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace service
