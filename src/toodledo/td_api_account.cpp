// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "toodledo/td_api_core.h"

#include <array>

namespace toodledo {

namespace {

constexpr std::string_view applicationId = "Quelvin-MacOS";
constexpr int accountNotLoaded = -1;
constexpr int credentialsMissing = 110; // the service's user id "0"
constexpr int userUnknown = 120; // the service's user id "1"
constexpr int accountNotCreated = 210;
constexpr double secondsPerZoneStep = 1800;

constexpr std::string_view loginFailedText
    = "Cannot log into Toodledo. Your credentials may be incorrect. Please check your email address and password, and "
      "try synchronizing again.";
constexpr std::string_view accountNotCreatedText
    = "Error while creating Toodledo account. Check that you have entered an email address in a valid format, and a "
      "password that is at least six characters.";

struct ModificationDate {
    std::string_view accountEntry;
    std::string_view key;
};
constexpr std::array<ModificationDate, 4> modificationDates{{
    {"lastaddedit", "lastTaskAddEdit"},
    {"lastdelete", "lastTaskDelete"},
    {"lastfolderedit", "lastFolderEdit"},
    {"lastcontextedit", "lastContextEdit"},
}};

/// The value of a simple reply that holds exactly one.
std::optional<std::string> onlyValue(TDSimpleParser &parser)
{
    auto values = parser.parseResults();
    if (!values || values->size() != 1)
        return std::nullopt;
    return std::move(values->front());
}

} // namespace

std::unique_ptr<TDApi> TDApi::initWithUsername(
    std::string_view username, std::string_view password, TDApiEnvironment environment, TDError *error)
{
    auto client = std::make_unique<TDApi>(std::move(environment));
    const auto fail = [&](int code, std::string_view text) {
        if (error)
            *error = TDError{toodledoApiErrorDomain, code, std::string(text),
                client->m_lastReply.failure ? client->m_lastReply.failure->detail : std::string()};
        return std::unique_ptr<TDApi>();
    };
    auto userId = client->getUserIdForUsername(username, password);
    if (!userId)
        return fail(operationFailed, loginFailedText);
    if (*userId == "0")
        return fail(credentialsMissing, {});
    if (*userId == "1")
        return fail(userUnknown, {});
    client->m_loginWasRefused = client->lastReplyWasRefused();
    client->setUserId(std::move(*userId));
    client->setPasswordHashWithPassword(password);
    // Their failure shows in the first operation that needs what they bring.
    static_cast<void>(client->key());
    client->loadServerInfos();
    client->loadAccountInfo();
    return client;
}

std::optional<std::string> TDApi::getUserIdForUsername(std::string_view username, std::string_view password)
{
    warnOfPlainLogin();
    const HttpRequest request = requestForURLString(
        urlText("getUserid"), {{"email", std::string(username)}, {"pass", std::string(password)}});
    TDSimpleParser parser("userid");
    auto userId = send(request, parser) ? onlyValue(parser) : std::nullopt;
    if (!userId)
        foundation::logLine("URL request for userID: " + request.url);
    return userId;
}

void TDApi::warnOfPlainLogin()
{
    if (!m_warnedOfPlainLogin && !m_host.empty() && !isLoopback(m_host))
        foundation::logLine("The login to " + m_host + " is sent unencrypted.");
    m_warnedOfPlainLogin = true;
}

void TDApi::setPasswordHashWithPassword(std::string_view password)
{
    m_passwordHash = md5Hex(password);
}

std::optional<std::string> TDApi::key()
{
    const foundation::Instant now = m_environment.clock.now();
    m_key = m_storedKey.load(m_userId, now);
    if (StoredKey::isFresh(m_key, now))
        return m_key.key;

    TDSimpleParser parser("token");
    const HttpRequest request
        = requestForURLString(urlText("getToken"), {{"userid", m_userId}, {"appid", std::string(applicationId)}});
    const auto token = send(request, parser) ? onlyValue(parser) : std::nullopt;
    m_key.key.reset();
    if (token) {
        m_key.key = md5Hex(m_passwordHash + *token + m_userId);
        m_key.obtained = m_environment.clock.now();
    }
    m_storedKey.store(m_key.key, m_userId, m_environment.clock.now());
    return m_key.key;
}

bool TDApi::isAuthenticated() const
{
    return m_key.key && m_key.obtained && *m_key.obtained <= m_environment.clock.now();
}

bool TDApi::loadServerInfos()
{
    if (!isAuthenticated())
        return false;
    TDSimpleParser parser("unixtime");
    if (!send(authenticatedRequestForURLString(urlText("getServerInfo")), parser))
        return false;
    const auto unixTime = onlyValue(parser);
    if (!unixTime)
        return false;
    m_servertimeDifference = secondsOf(*unixTime) - m_environment.clock.now().seconds;
    return true;
}

bool TDApi::loadAccountInfo()
{
    const auto theKey = key();
    if (!theKey)
        return false;
    TDUserInfoParser parser;
    if (!send(authenticatedRequestForURLString(urlText("getAccountInfo"), {{"key", *theKey}}), parser))
        return false;
    const auto results = parser.parseResults();
    if (!results || results->empty())
        return false;
    m_accountInfo = *results->front();
    return true;
}

std::string TDApi::accountValue(std::string_view name) const
{
    const auto entry = m_accountInfo.find(name);
    return entry == m_accountInfo.end() ? std::string() : entry->second;
}

foundation::Instant TDApi::serverDateAsLocal(foundation::Instant date) const
{
    return {date.seconds + static_cast<double>(integerOf(accountValue("timezone"))) * secondsPerZoneStep};
}

std::optional<AccountInfo> TDApi::getLastModificationsDates(TDError *error)
{
    if (!loadAccountInfo()) {
        complain({.code = accountNotLoaded}, error);
        return std::nullopt;
    }
    AccountInfo dates;
    for (const auto &[accountEntry, name] : modificationDates)
        if (const auto entry = m_accountInfo.find(accountEntry); entry != m_accountInfo.end())
            dates.emplace(name, entry->second);
    return dates;
}

std::optional<std::string> TDApi::createAccount(std::string_view email, std::string_view password, TDError *error)
{
    warnOfPlainLogin();
    TDSimpleParser parser("added");
    const HttpRequest request = authenticatedRequestForURLString(
        urlText("createAccount"), {{"email", std::string(email)}, {"pass", std::string(password)}});
    if (!send(request, parser)) {
        complain({.code = operationFailed}, error);
        return std::nullopt;
    }
    auto userId = onlyValue(parser);
    if (!userId && error)
        *error = TDError{toodledoApiErrorDomain, accountNotCreated, std::string(accountNotCreatedText),
            foundation::redacted(m_lastReply.errorText)};
    return userId;
}

} // namespace toodledo
