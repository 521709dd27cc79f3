// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>
namespace histories {
class ServiceInProcess
{
public:
    explicit ServiceInProcess(std::function<std::int64_t()> now) : m_now(std::move(now)) { }
    std::string answer(std::string_view target);

private:
    using Fields = std::map<std::string, std::string>;
    std::function<std::int64_t()> m_now;
    std::map<int, Fields> m_tasks, m_folders, m_contexts;
    std::vector<int> m_deleted;
    int m_next = 1;
};
} // namespace histories
