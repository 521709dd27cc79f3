// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "foundation/instant.h"

#include <string_view>

namespace cli {

/// Reads a date as people type it: ISO 8601, "today", "tomorrow", "yesterday", a number of days or weeks from today
/// ("+3d", "-1w") or a day of the week ("friday", "fri"), each with or without a time of day ("friday 17:00"), or a
/// time of today alone ("17:00"). A day of the week is the next one after today. Without a time it is local midnight.
[[nodiscard]] foundation::Result<foundation::Instant> readDate(std::string_view text, foundation::Instant now);

} // namespace cli
