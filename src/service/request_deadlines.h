// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>
#include <unordered_map>

namespace service {

/// Cuts connections that say nothing, whose request takes too long to arrive, or whose client takes too long to take
/// the reply, however steadily a few bytes trickle. Any thread; a thread of its own looks at the clock.
class RequestDeadlines
{
public:
    using Duration = std::chrono::milliseconds;

    RequestDeadlines(Duration toSpeak, Duration toAsk, Duration toTakeReply);

    /// The connection waits for its first byte, from now on.
    void connected(int descriptor);
    /// The connection waits for a request, from now on.
    void waiting(int descriptor);
    /// The connection's reply is on its way, from now on.
    void replying(int descriptor);
    /// The connection is about to be closed; its number may come back as another's.
    void closed(int descriptor);

private:
    using Moment = std::chrono::steady_clock::time_point;

    void set(int descriptor, Duration limit);
    void watch(const std::stop_token &stop);

    const Duration m_toSpeak;
    const Duration m_toAsk;
    const Duration m_toTakeReply;
    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::unordered_map<int, Moment> m_deadlines;
    std::jthread m_thread; // last: it uses the others
};

} // namespace service
