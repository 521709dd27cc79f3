// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace faults {

/// What a child process leaves for its parent, in memory that both share: it outlives a kill at any moment and
/// uses no descriptor that the code under test could close or write to.
struct Notes {
    int savesTried = 0;
    int savesAcknowledged = 0;
    int settingsTried = 0;
    int settingsAcknowledged = 0;
    int savesFailed = 0; ///< saves, launches and writes of settings that reported an error
    long calls = 0; ///< counted by the shim
    long hits = 0;
    long progress = 0; ///< for the harness's own use
    bool finished = false;
    std::array<char, 4000> problems{}; ///< what was found wrong, one line each; empty when all is well

    /// Adds a line to the problems.
    void problem(std::string_view text);
};

/// How a child process ended and what it noted.
struct Ending {
    Notes notes;
    bool killed = false; ///< by SIGKILL: the planned end of many cases
    std::string crash; ///< how it ended against all plans, such as "signal 11"; empty otherwise
};

/// Runs `work` in a child process with a deadline and waits for it. Exceptions that leave `work` are problems.
[[nodiscard]] Ending isolated(const std::function<void(Notes &)> &work, const Notes &before = {});

} // namespace faults
