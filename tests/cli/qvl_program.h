// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/temporary_folder.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace clitest {

/// What a program left behind.
struct Outcome {
    int status = -1; ///< the exit status, or minus the signal that ended it
    std::string out;
    std::string err;
};

/// Runs the built qvl on a store and settings of its own.
class Qvl
{
public:
    Qvl() { ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1); } // nobody's keyring is for tests

    /// Runs it with these arguments and this standard input.
    [[nodiscard]] Outcome run(const std::vector<std::string> &arguments, const std::string &input = {}) const;
    /// What it prints; throws std::runtime_error with its complaint when it fails.
    std::string operator()(const std::vector<std::string> &arguments, const std::string &input = {}) const;

    [[nodiscard]] std::filesystem::path path(const std::string &name) const { return m_folder.path() / name; }

private:
    support::TemporaryFolder m_folder;
};

} // namespace clitest
