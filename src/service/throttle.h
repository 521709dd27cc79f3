// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace service {

/// Slows down whoever fails again and again: some failures are free, then each doubles the time to wait, up to a
/// quarter of an hour. Who has not failed for an hour is forgotten. Any thread.
class Throttle
{
public:
    explicit Throttle(int freeFailures) : m_free(freeFailures) { }

    /// The seconds that `who` has to wait before the next try; 0 when it may try now.
    [[nodiscard]] std::int64_t waitOf(std::string_view who, std::int64_t now);
    void failed(std::string_view who, std::int64_t now);
    void succeeded(std::string_view who);

private:
    struct Record {
        int failures = 0;
        std::int64_t last = 0;
    };

    int m_free;
    std::mutex m_mutex;
    std::map<std::string, Record, std::less<>> m_records;
};

} // namespace service
