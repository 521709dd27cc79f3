// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/accounts.h"
#include "service/connection.h"
#include "service/request.h"
#include "service/service.h"
#include "service/throttle.h"

#include <array>
#include <span>
#include <string>
#include <string_view>

namespace service {

/// Who is slowed down.
struct Throttles {
    Throttle logins{5}; ///< by e-mail address and network address
    Throttle addresses{20}; ///< by network address
    Throttle signUps{20}; ///< by network address; each new account counts
};

/// One call of a method, inside its transaction.
struct Call {
    const Request &request;
    Connection &connection;
    Session session; ///< empty for methods that need no key
    std::int64_t now;
    const ServiceOptions &options;
    Throttles &throttles;
    std::string_view address;
};

enum class Access {
    Open, ///< needs no key, writes nothing
    OpenWrite, ///< needs no key
    Read,
    Write,
};

/// A method of the protocol: what it may be sent, and what answers it. An answer that throws Refusal has written
/// nothing.
struct Method {
    std::string_view name;
    Access access;
    std::span<const std::string_view> parameters;
    std::string (*answer)(Call &call);
};

constexpr std::array<std::string_view, 0> noParameters{};

// The methods by what they are about; each table is in the source file of that name.
[[nodiscard]] std::span<const Method> accountMethods();
[[nodiscard]] std::span<const Method> taskMethods();
[[nodiscard]] std::span<const Method> folderMethods();
[[nodiscard]] std::span<const Method> noteMethods();

/// The title that a record is to have. Throws Refusal where it is missing, empty or too long.
[[nodiscard]] std::string_view titleOf(const Request &request);

/// `id` where the user has a record with it in `table`, otherwise 0. A record that another client has deleted
/// meanwhile must not stop what refers to it.
[[nodiscard]] std::int64_t ownIdOrNone(Call &call, const char *table, std::int64_t id);

/// Notes in the account the moment of a change, which clients read to find out whether they have to ask.
void touchAccount(Call &call, const char *column);

[[nodiscard]] std::string added(std::int64_t id);
[[nodiscard]] std::string success();

} // namespace service
