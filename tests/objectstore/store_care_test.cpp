// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"
#include "objectstore/store_care.h"
#include "objectstore/store_lock.h"
#include "support/files.h"

#include <SQLiteCpp/Database.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace library;
using support::namesIn;
using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

void saveBook(Library &library, std::string title)
{
    auto context = library.context();
    book(*context, std::move(title));
    value(context->save());
}

int code(StoreErrorCode code)
{
    return static_cast<int>(code);
}

void overwrite(const fs::path &file, std::streamoff place, const std::string &bytes)
{
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(place);
    stream << bytes;
}

} // namespace

TEST(StoreLock, isForOneWindowAtATimeAndEndsWithItsProcess)
{
    Library library;
    const fs::path file = library.store->file();
    {
        const auto lock = StoreLock::acquire(file);
        ASSERT_TRUE(lock);
        const auto second = StoreLock::acquire(file);
        ASSERT_FALSE(second);
        EXPECT_EQ(second.error().code, code(StoreErrorCode::InUse));
        EXPECT_EQ(second.error().message, "The store \"books.store\" is already open in another window.");
        saveBook(library, "Written beside a window");
    }
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(StoreLock::acquire(file) ? 0 : 1); // without a destructor, as when it is killed
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(StoreLock::acquire(file));
    EXPECT_FALSE(StoreLock::acquire(library.folder.path() / "missing" / "books.store"));
}

TEST(BackUpDaily, keepsOneWholeCopyForEachOfSevenDays)
{
    Library library;
    saveBook(library, "Novel");
    const fs::path folder = library.folder.path() / "Backups";
    EXPECT_TRUE(value(backUpDaily(*library.store, folder)));
    EXPECT_FALSE(value(backUpDaily(*library.store, folder)));
    const std::string first = namesIn(folder).at(0);
    std::ofstream(folder / "a note of the user's own.txt") << "kept";
    for (int day = 1; day < 9; ++day) {
        library.clock.advance(86400);
        EXPECT_TRUE(value(backUpDaily(*library.store, folder)));
    }
    const auto copies = namesIn(folder);
    EXPECT_EQ(copies.size(), 8U);
    EXPECT_THAT(copies, testing::Not(testing::Contains(first)));
    const fs::path copy = folder / copies.at(3);
    EXPECT_EQ(fs::status(copy).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    const auto store = value(Store::open(model(), copy, library.clock));
    EXPECT_EQ(store->uuid(), library.store->uuid());
    ObjectContext context(*store, MergePolicy::Rollback);
    EXPECT_THAT(titles(fetch(context, "Book")), ElementsAre("Novel"));
}

TEST(BackUpDaily, aDamagedStoreIsReportedAndTakesNoCopysPlace)
{
    Library library;
    for (int i = 0; i < 200; ++i)
        saveBook(library, std::string(400, 'x'));
    const fs::path folder = library.folder.path() / "Backups";
    value(backUpDaily(*library.store, folder));
    EXPECT_TRUE(quickCheck(*library.store));
    const auto before = namesIn(folder);

    overwrite(library.store->file(), 4096 * 20, std::string(4096, '\x55'));
    library.clock.advance(86400);
    const auto damaged = backUpDaily(*library.store, folder);
    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.error().code, code(StoreErrorCode::Damaged));
    EXPECT_THAT(namesIn(folder), testing::IsSupersetOf(before));
    const auto checked = quickCheck(*library.store);
    ASSERT_FALSE(checked);
    EXPECT_EQ(checked.error().code, code(StoreErrorCode::Damaged));

    std::ofstream(library.folder.path() / "in the way") << "a file";
    EXPECT_FALSE(backUpDaily(*library.store, library.folder.path() / "in the way"));
}

TEST(StoreFile, isOneFileOnceClosed)
{
    Library library;
    saveBook(library, "Novel");
    EXPECT_THAT(namesIn(library.folder.path()), ElementsAre("books.store"));
}

TEST(StoreFile, aLogThatIsNotItsOwnChangesNothing)
{
    Library library;
    saveBook(library, "Novel");
    const fs::path file = library.store->file();
    std::string left; // a log as a killed process leaves it
    {
        auto context = library.context();
        book(*context, "Story");
        value(context->save());
        left = support::contents(file.string() + "-wal");
        ASSERT_GT(left.size(), 4096U);
    }
    saveBook(library, "Saga");
    for (const std::string &log :
        {left, left.substr(0, left.size() / 2), std::string(9000, '\x37'), std::string("short")}) {
        std::ofstream(file.string() + "-wal", std::ios::binary) << log;
        library.reopen();
        auto context = library.context();
        EXPECT_THAT(titles(fetch(*context, "Book")), testing::IsSupersetOf({"Novel", "Story"}));
        EXPECT_TRUE(quickCheck(*library.store));
    }
}

TEST(StoreFile, tablesAndIndexesOfUnknownMakeAreNotBelieved)
{
    for (const char *sql : {"CREATE TABLE more (a)", "CREATE INDEX more ON Book (title)"}) {
        Library library;
        SQLite::Database(library.store->file().string(), SQLite::OPEN_READWRITE).exec(sql);
        const auto opened = Store::open(model(), library.store->file(), library.clock);
        ASSERT_FALSE(opened) << sql;
        EXPECT_EQ(opened.error().code, code(StoreErrorCode::Damaged));
    }
    Library library;
    SQLite::Database(library.store->file().string(), SQLite::OPEN_READWRITE).exec("ANALYZE");
    EXPECT_TRUE(Store::open(model(), library.store->file(), library.clock));
}
