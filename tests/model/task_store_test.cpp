// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/settings_defaults.h"
#include "model/task_store.h"
#include "support/collected_errors.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

#include <fstream>
#include <gmock/gmock.h>

using namespace support;
namespace fs = std::filesystem;

namespace {

/// Sets an environment variable, or removes it, until the end of the test.
class Environment
{
public:
    Environment(const char *name, const char *value) : m_name(name)
    {
        if (const char *before = std::getenv(name))
            m_before = before;
        put(value);
    }
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;
    ~Environment() { put(m_before ? m_before->c_str() : nullptr); }

private:
    void put(const char *value) { value ? ::setenv(m_name, value, 1) : ::unsetenv(m_name); }

    const char *m_name;
    std::optional<std::string> m_before;
};

} // namespace

TEST(TaskStore, liesWhereTheDesktopKeepsData)
{
    const Environment home("HOME", "/home/ana");
    {
        const Environment data("XDG_DATA_HOME", "/data");
        const Environment config("XDG_CONFIG_HOME", "/config");
        EXPECT_EQ(model::applicationSupportFolder(), "/data/Quelvin");
        EXPECT_EQ(model::settingsFile(), "/config/Quelvin/settings.json");
    }
    const Environment data("XDG_DATA_HOME", "not/absolute");
    const Environment config("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(model::applicationSupportFolder(), "/home/ana/.local/share/Quelvin");
    EXPECT_EQ(model::settingsFile(), "/home/ana/.config/Quelvin/settings.json");
    const Environment homeless("HOME", nullptr);
    EXPECT_EQ(model::applicationSupportFolder(), fs::temp_directory_path() / "Quelvin");
}

TEST(TaskStore, makesItsFolderForThisUserAlone)
{
    const TemporaryFolder temporary;
    TestClock clock;
    CollectedErrors errors;
    for (const char *name : {"a/b/Quelvin", "c/Quelvin/"}) {
        const fs::path folder = temporary.path() / name;
        ASSERT_TRUE(model::TaskStore::open(folder, clock, errors));
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
        EXPECT_TRUE(fs::is_regular_file(folder / "Quelvin.qvl"));
    }
    EXPECT_THAT(errors.errors, testing::IsEmpty());
}

TEST(TaskStore, whatCannotBeOpenedIsToldAndLeftAsItIs)
{
    const TemporaryFolder temporary;
    TestClock clock;
    CollectedErrors errors;
    std::ofstream(temporary.path() / "file") << "a file";
    EXPECT_FALSE(model::TaskStore::open(temporary.path() / "file" / "Quelvin", clock, errors));
    EXPECT_THAT(errors.errors, testing::SizeIs(1));

    const std::string letter(4096, 'x');
    std::ofstream(temporary.path() / "Quelvin.qvl") << letter;
    const auto opened = model::TaskStore::open(temporary.path(), clock, errors);
    ASSERT_FALSE(opened);
    EXPECT_NE(opened.error().message, "");
    EXPECT_EQ(fs::file_size(temporary.path() / "Quelvin.qvl"), letter.size());
}

TEST(SettingsDefaults, everySettingThatIsReadByNameHasItsDefault)
{
    const auto defaults = model::settingsDefaults();
    EXPECT_THAT(defaults, testing::SizeIs(33 + 6 + 2))
        << "the program's table and the keys for reaching the service and a receiver";
    namespace keys = model::keys;
    for (const std::string_view key : {keys::SyncToToodledo, keys::SyncOnLaunch, keys::SyncInterval, keys::ToodledoHost,
             keys::AcceptedCertificateDomain, keys::RequestTimeout, keys::ReplyLimit, keys::EscapeParameterValues,
             keys::SyncGuards, keys::BackgroundColor, keys::DetailBackgroundColor, keys::TitleStartColor,
             keys::TitleEndColor, keys::HeadlineFontSize, keys::HeadlineFontName, keys::ShowCompletedTasks,
             keys::SmartFoldersApplyShowCompleted, keys::UseLocation, keys::NmeaSource, keys::NmeaBaudRate,
             keys::GlobalHotKey, keys::ShowTodayInBadge, keys::ShowInboxInBadge})
        EXPECT_TRUE(defaults.contains(key)) << key;
    for (const std::string_view key : {keys::HasBeenRun, keys::ToodleDoUsername, keys::ToodleDoPassword,
             keys::toodledoKey, keys::lastKeyUpdate, keys::dateLastSynched})
        EXPECT_FALSE(defaults.contains(key)) << key;
}
