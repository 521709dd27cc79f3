// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/connection_limits.h"
#include "service/listening_socket.h"
#include "service/request_deadlines.h"

#include <functional>
#include <stop_token>
#include <sys/socket.h>
#include <thread>
#include <unordered_map>

namespace service {

/// A connection that a client has opened.
struct NewConnection {
    int descriptor = -1;
    sockaddr_storage address{};
    socklen_t addressLength = sizeof(sockaddr_storage);
};

/// Lets plain HTTP and TLS share one port: accepts connections within the limits and waits for the first byte of each,
/// which tells the two apart, on a thread of its own. A client that sends none in time is cut. The constructor throws
/// std::system_error where the system has no descriptor or thread left.
class ConnectionSorter
{
public:
    /// Becomes the connection's owner. The first byte is still there to be read.
    using Take = std::function<void(const NewConnection &connection, bool isTls)>;

    ConnectionSorter(ListeningSocket socket, ConnectionLimits &limits, RequestDeadlines &deadlines, Take take);
    ConnectionSorter(const ConnectionSorter &) = delete;
    ConnectionSorter &operator=(const ConnectionSorter &) = delete;
    ~ConnectionSorter();

private:
    void work(const std::stop_token &stop);
    void accept();
    void sort(int descriptor);
    void drop(int descriptor);
    [[nodiscard]] bool watch(int descriptor) const;

    ListeningSocket m_socket;
    ConnectionLimits &m_limits;
    RequestDeadlines &m_deadlines;
    Take m_take;
    int m_events;
    int m_wake;
    std::unordered_map<int, NewConnection> m_silent; // not a byte has come from them
    std::jthread m_thread; // last: it uses the others
};

} // namespace service
