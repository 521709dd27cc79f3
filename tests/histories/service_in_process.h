// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/service.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace histories {

/// The real service, its data in memory and its clock set, without HTTP: one account, which every client uses.
class ServiceInProcess
{
public:
    explicit ServiceInProcess(std::function<std::int64_t()> clock);

    [[nodiscard]] std::string answer(std::string_view target) { return m_service->answer(target); }

private:
    std::unique_ptr<service::Database> m_database;
    std::unique_ptr<service::Service> m_service;
};

} // namespace histories
