// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sync/sync_session.h"
#include "toodledo/known_tasks.h"

namespace syncing {

/// The tasks that a list need not tell anew: neither side has changed them since both agreed, and nothing that this run
/// will do hangs on them, as long as the service's bytes are those of then. To be asked after the folders and contexts
/// have been listed.
[[nodiscard]] toodledo::KnownTasks unchangedTasks(SyncSession &session);

} // namespace syncing
