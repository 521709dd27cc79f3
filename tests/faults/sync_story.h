// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "faults/scenario.h"

namespace faults {

// A run with fifty changes, twenty-five on this computer and twenty-five that another one has brought to the service,
// none of both to the same record. The user saves those on this one, and the run carries all of them. The service is on
// the disk beside the store, out of reach of the faults: what it answered to, it keeps.

/// Two computers that agree, changes of the other one at the service, and what there must be in the end.
void prepareSynchronisation(const Scenario &scenario, const std::filesystem::path &folder);

/// Changes, saves and synchronises.
void writeSynchronisation(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes);

/// The next launch synchronises, and then this computer, the service and a new computer have the same: every change of
/// the other one; all or none of those here, and all when the save was acknowledged; nothing twice.
void relaunchSynchronised(const Scenario &scenario, const std::filesystem::path &folder, Notes &notes);

} // namespace faults
