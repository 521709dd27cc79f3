// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "faults/fault_shim.h"
#include "faults/isolated.h"
#include "faults/story.h"

#include <filesystem>
#include <span>
#include <string_view>

namespace faults {

/// What a program does to its files while faults strike, and how to tell afterwards whether it was right. A scenario is
/// one row of the table in scenario.cpp; a new kind of work is a new `write` there.
struct Scenario {
    std::string_view name;
    Story story;
    int prepared = 0; ///< saves that the store holds before; 0 for no store at all
    bool olderSchema = false; ///< whether what is prepared is of an older schema
    /// Does the work, with the shim armed, in a child process.
    void (*write)(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes);
};

[[nodiscard]] std::span<const Scenario> scenarios();
[[nodiscard]] const Scenario &scenario(std::string_view name);

/// The files that a scenario starts from.
void prepare(const Scenario &scenario, const std::filesystem::path &folder);

/// Stands in for the next launch: opens what is there and notes every way in which it is not what it should be after
/// what `notes` tells of the saves that were tried and acknowledged.
void relaunch(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes);

/// The part of every path that the shim is to watch.
constexpr std::string_view watchedName = "/Quelvin";

/// A plan for the shim, for paths of the scenarios.
[[nodiscard]] fault_plan planOf(fault_action action, long at, bool sticky);

} // namespace faults
