// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <QString>
#include <optional>

namespace viewcontrollers {

/// Reads a date as people type it: "today", "tomorrow 14:00", "fri", "in 3 days", "+2w", "26 Nov", "26.11.",
/// "2026-12-01 9:30", "14:00". A date without a year is the next such day. Nothing for other text.
[[nodiscard]] std::optional<foundation::Instant> parseDate(const QString &text, foundation::Instant now);

/// The same in full, for an editor: "Tue 24 Nov 2026, 14:00". Midnight is no time.
[[nodiscard]] QString fullDate(foundation::Instant date);

} // namespace viewcontrollers
