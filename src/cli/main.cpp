// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/run.h"

int main(int count, char **words)
{
    return cli::runProgram(count, words, cli::commandTable());
}
