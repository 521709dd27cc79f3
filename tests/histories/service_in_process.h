// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/service.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace histories {

/// The real service, its clock set, without HTTP: one account, which every client uses. Its data is in memory or, where
/// it must outlive the process, in a folder, and then it is on the disk before an answer is given.
class ServiceInProcess
{
public:
    explicit ServiceInProcess(std::function<std::int64_t()> clock, const std::filesystem::path &folder = {},
        int mostCalls = service::ServiceOptions().mostCalls);

    [[nodiscard]] std::string answer(std::string_view target, std::string_view body = {})
    {
        return m_service->answer(target, body);
    }

private:
    std::unique_ptr<service::Database> m_database;
    std::unique_ptr<service::Service> m_service;
};

} // namespace histories
