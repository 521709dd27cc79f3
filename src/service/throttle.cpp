// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/throttle.h"

#include <algorithm>

namespace service {

namespace {
constexpr std::int64_t longestWait = 900;
constexpr std::int64_t memory = 3600;
constexpr std::size_t mostRecords = 10'000;
} // namespace

std::int64_t Throttle::waitOf(std::string_view who, std::int64_t now)
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_records.find(who);
    if (found == m_records.end() || found->second.failures < m_free)
        return 0;
    const int doublings = std::min(found->second.failures - m_free, 10);
    const std::int64_t wait = std::min(longestWait, std::int64_t(1) << doublings);
    return std::clamp<std::int64_t>(found->second.last + wait - now, 0, wait);
}

void Throttle::failed(std::string_view who, std::int64_t now)
{
    const std::scoped_lock lock(m_mutex);
    if (m_records.size() >= mostRecords)
        std::erase_if(m_records, [now](const auto &record) { return record.second.last + memory <= now; });
    if (m_records.size() >= mostRecords) // an attack with ever new names must not fill the memory
        m_records.clear();
    Record &record = m_records[std::string(who)];
    record.failures = record.last + memory > now ? record.failures + 1 : 1;
    record.last = now;
}

void Throttle::succeeded(std::string_view who)
{
    const std::scoped_lock lock(m_mutex);
    if (const auto found = m_records.find(who); found != m_records.end())
        m_records.erase(found);
}

} // namespace service
