// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/listening_socket.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace service {

namespace {

constexpr int backlog = 128;

struct FreeAddresses {
    void operator()(addrinfo *addresses) const { ::freeaddrinfo(addresses); }
};

socklen_t lengthOf(const sockaddr *address)
{
    return address->sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

bool listenAt(int descriptor, const addrinfo &address)
{
    const int yes = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes); // a restart need not wait for old connections
    return ::bind(descriptor, address.ai_addr, address.ai_addrlen) == 0 && ::listen(descriptor, backlog) == 0;
}

} // namespace

Result<ListeningSocket> ListeningSocket::open(std::string_view hostAndPort)
{
    const std::size_t colon = hostAndPort.rfind(':');
    std::string host(hostAndPort.substr(0, colon));
    if (host.starts_with('[') && host.ends_with(']'))
        host = host.substr(1, host.size() - 2);
    const std::string port(colon == std::string_view::npos ? std::string_view() : hostAndPort.substr(colon + 1));
    const bool isPort = !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == port.npos
        && std::stoi(port) <= 65535;
    const std::string quoted = "\"" + std::string(hostAndPort) + "\"";
    if (host.empty() || !isPort)
        return Failure(quoted + " is not an address and a port, such as 127.0.0.1:8080.");

    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo *found = nullptr;
    if (const int code = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &found); code != 0)
        return Failure("The address " + quoted + " is not known: " + ::gai_strerror(code) + ".");
    const std::unique_ptr<addrinfo, FreeAddresses> addresses(found);
    int reason = 0;
    for (const addrinfo *address = found; address; address = address->ai_next) {
        ListeningSocket socket(::socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (socket.m_descriptor >= 0 && listenAt(socket.m_descriptor, *address))
            return socket;
        reason = errno;
    }
    return Failure("The service cannot listen at " + quoted + ": " + std::strerror(reason) + ".");
}

ListeningSocket::ListeningSocket(ListeningSocket &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1))
{ }

ListeningSocket::~ListeningSocket()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

std::string ListeningSocket::address() const
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    ::getsockname(m_descriptor, reinterpret_cast<sockaddr *>(&address), &length);
    return hostAndPortOf(reinterpret_cast<const sockaddr *>(&address));
}

std::string hostOf(const sockaddr *address)
{
    std::array<char, NI_MAXHOST> host{};
    if (::getnameinfo(address, lengthOf(address), host.data(), host.size(), nullptr, 0, NI_NUMERICHOST) != 0)
        return "unknown";
    return host.data();
}

std::string hostAndPortOf(const sockaddr *address)
{
    std::array<char, NI_MAXSERV> port{};
    ::getnameinfo(address, lengthOf(address), nullptr, 0, port.data(), port.size(), NI_NUMERICSERV);
    const std::string host = hostOf(address);
    return (address->sa_family == AF_INET6 ? "[" + host + "]" : host) + ":" + port.data();
}

} // namespace service
