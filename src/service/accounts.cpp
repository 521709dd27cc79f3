// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/accounts.h"

#include "service/digest.h"

#include <algorithm>

namespace service {

namespace {

constexpr std::size_t shortestPassword = 6;
constexpr std::size_t longestCredential = 1024;
constexpr const char *keyRefused = "key did not validate";

bool looksLikeAnAddress(std::string_view email)
{
    const std::size_t at = email.find('@');
    return at != std::string_view::npos && at > 0 && at + 1 < email.size() && email.find('@', at + 1) == email.npos
        && email.size() <= 254
        && std::none_of(email.begin(), email.end(), [](unsigned char byte) { return byte <= ' ' || byte == 0x7F; });
}

void checkPassword(std::string_view password)
{
    if (password.size() < shortestPassword)
        throw Refusal("the password needs at least six characters");
    if (password.size() > longestCredential)
        throw Refusal("the password is too long");
}

} // namespace

std::string addAccount(Connection &connection, std::string_view email, std::string_view password, std::int64_t now)
{
    if (!looksLikeAnAddress(email))
        throw Refusal("invalid e-mail address");
    checkPassword(password);
    if (accountOf(connection, email))
        throw Refusal("there is an account with this e-mail address already");
    std::string userid = randomHexadecimal(8);
    const std::string passwordMd5 = md5(password);
    connection
        .prepare("INSERT INTO user (userid, email, password_md5, tasks_edited, tasks_deleted, folders_edited,"
                 " contexts_edited) VALUES (?1, ?2, ?3, ?4, ?4, ?4, ?4)")
        .bind(userid)
        .bind(email)
        .bind(passwordMd5)
        .bind(now)
        .run();
    return userid;
}

void setPassword(Connection &connection, std::string_view email, std::string_view password)
{
    checkPassword(password);
    const auto account = accountOf(connection, email);
    if (!account)
        throw Refusal("there is no account with this e-mail address");
    const std::string passwordMd5 = md5(password);
    connection.prepare("UPDATE user SET password_md5 = ? WHERE id = ?").bind(passwordMd5).bind(account->user).run();
    connection.prepare("DELETE FROM token WHERE user = ?").bind(account->user).run();
}

std::optional<Account> accountOf(Connection &connection, std::string_view email)
{
    Statement statement = connection.prepare("SELECT id, userid, password_md5 FROM user WHERE email = ?");
    if (!statement.bind(email).step())
        return std::nullopt;
    return Account{statement.integer(0), std::string(statement.text(1)), std::string(statement.text(2))};
}

std::optional<std::string> makeToken(
    Connection &connection, std::string_view userid, int tokensPerHour, std::int64_t now)
{
    Statement found = connection.prepare("SELECT id, password_md5 FROM user WHERE userid = ?");
    if (!found.bind(userid).step())
        return std::nullopt;
    const std::int64_t user = found.integer(0);
    Statement recent = connection.prepare("SELECT count(*) FROM token WHERE user = ? AND issued > ?");
    recent.bind(user).bind(now - 3600).run();
    if (recent.integer(0) >= tokensPerHour)
        throw Refusal(keyRefused);
    connection.prepare("DELETE FROM token WHERE user = ? AND issued <= ?").bind(user).bind(now - tokenSeconds).run();
    std::string token = "td" + randomHexadecimal(16);
    // Kept is only a digest of the key: who reads the file cannot use the keys in it, and finding a row by it takes a
    // time that tells nothing of the key.
    const std::string digest = sha256(md5(std::string(found.text(1)).append(token).append(userid)));
    connection.prepare("INSERT INTO token (key_digest, user, issued) VALUES (?, ?, ?)")
        .bind(digest)
        .bind(user)
        .bind(now)
        .run();
    return token;
}

std::optional<Session> sessionOf(Connection &connection, std::string_view key, std::int64_t now)
{
    const std::string digest = sha256(key);
    Statement statement = connection.prepare("SELECT user, issued, key_digest FROM token WHERE key_digest = ?");
    if (!statement.bind(digest).step() || !equalInConstantTime(statement.text(2), digest))
        return std::nullopt;
    const Session session{statement.integer(0), statement.integer(1)};
    if (session.issued + tokenSeconds <= now)
        return std::nullopt;
    return session;
}

Result<void> addAccount(Database &database, std::string_view email, std::string_view password)
{
    try {
        database.write([&](Connection &connection) { addAccount(connection, email, password, systemSeconds()); });
        return {};
    } catch (const std::exception &error) {
        return Failure("The account was not created: " + std::string(error.what()) + ".");
    }
}

Result<void> setPassword(Database &database, std::string_view email, std::string_view password)
{
    try {
        database.write([&](Connection &connection) { setPassword(connection, email, password); });
        return {};
    } catch (const std::exception &error) {
        return Failure("The password was not changed: " + std::string(error.what()) + ".");
    }
}

} // namespace service
