// SPDX-License-Identifier: GPL-3.0-or-later
// One test or more for each fault of fault_table.tsv that concerns the store; the harnesses try many more cases.
#include "faults/invariants.h"
#include "faults/io_points.h"
#include "foundation/log.h"
#include "foundation/settings.h"
#include "model/entities.h"
#include "objectstore/store_care.h"
#include "support/test_store.h"

#include <SQLiteCpp/Database.h>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace support;
using faults::FaultKind;
using faults::ioErrors;
using faults::IoPoints;
using faults::kills;
using faults::Notes;
namespace fs = std::filesystem;

namespace {

std::string contents(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Tries a fair choice of the points of one scenario.
void expectSurvives(std::string_view name, const std::vector<FaultKind> &kinds, std::size_t most = 150)
{
    foundation::setLogSink([](std::string_view) {});
    IoPoints io;
    auto points = io.all({&faults::scenario(name), 1}, kinds, 7);
    points.resize(std::min(points.size(), most));
    for (const auto &point : points) {
        const auto failure = io.run(point);
        EXPECT_FALSE(failure) << IoPoints::describe(point) << ": " << *failure;
    }
    foundation::setLogSink({});
    EXPECT_GE(io.struck, static_cast<long>(points.size()) / 4) << "the faults must strike";
}

foundation::Result<std::unique_ptr<model::TaskStore>> open(const fs::path &folder)
{
    static const TestClock clock;
    static CollectedErrors errors;
    return model::TaskStore::open(folder, clock, errors);
}

/// Runs `work` in a process of its own, whose limits and masks may be changed.
void inAnotherProcess(const std::function<void(Notes &)> &work)
{
    const faults::Ending ending = faults::isolated(work);
    EXPECT_EQ(ending.crash, "");
    EXPECT_STREQ(ending.notes.problems.data(), "");
    EXPECT_TRUE(ending.notes.finished);
}

void limit(int resource, rlim_t value)
{
    rlimit held{};
    ::getrlimit(static_cast<__rlimit_resource>(resource), &held);
    held.rlim_cur = value;
    ::setrlimit(static_cast<__rlimit_resource>(resource), &held);
}

/// Copies the store into one whole file in `folder`, as if it had been closed.
fs::path copyInto(const fs::path &folder, const TestStore &store)
{
    fs::path copy = folder / model::TaskStore::fileName;
    SQLite::Database((store.folder.path() / model::TaskStore::fileName).string())
        .exec("VACUUM INTO '" + copy.string() + "'");
    return copy;
}

/// Opens the store in `folder` and expects a refusal with a sentence and every file as it was.
void expectRefused(const fs::path &folder)
{
    const std::string before = contents(folder / model::TaskStore::fileName);
    const auto opened = open(folder);
    ASSERT_FALSE(opened);
    EXPECT_NE(opened.error().message, "");
    EXPECT_EQ(contents(folder / model::TaskStore::fileName), before);
}

} // namespace

TEST(Faults, F01_a_kill_at_any_call_of_a_save_leaves_the_old_or_the_new_state)
{
    expectSurvives("one-task", {{FAULT_KILL_BEFORE}, {FAULT_KILL_AFTER}, {FAULT_KILL_TORN}});
}

TEST(Faults, F02_a_kill_at_any_call_of_a_synchronisation_is_repaired_by_the_next)
{
    expectSurvives("synchronisation", kills(), 60);
}

TEST(Faults, F03_a_kill_at_first_launch_or_migration_is_made_good_by_the_next_launch)
{
    for (const char *name : {"first-launch", "migration"})
        expectSurvives(name, {{FAULT_KILL_BEFORE}, {FAULT_KILL_TORN}});
}

TEST(Faults, F05_a_kill_while_recovering_from_a_kill_loses_nothing)
{
    for (const char *name : {"one-task", "migration"})
        expectSurvives(name, {{FAULT_KILL_AFTER, false, true}});
}

TEST(Faults, F07_a_full_disk_during_a_save_keeps_the_changes)
{
    expectSurvives("one-task", {{FAULT_NO_SPACE}, {FAULT_NO_SPACE, true}});
}

TEST(Faults, F08_a_full_disk_leaves_the_old_settings_whole)
{
    expectSurvives("settings-and-quit", {{FAULT_NO_SPACE}, {FAULT_NO_SPACE, true}});
}

TEST(Faults, F09_an_error_of_the_disk_is_told_and_loses_nothing)
{
    expectSurvives(
        "hundred-tasks", {{FAULT_IO_ERROR}, {FAULT_IO_ERROR, true}, {FAULT_READ_ERROR}, {FAULT_READ_ERROR, true}});
    expectSurvives("synchronisation", ioErrors(), 60);
}

TEST(Faults, F10_a_short_or_interrupted_write_is_no_death)
{
    expectSurvives("one-task", {{FAULT_SHORT}, {FAULT_SHORT, true}, {FAULT_INTERRUPTED}});
}

TEST(Faults, F10_a_limit_of_file_size_is_an_error_like_any_other)
{
    const TestStore prepared;
    inAnotherProcess([&](Notes &notes) {
        std::signal(SIGXFSZ, SIG_IGN);
        const auto store = open(prepared.folder.path()).value();
        auto &context = store->managedObjectContext();
        model::insert<model::Tasks>(context).setNotes(std::string(200000, 'n'));
        limit(RLIMIT_FSIZE, fs::file_size(prepared.folder.path() / "Quelvin.qvl-wal") + 20000);
        if (context.save())
            notes.problem("saved beyond the limit");
        limit(RLIMIT_FSIZE, RLIM_INFINITY);
        if (!context.hasChanges() || !context.save())
            notes.problem("not saved without the limit");
    });
}

TEST(Faults, F11_a_store_that_cannot_be_written_is_opened_for_reading)
{
    const TemporaryFolder temporary;
    const fs::path folder = temporary.path() / "Quelvin";
    {
        const auto store = open(folder).value();
        model::insert<model::Tasks>(store->managedObjectContext()).setTitle("to be read");
        ASSERT_TRUE(store->managedObjectContext().save());
    }
    constexpr auto readable = static_cast<fs::perms>(0444);
    constexpr auto enterable = static_cast<fs::perms>(0555);
    fs::permissions(folder / model::TaskStore::fileName, readable);
    fs::permissions(folder, enterable);
    fs::permissions(temporary.path(), enterable);
    inAnotherProcess([&](Notes &notes) {
        if (::geteuid() == 0 && ::setuid(65534) != 0) // modes bind everybody but the superuser
            return notes.problem("no way to be another user");
        TestClock clock;
        CollectedErrors errors;
        const auto store = model::TaskStore::open(folder, clock, errors);
        if (!store)
            return notes.problem("not opened: " + store.error().message + " " + store.error().detail);
        if ((*store)->store().notice().empty() || errors.errors.size() != 1)
            notes.problem("read-only, and not told once but " + std::to_string(errors.errors.size()) + " times");
        auto &context = (*store)->managedObjectContext();
        const auto tasks = context.fetch({.entity = "Tasks", .predicate = {}, .sortDescriptors = {}});
        if (!tasks || tasks->size() != 1)
            return notes.problem("not read");
        tasks->front()->setValue("title", std::string("changed"));
        if (context.save() || !context.hasChanges())
            notes.problem("a save was acknowledged that cannot have been made");
    });
    fs::permissions(temporary.path(), fs::perms::owner_all);
    fs::permissions(folder, fs::perms::owner_all);
}

TEST(Faults, F12_what_lies_in_the_way_of_the_store_is_told)
{
    const TemporaryFolder temporary;
    const auto folderOf = [&](const char *name) {
        const fs::path folder = temporary.path() / name;
        fs::create_directories(folder);
        return folder;
    };
    fs::create_symlink("/nowhere/Quelvin.qvl", folderOf("broken link") / model::TaskStore::fileName);
    fs::create_symlink("/dev/full", folderOf("full") / model::TaskStore::fileName);
    fs::create_directory(folderOf("folder") / model::TaskStore::fileName);
    std::ofstream(temporary.path() / "file") << "a file";
    for (const char *name : {"broken link", "full", "folder", "file"}) {
        const auto opened = open(temporary.path() / name);
        ASSERT_FALSE(opened) << name;
        EXPECT_NE(opened.error().message, "") << name;
    }
    EXPECT_TRUE(open(temporary.path() / "missing" / "folders"));
}

TEST(Faults, F13_a_broken_store_is_refused_and_never_written)
{
    const TemporaryFolder folder;
    const fs::path broken = folder.path() / model::TaskStore::fileName;
    const auto breakAs = [&](const std::string &bytes) { std::ofstream(broken, std::ios::binary) << bytes; };
    breakAs(std::string(9000, 'x'));
    expectRefused(folder.path());
    breakAs("SQLite format 3");
    expectRefused(folder.path());
    SQLite::Database((folder.path() / "other").string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec("CREATE TABLE photographs (a); PRAGMA user_version=1");
    breakAs(contents(folder.path() / "other"));
    expectRefused(folder.path());
}

TEST(Faults, F13_F14_a_check_finds_what_opening_does_not_read)
{
    TestStore store;
    for (int i = 0; i < 400; ++i)
        store.add(aTask().titled("task " + std::to_string(i)).noted(std::string(300, 'n')));
    store.save();
    EXPECT_TRUE(objectstore::quickCheck(store.store()));
    const TemporaryFolder copy;
    const fs::path file = copyInto(copy.path(), store);
    std::string bytes = contents(file);
    for (std::size_t page = bytes.size() / 4096 - 40; page < bytes.size() / 4096; ++page)
        bytes.replace(page * 4096, 8, 8, '\x55');
    std::ofstream(file, std::ios::binary) << bytes;
    const auto opened = objectstore::Store::open(model::objectModel(), file, store.clock);
    ASSERT_TRUE(opened) << "its first pages are whole";
    const auto checked = objectstore::quickCheck(**opened);
    ASSERT_FALSE(checked);
    EXPECT_EQ(checked.error().code, static_cast<int>(objectstore::StoreErrorCode::Damaged));
}

TEST(Faults, F13_links_that_hold_no_key_are_passed_over)
{
    TestStore store;
    store.add(aTask().titled("task").tagged("tag"));
    store.save();
    SQLite::Database((store.folder.path() / model::TaskStore::fileName).string(), SQLite::OPEN_READWRITE)
        .exec("INSERT INTO Tasks_tags (owner, member) SELECT _key, 0 FROM Tasks;"
              "INSERT INTO Tasks_tags (owner, member) SELECT _key, 'text' FROM Tasks");
    store.relaunch();
    ASSERT_THAT(store.all("Tasks"), testing::SizeIs(1));
    EXPECT_EQ(titles(store.all("Tasks").front()->objects("tags")), std::vector<std::string>{"tag"});
}

TEST(Faults, F14_a_log_of_another_store_is_not_read_into_this_one)
{
    TestStore one;
    one.add(aTask().titled("one"));
    one.save();
    const TemporaryFolder folder;
    {
        TestStore other;
        other.add(aTask().titled("other"));
        other.save();
        fs::copy_file(other.folder.path() / "Quelvin.qvl-wal", folder.path() / "Quelvin.qvl-wal");
    }
    const fs::path file = copyInto(folder.path(), one);
    const std::string before = contents(file);
    const auto opened = open(folder.path());
    if (opened) { // the log replaced every page by its own: a whole store again, or a damage that the check tells
        EXPECT_TRUE(
            faults::storeProblems(file, model::objectModel()).empty() || !objectstore::quickCheck((*opened)->store()));
    } else {
        EXPECT_EQ(contents(file), before);
    }
}

TEST(Faults, F15_an_older_store_is_migrated_and_a_whole_copy_of_it_kept)
{
    const TemporaryFolder temporary;
    const fs::path folder = temporary.path() / "Quelvin";
    const auto &migration = faults::scenario("migration");
    faults::prepare(migration, folder);
    const fs::path copy = folder / ("Quelvin.qvl.before-" + std::to_string(model::objectModel().version()));
    std::ofstream(copy) << "left by an attempt that was killed";
    Notes notes;
    faults::relaunch(migration, folder, notes);
    EXPECT_STREQ(notes.problems.data(), "");
    std::vector<std::string> problems;
    EXPECT_EQ(migration.story.savedIn(copy, problems), migration.prepared);
    EXPECT_THAT(problems, testing::IsEmpty());
}

TEST(Faults, F16_a_store_of_a_newer_schema_is_refused_untouched)
{
    TestStore store;
    const TemporaryFolder folder;
    SQLite::Database(copyInto(folder.path(), store).string(), SQLite::OPEN_READWRITE).exec("PRAGMA user_version=99");
    expectRefused(folder.path());
}

TEST(Faults, F17_a_store_with_a_schema_of_another_make_is_refused)
{
    for (const char *sql :
        {"CREATE TRIGGER t AFTER UPDATE ON Tasks BEGIN DELETE FROM Tasks; END", "CREATE VIEW v AS SELECT * FROM Tasks",
            "CREATE VIRTUAL TABLE t USING fts5(a)", "ALTER TABLE Tasks ADD COLUMN harm AS (title || 'x')"}) {
        const TestStore store;
        const TemporaryFolder folder;
        SQLite::Database(copyInto(folder.path(), store).string(), SQLite::OPEN_READWRITE).exec(sql);
        SCOPED_TRACE(sql);
        expectRefused(folder.path());
    }
}

TEST(Faults, F17_a_value_of_a_monstrous_size_is_an_error_not_a_death)
{
    TestStore store;
    store.add(aTask().titled("monster"));
    store.save();
    SQLite::Database((store.folder.path() / model::TaskStore::fileName).string(), SQLite::OPEN_READWRITE)
        .exec("UPDATE Tasks SET notes = zeroblob(100000000)");
    store.relaunch();
    const auto tasks = store.moc().fetch({.entity = "Tasks", .predicate = {}, .sortDescriptors = {}});
    ASSERT_FALSE(tasks);
    EXPECT_NE(tasks.error().message, "");
}

TEST(Faults, twoLaunchesAtOnceMakeTheDefaultRecordsOnce)
{
    for (int race = 0; race < 20; ++race) {
        const TemporaryFolder folder;
        const auto launch = [&] {
            TestClock clock;
            CollectedErrors errors;
            const auto store = model::TaskStore::open(folder.path() / "Quelvin", clock, errors);
            if (!store || !errors.errors.empty())
                ::_exit(1);
            model::insert<model::Tasks>((*store)->managedObjectContext()).setTitle("mine");
            ::_exit((*store)->managedObjectContext().save() ? 0 : 2);
        };
        std::array<pid_t, 2> children{};
        for (pid_t &child : children) {
            child = ::fork();
            if (child == 0)
                launch();
        }
        for (const pid_t child : children) {
            int status = 0;
            ::waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
        const fs::path file = folder.path() / "Quelvin" / model::TaskStore::fileName;
        EXPECT_THAT(faults::defaultRecordProblems(file), testing::IsEmpty());
        EXPECT_THAT(faults::column(file, "SELECT title FROM Tasks"), testing::ElementsAre("mine", "mine"));
    }
}

TEST(Faults, F19_a_store_that_was_deleted_or_replaced_is_not_written)
{
    for (const bool replaced : {false, true}) {
        TestStore store;
        TestStore other;
        const fs::path file = store.folder.path() / model::TaskStore::fileName;
        store.add(aTask().titled("unsaved"));
        fs::rename(file, file.string() + ".moved");
        if (replaced)
            fs::copy_file(other.folder.path() / model::TaskStore::fileName, file);
        const std::string before = contents(file);
        const auto saved = store.moc().save();
        ASSERT_FALSE(saved);
        EXPECT_EQ(saved.error().code, static_cast<int>(objectstore::StoreErrorCode::Moved));
        EXPECT_TRUE(store.moc().hasChanges());
        EXPECT_EQ(contents(file), before);
        fs::rename(file.string() + ".moved", file);
        store.save();
    }
}

TEST(Faults, F20_a_lack_of_descriptors_is_told_and_passes)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes objects for invalid when it has no descriptor to look at memory with";
#endif
    const TestStore prepared;
    inAnotherProcess([&](Notes &notes) {
        limit(RLIMIT_NOFILE, 3);
        const auto refused = open(prepared.folder.path());
        if (refused || refused.error().message.empty())
            notes.problem("opened without a descriptor, or refused without a sentence");
        limit(RLIMIT_NOFILE, 256);
        if (!open(prepared.folder.path()))
            notes.problem("not opened once there were descriptors");
    });
}

TEST(Faults, F48_nobody_else_can_read_what_is_written)
{
    const TemporaryFolder temporary;
    inAnotherProcess([&](Notes &notes) {
        ::umask(0);
        const fs::path folder = temporary.path() / "Quelvin";
        const auto &migration = faults::scenario("migration");
        faults::prepare(migration, folder);
        Notes ignored;
        faults::relaunch(migration, folder, ignored);
        fs::remove_all(folder); // made by the test; the program makes its own
        const auto store = open(folder).value();
        (void)foundation::JsonSettingsFile(folder / "settings.json").write({{"password", std::string("secret")}});
        (void)foundation::JsonSettingsFile(folder / "settings.json").write({{"password", std::string("other")}});
        notes.finished = true;
        ::_exit(0); // leaves the log and the shared memory of the store in place
    });
    int files = 0;
    for (const auto &entry : fs::directory_iterator(temporary.path() / "Quelvin")) {
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write) << entry.path();
        ++files;
    }
    EXPECT_GE(files, 5);
    EXPECT_EQ(fs::status(temporary.path() / "Quelvin").permissions(), fs::perms::owner_all);
}

TEST(Faults, F54_settings_of_wrong_kinds_read_as_their_defaults)
{
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "settings.json";
    std::ofstream(file) << R"({"flag": "no flag", "number": [3], "huge": 99999999999999999999, "date": {"date": 5},
        "colour": {"data": "***"}, "list": [1, 2], "deep": {"a": {"b": {}}}, "fine": 7})";
    foundation::JsonSettingsFile settingsFile(file);
    foundation::setLogSink([](std::string_view) {});
    const foundation::Settings settings(
        settingsFile, {{"number", std::int64_t{3}}, {"flag", true}, {"huge", std::int64_t{4}}});
    foundation::setLogSink({});
    EXPECT_TRUE(settings.boolean("flag"));
    EXPECT_EQ(settings.integer("huge"), 4);
    EXPECT_FALSE(settings.date("date"));
    EXPECT_FALSE(settings.value("colour"));
    EXPECT_EQ(settings.integer("fine"), 7);
    std::ofstream(file) << "{\"cut";
    const auto damaged = settingsFile.read();
    ASSERT_FALSE(damaged);
    EXPECT_NE(damaged.error().message, "");
    EXPECT_EQ(contents(damaged.error().detail), "{\"cut");
}
