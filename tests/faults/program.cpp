// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/program.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace faults {

using namespace std::chrono_literals;

namespace {

std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Starts a program with these files as its standard input and output; both are closed here.
pid_t spawn(std::vector<std::string> words, std::vector<std::string> environment, int input, int output)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (!std::getenv("QUELVIN_HARNESS_TALKS"))
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    const int failed = ::posix_spawn(
        &process, words[0].c_str(), &actions, nullptr, pointersTo(words).data(), pointersTo(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(input);
    ::close(output);
    if (failed != 0)
        throw std::runtime_error(words[0] + " does not start");
    return process;
}

std::array<int, 2> makePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    return ends;
}

} // namespace

RunningProgram::RunningProgram(
    const std::vector<std::string> &command, const std::map<std::string, std::string> &environment)
{
    std::vector<std::string> variables;
    for (char **variable = environ; *variable; ++variable) {
        const std::string text = *variable;
        if (!environment.contains(text.substr(0, text.find('='))))
            variables.push_back(text);
    }
    for (const auto &[name, value] : environment)
        variables.push_back(name + "=" + value);
    const auto ends = makePipe();
    m_process = spawn(command, variables, ::open("/dev/null", O_RDONLY | O_CLOEXEC), ends[1]);
    m_output = ends[0];
}

RunningProgram::~RunningProgram()
{
    if (!m_status) {
        kill(SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    ::close(m_output);
}

std::optional<std::string> RunningProgram::line(std::chrono::milliseconds patience)
{
    auto left = patience;
    for (;;) {
        if (const auto place = m_read.find('\n'); place != std::string::npos) {
            std::string line = m_read.substr(0, place);
            m_read.erase(0, place + 1);
            return line;
        }
        if (left <= 0ms)
            return std::nullopt;
        const auto slice = std::min<std::chrono::milliseconds>(left, 50ms);
        pollfd waiting{m_output, POLLIN, 0};
        if (::poll(&waiting, 1, static_cast<int>(slice.count())) == 0) {
            left -= slice; // and no more, should the machine have stood still
            continue;
        }
        std::array<char, 16384> bytes{};
        const ssize_t size = ::read(m_output, bytes.data(), bytes.size());
        if (size <= 0)
            return std::nullopt;
        m_read.append(bytes.data(), static_cast<std::size_t>(size));
    }
}

std::optional<int> RunningProgram::wait(std::chrono::milliseconds patience)
{
    for (auto left = patience; !m_status; left -= 1ms) {
        int status = 0;
        if (::waitpid(m_process, &status, WNOHANG) == m_process)
            m_status = status;
        else if (left <= 0ms)
            break;
        else
            std::this_thread::sleep_for(1ms);
    }
    return m_status;
}

void RunningProgram::kill(int signal)
{
    if (!m_status)
        ::kill(m_process, signal);
}

void runToEnd(const std::vector<std::string> &command, const std::string &input)
{
    const auto in = makePipe();
    [[maybe_unused]] const auto written = ::write(in[1], input.data(), input.size()); // less than a pipe holds
    ::close(in[1]);
    std::vector<std::string> variables;
    for (char **variable = environ; *variable; ++variable)
        variables.emplace_back(*variable);
    const pid_t process = spawn(command, variables, in[0], ::open("/dev/null", O_WRONLY | O_CLOEXEC));
    int status = 0;
    if (::waitpid(process, &status, 0) != process || status != 0) {
        std::string words;
        for (const std::string &word : command)
            words += word + " ";
        throw std::runtime_error(words + "failed");
    }
}

} // namespace faults
