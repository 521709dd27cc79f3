// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/request_deadlines.h"

#include <algorithm>
#include <sys/socket.h>

namespace service {

RequestDeadlines::RequestDeadlines(Duration toSpeak, Duration toAsk, Duration toTakeReply)
    : m_toSpeak(toSpeak)
    , m_toAsk(toAsk)
    , m_toTakeReply(toTakeReply)
    , m_thread([this](const std::stop_token &stop) { watch(stop); })
{ }

void RequestDeadlines::connected(int descriptor)
{
    set(descriptor, m_toSpeak);
}

void RequestDeadlines::waiting(int descriptor)
{
    set(descriptor, m_toAsk);
}

void RequestDeadlines::replying(int descriptor)
{
    set(descriptor, m_toTakeReply);
}

void RequestDeadlines::closed(int descriptor)
{
    const std::scoped_lock lock(m_mutex);
    m_deadlines.erase(descriptor);
}

void RequestDeadlines::set(int descriptor, Duration limit)
{
    const std::scoped_lock lock(m_mutex);
    m_deadlines.insert_or_assign(descriptor, std::chrono::steady_clock::now() + limit);
}

void RequestDeadlines::watch(const std::stop_token &stop)
{
    const Duration pause = std::clamp<Duration>(m_toAsk / 4, Duration(10), Duration(1000));
    std::unique_lock lock(m_mutex);
    while (!stop.stop_requested()) {
        m_wake.wait_for(lock, stop, pause, [] { return false; });
        const Moment now = std::chrono::steady_clock::now();
        std::erase_if(m_deadlines, [now](const auto &entry) {
            const bool isLate = entry.second <= now;
            if (isLate)
                ::shutdown(entry.first, SHUT_RDWR); // its own thread then finds it ended, and closes it
            return isLate;
        });
    }
}

} // namespace service
