// SPDX-License-Identifier: GPL-3.0-or-later
// Damages stores and settings files in every manner, and sees that the program neither falls over them nor writes over
// what it does not understand. Every eleventh case is a settings file.
#include "faults/harness.h"
#include "faults/isolated.h"
#include "faults/sabotage.h"
#include "faults/scenario.h"
#include "foundation/settings.h"
#include "model/entities.h"
#include "model/task_store.h"
#include "support/collected_errors.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

#include <SQLiteCpp/Database.h>
#include <array>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using namespace faults;
using Random = std::mt19937_64;
using Files = std::map<std::string, std::string>; ///< contents by name

constexpr const char *storeName = model::TaskStore::fileName;
const std::string walName = std::string(storeName) + "-wal";
constexpr const char *settingsName = "settings.json";

std::string read(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path &folder, const Files &files)
{
    fs::remove_all(folder);
    fs::create_directories(folder);
    for (const auto &[name, content] : files)
        std::ofstream(folder / name, std::ios::binary) << content;
}

std::size_t below(Random &random, std::size_t limit)
{
    return limit == 0 ? 0 : random() % limit;
}

void flipBytes(std::string &bytes, Random &random)
{
    for (std::size_t i = 0, count = 1 + below(random, 40); i < count && !bytes.empty(); ++i)
        bytes[below(random, bytes.size())] = static_cast<char>(random());
}
void flipInHeader(std::string &bytes, Random &random)
{
    for (std::size_t i = 0, count = 1 + below(random, 6); i < count && !bytes.empty(); ++i)
        bytes[below(random, std::min<std::size_t>(bytes.size(), 120))] = static_cast<char>(random());
}
void cut(std::string &bytes, Random &random)
{
    bytes.resize(below(random, bytes.size()));
}
void cutToPages(std::string &bytes, Random &random)
{
    bytes.resize(4096 * below(random, bytes.size() / 4096));
}
void clearPage(std::string &bytes, Random &random)
{
    const std::size_t page = 4096 * below(random, bytes.size() / 4096);
    bytes.replace(
        page, std::min<std::size_t>(4096, bytes.size() - page), std::min<std::size_t>(4096, bytes.size() - page), '\0');
}
void swapPages(std::string &bytes, Random &random)
{
    const std::size_t pages = bytes.size() / 4096;
    if (pages < 2)
        return;
    const std::size_t one = 4096 * below(random, pages);
    const std::size_t other = 4096 * below(random, pages);
    std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(one),
        bytes.begin() + static_cast<std::ptrdiff_t>(one + 4096), bytes.begin() + static_cast<std::ptrdiff_t>(other));
}
void garbage(std::string &bytes, Random &random)
{
    bytes.resize(below(random, 20000));
    for (char &byte : bytes)
        byte = static_cast<char>(random());
}
void repeatPiece(std::string &bytes, Random &random)
{
    const std::size_t from = below(random, bytes.size());
    bytes.insert(below(random, bytes.size()), bytes.substr(from, below(random, 4096)));
}

using Damage = void (*)(std::string &bytes, Random &random);
constexpr std::array<Damage, 8> damages{
    flipBytes, flipInHeader, cut, cutToPages, clearPage, swapPages, garbage, repeatPiece};

/// Uses a store as the program does: shows everything, edits and saves.
void useStore(const fs::path &folder, const Files &files, Notes &notes)
{
    support::TestClock clock(support::at("2026-11-26 09:00"));
    support::CollectedErrors errors;
    {
        const auto opened = model::TaskStore::open(folder, clock, errors);
        if (opened) {
            ++notes.savesTried; // here: stores that were opened
            objectstore::ObjectContext &context = (*opened)->managedObjectContext();
            for (const auto &entity : model::objectModel().entities()) {
                const auto found = context.fetch({.entity = entity->name(), .predicate = {}, .sortDescriptors = {}});
                if (!found) {
                    errors.presentError(found.error());
                    continue;
                }
                for (objectstore::ManagedObject *object : *found) {
                    for (const auto *relationship : entity->toManyRelationships())
                        (void)object->objects(*relationship).size();
                }
            }
            model::insert<model::Tasks>(context).setTitle("after the damage");
            if (const auto saved = context.save(); !saved)
                errors.presentError(saved.error());
        } else {
            ++notes.savesFailed; // here: stores that were refused
            errors.presentError(opened.error());
            for (const auto &[name, content] : files) {
                if (read(folder / name) != content)
                    notes.problem(name + " was changed although it was refused: " + opened.error().detail);
            }
        }
    }
    for (const auto &error : errors.errors) {
        if (error.message.empty())
            notes.problem("an error without a sentence: " + error.detail);
    }
}

/// Reads settings and writes others, as the program does; what was there must then still be somewhere.
void useSettings(const fs::path &folder, const std::string &original, Notes &notes)
{
    foundation::JsonSettingsFile file(folder / settingsName);
    foundation::Settings settings(file, {});
    ++(settings.loadError() ? notes.savesFailed : notes.savesTried);
    for (const auto &[key, value] : settings.all()) {
        (void)settings.integer(key);
        (void)settings.date(key);
        (void)settings.text(key);
    }
    if (!settings.loadError() && read(folder / settingsName) != original)
        notes.problem("reading changed the settings");
    settings.set("after the damage", true);
    if (isPlanted("damaged-settings-dropped")) {
        for (const auto &entry : fs::directory_iterator(folder))
            fs::remove(entry.path());
    }
    if (const auto written = settings.synchronize(); !written && written.error().message.empty())
        notes.problem("an error without a sentence");
    for (const auto &entry : fs::directory_iterator(folder)) {
        if (read(entry.path()) == original)
            return;
    }
    notes.problem("the damaged settings are nowhere");
}

class DamagedFiles
{
public:
    std::int64_t prepare(std::uint64_t seed)
    {
        m_seed = seed;
        const Scenario &work = scenario("settings-and-quit");
        const fs::path folder = m_folder.path() / "Quelvin";
        faults::prepare(work, folder);
        const std::string settings = read(folder / settingsName);
        const std::string closed = read(folder / storeName);
        Files open;
        {
            support::TestClock clock;
            support::CollectedErrors errors;
            auto store = model::TaskStore::open(folder, clock, errors).value();
            work.story.change(store->managedObjectContext(), 2);
            (void)store->managedObjectContext().save().value();
            open = {{storeName, read(folder / storeName)}, {walName, read(folder / walName)}};
        }
        SQLite::Database((m_folder.path() / "photographs").string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
            .exec("CREATE TABLE photographs (name, picture); INSERT INTO photographs VALUES ('Ana', zeroblob(9000));");
        m_foreign = read(m_folder.path() / "photographs");
        m_stores = {{{storeName, closed}}, open, {{storeName, closed}, {walName, open[walName]}}};
        m_settings = settings;
        return 0;
    }

    std::optional<std::string> run(std::int64_t number)
    {
        Random random(m_seed * 1000003 + static_cast<std::uint64_t>(number));
        const fs::path folder = m_folder.path() / "case";
        const Ending ending = number % 11 == 10 ? settingsCase(random, folder) : storeCase(random, folder);
        m_opened += ending.notes.savesTried;
        m_refused += ending.notes.savesFailed;
        if (ending.notes.finished && ending.notes.problems[0] == 0)
            return std::nullopt;
        return ending.crash + " " + ending.notes.problems.data();
    }

    std::string seen() const
    {
        if (m_opened == 0 || m_refused == 0)
            throw std::runtime_error("no damage was refused, or none was bearable");
        return std::to_string(m_refused) + " refused, " + std::to_string(m_opened) + " opened";
    }

private:
    Ending storeCase(Random &random, const fs::path &folder)
    {
        Files files = m_stores[below(random, m_stores.size())];
        if (random() % 50 == 0)
            return foreignCase(folder);
        auto target = files.begin();
        std::advance(target, below(random, files.size()));
        for (std::size_t i = 0, count = 1 + below(random, 2); i < count; ++i)
            damages[below(random, damages.size())](target->second, random);
        write(folder, files);
        return isolated([&](Notes &notes) { useStore(folder, files, notes); });
    }

    /// Somebody else's database under the store's name.
    Ending foreignCase(const fs::path &folder)
    {
        const Files files{{storeName, m_foreign}};
        write(folder, files);
        return isolated([&](Notes &notes) {
            useStore(folder, files, notes);
            if (notes.savesFailed == 0)
                notes.problem("another program's database was taken for a store");
        });
    }

    Ending settingsCase(Random &random, const fs::path &folder)
    {
        std::string text = m_settings;
        damages[below(random, damages.size())](text, random);
        write(folder, {{settingsName, text}});
        return isolated([&](Notes &notes) { useSettings(folder, text, notes); });
    }

    support::TemporaryFolder m_folder;
    std::uint64_t m_seed = 1;
    std::vector<Files> m_stores;
    std::string m_foreign;
    std::string m_settings;
    std::int64_t m_opened = 0;
    std::int64_t m_refused = 0;
};

} // namespace

int main(int argc, char **argv)
{
    DamagedFiles damaged;
    return runHarness(argc, argv,
        {"harness_damage", [&](std::uint64_t seed) { return damaged.prepare(seed); },
            [&](std::int64_t number) { return damaged.run(number); }, [&] { return damaged.seen(); }});
}
