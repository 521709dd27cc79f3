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

ScriptedHttpServer::ScriptedHttpServer(Script script, Greet greet)
    : m_script(std::move(script))
    , m_greet(std::move(greet))
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
        Greeting greeting;
        {
            const std::scoped_lock lock(m_mutex);
            ++m_connections;
            if (m_greet)
                greeting = m_greet();
        }
        m_servants.emplace_back(
            [this, socket, greeting](const std::stop_token &ownStop) { serve(ownStop, socket, greeting); });
    }
}

void ScriptedHttpServer::serve(const std::stop_token &stop, int socket, const Greeting &greeting)
{
    Wire wire(stop, socket, greeting.instead.empty() ? greeting.identity : nullptr);
    wire.strike(greeting.tear, greeting.place);
    std::string pending;
    while (!stop.stop_requested()) {
        const std::size_t end = pending.find("\r\n\r\n");
        if (end == std::string::npos) {
            const auto arrived = wire.receive();
            if (!arrived)
                return;
            pending += *arrived;
            if (!pending.empty() && !greeting.instead.empty()) {
                wire.send(greeting.instead);
                return;
            }
            continue;
        }
        const std::size_t begin = pending.find(' ') + 1;
        const std::string target = pending.substr(begin, pending.find(' ', begin) - begin);
        pending.erase(0, end + 4);
        if (!answer(wire, target))
            return;
    }
}

/// Whether the connection stays open.
bool ScriptedHttpServer::answer(Wire &wire, const std::string &target)
{
    ScriptedReply reply;
    {
        const std::scoped_lock lock(m_mutex);
        m_targets.push_back(target);
        reply = m_script(target);
    }
    const auto place = static_cast<std::size_t>(reply.place * static_cast<double>(reply.body.size()));
    if (reply.mode == Mode::Shortened)
        reply.body.resize(place);
    const std::string length = "Content-Length: " + std::to_string(reply.body.size());
    switch (reply.mode) {
    case Mode::Normal:
    case Mode::Shortened:
        wire.strike(reply.tear, reply.place);
        return wire.send(head(reply, length) + reply.body);
    case Mode::Hang:
        wire.waitUntilClosed();
        return false;
    case Mode::Drip:
        if (wire.send(head(reply, "Transfer-Encoding: identity")))
            wire.drip(reply.body);
        return false;
    case Mode::DripHeader:
        wire.drip("HTTP/1.1 200 OK\r\nX-Slow: ");
        return false;
    case Mode::ResetInBody:
    case Mode::CutLength:
    case Mode::StallInBody:
        wire.send(head(reply, length) + reply.body.substr(0, place));
        if (reply.mode == Mode::ResetInBody)
            wire.resetOnClose();
        else if (reply.mode == Mode::StallInBody)
            wire.waitUntilClosed();
        return false;
    case Mode::Endless:
        wire.send(
            head(reply, "Transfer-Encoding: chunked") + (reply.body.empty() ? std::string() : asChunk(reply.body)));
        while (wire.send(asChunk(reply.more))) { }
        return false;
    case Mode::BadChunk:
        wire.send(head(reply, "Transfer-Encoding: chunked") + "zz\r\n" + reply.body);
        return false;
    case Mode::Bytes:
        wire.strike(reply.tear, reply.place);
        wire.send(reply.body);
        return false;
    case Mode::ResetAtOnce:
        wire.resetOnClose();
        return false;
    case Mode::CloseAtOnce:
        return false;
    }
    return false;
}

} // namespace testing_support
