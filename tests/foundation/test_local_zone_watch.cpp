// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/instant.h"
#include "foundation/local_zone_watch.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

using namespace foundation;
namespace fs = std::filesystem;

TEST(LocalZoneWatch, noticesAnotherLinkOnceAndAFileThatComesAndGoes)
{
    const support::TemporaryFolder folder;
    for (const char *zone : {"Rome", "Lima"})
        std::ofstream(folder.path() / zone) << zone;
    const fs::path link = folder.path() / "localtime";
    fs::create_symlink(folder.path() / "Rome", link);
    LocalZoneWatch watch(link);
    EXPECT_FALSE(watch.hasChanged());
    fs::create_symlink(folder.path() / "Lima", folder.path() / "new");
    fs::rename(folder.path() / "new", link); // as timedatectl does
    EXPECT_TRUE(watch.hasChanged());
    EXPECT_FALSE(watch.hasChanged());
    fs::remove(link);
    EXPECT_TRUE(watch.hasChanged());
    EXPECT_FALSE(watch.hasChanged());
}

TEST(LocalZoneWatch, makesTheProgramReckonInTheNewZone)
{
    ::setenv("TZ", "Europe/Rome", 1);
    LocalZoneWatch watch;
    [[maybe_unused]] const bool isOther = watch.hasChanged();
    localZoneChanged();
    const Instant noon = *fromIso8601("2026-11-24T12:00:00Z");
    const Instant roman = startOfLocalDay(noon);
    ::setenv("TZ", "America/Lima", 1);
    EXPECT_TRUE(watch.hasChanged());
    EXPECT_EQ(startOfLocalDay(noon).seconds - roman.seconds, 6 * 3600);
}
