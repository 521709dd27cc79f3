// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/caller.h"
#include "support/files.h"
#include "support/temporary_folder.h"

#include <fstream>
#include <sys/stat.h>
#include <thread>

using namespace calling;
using support::contents;
namespace fs = std::filesystem;

namespace {

void write(const fs::path &file, const std::string &bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

/// A data file with a few hundred tasks in it, closed.
std::string filledFile(const fs::path &folder)
{
    auto database = service::Database::open(folder);
    service::Service service(**database, {.tokensPerHour = 100});
    const auto ask
        = [&](const char *method, const Parameters &parameters) { return service.answer(target(method, parameters)); };
    const std::string userid = inside(ask("createAccount", {{"email", "a@b.c"}, {"pass", "secret"}}), "added");
    const std::string key = keyOf("secret", inside(ask("getToken", {{"userid", userid}}), "token"), userid);
    for (int i = 0; i < 300; ++i)
        (void)ask("addTask", {{"key", key}, {"title", "Task"}, {"note", std::string(200, 'n')}});
    return key;
}

} // namespace

TEST(Database, isPrivateToItsOwnerWhateverTheUmask)
{
    const support::TemporaryFolder place;
    const mode_t old = ::umask(0);
    const auto database = service::Database::open(place.path() / "deep" / "data");
    ASSERT_TRUE(database) << database.error();
    EXPECT_TRUE(service::addAccount(**database, "a@b.c", "password")); // makes the log
    ::umask(old);
    const auto mode = [](const fs::path &path) { return static_cast<unsigned>(fs::status(path).permissions()); };
    EXPECT_EQ(mode(place.path() / "deep" / "data"), 0700U);
    int files = 0;
    for (const auto &entry : fs::directory_iterator(place.path() / "deep" / "data")) {
        EXPECT_EQ(mode(entry.path()), 0600U) << entry.path();
        ++files;
    }
    EXPECT_GE(files, 2); // the write-ahead log holds as much as the file
}

TEST(Database, keepsNoPasswordAndNoKey)
{
    const support::TemporaryFolder place;
    const std::string key = filledFile(place.path());
    const std::string bytes = contents(place.path() / "service.db");
    EXPECT_EQ(bytes.find("secret"), std::string::npos);
    EXPECT_EQ(bytes.find(key), std::string::npos);
    EXPECT_NE(bytes.find(service::md5("secret")), std::string::npos);
}

TEST(Database, thatIsDamagedNewerOrNoneIsRefusedUntouched)
{
    const support::TemporaryFolder place;
    (void)filledFile(place.path());
    const std::string good = contents(place.path() / "service.db");
    std::string torn = good;
    for (std::size_t i = torn.size() / 2; i < torn.size() / 2 + 6000; ++i)
        torn[i] = static_cast<char>(i * 7);
    std::string newer = good;
    newer[63] = 2; // the version in the header
    for (const std::string &bad : {torn, newer, good.substr(0, good.size() / 2), good.substr(0, 50),
             std::string(5000, 'x'), std::string("text")}) {
        write(place.path() / "service.db", bad);
        const auto database = service::Database::open(place.path());
        ASSERT_FALSE(database) << bad.size();
        EXPECT_NE(database.error().find(bad == newer ? "newer version" : "service.db"), std::string::npos);
        EXPECT_EQ(contents(place.path() / "service.db"), bad);
    }
    write(place.path() / "service.db", good);
    EXPECT_TRUE(service::Database::open(place.path()));
}

TEST(Database, thatKnowsNoMarksYetLearnsThem)
{
    const support::TemporaryFolder place;
    const std::string key = filledFile(place.path());
    (*service::Database::open(place.path()))->write([](service::Connection &connection) {
        connection.execute("DROP TABLE marked_add");
    });
    auto database = service::Database::open(place.path());
    service::Service service(**database);
    const std::string add = target("addTask", {{"key", key}, {"title", "Milk"}, {"mark", "1"}});
    EXPECT_EQ(inside(service.answer(add), "added"), "301");
    EXPECT_EQ(inside(service.answer(add), "added"), "301");
}

TEST(Database, undoesWhatItCouldNotCommit)
{
    InMemory place;
    User ana(place, "ana@example.org");
    place.database->write([](service::Connection &connection) {
        connection.execute("CREATE TRIGGER full BEFORE INSERT ON task WHEN NEW.title = 'Last' BEGIN"
                           " SELECT raise(ROLLBACK, 'disk is full'); END");
    });
    (void)ana.add("addTask", {{"title", "First"}});
    EXPECT_NE(inside(ana.ask("addTask", {{"title", "Last"}}), "error").find("disk is full"), std::string::npos);
    (void)ana.add("addTask", {{"title", "Next"}});
    const std::string calls = "method=addTask;title=Many;\nmethod=addTask;title=Last;\n";
    EXPECT_NE(place.service.answer("?method=several;key=" + ana.key, calls).find("disk is full"), std::string::npos);
    EXPECT_EQ(countOf(ana.ask("getTasks"), "<task>"), 2);
}

TEST(Database, isReadWhileAnotherProcessWrites)
{
    const support::TemporaryFolder place;
    const std::string key = filledFile(place.path());
    auto database = service::Database::open(place.path());
    service::Service service(**database);
    auto other = service::Database::open(place.path()); // as `add-user` does beside the running service
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 40; ++i) {
                const std::string reply = service.answer(
                    t % 2 ? target("getTasks", {{"key", key}}) : target("addTask", {{"key", key}, {"title", "t"}}));
                EXPECT_EQ(inside(reply, "error"), "(none)");
            }
        });
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(service::addAccount(**other, "u" + std::to_string(i) + "@x.y", "password"));
    threads.clear();
    EXPECT_EQ(countOf(service.answer(target("getTasks", {{"key", key}})), "<task>"), 380);
}
