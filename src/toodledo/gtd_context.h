// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace toodledo {

/// One context as the service has it.
struct GtdContext {
    std::int64_t contextId = -1; ///< -1: not yet known
    std::optional<std::string> title;

    /// One line for the log.
    [[nodiscard]] std::string description() const;
};

} // namespace toodledo
