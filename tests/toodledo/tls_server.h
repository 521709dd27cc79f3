// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace toodledo {

/// What the certificate of a test's server says.
struct TestCertificate {
    std::string name = "localhost";
    long validFor = 3600; ///< seconds from now; negative: it has expired
};

/// A server on the loopback with a certificate that signed itself. It answers every request with "<tasks/>".
class TlsServer
{
public:
    explicit TlsServer(const TestCertificate &certificate);
    ~TlsServer();
    TlsServer(const TlsServer &) = delete;
    TlsServer &operator=(const TlsServer &) = delete;

    [[nodiscard]] std::string port() const { return std::to_string(m_port); }
    /// Requests that came through the encryption.
    [[nodiscard]] int requests() const { return m_requests; }
    /// Takes no version of TLS above 1.1 from now on.
    void speakOnlyOldProtocols();

private:
    struct Secrets;
    void serve(const std::stop_token &stop);
    void answer(int socket);

    std::unique_ptr<Secrets> m_secrets;
    std::uint16_t m_port = 0;
    int m_listener;
    std::atomic<int> m_requests = 0;
    std::jthread m_thread;
};

} // namespace toodledo
