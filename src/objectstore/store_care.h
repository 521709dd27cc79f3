// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/store.h"

namespace objectstore {

constexpr int backupsKept = 7;

/// Copies the store into `folder` (made where it is missing, for this user alone) as "NAME-YYYY-MM-DD.EXT", once a
/// local day, and keeps the latest seven such copies. True when it made one. A copy that is damaged is reported and
/// takes no other's place. Opens a connection of its own, holds up no writer, and may run on a thread of its own.
[[nodiscard]] foundation::Result<bool> backUpDaily(const Store &store, const std::filesystem::path &folder);

/// Looks through the whole file for damage and reports it as StoreErrorCode::Damaged. Opens a connection of its own and
/// may run on a thread of its own; takes about a second for each gigabyte.
[[nodiscard]] foundation::Result<void> quickCheck(const Store &store);

/// Copies what `source` holds to a new file in one piece; a file of that name is replaced only once the copy is whole.
/// Throws SQLite::Exception and std::filesystem::filesystem_error.
void copyDatabase(Connection &source, const std::filesystem::path &copy);

} // namespace objectstore
