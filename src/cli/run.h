// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace cli {

/// The whole program: reads the command line, runs the command, prints, and returns the exit status.
[[nodiscard]] int run(int count, const char *const *words);

} // namespace cli
