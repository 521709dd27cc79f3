// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string_view>
#include <unordered_set>

namespace service {

/// Remembers which keys were good when they were last used, so that a writer need not ask twice. Only a hint: a key has
/// to be checked in the transaction that it opens all the same. Any thread.
class KnownKeys
{
public:
    [[nodiscard]] bool contains(std::string_view key)
    {
        const std::scoped_lock lock(m_mutex);
        return m_hashes.contains(std::hash<std::string_view>()(key));
    }
    void add(std::string_view key)
    {
        const std::scoped_lock lock(m_mutex);
        if (m_hashes.size() >= most)
            m_hashes.clear();
        m_hashes.insert(std::hash<std::string_view>()(key));
    }
    void remove(std::string_view key)
    {
        const std::scoped_lock lock(m_mutex);
        m_hashes.erase(std::hash<std::string_view>()(key));
    }

private:
    static constexpr std::size_t most = 1000;
    std::mutex m_mutex;
    std::unordered_set<std::size_t> m_hashes;
};

} // namespace service
