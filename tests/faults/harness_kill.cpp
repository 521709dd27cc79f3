// SPDX-License-Identifier: GPL-3.0-or-later
// Kills a program at every call by which it changes its files, and looks at what the next launch finds.
#include "faults/io_points.h"

int main(int argc, char **argv)
{
    return faults::runIoHarness(argc, argv, "harness_kill", faults::kills());
}
