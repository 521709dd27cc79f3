// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application.h"

#include <gtest/gtest.h>

/// Asked by the leak sanitizer. Fontconfig loses a pattern where it looks for a font with signs that the first has not;
/// GIO loses whom its signals go to where the loop that would free it has ended.
extern "C" const char *__lsan_default_suppressions(); // NOLINT: the sanitizer gives the name
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libgio-2.0\n";
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const app::TMApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
