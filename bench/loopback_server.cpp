// SPDX-License-Identifier: GPL-3.0-or-later
#include "loopback_server.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace bench {

LoopbackServer::LoopbackServer(const std::string &body)
    : m_reply("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body)
    , m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (m_listener < 0 || ::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 8) != 0
        || ::getsockname(m_listener, generic, &size) != 0)
        throw std::runtime_error("no loopback port");
    m_port = ntohs(address.sin_port);
    m_thread = std::jthread([this](const std::stop_token &stop) { serve(stop); });
}

LoopbackServer::~LoopbackServer()
{
    m_thread.request_stop();
    m_thread.join();
    ::close(m_listener);
}

void LoopbackServer::serve(const std::stop_token &stop) const
{
    std::vector<pollfd> sockets{{m_listener, POLLIN, 0}};
    std::array<char, 65'536> request{};
    while (!stop.stop_requested()) {
        if (::poll(sockets.data(), sockets.size(), 50) <= 0)
            continue;
        for (std::size_t i = 1; i < sockets.size(); ++i) {
            if (sockets[i].revents == 0)
                continue;
            // A request of the benchmark fits one segment, so what can be read is one whole request.
            if (::recv(sockets[i].fd, request.data(), request.size(), 0) > 0) {
                ::send(sockets[i].fd, m_reply.data(), m_reply.size(), MSG_NOSIGNAL);
            } else {
                ::close(sockets[i].fd);
                sockets[i].fd = -1;
            }
        }
        std::erase_if(sockets, [](const pollfd &socket) { return socket.fd < 0; });
        if (sockets.front().revents == 0)
            continue;
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        sockets.push_back({socket, POLLIN, 0});
    }
    for (std::size_t i = 1; i < sockets.size(); ++i)
        ::close(sockets[i].fd);
}

} // namespace bench
