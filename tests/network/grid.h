// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "network/faults.h"
#include "network/operations.h"
#include "toodledo/curl_transport.h"

#include <functional>
#include <mutex>
#include <optional>

namespace network {

/// The program's transport in a hurry. Where certificates are to be trusted, it speaks TLS alone.
class HurriedTransport final : public toodledo::HttpTransport
{
public:
    explicit HurriedTransport(toodledo::CurlTransport::Options options = {});

    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override;
    void beInAHurry(bool hurried) { m_isHurried = hurried; }

private:
    bool m_isSecure;
    bool m_isHurried = true;
    toodledo::CurlTransport m_transport;
};

/// One operation that meets one fault.
struct Cell {
    const Operation &operation;
    const Fault &fault;
    double place = 0.5; ///< where the fault cuts what it cuts: 0 is before the first byte, 1 after the last
    const testing_support::TlsIdentity *identity = nullptr; ///< of the server; null: it speaks HTTP without TLS
};

/// Lets the operation meet the fault, then lets it meet none; tells what is wrong, if anything is. `setHurried` is told
/// whether to give up soon.
[[nodiscard]] std::optional<std::string> tryCell(
    const Cell &cell, toodledo::HttpTransport &transport, const std::function<void(bool)> &setHurried);

/// Reads along what the program logs, as long as it lives.
class LogReader
{
public:
    LogReader();
    ~LogReader();
    LogReader(const LogReader &) = delete;
    LogReader &operator=(const LogReader &) = delete;

    [[nodiscard]] int lines() const;
    /// A line that shows a secret; empty where there was none.
    [[nodiscard]] std::string leak() const;

private:
    mutable std::mutex m_mutex;
    int m_lines = 0;
    std::string m_leak;
};

} // namespace network
