// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/connection.h"
#include "service/database.h"
#include "service/result.h"
#include "service/server_time.h"

#include <optional>
#include <string>
#include <string_view>

namespace service {

/// Who a valid key belongs to.
struct Session {
    std::int64_t user = 0;
    std::int64_t issued = 0; ///< when the key's token was given
};

constexpr std::int64_t tokenSeconds = 4 * 3600;

/// An account's row, with all that its owner may be told.
struct Account {
    std::int64_t user = 0;
    std::string userid;
    std::string passwordMd5;
};

/// Adds an account and returns its user id. Throws Refusal where the e-mail address or the password will not do.
std::string addAccount(Connection &connection, std::string_view email, std::string_view password, std::int64_t now);

/// Gives the account of an e-mail address another password; tokens given under the old one are worth nothing from then
/// on. Throws Refusal where there is no such account or the password will not do.
void setPassword(Connection &connection, std::string_view email, std::string_view password);

/// The account of an e-mail address.
[[nodiscard]] std::optional<Account> accountOf(Connection &connection, std::string_view email);

/// Makes a token for a user id and remembers the key that the client will make of it; nothing where there is no such
/// user. Throws Refusal with the protocol's fixed text over `tokensPerHour`.
[[nodiscard]] std::optional<std::string> makeToken(
    Connection &connection, std::string_view userid, int tokensPerHour, std::int64_t now);

/// Whose key this is, if its token is still good.
[[nodiscard]] std::optional<Session> sessionOf(Connection &connection, std::string_view key, std::int64_t now);

// For the owner's command line, whether the service is running or not.
[[nodiscard]] Result<void> addAccount(Database &database, std::string_view email, std::string_view password);
[[nodiscard]] Result<void> setPassword(Database &database, std::string_view email, std::string_view password);

} // namespace service
