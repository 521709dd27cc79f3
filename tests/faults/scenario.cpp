// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/scenario.h"

#include "faults/invariants.h"
#include "faults/sabotage.h"
#include "faults/sync_story.h"
#include "foundation/log.h"
#include "foundation/settings.h"
#include "model/entities.h"
#include "support/collected_errors.h"
#include "support/test_clock.h"

#include <SQLiteCpp/Database.h>
#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace faults {

namespace fs = std::filesystem;
using model::TaskStore;

namespace {

constexpr int settingsKeys = 60; // enough for a file of more than one page

/// A user at work with the store and settings of one folder. What fails under the faults is tried again without them.
class User
{
public:
    User(const Scenario &scenario, const fs::path &folder, Notes &notes)
        : m_scenario(scenario), m_notes(notes), m_store(openStore(folder, m_clock, notes))
    { }

    void save(int number)
    {
        try {
            m_scenario.story.change(context(), number);
        } catch (const NotFetched &failure) {
            expectSentence(m_notes, failure.error);
            lift(m_notes);
            m_scenario.story.change(context(), number);
        }
        m_notes.savesTried = number;
        const auto saved = context().save();
        if (saved || isPlanted("failed-saves-acknowledged")) {
            m_notes.savesAcknowledged = number;
            return;
        }
        expectSentence(m_notes, saved.error());
        if (!context().hasChanges())
            m_notes.problem("a failed save dropped its changes");
    }

    /// Whatever failed before, this save holds all of the work.
    void lastSave()
    {
        lift(m_notes);
        if (const auto saved = context().save(); !saved && !isPlanted("failed-saves-acknowledged"))
            m_notes.problem("not saved once the fault was gone: " + saved.error().message + saved.error().detail);
        m_notes.savesAcknowledged = m_notes.savesTried;
        auto tasks = context().fetch({.entity = "Tasks", .predicate = {}, .sortDescriptors = {}});
        std::vector<std::string> titles;
        for (const auto *task : tasks.value())
            titles.emplace_back(task->text("title"));
        std::sort(titles.begin(), titles.end());
        const auto expected = m_scenario.story.titlesAfter(m_notes.savesTried);
        std::vector<std::string> wrong;
        std::set_symmetric_difference(
            titles.begin(), titles.end(), expected.begin(), expected.end(), std::back_inserter(wrong));
        if (!wrong.empty())
            m_notes.problem("the context shows " + std::to_string(titles.size()) + " tasks instead of "
                + std::to_string(expected.size()) + "; one of those that differ is \"" + wrong.front() + "\"");
    }

private:
    objectstore::ObjectContext &context() { return m_store->managedObjectContext(); }

    const Scenario &m_scenario;
    Notes &m_notes;
    support::TestClock m_clock;
    std::unique_ptr<TaskStore> m_store;
};

/// The settings of one generation: every key says which.
foundation::SettingsTable settingsOf(int generation)
{
    foundation::SettingsTable table;
    for (int key = 0; key < settingsKeys; ++key)
        table["key " + std::to_string(key)] = std::string(100, 'x') + std::to_string(generation);
    table["generation"] = std::int64_t{generation};
    return table;
}

fs::path settingsIn(const fs::path &folder)
{
    return folder / "settings.json";
}

/// A writer of settings as one should not be; some tests plant it.
class SettingsInPlace final : public foundation::SettingsFile
{
public:
    explicit SettingsInPlace(fs::path path) : m_path(std::move(path)) { }
    [[nodiscard]] foundation::Result<foundation::SettingsTable> read() override
    {
        return foundation::JsonSettingsFile(m_path).read();
    }
    [[nodiscard]] foundation::Result<void> write(const foundation::SettingsTable &table) override
    {
        const fs::path good = m_path.parent_path().parent_path() / "elsewhere.json";
        if (auto written = foundation::JsonSettingsFile(good).write(table); !written)
            return written;
        std::ifstream from(good, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(from), {}};
        const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        for (std::size_t place = 0; place < text.size(); place += 1024) // as streams with a buffer write
            (void)!::write(file, text.data() + place, std::min<std::size_t>(1024, text.size() - place));
        ::close(file);
        return {};
    }

private:
    fs::path m_path;
};

std::unique_ptr<foundation::SettingsFile> openSettings(const fs::path &folder)
{
    if (isPlanted("settings-in-place"))
        return std::make_unique<SettingsInPlace>(settingsIn(folder));
    return std::make_unique<foundation::JsonSettingsFile>(settingsIn(folder));
}

void storeSettings(const fs::path &folder, int generation, Notes &notes)
{
    const auto file = openSettings(folder);
    foundation::Settings settings(*file, {});
    if (settings.loadError())
        expectSentence(notes, *settings.loadError());
    for (const auto &[key, value] : settingsOf(generation))
        settings.set(key, value);
    notes.settingsTried = generation;
    auto stored = settings.synchronize();
    if (!stored) {
        expectSentence(notes, stored.error());
        lift(notes);
        // settings that could not be read stay as they are until the next launch
        stored = settings.loadError() ? foundation::Result<void>() : settings.synchronize();
        if (!stored)
            notes.problem("settings not stored once the fault was gone: " + stored.error().detail);
        if (settings.loadError())
            return;
    }
    notes.settingsAcknowledged = generation;
}

void writeStory(const Scenario &scenario, const fs::path &folder, Notes &notes)
{
    User user(scenario, folder, notes);
    for (int save = scenario.prepared + 1; save <= scenario.story.saves(); ++save)
        user.save(save);
    user.lastSave();
}

/// The order of a quit: the tasks, then the settings, then the store is closed.
void writeSettingsAndQuit(const Scenario &scenario, const fs::path &folder, Notes &notes)
{
    {
        User user(scenario, folder, notes);
        user.save(scenario.prepared + 1);
        storeSettings(folder, 2, notes);
        storeSettings(folder, 3, notes);
        if (notes.savesAcknowledged < notes.savesTried)
            user.lastSave();
    }
    lift(notes);
}

const std::vector<Scenario> &table()
{
    static const std::vector<Scenario> all{
        {.name = "first-launch", .story = Story({2, 3}), .write = writeStory},
        {.name = "one-task", .story = Story({3, 1, 1}), .prepared = 1, .write = writeStory},
        {.name = "hundred-tasks", .story = Story({5, 100}), .prepared = 1, .write = writeStory},
        {.name = "migration", .story = Story({20, 1}), .prepared = 1, .olderSchema = true, .write = writeStory},
        {.name = "settings-and-quit", .story = Story({5, 2}), .prepared = 1, .write = writeSettingsAndQuit},
        {.name = "synchronisation",
            .story = Story({}),
            .write = writeSynchronisation,
            .makeReady = prepareSynchronisation,
            .judge = relaunchSynchronised,
            .recoveryCalls = 200,
            .callsOfASeed = 60},
    };
    return all;
}

/// Takes from a store what a later version of the schema brought, as if an earlier program had written it.
void makeOlder(const fs::path &file)
{
    SQLite::Database database(file.string(), SQLite::OPEN_READWRITE);
    database.exec("BEGIN; DROP INDEX Tasks_isCurrentLocation; ALTER TABLE Tasks DROP COLUMN isCurrentLocation;"
                  "ALTER TABLE Tasks DROP COLUMN star; DROP TABLE SyncLedgerEntry;"
                  "PRAGMA user_version=0; COMMIT;");
}

void checkStore(const Scenario &scenario, const fs::path &folder, Notes &notes)
{
    const fs::path file = folder / TaskStore::fileName;
    std::vector<std::string> problems = storeProblems(file, model::objectModel());
    for (std::string &problem : defaultRecordProblems(file))
        problems.push_back(std::move(problem));
    if (scenario.olderSchema && !column(file, "SELECT title FROM Tasks WHERE star IS NOT 0").empty())
        problems.emplace_back("a column that the migration added has no default");
    const int saved = scenario.story.savedIn(file, problems);
    if (problems.empty() && (saved < notes.savesAcknowledged || saved > notes.savesTried))
        problems.push_back("the store holds save " + std::to_string(saved) + "; acknowledged "
            + std::to_string(notes.savesAcknowledged) + ", tried " + std::to_string(notes.savesTried));
    for (const std::string &problem : problems)
        notes.problem(problem);
}

void checkSettings(const fs::path &folder, Notes &notes)
{
    const auto table = foundation::JsonSettingsFile(settingsIn(folder)).read();
    if (!table) {
        notes.problem("settings: " + table.error().message + " " + table.error().detail);
        return;
    }
    const auto held = table->find("generation");
    const auto *number = held == table->end() ? nullptr : std::get_if<std::int64_t>(&held->second);
    const int generation = number ? static_cast<int>(*number) : 0;
    if (generation < notes.settingsAcknowledged || generation > notes.settingsTried)
        notes.problem("settings of generation " + std::to_string(generation) + "; acknowledged "
            + std::to_string(notes.settingsAcknowledged) + ", tried " + std::to_string(notes.settingsTried));
    else if (*table != settingsOf(generation))
        notes.problem("settings of mixed generations");
}

} // namespace

std::span<const Scenario> scenarios()
{
    return table();
}

const Scenario &scenario(std::string_view name)
{
    for (const Scenario &each : table()) {
        if (each.name == name)
            return each;
    }
    throw std::invalid_argument("no scenario " + std::string(name));
}

void prepare(const Scenario &scenario, const fs::path &folder)
{
    fs::create_directories(folder);
    if (scenario.makeReady)
        return scenario.makeReady(scenario, folder);
    if (scenario.prepared == 0) {
        fs::remove(folder); // a first launch makes its folder
        return;
    }
    {
        support::TestClock clock;
        support::CollectedErrors errors;
        auto store = TaskStore::open(folder, clock, errors).value();
        for (int save = 1; save <= scenario.prepared; ++save) {
            scenario.story.change(store->managedObjectContext(), save);
            (void)store->managedObjectContext().save().value();
        }
    }
    if (scenario.olderSchema)
        makeOlder(folder / TaskStore::fileName);
    if (scenario.write == writeSettingsAndQuit
        && !foundation::JsonSettingsFile(settingsIn(folder)).write(settingsOf(1)))
        throw std::runtime_error("no settings prepared");
}

void relaunch(const Scenario &scenario, const fs::path &folder, Notes &notes)
{
    if (scenario.judge)
        return scenario.judge(scenario, folder, notes);
    if (notes.savesTried == 0) {
        notes.savesTried = scenario.prepared;
        notes.savesAcknowledged = scenario.prepared;
    }
    support::TestClock clock(support::at("2026-11-25 09:00"));
    support::CollectedErrors errors;
    {
        const auto opened = TaskStore::open(folder, clock, errors);
        if (!opened)
            notes.problem("not opened: " + opened.error().message + " " + opened.error().detail);
        for (const auto &error : errors.errors)
            notes.problem("shown at launch: " + error.message + " " + error.detail);
        fault_shim_disarm();
    }
    checkStore(scenario, folder, notes);
    if (scenario.write == writeSettingsAndQuit) {
        notes.settingsTried = std::max(notes.settingsTried, 1);
        notes.settingsAcknowledged = std::max(notes.settingsAcknowledged, 1);
        checkSettings(folder, notes);
    }
}

void lift(Notes &notes)
{
    const long calls = fault_shim_disarm();
    notes.calls = std::max(notes.calls, calls);
    notes.hits = std::max(notes.hits, fault_shim_hits());
}

void expectSentence(Notes &notes, const foundation::Error &error)
{
    ++notes.savesFailed;
    if (error.message.empty())
        notes.problem("an error without a sentence: " + error.detail);
}

std::unique_ptr<TaskStore> openStore(const fs::path &folder, const foundation::Clock &clock, Notes &notes)
{
    support::CollectedErrors errors;
    auto opened = TaskStore::open(folder, clock, errors);
    if (!opened) {
        expectSentence(notes, opened.error());
        lift(notes);
        opened = TaskStore::open(folder, clock, errors);
    }
    if (!opened)
        throw std::runtime_error(
            "not opened once the fault was gone: " + opened.error().message + " " + opened.error().detail);
    for (const auto &error : errors.errors)
        expectSentence(notes, error);
    return std::move(*opened);
}

fault_plan planOf(fault_action action, long at, bool sticky)
{
    fault_plan plan{};
    std::memcpy(plan.names, watchedName.data(), watchedName.size());
    plan.action = action;
    plan.at = at;
    plan.sticky = sticky ? 1 : 0;
    return plan;
}

} // namespace faults
