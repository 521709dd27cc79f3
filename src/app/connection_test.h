// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/settings.h"
#include "toodledo/http_transport.h"

#include <QObject>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace app {

/// Tries whether the account in the settings can log in, or makes it, on a thread of its own, so that a server that
/// does not answer keeps no window waiting. One at a time; destruction ends it within a second.
class ConnectionTest final : public QObject
{
    Q_OBJECT

public:
    using MakeTransport = std::function<std::unique_ptr<toodledo::HttpTransport>()>;

    /// Both must outlive the test; an empty `makeTransport` means libcurl as the settings ask.
    ConnectionTest(foundation::Settings &settings, const foundation::Clock &clock, MakeTransport makeTransport = {});
    ~ConnectionTest() override;

    /// Logs in with a fresh key; answers with `finished`.
    void testConnection();
    /// Makes an account of the e-mail and password in the settings; answers nothing.
    void createAccount();

Q_SIGNALS:
    void finished(bool isSuccessful);

private:
    void run(std::function<void(std::stop_token)> work);
    [[nodiscard]] bool canLogIn(const std::stop_token &stop);
    [[nodiscard]] std::optional<std::string> password(const std::stop_token &stop) const;

    foundation::Settings &m_settings;
    const foundation::Clock &m_clock;
    MakeTransport m_makeTransport;
    std::jthread m_thread; // last: joined before the rest goes
};

} // namespace app
