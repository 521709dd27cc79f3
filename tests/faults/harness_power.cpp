// SPDX-License-Identifier: GPL-3.0-or-later
// Cuts the power at any moment of a user's sessions, and looks at what the next launch finds: every save that was
// acknowledged, and no half of one.
#include "faults/harness.h"
#include "faults/isolated.h"
#include "faults/power_log.h"
#include "faults/sabotage.h"
#include "faults/scenario.h"
#include "model/task_store.h"
#include "support/collected_errors.h"
#include "support/temporary_folder.h"
#include "support/test_clock.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using namespace faults;

constexpr std::int64_t imagesOfASession = 200;

/// A few saves of chance sizes with a launch between some of them, and the log of it.
class Session
{
public:
    Session(std::uint64_t seed, const fs::path &folder) : m_random(seed), m_scenario(makeScenario(m_random))
    {
        fs::remove_all(folder);
        for (int save = 1; save <= m_scenario.story.saves();) {
            auto store = model::TaskStore::open(folder, m_clock, m_errors);
            if (!store)
                throw std::runtime_error("not opened without a fault: " + store.error().detail);
            do {
                objectstore::ObjectContext &context = (*store)->managedObjectContext();
                m_scenario.story.change(context, save);
                m_log.saveBegins(save);
                if (const auto saved = context.save(); !saved)
                    throw std::runtime_error("not saved without a fault: " + saved.error().detail);
                m_log.saveAcknowledged(save);
            } while (++save <= m_scenario.story.saves() && m_random() % 3);
        }
    }

    [[nodiscard]] const PowerLog &log() const { return m_log; }
    [[nodiscard]] const Scenario &scenario() const { return m_scenario; }

private:
    static Scenario makeScenario(std::mt19937_64 &random)
    {
        std::vector<int> tasks(2 + random() % 6);
        std::generate(tasks.begin(), tasks.end(), [&] { return static_cast<int>(random() % 4 ? random() % 6 : 60); });
        return {.name = "session", .story = Story(tasks), .write = nullptr};
    }

    std::mt19937_64 m_random;
    Scenario m_scenario;
    support::TestClock m_clock;
    support::CollectedErrors m_errors;
    PowerLog m_log;
};

class PowerCuts
{
public:
    PowerCuts()
    {
        // a checkpoint every few pages, where the store itself makes one after a thousand
        if (!plant("early-checkpoints"))
            throw std::logic_error("no early checkpoints");
    }

    std::int64_t prepare(std::uint64_t seed)
    {
        m_seed = seed;
        return 0;
    }

    std::optional<std::string> run(std::int64_t number)
    {
        const std::int64_t session = number / imagesOfASession;
        if (!m_session || m_sessionNumber != session) {
            m_session.reset();
            m_session.emplace(m_seed * 1000003 + static_cast<std::uint64_t>(session), m_folder.path() / "session");
            m_sessionNumber = session;
        }
        std::mt19937_64 random(m_seed * 1000003 + static_cast<std::uint64_t>(number));
        const std::size_t moment = random() % m_session->log().moments();
        const PowerLog::Disk disk = m_session->log().diskAfterCut(moment, random);
        const fs::path folder = m_folder.path() / "image";
        fs::remove_all(folder);
        fs::create_directory(folder);
        for (const auto &[name, content] : disk.files)
            std::ofstream(folder / name, std::ios::binary) << content;
        Notes before;
        before.savesTried = disk.savesTried;
        before.savesAcknowledged = disk.savesAcknowledged;
        m_acknowledged += disk.savesAcknowledged;
        const Ending ending = isolated([&](Notes &notes) { relaunch(m_session->scenario(), folder, notes); }, before);
        if (ending.notes.finished && ending.notes.problems[0] == 0)
            return std::nullopt;
        return "power cut after " + std::to_string(moment) + " of " + std::to_string(m_session->log().moments() - 1)
            + " operations: " + ending.crash + " " + ending.notes.problems.data();
    }

    std::string seen() const
    {
        if (m_acknowledged == 0)
            throw std::runtime_error("no save was acknowledged");
        return std::to_string(m_acknowledged) + " acknowledged saves looked for";
    }

private:
    support::TemporaryFolder m_folder;
    std::uint64_t m_seed = 1;
    std::int64_t m_sessionNumber = -1;
    std::optional<Session> m_session;
    std::int64_t m_acknowledged = 0;
};

} // namespace

int main(int argc, char **argv)
{
    PowerCuts cuts;
    return runHarness(argc, argv,
        {"harness_power", [&](std::uint64_t seed) { return cuts.prepare(seed); },
            [&](std::int64_t number) { return cuts.run(number); }, [&] { return cuts.seen(); }});
}
