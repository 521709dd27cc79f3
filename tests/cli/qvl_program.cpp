// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/qvl_program.h"

#include <array>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace clitest {

namespace {

std::string contentOf(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

Outcome Qvl::run(const std::vector<std::string> &arguments, const std::string &input) const
{
    std::vector<std::string> words{
        QVL_PROGRAM, "--store", path("store").string(), "--settings", path("settings.json").string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> pointers;
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    std::ofstream(path("in"), std::ios::binary) << input;
    const std::array<std::string, 3> files{path("in").string(), path("out").string(), path("err").string()};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, files[0].c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, files[1].c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, files[2].c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    const int failure = ::posix_spawn(&child, QVL_PROGRAM, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error("qvl could not be started");
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contentOf(files[1]), contentOf(files[2])};
}

std::string Qvl::operator()(const std::vector<std::string> &arguments, const std::string &input) const
{
    const Outcome outcome = run(arguments, input);
    if (outcome.status != 0)
        throw std::runtime_error("qvl ended with " + std::to_string(outcome.status) + ": " + outcome.err);
    return outcome.out;
}

} // namespace clitest
