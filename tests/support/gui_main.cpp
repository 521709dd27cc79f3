// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tm_application.h"

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const app::TMApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
