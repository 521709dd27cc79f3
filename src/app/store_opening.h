// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/task_store.h"
#include "objectstore/store_lock.h"

#include <optional>

namespace app {

/// The store as the one window that has it open holds it.
struct OpenStore {
    std::unique_ptr<model::TaskStore> tasks;
    std::optional<objectstore::StoreLock> lock; ///< none where the store's folder takes no lock file
};

/// Where the daily copies of the store in `folder` lie.
[[nodiscard]] std::filesystem::path backupFolder(const std::filesystem::path &folder);

/// Opens the store in `folder` for a window. A second window is refused with StoreErrorCode::InUse before it reads or
/// writes anything. Each refusal says in its sentence what the user can do; a store that can only be read is told of
/// through `presenter` and opened. Main thread.
[[nodiscard]] foundation::Result<OpenStore> openStore(
    const std::filesystem::path &folder, const foundation::Clock &clock, foundation::ErrorPresenter &presenter);

} // namespace app
