// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace toodledo {

/// Tells the bytes of one record of a reply from all others.
using SourceMark = std::uint64_t;

/// One task as the service has it: its numbers and codes unconverted, its texts in UTF-8.
struct GtdTask {
    std::int64_t taskId = 0; ///< 0: not yet known
    std::optional<std::string> title;
    std::optional<std::vector<std::string>> tags;
    std::int64_t folder = 0; ///< 0: no folder
    std::int64_t context = 0; ///< 0: no context
    std::int64_t listedContext = 0; ///< the id that a reply has beside the name of the context; 0: none
    std::int64_t goal = 0;
    bool hasStartTime = false;
    bool hasDueTime = false;
    bool hasDueDate = false;
    std::optional<foundation::Instant> addedDate;
    std::optional<foundation::Instant> modifiedDate; ///< whole seconds
    std::optional<foundation::Instant> startDate;
    std::optional<foundation::Instant> dueDate;
    std::optional<foundation::Instant> completedDate;
    bool completed = false;
    std::optional<std::string> repeatAdvanced;
    bool star = false;
    std::int64_t status = 0;
    std::int64_t reminder = 0;
    std::int64_t repeat = 0;
    std::int64_t length = 0;
    std::int64_t timer = 0;
    std::int64_t priority = 0;
    std::int64_t parentId = 0;
    std::int64_t children = 0;
    std::optional<std::string> note;
    std::optional<SourceMark> source; ///< of the bytes that it was read from, where they were looked at
};

} // namespace toodledo
