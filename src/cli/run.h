// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/workplace.h"

#include <span>

namespace cli {

/// A whole program over these commands: secures the process, reads the command line, runs the command, prints, and
/// returns the exit status.
[[nodiscard]] int runProgram(int count, const char *const *words, std::span<const CommandDescription> commands,
    MakeSecretStore makeSecrets = nullptr);

} // namespace cli
