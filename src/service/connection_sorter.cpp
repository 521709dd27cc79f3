// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/connection_sorter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <span>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace service {

namespace {

constexpr unsigned char tlsHandshake = 0x16; // no HTTP method begins with it
constexpr auto pauseWithoutDescriptors = std::chrono::milliseconds(20);

int made(int descriptor)
{
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category());
    return descriptor;
}

} // namespace

ConnectionSorter::ConnectionSorter(
    ListeningSocket socket, ConnectionLimits &limits, RequestDeadlines &deadlines, Take take)
    : m_socket(std::move(socket))
    , m_limits(limits)
    , m_deadlines(deadlines)
    , m_take(std::move(take))
    , m_events(made(::epoll_create1(EPOLL_CLOEXEC)))
    , m_wake(made(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)))
{
    if (!watch(m_wake) || !watch(m_socket.descriptor()))
        throw std::system_error(errno, std::generic_category());
    m_thread = std::jthread([this](const std::stop_token &stop) { work(stop); });
}

ConnectionSorter::~ConnectionSorter()
{
    m_thread.request_stop();
    ::eventfd_write(m_wake, 1);
    m_thread.join();
    while (!m_silent.empty())
        drop(m_silent.begin()->first);
    ::close(m_wake);
    ::close(m_events);
}

void ConnectionSorter::work(const std::stop_token &stop)
{
    std::array<epoll_event, 64> events{};
    while (!stop.stop_requested()) {
        const int count = ::epoll_wait(m_events, events.data(), events.size(), -1);
        for (const epoll_event &event : std::span(events).first(static_cast<std::size_t>(std::max(count, 0)))) {
            if (event.data.fd == m_socket.descriptor())
                accept();
            else if (event.data.fd != m_wake)
                sort(event.data.fd);
        }
    }
}

void ConnectionSorter::accept()
{
    NewConnection connection;
    auto *address = reinterpret_cast<sockaddr *>(&connection.address);
    connection.descriptor
        = ::accept4(m_socket.descriptor(), address, &connection.addressLength, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (connection.descriptor < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS)
            std::this_thread::sleep_for(pauseWithoutDescriptors); // it stays in the queue; others have to end first
        return;
    }
    if (!m_limits.admit(connection.descriptor, hostOf(address))) {
        ::close(connection.descriptor);
        return;
    }
    m_deadlines.connected(connection.descriptor);
    m_silent.emplace(connection.descriptor, connection);
    if (!watch(connection.descriptor))
        drop(connection.descriptor);
}

void ConnectionSorter::sort(int descriptor)
{
    unsigned char first = 0;
    const ssize_t size = ::recv(descriptor, &first, 1, MSG_PEEK);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size <= 0) {
        drop(descriptor);
        return;
    }
    ::epoll_ctl(m_events, EPOLL_CTL_DEL, descriptor, nullptr);
    m_deadlines.closed(descriptor);
    const auto connection = m_silent.extract(descriptor);
    m_take(connection.mapped(), first == tlsHandshake);
}

void ConnectionSorter::drop(int descriptor)
{
    m_silent.erase(descriptor);
    m_deadlines.closed(descriptor);
    m_limits.closed(descriptor);
    ::close(descriptor);
}

bool ConnectionSorter::watch(int descriptor) const
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    return ::epoll_ctl(m_events, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

} // namespace service
