// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_api.h"

#include "foundation/log.h"
#include "toodledo/td_api_core.h"

#include <algorithm>
#include <array>

namespace toodledo {

namespace {

constexpr double defaultTimeout = 30; // seconds
constexpr std::string_view keyRefusal = "key did not validate";

constexpr std::array<std::string_view, 12> knownRoots{"userid", "token", "server", "account", "added", "success",
    "tasks", "deleted", "folders", "contexts", "goals", "notes"};

/// Hands a reply's bytes to its parser as they arrive.
class ParserSink final : public BodySink
{
public:
    explicit ParserSink(TDParser &parser) : m_parser(parser) { }
    bool receive(std::string_view bytes) override { return m_parser.feed(bytes); }

private:
    TDParser &m_parser;
};

bool isExpectedRoot(const std::string &root, std::string_view expected)
{
    if (expected.empty())
        return std::find(knownRoots.begin(), knownRoots.end(), root) != knownRoots.end();
    return root == expected;
}

} // namespace

TDApi::TDApi(TDApiEnvironment environment)
    : m_environment(std::move(environment))
    , m_host(m_environment.settings.text("ToodledoHost"))
    , m_timeout(static_cast<double>(m_environment.settings.integer("RequestTimeout")))
    , m_escapeValues(m_environment.settings.boolean("EscapeParameterValues")
          || !m_environment.settings.value("EscapeParameterValues"))
    , m_storedKey(m_environment.settings)
{
    if (m_timeout <= 0)
        m_timeout = defaultTimeout;
}

std::string TDApi::urlText(std::string_view method) const
{
    return (m_host + "/api.php?method=").append(method).append(";");
}

HttpRequest TDApi::requestForURLString(std::string_view urlText, const Parameters &parameters) const
{
    return {.url = plainUrl(urlText, parameters), .deadline = m_timeout, .stop = m_environment.stop};
}

HttpRequest TDApi::authenticatedRequestForURLString(std::string_view urlText, const Parameters &parameters)
{
    const std::string theKey = key().value_or(std::string());
    const Authentication authentication{theKey, accountValue("pro") == "1", m_escapeValues};
    return {.url = authenticatedUrl(urlText, authentication, parameters),
        .deadline = m_timeout,
        .stop = m_environment.stop};
}

bool TDApi::send(const HttpRequest &request, TDParser &parser, std::string_view root)
{
    m_lastReply = TDReply();
    ParserSink sink(parser);
    const auto reply = m_environment.transport.perform(request, sink);
    // A parser that wanted no more has ended the exchange itself: a reply did arrive, and it was bad.
    if (!reply && !parser.error()) {
        m_lastReply.failure = reply.error();
        return false;
    }
    parser.finish();
    m_lastReply.failure = parser.error();
    m_lastReply.wasRefused = parser.error() || !parser.errorTexts().empty() || !isExpectedRoot(parser.root(), root);
    if (!parser.errorTexts().empty())
        m_lastReply.errorText = parser.errorTexts().front();
    if (m_lastReply.errorText == keyRefusal)
        m_storedKey.drop();
    return true;
}

bool TDApi::perform(
    const Operation &operation, const Parameters &parameters, TDParser &parser, TDError *error, std::string body)
{
    m_lastReply = TDReply();
    if (operation.asksForKey ? !key() : !isAuthenticated()) {
        complain(operation.notAuthenticated, error);
        return false;
    }
    HttpRequest request = authenticatedRequestForURLString(urlText(operation.method), parameters);
    request.isSentOnce = !operation.method.starts_with("get");
    request.body = std::move(body);
    if (send(request, parser, operation.root))
        return true;
    complain(operation.connectionFailure, error);
    return false;
}

std::optional<std::string> TDApi::performForValue(
    const Operation &operation, std::string_view awaited, const Parameters &parameters, TDError *error)
{
    TDSimpleParser parser{std::string(awaited)};
    if (!perform(operation, parameters, parser, error))
        return std::nullopt;
    const std::vector<std::string> values = parser.parseResults().value_or(std::vector<std::string>());
    if (values.size() == 1)
        return values.front();
    const bool anyValue = operation.badResult.wording == Wording::BadResultAndValue;
    complain(operation.badResult, error, anyValue ? std::span(values) : std::span(parser.errorTexts()));
    return std::nullopt;
}

void TDApi::complain(const Complaint &complaint, TDError *error, std::span<const std::string> texts) const
{
    if (!error || complaint.code == 0)
        return;
    std::string message;
    if (complaint.wording == Wording::NotAuthenticated)
        message = "Cannot complete the sync with Toodledo with an item, not authenticated while ";
    else if (complaint.wording != Wording::None)
        message = "Toodledo returned a bad result while ";
    message += complaint.action;
    const bool quotes
        = complaint.wording == Wording::BadResultAndError || complaint.wording == Wording::BadResultAndValue;
    if (quotes && !texts.empty()) {
        if (texts.front() == keyRefusal)
            message += "Too many synchronizations in the past hour. Please wait an hour and try again.";
        message += texts.front();
    }
    // The service may quote the request that it refused, with the key in it.
    *error = TDError{toodledoApiErrorDomain, complaint.code, foundation::redacted(message),
        foundation::redacted(m_lastReply.failure ? m_lastReply.failure->detail : m_lastReply.errorText)};
}

} // namespace toodledo
