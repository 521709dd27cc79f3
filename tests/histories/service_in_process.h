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
/// it must outlive the process, in a folder, and then it is on the disk before an answer is given. One that knows no
/// marks is as the protocol has it: an add that is sent again adds again.
class ServiceInProcess
{
public:
    explicit ServiceInProcess(std::function<std::int64_t()> clock, const std::filesystem::path &folder = {},
        bool knowsMarks = true, int mostCalls = service::ServiceOptions().mostCalls);

    [[nodiscard]] std::string answer(std::string_view target, std::string_view body = {});

private:
    std::unique_ptr<service::Database> m_database;
    std::unique_ptr<service::Service> m_service;
    bool m_knowsMarks;
};

} // namespace histories
