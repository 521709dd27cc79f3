// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_store.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

TEST(TaskStore, liesWhereTheDesktopKeepsData)
{
    ::setenv("HOME", "/home/ana", 1);
    ::setenv("XDG_DATA_HOME", "/data", 1);
    ::setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(model::applicationSupportFolder(), "/data/Quelvin");
    EXPECT_EQ(model::settingsFile(), "/config/Quelvin/settings.json");
    ::setenv("XDG_DATA_HOME", "not/absolute", 1);
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(model::applicationSupportFolder(), "/home/ana/.local/share/Quelvin");
    EXPECT_EQ(model::settingsFile(), "/home/ana/.config/Quelvin/settings.json");
    ::unsetenv("HOME");
    EXPECT_EQ(model::applicationSupportFolder(), std::filesystem::temp_directory_path() / "Quelvin");
}
