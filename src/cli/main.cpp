// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/run.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

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

} // namespace

int main(int count, char **words)
{
    secureProcess();
    try {
        return cli::run(count, words);
    } catch (const std::exception &exception) {
        std::cerr << "qvl: This should not have happened: " << exception.what() << '\n';
        return 1;
    }
}
