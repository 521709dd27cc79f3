// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/method.h"

#include <string>

namespace service {

// What changes tasks, each inside the call's transaction.

/// Adds a task and returns its id. `completed=1` adds one that was completed today.
[[nodiscard]] std::int64_t insertTask(Call &call);

/// Changes the fields that the request brings and moves the task's stamp. A repeating task that becomes completed is
/// followed by its next occurrence, a task of its own: a client that says the same again changes nothing more.
void editTask(Call &call, std::int64_t id);

/// Deletes a task and remembers that it did. Deleting once more is no error; a task that the user never had is.
void deleteTask(Call &call, std::int64_t id);

/// Takes every task out of the folder or context (`column`) with that id.
void releaseTasks(Call &call, const std::string &column, std::int64_t id);

} // namespace service
