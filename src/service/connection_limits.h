// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <unordered_map>

namespace service {

/// Counts the connections that are open, in all and of each network address. Any thread.
class ConnectionLimits
{
public:
    ConnectionLimits(unsigned most, unsigned mostOfAnAddress) : m_most(most), m_mostOfAnAddress(mostOfAnAddress) { }

    /// Whether `host` may have one connection more; it counts until it is `closed`.
    [[nodiscard]] bool admit(int descriptor, const std::string &host);
    /// The connection is about to be closed; its number may come back as another's.
    void closed(int descriptor);

    /// Takes no further request from any connection, and waits until all are closed, `patience` at most: a reply that
    /// is under way may still be taken.
    void endAll(std::chrono::milliseconds patience);

private:
    void forget(int descriptor);

    const unsigned m_most;
    const unsigned m_mostOfAnAddress;
    std::mutex m_mutex;
    std::condition_variable m_oneClosed;
    std::unordered_map<int, std::string> m_hosts;
    std::unordered_map<std::string, unsigned> m_counts; // of each host
};

} // namespace service
