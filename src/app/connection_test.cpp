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
        const auto transport = m_makeTransport();
        const auto client = TDApi::initWithUsername(
            m_settings.text(keys::ToodleDoUsername), password(), {m_settings, *transport, m_clock, {}, stop});
        const bool isSuccessful = client && !client->loginWasRefused();
        QMetaObject::invokeMethod(
            this, [this, isSuccessful] { Q_EMIT finished(isSuccessful); }, Qt::QueuedConnection);
    });
}

void ConnectionTest::createAccount()
{
    run([this](const std::stop_token &stop) {
        const auto transport = m_makeTransport();
        TDApi client({m_settings, *transport, m_clock, {}, stop});
        [[maybe_unused]] const auto made = client.createAccount(m_settings.text(keys::ToodleDoUsername), password());
    });
}

/// An empty one where the keyring does not give it, which the service refuses.
std::string ConnectionTest::password() const
{
    auto password = m_settings.secret(keys::ToodleDoPassword);
    if (!password)
        foundation::logLine(password.error().message + " " + password.error().detail);
    return password.value_or(std::string());
}

} // namespace app
