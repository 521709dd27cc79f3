// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <thread>

namespace bench {

/// A server that does nothing: every request is answered with the same bytes, no parsing.
class LoopbackServer
{
public:
    explicit LoopbackServer(const std::string &body);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    [[nodiscard]] std::string host() const { return "127.0.0.1:" + std::to_string(m_port); }

private:
    void serve(const std::stop_token &stop) const;

    std::string m_reply;
    int m_listener;
    std::uint16_t m_port = 0;
    std::jthread m_thread;
};

} // namespace bench
