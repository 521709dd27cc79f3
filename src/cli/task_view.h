// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/table.h"
#include "foundation/instant.h"
#include "model/entities.h"

#include <span>
#include <string>

namespace cli {

/// Tasks as a table for people, a line each.
[[nodiscard]] std::string taskTable(
    std::span<objectstore::ManagedObject *const> tasks, foundation::Instant now, const Terminal &terminal);

/// All of one task, a line for each thing that it has, and its note.
[[nodiscard]] std::string taskSheet(const model::Tasks &task, const Terminal &terminal);

/// "2026-12-24", or with the time of day where it is not midnight.
[[nodiscard]] std::string shortDate(std::optional<foundation::Instant> date);

} // namespace cli
