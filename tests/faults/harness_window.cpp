// SPDX-License-Identifier: GPL-3.0-or-later
// Kills the built program at any moment while somebody works in its window: new tasks, notes, titles in the list,
// synchronisations with the built service, and the end of the program. Then it is started again, synchronises twice and
// ends. Nothing that was acknowledged may be missing, no typing may be older than the pause after which it is
// saved, nothing may be there twice, and store and service must agree.
#include "faults/harness.h"
#include "faults/invariants.h"
#include "faults/program.h"
#include "faults/sabotage.h"
#include "faults/window_story.h"
#include "model/entities.h"
#include "support/temporary_folder.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <fstream>
#include <mutex>
#include <random>
#include <set>
#include <sstream>
#include <thread>

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

using faults::WindowStory;

constexpr auto patience = 30s;
constexpr double longestSilence = 100 * SLOWNESS; // milliseconds
constexpr int tasksHere = 12;
constexpr int tasksThere = 20;

std::string program(const char *name)
{
    return std::string(PROGRAMS_FOLDER) + "/" + name;
}

/// The address at which a service listens, once it does.
std::string addressOf(faults::RunningProgram &service)
{
    const std::string start = "listening on ";
    const auto line = service.line(patience);
    if (!line || !line->starts_with(start))
        throw std::runtime_error("the service does not start");
    return line->substr(start.size());
}

std::unique_ptr<faults::RunningProgram> serve(const fs::path &folder)
{
    return std::make_unique<faults::RunningProgram>(std::vector<std::string>{
        program("quelvin-service"), "--listen", "127.0.0.1:0", "--data", (folder / "service").string()});
}

void writeSettings(const fs::path &file, const std::string &address)
{
    std::ofstream(file) << R"({"HasBeenRun": true, "SyncToToodledo": true, "ToodleDoUsername": "ana@example.org",)"
                        << R"( "ToodleDoPassword": "a password", "ToodledoHost": ")" << address << "\"}";
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
}

/// A store that has synchronised, and a service at which another computer has changed much since.
void prepareFolder(const fs::path &folder)
{
    const auto qvl = [&folder](const std::string &side, std::vector<std::string> words) {
        words.insert(words.begin(),
            {program("qvl"), "--store", (folder / side).string(), "--settings", (folder / (side + ".json")).string()});
        faults::runToEnd(words);
    };
    faults::runToEnd(
        {program("quelvin-service"), "--data", (folder / "service").string(), "add-user", "ana@example.org"},
        "a password");
    const auto service = serve(folder);
    const std::string address = addressOf(*service);
    writeSettings(folder / "store.json", address);
    writeSettings(folder / "other.json", address);
    qvl("store", {"folder", "add", "Garden"});
    for (int i = 0; i < tasksHere; ++i)
        qvl("store", {"add", "base" + std::to_string(i) + " Water the plants", "--folder", i % 2 ? "Garden" : "Inbox"});
    qvl("store", {"sync"});
    qvl("other", {"sync"});
    for (int i = 0; i < tasksThere; ++i)
        qvl("other", {"add", "other" + std::to_string(i) + " From elsewhere", "--folder", i % 3 ? "Garden" : "Inbox"});
    qvl("other", {"sync"});
    service->kill(SIGTERM);
    (void)service->wait(patience);
}

/// Notices when the machine as a whole stood still, which no program in it can help.
class Standstill
{
public:
    /// For how long of the time between the two moments, in milliseconds.
    double within(std::int64_t begin, std::int64_t end)
    {
        const std::scoped_lock lock(m_mutex);
        std::int64_t sum = 0;
        for (const auto &[from, to] : m_stalls)
            sum += std::max<std::int64_t>(std::min(to, end) - std::max(from, begin), 0);
        return static_cast<double>(sum) / 1000;
    }

private:
    static std::int64_t now()
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }
    void watch(const std::stop_token &stop)
    {
        constexpr std::int64_t stall = 50'000; // microseconds
        while (!stop.stop_requested()) {
            const std::int64_t before = now();
            std::this_thread::sleep_for(5ms);
            const std::int64_t after = now();
            const std::scoped_lock lock(m_mutex);
            if (after - before > stall)
                m_stalls.emplace_back(before, after);
        }
    }

    std::mutex m_mutex;
    std::vector<std::pair<std::int64_t, std::int64_t>> m_stalls;
    std::jthread m_thread{[this](const std::stop_token &stop) { watch(stop); }};
};

struct Seen {
    std::atomic<int> kills = 0;
    std::atomic<int> killsInSync = 0;
    std::atomic<int> killsInLaunch = 0;
    std::atomic<int> killsInQuit = 0;
    std::atomic<int> keys = 0;
    std::atomic<int> doubles = 0;
    std::atomic<double> silence = 0;
};
Seen seen;
std::unique_ptr<support::TemporaryFolder> prepared;
std::unique_ptr<Standstill> standstill;
std::uint64_t chosenSeed = 1;

/// One case: a folder of its own, a life that is cut short, and the life after it.
class Life
{
public:
    explicit Life(std::uint64_t seed) : m_random(seed), m_story(seed)
    {
        fs::copy(prepared->path(), m_folder.path(), fs::copy_options::recursive);
        m_service = serve(m_folder.path());
        writeSettings(m_folder.path() / "store.json", addressOf(*m_service));
    }

    std::optional<std::string> run()
    {
        liveAndDie();
        if (m_random() % 8 == 0)
            dieWhileRecovering();
        lookAtStore();
        if (faults::isPlanted("ids-forgotten"))
            forgetIds();
        repair();
        if (m_problems.empty())
            return std::nullopt;
        std::string all;
        for (const std::string &problem : m_problems)
            all += (all.empty() ? "" : "; ") + problem;
        return all;
    }

private:
    std::unique_ptr<faults::RunningProgram> start(const std::string &script)
    {
        const fs::path file = m_folder.path() / "script";
        std::ofstream(file) << script;
        return std::make_unique<faults::RunningProgram>(
            std::vector<std::string>{program("quelvin"), "--store", (m_folder.path() / "store").string(), "--settings",
                (m_folder.path() / "store.json").string()},
            std::map<std::string, std::string>{{"QT_QPA_PLATFORM", "offscreen"}, {"LC_ALL", "C.UTF-8"},
                {"ASAN_OPTIONS", "detect_leaks=0"}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"},
                {"XDG_RUNTIME_DIR", m_folder.path().string()}, {"QT_PLUGIN_PATH", PLUGINS_FOLDER},
                {"QT_QPA_GENERIC_PLUGINS", "driver"}, {"QUELVIN_DRIVER_SCRIPT", file.string()},
                {"QUELVIN_DRIVER_BUG", plantedInProgram()}});
    }

    /// The bug that the driver plants in the program.
    static std::string plantedInProgram()
    {
        for (const char *bug : {"idle-save-off", "typing-kept-back", "window-blocked"}) {
            if (faults::isPlanted(bug))
                return bug;
        }
        return {};
    }

    /// As if the program had sent a task and been killed before it noted that, to a service that knows no marks.
    void forgetIds()
    {
        SQLite::Database database((m_folder.path() / "store" / "Quelvin.qvl").string(), SQLite::OPEN_READWRITE, 5000);
        database.exec("UPDATE Tasks SET taskID = 0, isNew = 1 WHERE title LIKE 'base3 %'");
        SQLite::Database service((m_folder.path() / "service" / "service.db").string(), SQLite::OPEN_READWRITE, 5000);
        service.exec("DELETE FROM marked_add");
    }

    void liveAndDie()
    {
        const auto program = start(m_story.script());
        const bool isInLaunch = m_random() % 10 == 0;
        auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(m_random() % 250);
        bool isAwaited = !isInLaunch;
        bool wasSyncing = false;
        if (isAwaited)
            end += patience;
        const bool isShown = std::getenv("QUELVIN_HARNESS_TALKS") != nullptr;
        if (isShown)
            std::fputs(m_story.script().c_str(), stdout);
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            const auto line = left > 0ms ? program->line(left) : std::nullopt;
            if (!line)
                break;
            m_story.hear(*line);
            if (isShown)
                std::puts(line->c_str());
            if (isAwaited && m_story.isReady()) {
                isAwaited = false;
                end = std::chrono::steady_clock::now() + std::chrono::milliseconds(m_random() % 3000);
            }
            if (m_story.isSyncing() && !std::exchange(wasSyncing, true) && m_random() % 3 == 0) // it is soon over
                end = std::min(end, std::chrono::steady_clock::now() + std::chrono::microseconds(m_random() % 12000));
            wasSyncing = m_story.isSyncing();
        }
        if (isAwaited)
            m_problems.emplace_back("the window did not come up");
        if (const auto status = program->wait(0ms)) {
            m_isKilled = false;
            if (*status != 0)
                m_problems.push_back("it ended with the status " + std::to_string(*status));
            return;
        }
        program->kill(SIGKILL);
        (void)program->wait(patience);
        while (const auto line = program->line(1s))
            m_story.hear(*line);
        ++seen.kills;
        seen.killsInLaunch += m_story.isReady() ? 0 : 1;
        seen.killsInSync += m_story.isSyncing() ? 1 : 0;
        seen.killsInQuit += m_story.isQuitting() ? 1 : 0;
        takeIn(m_story);
    }

    void takeIn(const WindowStory &story)
    {
        seen.keys += story.keysTaken();
        if (!story.problem().empty())
            m_problems.push_back(story.problem());
        for (const WindowStory::Silence &silence : story.silences()) {
            const auto length = static_cast<double>(silence.length - silence.waitedForProcessor) / 1000
                - standstill->within(silence.at - silence.length, silence.at);
            if (length > seen.silence)
                seen.silence = length;
            if (length > longestSilence)
                m_problems.push_back("the window did not answer for " + std::to_string(length) + " milliseconds");
        }
    }

    void dieWhileRecovering()
    {
        const auto program = start({});
        std::this_thread::sleep_for(std::chrono::milliseconds(m_random() % 200));
        program->kill(SIGKILL);
        ++seen.kills;
        ++seen.killsInLaunch;
    }

    /// Looks at a copy, so that the next launch finds what the kill left.
    void lookAtStore()
    {
        const fs::path copy = m_folder.path() / "copy";
        fs::create_directory(copy);
        for (const char *name : {"Quelvin.qvl", "Quelvin.qvl-wal"}) {
            if (fs::exists(m_folder.path() / "store" / name))
                fs::copy(m_folder.path() / "store" / name, copy / name);
        }
        lookAt(copy / "Quelvin.qvl", "after the kill");
    }

    void lookAt(const fs::path &file, const std::string &when)
    {
        for (std::string &problem : faults::storeProblems(file, model::objectModel()))
            m_problems.push_back(when + ": " + problem);
        for (std::string &problem : faults::defaultRecordProblems(file))
            m_problems.push_back(when + ": " + problem);
        std::map<std::string, std::pair<std::string, std::string>> tasks;
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE, 5000);
        SQLite::Statement rows(database, "SELECT title, coalesce(notes, '') FROM Tasks");
        while (rows.executeStep()) {
            const std::string title = rows.getColumn(0).getString();
            const std::string name = title.substr(0, title.find(' '));
            if (!tasks.try_emplace(name, title, rows.getColumn(1).getString()).second)
                m_problems.push_back(when + ": \"" + name + "\" is there twice");
        }
        for (int i = 0; i < tasksHere; ++i) {
            if (!tasks.contains("base" + std::to_string(i)))
                m_problems.push_back(when + ": base" + std::to_string(i) + " is lost");
        }
        for (const auto &[name, history] : m_story.titles())
            compare(when + ": the title of " + name, history, tasks[name].first);
        for (const auto &[name, history] : m_story.notes())
            compare(when + ": the note of " + name, history, tasks[name].second);
    }

    void compare(const std::string &what, const WindowStory::History &history, const std::string &found)
    {
        const std::size_t first = m_story.firstAllowed(history, m_isKilled);
        for (std::size_t i = first; i < history.size(); ++i) {
            if (history[i].text == found)
                return;
        }
        m_problems.push_back(what + " is \"" + found + "\" and must be \"" + history[first].text + "\" at least");
    }

    /// Starts it again, lets it synchronise twice and end.
    void repair()
    {
        WindowStory story;
        const auto program = start("key F5\nsynced 1\nkey F5\nsynced 2\nkey Ctrl+Q\n");
        while (const auto line = program->line(patience))
            story.hear(*line);
        if (const auto status = program->wait(5s); status != 0)
            m_problems.push_back("started again, it ended with " + (status ? std::to_string(*status) : "nothing"));
        takeIn(story);
        lookAt(m_folder.path() / "store" / "Quelvin.qvl", "after the repair");
        const auto here = faults::column(m_folder.path() / "store" / "Quelvin.qvl",
            "SELECT title || '|' || coalesce(notes, '') FROM Tasks ORDER BY 1");
        m_service->kill(SIGTERM);
        (void)m_service->wait(patience);
        const auto there = faults::column(
            m_folder.path() / "service" / "service.db", "SELECT title || '|' || note FROM task ORDER BY 1");
        if (here != there)
            m_problems.push_back("store and service differ: " + difference(here, there));
        if (static_cast<int>(here.size()) < tasksHere + tasksThere)
            m_problems.push_back("tasks of the other computer are missing");
    }

    static std::string difference(const std::vector<std::string> &here, const std::vector<std::string> &there)
    {
        std::vector<std::string> only;
        std::set_symmetric_difference(here.begin(), here.end(), there.begin(), there.end(), std::back_inserter(only));
        std::string text;
        for (const std::string &one : only)
            text += "\"" + one + "\" ";
        return std::to_string(here.size()) + " and " + std::to_string(there.size()) + " tasks, on one side: " + text;
    }

    std::mt19937_64 m_random;
    WindowStory m_story;
    support::TemporaryFolder m_folder;
    std::unique_ptr<faults::RunningProgram> m_service;
    std::vector<std::string> m_problems;
    bool m_isKilled = true;
};

std::int64_t prepare(std::uint64_t seed)
{
    chosenSeed = seed;
    prepared = std::make_unique<support::TemporaryFolder>();
    standstill = std::make_unique<Standstill>();
    prepareFolder(prepared->path());
    return 0;
}

std::optional<std::string> run(std::int64_t number)
{
    return Life(chosenSeed * 1'000'003 + static_cast<std::uint64_t>(number)).run();
}

std::string summary()
{
    std::ostringstream text;
    text << seen.kills << " kills (" << seen.killsInLaunch << " in the launch, " << seen.killsInSync
         << " in a synchronisation, " << seen.killsInQuit << " in the end), " << seen.keys
         << " keys, the longest silence " << static_cast<int>(seen.silence) << " ms";
    if (seen.kills == 0 || seen.keys == 0 || seen.killsInSync == 0)
        throw std::runtime_error("nothing was tested: " + text.str());
    return text.str();
}

} // namespace

int main(int argc, char **argv)
{
    return faults::runHarness(
        argc, argv, {.name = "harness_window", .prepare = prepare, .run = run, .seen = summary, .lanes = 6});
}
