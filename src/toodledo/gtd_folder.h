// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace toodledo {

/// One folder as the service has it.
struct GtdFolder {
    std::int64_t folderId = -1; ///< -1: not yet known
    std::optional<std::string> title;
    bool isPrivate = false;
    bool archived = false;
    std::int64_t order = -1; ///< place in the service's list

    /// One line for the log.
    [[nodiscard]] std::string description() const;
};

} // namespace toodledo
