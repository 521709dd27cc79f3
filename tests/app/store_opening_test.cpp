// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/store_care.h"
#include "app/store_opening.h"

#include "foundation/log.h"
#include "model/entities.h"
#include "objectstore/store_care.h"
#include "support/test_application.h"

#include <QTest>
#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using objectstore::StoreErrorCode;
using support::aTask;
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

/// Writes nonsense over the middle of a file.
void damage(const fs::path &file)
{
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(fs::file_size(file) / 2 / 4096 * 4096));
    stream << std::string(8192, '\x5a');
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

TEST(StoreCare, tellsOfADamagedStoreWhereItsCopiesLie)
{
    foundation::setLogSink([](std::string_view) {});
    support::TestApplication application;
    for (int number = 0; number < 400; ++number)
        application.add(aTask().titled(std::string(300, 'x')));
    ASSERT_TRUE(application.moc().save());
    const fs::path copy = application.folder.path() / "copied" / "Quelvin.qvl"; // a closed store, nothing in its log
    fs::create_directories(copy.parent_path());
    {
        const auto other = application.openStore();
        ASSERT_TRUE(objectstore::backUpDaily(other->store(), copy.parent_path()));
        fs::rename(copy.parent_path() / "Quelvin-2026-11-24.qvl", copy);
    }
    damage(copy);
    const auto store = objectstore::Store::open(model::objectModel(), copy, application.clock);
    ASSERT_TRUE(store) << "opening does not read all of it";

    app::StoreCare care(**store, copy.parent_path() / "Backups");
    std::vector<foundation::Error> troubles;
    QObject::connect(
        &care, &app::StoreCare::troubleFound, [&](const foundation::Error &trouble) { troubles.push_back(trouble); });
    care.checkAndBackUp();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !troubles.empty(); }, 20000));
    EXPECT_THAT(troubles.front().message, HasSubstr("is damaged"));
    EXPECT_THAT(troubles.front().message, HasSubstr("Backups"));
    EXPECT_FALSE(fs::exists(copy.parent_path() / "Backups")) << "a damaged store replaces no copy";
    foundation::setLogSink({});
}
