// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "faults/scenario.h"
#include "support/temporary_folder.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace faults {

/// One place where a fault strikes.
struct IoPoint {
    const Scenario *scenario;
    fault_action action;
    bool sticky;
    long call; ///< the n-th call that changes (or reads) a file
    long recoveryCall = 0; ///< where the launch after it is killed too; 0 for nowhere
};

/// A kind of fault as a harness tries it at every call.
struct FaultKind {
    fault_action action;
    bool sticky = false;
    bool compound = false; ///< the recovery is killed too
};

/// Kills at every call, torn writes and kills of the recovery.
[[nodiscard]] const std::vector<FaultKind> &kills();
/// Errors of every call, once and for good.
[[nodiscard]] const std::vector<FaultKind> &ioErrors();

/// Tries points in folders of its own, each starting from the same prepared files.
class IoPoints
{
public:
    /// All points of the scenarios under the kinds of faults; `seed` chooses where recoveries are killed.
    [[nodiscard]] std::vector<IoPoint> all(
        std::span<const Scenario> scenarios, const std::vector<FaultKind> &kinds, std::uint64_t seed);

    /// What was wrong afterwards; nothing when all was well.
    [[nodiscard]] std::optional<std::string> run(const IoPoint &point);

    [[nodiscard]] static std::string describe(const IoPoint &point);

    /// Of all runs so far: saves that were acknowledged, faults that struck, errors that were told.
    long acknowledged = 0;
    long struck = 0;
    long told = 0;

private:
    [[nodiscard]] const std::filesystem::path &prepared(const Scenario &scenario);
    [[nodiscard]] std::filesystem::path freshCopy(const Scenario &scenario);
    [[nodiscard]] long callsOf(const Scenario &scenario, fault_action action);

    support::TemporaryFolder m_folder;
    std::map<const Scenario *, std::filesystem::path> m_prepared;
};

/// The main function of a harness that tries all points of all scenarios under these kinds of faults.
[[nodiscard]] int runIoHarness(int argc, char **argv, const std::string &name, const std::vector<FaultKind> &kinds);

} // namespace faults
