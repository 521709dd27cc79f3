// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "faults/fault_shim.h"
#include "faults/isolated.h"
#include "faults/story.h"

#include <filesystem>
#include <memory>
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
    /// What stands in for `prepare` and `relaunch` where the work is more than the saves of a story.
    void (*makeReady)(const Scenario &scenario, const std::filesystem::path &folder) = nullptr;
    void (*judge)(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes) = nullptr;
    long recoveryCalls = 40; ///< of the next launch; a kill beyond the last of them strikes nothing
    std::size_t callsOfASeed = 0; ///< at how many calls each fault strikes, chosen by the seed; 0 for every one
};

[[nodiscard]] std::span<const Scenario> scenarios();
[[nodiscard]] const Scenario &scenario(std::string_view name);

/// The files that a scenario starts from; what lies beside the folder belongs to them.
void prepare(const Scenario &scenario, const std::filesystem::path &folder);

/// Stands in for the next launch: opens what is there and notes every way in which it is not what it should be after
/// what `notes` tells of the saves that were tried and acknowledged.
void relaunch(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes);

// What the work of a scenario is made of.

/// Ends the faults: what the disk lacked is there again.
void lift(Notes &notes);

/// Notes an error that was told; it must have a sentence.
void expectSentence(Notes &notes, const foundation::Error &error);

/// Opens the store; when that fails, once more without the fault.
[[nodiscard]] std::unique_ptr<model::TaskStore> openStore(
    const std::filesystem::path &folder, const foundation::Clock &clock, Notes &notes);

/// The part of every path that the shim is to watch.
constexpr std::string_view watchedName = "/Quelvin";

/// A plan for the shim, for paths of the scenarios.
[[nodiscard]] fault_plan planOf(fault_action action, long at, bool sticky);

} // namespace faults
