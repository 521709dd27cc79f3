// SPDX-License-Identifier: GPL-3.0-or-later
// Plays random histories of one to three computers and prints the first that goes wrong, shrunk, with the command that
// plays it again.
#include "foundation/log.h"
#include "histories/history.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <mutex>
#include <sqlite3.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

struct Options {
    std::uint64_t seed = 1;
    std::uint64_t count = 1000;
    int clients = 0; ///< 0: one, two and three in turn
    bool guards = true;
    bool marks = true; ///< "--no-marks": the service does not know an add that is sent again
    bool singleCalls = false; ///< "--single-calls": of every seed, not only the odd ones
    bool expectFailure = false; ///< "--control guards-off": the histories must be found to go wrong
    unsigned lanes = std::clamp(std::thread::hardware_concurrency(), 1U, 2U);
};

/// Whether more histories end with a task there twice, which a lost reply can bring about, than one in a thousand;
/// where the service knows an add that is sent again, than one in a hundred thousand. Twice the standard deviation is
/// left to chance, which is nothing in a few histories.
bool areTooManyDoubled(std::uint64_t doubled, const Options &options)
{
    const double most = static_cast<double>(options.count) / (options.marks ? 100000 : 1000);
    return static_cast<double>(doubled) > most + 2 * std::sqrt(most);
}

Options read(int count, char **arguments)
{
    Options options;
    for (int i = 1; i < count; ++i) {
        const auto value = [&] {
            if (++i == count)
                throw std::invalid_argument("a value is missing");
            return std::strtoull(arguments[i], nullptr, 10);
        };
        if (!std::strcmp(arguments[i], "--seed"))
            options.seed = value();
        else if (!std::strcmp(arguments[i], "--count"))
            options.count = value();
        else if (!std::strcmp(arguments[i], "--clients"))
            options.clients = static_cast<int>(value());
        else if (!std::strcmp(arguments[i], "--lanes"))
            options.lanes = static_cast<unsigned>(value());
        else if (!std::strcmp(arguments[i], "--single-calls"))
            options.singleCalls = true;
        else if (!std::strcmp(arguments[i], "--no-guards"))
            options.guards = false;
        else if (!std::strcmp(arguments[i], "--no-marks"))
            options.marks = false;
        else if (!std::strcmp(arguments[i], "--control") && ++i < count && !std::strcmp(arguments[i], "guards-off")) {
            options.guards = false;
            options.expectFailure = true;
        } else {
            throw std::invalid_argument("an option is unknown or lacks its value");
        }
    }
    return options;
}

void report(const histories::History &history, std::uint64_t seed)
{
    const auto shortest = histories::shrunk(history);
    std::printf("\nThe history of seed %llu, shrunk to %zu steps:\n%s", static_cast<unsigned long long>(seed),
        shortest.steps.size(), histories::describe(shortest).c_str());
    for (const std::string &fault : histories::play(shortest).faults)
        std::printf("  -> %s\n", fault.c_str());
    std::printf("again: sync_histories --seed %llu --count 1 --clients %d%s%s%s\n",
        static_cast<unsigned long long>(seed), history.clients, history.guards ? "" : " --no-guards",
        history.marks ? "" : " --no-marks", history.singleCalls ? " --single-calls" : "");
}

/// What the lanes share.
class Tally
{
public:
    explicit Tally(const Options &options) : m_options(options), m_next(options.seed) { }

    /// Plays histories until none is left, beside other lanes that do the same.
    void playLane()
    {
        while (true) {
            const std::uint64_t seed = m_next++;
            if (seed >= m_options.seed + m_options.count)
                return;
            const int clients = m_options.clients != 0 ? m_options.clients : static_cast<int>(1 + seed % 3);
            auto history = histories::draw(seed, clients, m_options.guards);
            history.marks = m_options.marks;
            history.singleCalls = m_options.singleCalls || seed % 2 != 0;
            const auto verdict = histories::play(history);
            const std::scoped_lock lock(m_mutex);
            take(history, seed, verdict);
        }
    }

    /// Prints the summary; whether all went as it should.
    [[nodiscard]] bool conclude() const
    {
        const bool tooManyDoubled = areTooManyDoubled(m_doubled, m_options);
        std::printf(
            "sync_histories: %llu cases from seed %llu, guards %s%s, %llu with a doubled task%s, %llu failures\n",
            static_cast<unsigned long long>(m_options.count), static_cast<unsigned long long>(m_options.seed),
            m_options.guards ? "on" : "off", m_options.marks ? "" : ", no marks",
            static_cast<unsigned long long>(m_doubled), tooManyDoubled ? " (too many)" : "",
            static_cast<unsigned long long>(m_wrong + (tooManyDoubled ? 1 : 0)));
        return m_wrong == 0 && !tooManyDoubled;
    }

private:
    void take(const histories::History &history, std::uint64_t seed, const histories::Verdict &verdict)
    {
        if (verdict.doubled > 0 && !m_options.expectFailure) {
            ++m_doubled;
            std::printf("a task is there twice after the history of seed %llu with %d client(s)\n",
                static_cast<unsigned long long>(seed), history.clients);
            if (m_options.count == 1)
                report(history, seed);
        }
        if (!verdict.isWell() && ++m_wrong <= 3 && !m_options.expectFailure)
            report(history, seed);
    }

    const Options &m_options;
    std::atomic<std::uint64_t> m_next;
    std::mutex m_mutex;
    std::uint64_t m_wrong = 0;
    std::uint64_t m_doubled = 0;
};

} // namespace

int main(int count, char **arguments)
{
    try {
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
        const Options options = read(count, arguments);
        foundation::setLogSink([](std::string_view) {});
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0); // each allocation would wait for the other lanes'
        Tally tally(options);
        {
            std::vector<std::future<void>> lanes;
            for (unsigned lane = 0; lane < options.lanes; ++lane)
                lanes.push_back(std::async(std::launch::async, [&tally] { tally.playLane(); }));
            for (auto &lane : lanes)
                lane.get(); // throws what the lane threw
        }
        return tally.conclude() != options.expectFailure ? 0 : 1;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "sync_histories: %s\n", exception.what());
        return 2;
    }
}
