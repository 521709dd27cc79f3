// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/run.h"

#include "cli/command_error.h"
#include "cli/workplace.h"

#include <clocale>
#include <csignal>
#include <cstring>
#include <exception>
#include <langinfo.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace cli {

namespace {

/// Widths of letters are known to the C library in a UTF-8 locale only.
void useUtf8()
{
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") != 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
}

int report(const foundation::Error &error)
{
    complain(error.message);
    return exitStatus(error);
}

/// Tasks and the password stay out of core dumps, debuggers and other users' sight; a closed pipe and a full disk are
/// errors to report, not signals to die of.
void secureProcess()
{
    const rlimit none{};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
    ::umask(077);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int run(int count, const char *const *words, std::span<const CommandDescription> commands, MakeSecretStore makeSecrets)
{
    useUtf8();
    const auto arguments = readArguments(count, words, commands);
    if (!arguments)
        return report(arguments.error());
    const foundation::SystemClock clock;
    Workplace workplace(*arguments, clock, makeSecrets);
    if (arguments->help)
        workplace.out = *arguments->help;
    else if (const auto done = arguments->command->run(workplace, *arguments); !done)
        return report(done.error());
    const auto written = workplace.flush();
    return written ? 0 : report(written.error());
}

} // namespace

int runProgram(
    int count, const char *const *words, std::span<const CommandDescription> commands, MakeSecretStore makeSecrets)
{
    secureProcess();
    try {
        return run(count, words, commands, makeSecrets);
    } catch (const std::exception &exception) {
        complain(std::string("This should not have happened: ") + exception.what());
        return 1;
    }
}

} // namespace cli
