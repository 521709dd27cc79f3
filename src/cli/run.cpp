// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/run.h"

#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/workplace.h"

#include <clocale>
#include <cstring>
#include <langinfo.h>

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

} // namespace

int run(int count, const char *const *words)
{
    useUtf8();
    const auto arguments = readArguments(count, words, commandTable());
    if (!arguments)
        return report(arguments.error());
    const foundation::SystemClock clock;
    Workplace workplace(*arguments, clock);
    if (arguments->help)
        workplace.out = *arguments->help;
    else if (const auto done = arguments->command->run(workplace, *arguments); !done)
        return report(done.error());
    const auto written = workplace.flush();
    return written ? 0 : report(written.error());
}

} // namespace cli
