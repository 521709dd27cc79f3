// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace faults {

/// One of the built programs as a process, whose standard output is read; killed with this object.
class RunningProgram
{
public:
    /// `environment` is set beside that of this process.
    RunningProgram(const std::vector<std::string> &command, const std::map<std::string, std::string> &environment = {});
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;
    ~RunningProgram();

    /// The next line of its output; nothing at the output's end, or when it does not come in time.
    [[nodiscard]] std::optional<std::string> line(std::chrono::milliseconds patience);
    /// Waits until it has ended; its status as `waitpid` tells it, or nothing when it still runs.
    [[nodiscard]] std::optional<int> wait(std::chrono::milliseconds patience);
    void kill(int signal);

private:
    pid_t m_process = 0;
    int m_output = -1;
    std::string m_read;
    std::optional<int> m_status;
};

/// Runs a program to its end; throws what it said when it fails.
void runToEnd(const std::vector<std::string> &command, const std::string &input = {});

} // namespace faults
