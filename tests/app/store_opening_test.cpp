// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/store_care.h"
#include "app/store_opening.h"

#include "support/test_application.h"

#include <QTest>
#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using objectstore::StoreErrorCode;
using testing::HasSubstr;

namespace {

class StoreOpening : public testing::Test
{
protected:
    [[nodiscard]] foundation::Result<app::OpenStore> open() { return app::openStore(folder, clock, user); }
    [[nodiscard]] fs::path file() const { return folder / model::TaskStore::fileName; }

    support::TemporaryFolder place;
    fs::path folder = place.path() / "Quelvin";
    support::TestClock clock;
    support::TestUser user;
};

int code(StoreErrorCode code)
{
    return static_cast<int>(code);
}

/// A process that opens the store for a window: reports "1" where it may, "0" where another has it, and stays until
/// `gate` closes.
pid_t launchWindow(const fs::path &folder, int report, const std::array<int, 2> &gate)
{
    const pid_t child = ::fork();
    if (child != 0)
        return child;
    ::close(gate[1]);
    support::TestClock clock;
    support::TestUser user;
    const auto opened = app::openStore(folder, clock, user);
    char answer = opened ? '1' : '?';
    if (!opened && opened.error().code == code(StoreErrorCode::InUse))
        answer = '0';
    const bool isReported = ::write(report, &answer, 1) == 1;
    while (::read(gate[0], &answer, 1) > 0) { }
    ::_exit(isReported && user.errors.empty() ? 0 : 1);
}

} // namespace

TEST_F(StoreOpening, F18_of_two_windows_that_start_together_one_has_the_store)
{
    for (int race = 0; race < 50; ++race) {
        const support::TemporaryFolder raceGround;
        std::array<int, 2> report{};
        std::array<int, 2> gate{};
        ASSERT_EQ(::pipe(report.data()) + ::pipe(gate.data()), 0);
        std::array<pid_t, 2> windows{};
        for (pid_t &window : windows)
            window = launchWindow(raceGround.path() / "Quelvin", report[1], gate);
        ::close(report[1]);
        std::string answers;
        for (char answer = 0; answers.size() < windows.size() && ::read(report[0], &answer, 1) == 1;)
            answers += answer;
        EXPECT_THAT(answers, testing::AnyOf("10", "01"));
        for (const int end : {report[0], gate[0], gate[1]})
            ::close(end);
        for (const pid_t window : windows) {
            int status = 0;
            ::waitpid(window, &status, 0);
            EXPECT_EQ(status, 0);
        }
    }
}

TEST_F(StoreOpening, F18_a_second_window_writes_nothing_and_says_what_to_do)
{
    const auto first = open();
    ASSERT_TRUE(first);
    const auto before = fs::last_write_time(file());
    const auto second = open();
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().code, code(StoreErrorCode::InUse));
    EXPECT_THAT(second.error().message, HasSubstr("already open in another window. Use that window"));
    EXPECT_EQ(fs::last_write_time(file()), before);
    EXPECT_TRUE(user.errors.empty()) << "the caller tells the error";
}

TEST_F(StoreOpening, refusesADamagedStoreAndNamesTheCopies)
{
    fs::create_directories(app::backupFolder(folder));
    std::ofstream(file()) << std::string(5000, 'x');
    EXPECT_THAT(open().error().message, HasSubstr("Move it out of"));
    std::ofstream(app::backupFolder(folder) / "Quelvin-2026-11-23.qvl") << "a copy";
    EXPECT_THAT(open().error().message, HasSubstr("put the latest copy in its place"));
}

TEST(StoreCare, copiesTheStoreAtLaunchAndOnEachNewDay)
{
    support::TestApplication application;
    const fs::path backups = application.folder.path() / "Backups";
    const auto copyAppears
        = [&](const char *name) { return QTest::qWaitFor([&] { return fs::exists(backups / name); }, 20000); };
    application.delegate().applicationDidFinishLaunching();
    EXPECT_TRUE(copyAppears("Quelvin-2026-11-24.qvl"));
    application.clock.set(support::at("2026-11-25 00:01")); // the next tick finds the day
    EXPECT_TRUE(copyAppears("Quelvin-2026-11-25.qvl"));
    EXPECT_TRUE(application.user.errors.empty());
}
