// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/scripted_http_server.h"

#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace testing_support {

namespace {

using Mode = ScriptedReply::Mode;

int listenOnLoopback(std::uint16_t &port)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (listener < 0 || ::bind(listener, generic, size) != 0 || ::listen(listener, 64) != 0
        || ::getsockname(listener, generic, &size) != 0)
        throw std::runtime_error("no loopback port");
    port = ntohs(address.sin_port);
    return listener;
}

bool readable(int socket)
{
    pollfd state{socket, POLLIN, 0};
    return ::poll(&state, 1, 20) > 0;
}

/// Sends all of `bytes`, unless the client has gone or the server ends.
bool sendAll(const std::stop_token &stop, int socket, std::string_view bytes)
{
    while (!bytes.empty() && !stop.stop_requested()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN) {
            pollfd state{socket, POLLOUT, 0};
            ::poll(&state, 1, 20);
        } else {
            return false;
        }
    }
    return bytes.empty();
}

void drip(const std::stop_token &stop, int socket, std::string_view bytes)
{
    for (std::size_t i = 0; !stop.stop_requested() && i < 10'000; ++i) {
        if (!sendAll(stop, socket, i < bytes.size() ? bytes.substr(i, 1) : " "))
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

void waitUntilClosed(const std::stop_token &stop, int socket)
{
    char byte = 0;
    while (!stop.stop_requested())
        if (readable(socket) && ::recv(socket, &byte, 1, 0) <= 0)
            return;
}

/// Lets the coming close cut the connection hard.
void resetOnClose(int socket)
{
    const linger hard{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
}

std::string asChunk(std::string_view bytes)
{
    std::array<char, 24> size{};
    const int length = std::snprintf(size.data(), size.size(), "%zx\r\n", bytes.size());
    return std::string(size.data(), static_cast<std::size_t>(length)).append(bytes).append("\r\n");
}

std::string head(const ScriptedReply &reply, std::string_view bodyHeader)
{
    return "HTTP/1.1 " + std::to_string(reply.status) + " Scripted\r\nContent-Type: text/xml\r\n" + reply.headers
        + std::string(bodyHeader) + "\r\n\r\n";
}

} // namespace

ScriptedHttpServer::ScriptedHttpServer(Script script)
    : m_script(std::move(script))
    , m_listener(listenOnLoopback(m_port))
    , m_acceptor([this](const std::stop_token &stop) { accept(stop); })
{ }

ScriptedHttpServer::~ScriptedHttpServer()
{
    m_acceptor.request_stop();
    m_acceptor.join();
    m_servants.clear(); // stops and joins them
    ::close(m_listener);
}

std::string ScriptedHttpServer::host() const
{
    return "127.0.0.1:" + std::to_string(m_port);
}

std::vector<std::string> ScriptedHttpServer::targets() const
{
    const std::scoped_lock lock(m_mutex);
    return m_targets;
}

int ScriptedHttpServer::connections() const
{
    const std::scoped_lock lock(m_mutex);
    return m_connections;
}

std::string ScriptedHttpServer::refusingHost()
{
    std::uint16_t port = 0;
    ::close(listenOnLoopback(port));
    return "127.0.0.1:" + std::to_string(port);
}

void ScriptedHttpServer::accept(const std::stop_token &stop)
{
    while (!stop.stop_requested()) {
        if (!readable(m_listener))
            continue;
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        {
            const std::scoped_lock lock(m_mutex);
            ++m_connections;
        }
        m_servants.emplace_back([this, socket](const std::stop_token &ownStop) {
            serve(ownStop, socket);
            ::close(socket);
        });
    }
}

void ScriptedHttpServer::serve(const std::stop_token &stop, int socket)
{
    std::string pending;
    std::array<char, 65536> chunk{};
    while (!stop.stop_requested()) {
        const std::size_t end = pending.find("\r\n\r\n");
        if (end == std::string::npos) {
            if (!readable(socket))
                continue;
            const ssize_t count = ::recv(socket, chunk.data(), chunk.size(), 0);
            if (count <= 0)
                return;
            pending.append(chunk.data(), static_cast<std::size_t>(count));
            continue;
        }
        const std::size_t begin = pending.find(' ') + 1;
        const std::string target = pending.substr(begin, pending.find(' ', begin) - begin);
        pending.erase(0, end + 4);
        if (!answer(stop, socket, target))
            return;
    }
}

/// Whether the connection stays open.
bool ScriptedHttpServer::answer(const std::stop_token &stop, int socket, const std::string &target)
{
    ScriptedReply reply;
    {
        const std::scoped_lock lock(m_mutex);
        m_targets.push_back(target);
        reply = m_script(target);
    }
    const std::string length = "Content-Length: " + std::to_string(reply.body.size());
    switch (reply.mode) {
    case Mode::Normal:
        return sendAll(stop, socket, head(reply, length) + reply.body);
    case Mode::Hang:
        waitUntilClosed(stop, socket);
        return false;
    case Mode::Drip:
        if (sendAll(stop, socket, head(reply, "Transfer-Encoding: identity")))
            drip(stop, socket, reply.body);
        return false;
    case Mode::DripHeader:
        drip(stop, socket, "HTTP/1.1 200 OK\r\nX-Slow: ");
        return false;
    case Mode::ResetInBody:
    case Mode::CutLength:
    case Mode::StallInBody:
        sendAll(stop, socket, head(reply, length) + reply.body.substr(0, reply.body.size() / 2));
        if (reply.mode == Mode::ResetInBody)
            resetOnClose(socket);
        else if (reply.mode == Mode::StallInBody)
            waitUntilClosed(stop, socket);
        return false;
    case Mode::Endless:
        sendAll(stop, socket,
            head(reply, "Transfer-Encoding: chunked") + (reply.body.empty() ? std::string() : asChunk(reply.body)));
        while (sendAll(stop, socket, asChunk(reply.more))) { }
        return false;
    case Mode::BadChunk:
        sendAll(stop, socket, head(reply, "Transfer-Encoding: chunked") + "zz\r\n" + reply.body);
        return false;
    case Mode::Bytes:
        sendAll(stop, socket, reply.body);
        return false;
    case Mode::ResetAtOnce:
        resetOnClose(socket);
        return false;
    case Mode::CloseAtOnce:
        return false;
    }
    return false;
}

} // namespace testing_support
