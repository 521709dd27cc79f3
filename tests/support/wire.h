// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/tls_identity.h"

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace testing_support {

/// What happens on the way to the bytes that a server sends, encrypted or not, from some place on.
enum class Tear {
    None,
    Close, ///< the connection is closed
    NoGoodbye, ///< the same after the last byte, without the goodbye that TLS wants
    Reset,
    Silence,
    Drip, ///< one byte every 50 ms, from the first on
    Garble ///< one byte of what a TLS record holds is another
};

/// A server's end of a connection, bare or encrypted. It ends all waiting when it is told to stop.
class Wire
{
public:
    /// Takes over the socket; `identity` encrypts, null leaves the connection bare.
    Wire(std::stop_token stop, int socket, const TlsIdentity *identity);
    ~Wire();
    Wire(const Wire &) = delete;
    Wire &operator=(const Wire &) = delete;

    /// What has arrived, which may be nothing yet; no value when the client has gone.
    std::optional<std::string> receive();
    /// Sends all of `bytes`; false when that could not be.
    bool send(std::string_view bytes);
    void drip(std::string_view bytes);
    /// Strikes what is sent next, in one go, at `place` from 0 (before its first byte) to 1 (after its last).
    void strike(Tear tear, double place);
    /// Lets the end cut the connection hard.
    void resetOnClose();
    void waitUntilClosed();

private:
    struct Encryption;
    bool pass(std::string bytes);
    bool passPlain(std::string_view bytes);
    bool passEncrypted();
    void dripPlain(std::string_view bytes);

    std::stop_token m_stop;
    int m_socket;
    Tear m_tear = Tear::None;
    double m_place = 0;
    bool m_isTorn = false;
    std::unique_ptr<Encryption> m_encryption;
};

} // namespace testing_support
