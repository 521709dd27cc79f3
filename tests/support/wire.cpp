// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/wire.h"

#include <array>
#include <chrono>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace testing_support {

namespace {

constexpr std::size_t recordHeader = 5; // bytes: kind, two of version, two of length

bool isReady(int socket, short event)
{
    pollfd state{socket, event, 0};
    return ::poll(&state, 1, 20) > 0;
}

/// Changes one byte of what the TLS records in `bytes` hold. Headers stay: nothing protects those of a greeting.
void garble(std::string &bytes, double place)
{
    std::vector<std::size_t> held;
    for (std::size_t record = 0; record + recordHeader < bytes.size();) {
        const std::size_t length = static_cast<unsigned char>(bytes[record + 3]) * std::size_t{256}
            + static_cast<unsigned char>(bytes[record + 4]);
        const std::size_t end = std::min(record + recordHeader + length, bytes.size());
        for (record += recordHeader; record < end; ++record)
            held.push_back(record);
    }
    if (!held.empty())
        bytes[held[std::min(static_cast<std::size_t>(place * static_cast<double>(held.size())), held.size() - 1)]] ^= 1;
}

} // namespace

/// TLS between two buffers, so that its bytes can be struck on their way to the socket.
struct Wire::Encryption {
    std::unique_ptr<SSL, decltype(&SSL_free)> ssl;
    BIO *arrived = BIO_new(BIO_s_mem()); // both belong to `ssl`
    BIO *leaving = BIO_new(BIO_s_mem());

    explicit Encryption(const TlsIdentity &identity) : ssl(SSL_new(identity.context()), &SSL_free)
    {
        SSL_set_bio(ssl.get(), arrived, leaving);
        SSL_set_accept_state(ssl.get());
    }

    std::string takeLeaving() const
    {
        char *bytes = nullptr;
        const long size = BIO_get_mem_data(leaving, &bytes);
        std::string taken(bytes, static_cast<std::size_t>(size));
        BIO_reset(leaving);
        return taken;
    }

    /// What the bytes say; no value when they end or break the connection.
    std::optional<std::string> decrypt(std::string_view bytes) const
    {
        BIO_write(arrived, bytes.data(), static_cast<int>(bytes.size()));
        std::string text;
        std::array<char, 16384> part{};
        int count = 0;
        while ((count = SSL_read(ssl.get(), part.data(), static_cast<int>(part.size()))) > 0)
            text.append(part.data(), static_cast<std::size_t>(count));
        return SSL_get_error(ssl.get(), count) == SSL_ERROR_WANT_READ ? std::optional(text) : std::nullopt;
    }
};

Wire::Wire(std::stop_token stop, int socket, const TlsIdentity *identity)
    : m_stop(std::move(stop))
    , m_socket(socket)
    , m_encryption(identity ? std::make_unique<Encryption>(*identity) : nullptr)
{ }

Wire::~Wire()
{
    if (m_encryption && SSL_is_init_finished(m_encryption->ssl.get())) {
        SSL_shutdown(m_encryption->ssl.get());
        passEncrypted();
    }
    ::close(m_socket);
}

std::optional<std::string> Wire::receive()
{
    if (m_isTorn)
        return std::nullopt;
    if (!isReady(m_socket, POLLIN))
        return std::string();
    std::string bytes(65536, '\0');
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count <= 0)
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(count));
    if (!m_encryption)
        return bytes;
    auto text = m_encryption->decrypt(bytes);
    return passEncrypted() ? text : std::nullopt;
}

bool Wire::send(std::string_view bytes)
{
    if (!m_encryption)
        return pass(std::string(bytes));
    return (bytes.empty() || SSL_write(m_encryption->ssl.get(), bytes.data(), static_cast<int>(bytes.size())) > 0)
        && passEncrypted();
}

void Wire::drip(std::string_view bytes)
{
    for (std::size_t i = 0; !m_stop.stop_requested() && i < 10'000; ++i) {
        if (!send(i < bytes.size() ? bytes.substr(i, 1) : " "))
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

void Wire::strike(Tear tear, double place)
{
    m_tear = tear;
    m_place = place;
}

void Wire::resetOnClose()
{
    const linger hard{1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    m_isTorn = true;
}

void Wire::waitUntilClosed()
{
    std::array<char, 4096> dropped{};
    while (!m_stop.stop_requested())
        if (isReady(m_socket, POLLIN) && ::recv(m_socket, dropped.data(), dropped.size(), 0) <= 0)
            return;
}

bool Wire::passEncrypted()
{
    std::string bytes = m_encryption->takeLeaving();
    return bytes.empty() ? !m_isTorn : pass(std::move(bytes));
}

bool Wire::pass(std::string bytes)
{
    if (m_isTorn)
        return false;
    const Tear tear = std::exchange(m_tear, Tear::None);
    if (tear == Tear::None)
        return passPlain(bytes);
    if (tear == Tear::Garble) {
        garble(bytes, m_place);
        return passPlain(bytes);
    }
    const double place = tear == Tear::NoGoodbye ? 1 : tear == Tear::Drip ? 0 : m_place;
    const auto kept = static_cast<std::size_t>(place * static_cast<double>(bytes.size()));
    passPlain(std::string_view(bytes).substr(0, kept));
    m_isTorn = true;
    if (tear == Tear::Reset)
        resetOnClose();
    else if (tear == Tear::Silence)
        waitUntilClosed();
    else if (tear == Tear::Drip)
        dripPlain(std::string_view(bytes).substr(kept));
    return false;
}

bool Wire::passPlain(std::string_view bytes)
{
    while (!bytes.empty() && !m_stop.stop_requested()) {
        const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno == EAGAIN)
            isReady(m_socket, POLLOUT);
        else
            return false;
    }
    return bytes.empty();
}

void Wire::dripPlain(std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size() && passPlain(bytes.substr(i, 1)); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

} // namespace testing_support
