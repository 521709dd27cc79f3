// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <cstdint>
#include <optional>
#include <string>

namespace toodledo {

/// One note as the service has it.
struct GtdNote {
    std::int64_t uid = 0;
    std::optional<foundation::Instant> dateCreated;
    std::optional<foundation::Instant> dateModified;
    std::optional<std::string> title;
    std::optional<std::string> text;
    std::int64_t folder = 0;
    bool isPrivate = false;

    /// One line for the log; it shows the text, not the title.
    [[nodiscard]] std::string description() const;
};

} // namespace toodledo
