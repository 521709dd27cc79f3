// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/library.h"
#include "objectstore/store_care.h"
#include "objectstore/store_lock.h"

#include <SQLiteCpp/Database.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace library;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

std::vector<std::string> names(const fs::path &folder)
{
    std::vector<std::string> found;
    for (const auto &entry : fs::directory_iterator(folder))
        found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
}

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
    const std::string first = names(folder).at(0);
    std::ofstream(folder / "a note of the user's own.txt") << "kept";
    for (int day = 1; day < 9; ++day) {
        library.clock.advance(86400);
        EXPECT_TRUE(value(backUpDaily(*library.store, folder)));
    }
    const auto copies = names(folder);
    EXPECT_EQ(copies.size(), 8U);
    EXPECT_THAT(copies, testing::Not(testing::Contains(first)));
    const fs::path copy = folder / copies.at(3);
    struct stat facts {
    };
    ASSERT_EQ(::stat(copy.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0600U);
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
    const auto before = names(folder);

    overwrite(library.store->file(), 4096 * 20, std::string(4096, '\x55'));
    library.clock.advance(86400);
    const auto damaged = backUpDaily(*library.store, folder);
    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.error().code, code(StoreErrorCode::Damaged));
    EXPECT_THAT(names(folder), testing::IsSupersetOf(before));
    const auto checked = quickCheck(*library.store);
    ASSERT_FALSE(checked);
    EXPECT_EQ(checked.error().code, code(StoreErrorCode::Damaged));

    std::ofstream(library.folder.path() / "in the way") << "a file";
    EXPECT_FALSE(backUpDaily(*library.store, library.folder.path() / "in the way"));
}

TEST(StoreFile, isForItsUserAloneAndOneFileOnceClosed)
{
    Library library;
    saveBook(library, "Novel");
    auto context = library.context();
    book(*context, "Story");
    value(context->save());
    for (const char *suffix : {"", "-wal", "-shm"}) {
        struct stat facts {
        };
        ASSERT_EQ(::stat((library.store->file().string() + suffix).c_str(), &facts), 0) << suffix;
        EXPECT_EQ(facts.st_mode & 0777U, 0600U) << suffix;
    }
    context.reset();
    EXPECT_THAT(names(library.folder.path()), ElementsAre("books.store"));
}

TEST(StoreFile, aSaveNoticesThatTheFileIsGoneOrAnother)
{
    for (const bool replaced : {false, true}) {
        Library library;
        saveBook(library, "Novel");
        auto context = library.context();
        fetch(*context, "Book").at(0)->setValue("title", std::string("Story"));
        const fs::path file = library.store->file();
        fs::rename(file, file.string() + ".away");
        if (replaced)
            fs::copy_file(file.string() + ".away", file);
        const auto saved = context->save();
        ASSERT_FALSE(saved);
        EXPECT_EQ(saved.error().code, code(StoreErrorCode::Moved));
        EXPECT_TRUE(context->hasChanges());
        fs::rename(file.string() + ".away", file);
        value(context->save());
        EXPECT_THAT(titles(fetch(*library.context(), "Book")), ElementsAre("Story"));
    }
}

TEST(StoreFile, isReadWhereItCannotBeWritten)
{
    Library library;
    saveBook(library, "Novel");
    const fs::path folder = library.folder.path();
    const fs::path file = library.store->file();
    fs::permissions(folder, fs::perms(0555));
    fs::permissions(file, fs::perms(0444));
    const bool root = ::geteuid() == 0; // whom rights do not stop
    ASSERT_TRUE(!root || ::seteuid(65534) == 0);
    {
        const auto store = value(Store::open(model(), file, library.clock));
        EXPECT_TRUE(store->notice().starts_with("The store \"books.store\" can be read but not changed."));
        ObjectContext context(*store, MergePolicy::Rollback);
        EXPECT_THAT(titles(fetch(context, "Book")), ElementsAre("Novel"));
        book(context, "Story");
        const auto saved = context.save();
        EXPECT_FALSE(saved);
        EXPECT_TRUE(context.hasChanges());
    }
    EXPECT_FALSE(Store::open(model(), folder / "new.store", library.clock));
    ASSERT_TRUE(!root || ::seteuid(0) == 0);
    fs::permissions(folder, fs::perms(0755));
    EXPECT_EQ(library.store->notice(), "");
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
        std::ifstream stream(file.string() + "-wal", std::ios::binary);
        left.assign(std::istreambuf_iterator<char>(stream), {});
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

TEST(StoreFile, tablesViewsAndIndexesOfUnknownMakeAreNotBelieved)
{
    for (const char *sql :
        {"CREATE TABLE more (a)", "CREATE VIEW Books AS SELECT * FROM Book", "CREATE INDEX more ON Book (title)",
            "CREATE TRIGGER t AFTER UPDATE ON Book BEGIN DELETE FROM Book; END"}) {
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
