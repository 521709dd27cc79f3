// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"

#include <span>

namespace cli {

/// Every command of the program.
[[nodiscard]] std::span<const CommandDescription> commandTable();

/// The command "sync", done by `run`. Synchronising is a program of its own, so that no other command pays for the
/// loading of the network's and the keyring's libraries, which takes longer than all that most commands do.
[[nodiscard]] CommandDescription syncCommand(foundation::Result<void> (*run)(Workplace &, const Arguments &));
[[nodiscard]] CommandDescription settingsCommand();

// What the commands do. Each looks everything up first and saves once, so that it is done wholly or not at all.
using Done = foundation::Result<void>;

[[nodiscard]] Done addTask(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done showTask(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done editTask(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done completeTasks(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done deleteTasks(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done undeleteTasks(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done emptyTrash(Workplace &workplace, const Arguments &arguments);

[[nodiscard]] Done listTasks(Workplace &workplace, const Arguments &arguments);

[[nodiscard]] Done listFolders(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done listContexts(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done listTags(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done listStates(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done changeFolder(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done changeContext(Workplace &workplace, const Arguments &arguments);

/// Hands the command over to the program that reaches the network and the keyring.
[[nodiscard]] Done startSyncProgram(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done showOrSetSettings(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done importFile(Workplace &workplace, const Arguments &arguments);
[[nodiscard]] Done exportStore(Workplace &workplace, const Arguments &arguments);

} // namespace cli
