// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/exchange_format.h"
#include "objectstore/object_context.h"

#include <vector>

namespace cli {

/// Everything in the store that a user owns, ready to be written. What was emptied from the Trash, and folders and
/// contexts that only wait for the service to delete them too, are gone for the user and stay out.
[[nodiscard]] foundation::Result<std::vector<FileRecord>> exportedRecords(objectstore::ObjectContext &moc);

} // namespace cli
