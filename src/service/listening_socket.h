// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/result.h"

#include <string>
#include <string_view>
#include <sys/socket.h>

namespace service {

/// A socket that listens at "HOST:PORT"; it is closed when it goes. An IPv6 address stands in brackets.
class ListeningSocket
{
public:
    [[nodiscard]] static Result<ListeningSocket> open(std::string_view hostAndPort);
    ListeningSocket(ListeningSocket &&other) noexcept;
    ListeningSocket(const ListeningSocket &) = delete;
    ListeningSocket &operator=(const ListeningSocket &) = delete;
    ~ListeningSocket();

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    /// Where it listens, with the port that the system chose for port 0.
    [[nodiscard]] std::string address() const;

private:
    explicit ListeningSocket(int descriptor) : m_descriptor(descriptor) { }
    int m_descriptor;
};

/// The network address as text, with or without its port.
[[nodiscard]] std::string hostOf(const sockaddr *address);
[[nodiscard]] std::string hostAndPortOf(const sockaddr *address);

} // namespace service
