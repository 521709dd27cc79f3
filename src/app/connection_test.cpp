// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/connection_test.h"

#include "foundation/log.h"
#include "model/settings_defaults.h"
#include "toodledo/curl_transport.h"
#include "toodledo/td_api.h"

namespace app {

using toodledo::TDApi;
namespace keys = model::keys;

ConnectionTest::ConnectionTest(
    foundation::Settings &settings, const foundation::Clock &clock, MakeTransport makeTransport)
    : m_settings(settings), m_clock(clock), m_makeTransport(std::move(makeTransport))
{
    if (!m_makeTransport)
        m_makeTransport
            = [this] { return std::make_unique<toodledo::CurlTransport>(toodledo::transportOptions(m_settings)); };
}

ConnectionTest::~ConnectionTest()
{
    m_thread.request_stop();
}

void ConnectionTest::run(std::function<void(std::stop_token)> work)
{
    m_thread = std::jthread(std::move(work)); // ends and joins the one before
}

void ConnectionTest::testConnection()
{
    m_settings.set(keys::lastKeyUpdate, foundation::Instant{0}); // so that a fresh key is fetched
    run([this](const std::stop_token &stop) {
        const bool isSuccessful = canLogIn(stop);
        QMetaObject::invokeMethod(
            this, [this, isSuccessful] { Q_EMIT finished(isSuccessful); }, Qt::QueuedConnection);
    });
}

bool ConnectionTest::canLogIn(const std::stop_token &stop)
{
    const auto secret = password(stop);
    if (!secret)
        return false;
    const auto transport = m_makeTransport();
    const auto client = TDApi::initWithUsername(
        m_settings.text(keys::ToodleDoUsername), *secret, {m_settings, *transport, m_clock, {}, stop});
    return client && !client->loginWasRefused();
}

void ConnectionTest::createAccount()
{
    run([this](const std::stop_token &stop) {
        const auto secret = password(stop);
        if (!secret)
            return;
        const auto transport = m_makeTransport();
        TDApi client({m_settings, *transport, m_clock, {}, stop});
        [[maybe_unused]] const auto made = client.createAccount(m_settings.text(keys::ToodleDoUsername), *secret);
    });
}

/// Nothing where the keyring does not give it.
std::optional<std::string> ConnectionTest::password(const std::stop_token &stop) const
{
    auto password = m_settings.secret(keys::ToodleDoPassword, {.stop = stop});
    if (password)
        return std::move(*password);
    foundation::logLine(password.error().message + " " + password.error().detail);
    return std::nullopt;
}

} // namespace app
