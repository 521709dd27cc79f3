// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/connection_limits.h"

#include <sys/socket.h>

namespace service {

bool ConnectionLimits::admit(int descriptor, const std::string &host)
{
    const std::scoped_lock lock(m_mutex);
    forget(descriptor); // where the end of its last bearer was not told, the number itself tells it
    const auto found = m_counts.find(host);
    if (m_hosts.size() >= m_most || (found != m_counts.end() && found->second >= m_mostOfAnAddress))
        return false;
    m_hosts.emplace(descriptor, host);
    ++m_counts[host];
    return true;
}

void ConnectionLimits::closed(int descriptor)
{
    const std::scoped_lock lock(m_mutex);
    forget(descriptor);
    m_oneClosed.notify_all();
}

void ConnectionLimits::endAll(std::chrono::milliseconds patience)
{
    std::unique_lock lock(m_mutex);
    for (const auto &[descriptor, host] : m_hosts)
        ::shutdown(descriptor, SHUT_RD);
    m_oneClosed.wait_for(lock, patience, [this] { return m_hosts.empty(); });
}

void ConnectionLimits::forget(int descriptor)
{
    const auto connection = m_hosts.find(descriptor);
    if (connection == m_hosts.end())
        return;
    const auto count = m_counts.find(connection->second);
    if (--count->second == 0)
        m_counts.erase(count);
    m_hosts.erase(connection);
}

} // namespace service
