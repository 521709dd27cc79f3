// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/task_store.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>

namespace {

/// Sets environment variables, or removes them, until the end of the test.
class Environment
{
public:
    explicit Environment(std::map<std::string, const char *> wanted)
    {
        for (const auto &[name, value] : wanted) {
            const char *before = std::getenv(name.c_str());
            m_before[name] = before ? std::optional<std::string>(before) : std::nullopt;
            put(name, value);
        }
    }
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;
    ~Environment()
    {
        for (const auto &[name, value] : m_before)
            put(name, value ? value->c_str() : nullptr);
    }

private:
    static void put(const std::string &name, const char *value)
    {
        value ? ::setenv(name.c_str(), value, 1) : ::unsetenv(name.c_str());
    }
    std::map<std::string, std::optional<std::string>> m_before;
};

} // namespace

TEST(TaskStore, liesWhereTheDesktopKeepsData)
{
    Environment named({{"HOME", "/home/ana"}, {"XDG_DATA_HOME", "/data"}, {"XDG_CONFIG_HOME", "/config"}});
    EXPECT_EQ(model::applicationSupportFolder(), "/data/Quelvin");
    EXPECT_EQ(model::settingsFile(), "/config/Quelvin/settings.json");
    const Environment unnamed({{"XDG_DATA_HOME", "not/absolute"}, {"XDG_CONFIG_HOME", nullptr}});
    EXPECT_EQ(model::applicationSupportFolder(), "/home/ana/.local/share/Quelvin");
    EXPECT_EQ(model::settingsFile(), "/home/ana/.config/Quelvin/settings.json");
    const Environment homeless({{"HOME", nullptr}});
    EXPECT_EQ(model::applicationSupportFolder(), std::filesystem::temp_directory_path() / "Quelvin");
}
