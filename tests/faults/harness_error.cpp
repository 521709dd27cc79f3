// SPDX-License-Identifier: GPL-3.0-or-later
// Lets every call on a program's files fail, once and for good, and looks at what becomes of the user's work.
#include "faults/io_points.h"

int main(int argc, char **argv)
{
    return faults::runIoHarness(argc, argv, "harness_error", faults::ioErrors());
}
