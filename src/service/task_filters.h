// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/connection.h"
#include "service/request.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace service {

/// Which tasks a `getTasks` asks for, as a condition in SQL over `task` and what its places are bound to.
struct TaskFilter {
    std::string condition;
    std::vector<Value> values;
};

/// The parameters that `getTasks` takes.
[[nodiscard]] std::span<const std::string_view> taskFilterNames();

/// The filter for the user's tasks. Throws Refusal where a value cannot be read.
[[nodiscard]] TaskFilter taskFilterOf(const Request &request, std::int64_t user);

} // namespace service
