// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace cli {

namespace {

constexpr const char *programName = "qvl-sync";

std::vector<std::string> wordsFor(const Arguments &arguments)
{
    std::vector<std::string> words{programName};
    for (const auto &[option, value] :
        {std::pair("--store", arguments.storeFolder), std::pair("--settings", arguments.settingsFile)}) {
        if (value) {
            words.emplace_back(option);
            words.push_back(*value);
        }
    }
    words.emplace_back(arguments.command->name);
    for (const auto &[option, values] : arguments.options)
        words.push_back("--" + option);
    if (!arguments.operands.empty())
        words.emplace_back("--");
    words.insert(words.end(), arguments.operands.begin(), arguments.operands.end());
    return words;
}

} // namespace

/// The program beside this one takes its place.
Done startSyncProgram(Workplace &, const Arguments &arguments)
{
    std::vector<std::string> words = wordsFor(arguments);
    std::vector<char *> pointers;
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error).replace_filename(programName);
    if (!error) {
        ::execv(program.c_str(), pointers.data());
        error = {errno, std::generic_category()};
    }
    return failed("The program " + program.string() + " could not be started: " + error.message() + ".");
}

} // namespace cli
