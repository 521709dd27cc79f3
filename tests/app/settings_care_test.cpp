// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings_care.h"

#include "foundation/log.h"
#include "support/temporary_folder.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using foundation::Settings;

namespace {

class CareForSettings : public testing::Test
{
protected:
    [[nodiscard]] foundation::SettingsTable stored() { return *file.read(); }
    /// Until what the last tick began is done.
    void settle() const { QTest::qWait(200); }

    support::TemporaryFolder folder;
    std::filesystem::path path = folder.path() / "settings.json";
    foundation::JsonSettingsFile file{path};
    Settings settings{file, {}};
    app::SettingsCare care{settings};
};

} // namespace

TEST_F(CareForSettings, writesWhatHasChangedOnceItRests)
{
    for (const char *typed : {"s", "se", "secret"}) {
        settings.set("password", std::string(typed));
        care.tick();
        settle();
        EXPECT_FALSE(std::filesystem::exists(path)) << "still typing";
    }
    care.tick();
    EXPECT_TRUE(QTest::qWaitFor([&] { return settings.unsavedChanges() == 0 && std::filesystem::exists(path); }));
    EXPECT_EQ(stored(), (foundation::SettingsTable{{"password", "secret"}}));
}

TEST_F(CareForSettings, tellsWhatAnotherProgramHasChanged)
{
    Settings::Keys told;
    QObject::connect(&care, &app::SettingsCare::changedElsewhere, [&](const Settings::Keys &keys) { told = keys; });
    foundation::JsonSettingsFile otherFile(path);
    Settings other(otherFile, {});
    other.set("a", true);
    ASSERT_TRUE(other.synchronize());
    care.tick();
    EXPECT_EQ(told, Settings::Keys{"a"});
    EXPECT_TRUE(settings.boolean("a"));
}

TEST_F(CareForSettings, tellsATroubleOnceAndTriesUntilItIsOver)
{
    foundation::setLogSink([](std::string_view) {});
    std::filesystem::create_directory(path); // in the file's place
    int told = 0;
    QObject::connect(&care, &app::SettingsCare::troubleFound, [&] { ++told; });
    settings.set("a", true);
    const auto tickUntil
        = [&](const auto &isReached) { return QTest::qWaitFor([&] { return care.tick(), isReached(); }, 10'000); };
    EXPECT_TRUE(tickUntil([&] { return told == 1; }));
    for (int tick = 0; tick < 4; ++tick) {
        care.tick();
        settle();
    }
    EXPECT_EQ(told, 1);
    std::filesystem::remove_all(path);
    EXPECT_TRUE(tickUntil([&] { return settings.unsavedChanges() == 0; }));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(stored(), (foundation::SettingsTable{{"a", true}}));
    foundation::setLogSink({});
}
