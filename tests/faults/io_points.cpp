// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/io_points.h"

#include "faults/harness.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <stdexcept>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr std::array actionNames{
    "count", "kill-before", "kill-after", "kill-torn", "no-space", "io-error", "short", "interrupted", "read-error"};

/// The calls from 1 to `calls`, or `most` of them where that is not 0.
std::vector<long> chosen(long calls, std::size_t most, std::mt19937_64 &random)
{
    std::vector<long> all(static_cast<std::size_t>(calls));
    std::iota(all.begin(), all.end(), 1L);
    if (most == 0 || most >= all.size())
        return all;
    std::shuffle(all.begin(), all.end(), random);
    all.resize(most);
    return all;
}

bool isKill(fault_action action)
{
    return action == FAULT_KILL_BEFORE || action == FAULT_KILL_AFTER || action == FAULT_KILL_TORN;
}

} // namespace

const std::vector<FaultKind> &kills()
{
    static const std::vector<FaultKind> kinds{
        {FAULT_KILL_BEFORE}, {FAULT_KILL_AFTER}, {FAULT_KILL_TORN}, {FAULT_KILL_AFTER, false, true}};
    return kinds;
}

const std::vector<FaultKind> &ioErrors()
{
    static const std::vector<FaultKind> kinds{{FAULT_NO_SPACE}, {FAULT_NO_SPACE, true}, {FAULT_IO_ERROR},
        {FAULT_IO_ERROR, true}, {FAULT_SHORT}, {FAULT_SHORT, true}, {FAULT_INTERRUPTED}, {FAULT_READ_ERROR},
        {FAULT_READ_ERROR, true}};
    return kinds;
}

const fs::path &IoPoints::prepared(const Scenario &scenario)
{
    fs::path &folder = m_prepared[&scenario];
    if (folder.empty()) {
        folder = m_folder.path() / scenario.name / "Quelvin";
        prepare(scenario, folder);
    }
    return folder;
}

fs::path IoPoints::freshCopy(const Scenario &scenario)
{
    const fs::path &from = prepared(scenario);
    const fs::path place = m_folder.path() / "case";
    fs::remove_all(place);
    fs::create_directory(place);
    if (fs::exists(from.parent_path()))
        fs::copy(from.parent_path(), place, fs::copy_options::recursive);
    return place / "Quelvin";
}

long IoPoints::callsOf(const Scenario &scenario, fault_action action)
{
    const fs::path folder = freshCopy(scenario);
    // a read error that never comes counts the reads
    const fault_plan plan = planOf(action == FAULT_READ_ERROR ? FAULT_READ_ERROR : FAULT_COUNT, 1L << 40, false);
    const Ending ending = isolated([&](Notes &notes) {
        fault_shim_arm(&plan);
        scenario.write(scenario, folder, notes);
        if (const long calls = fault_shim_disarm(); notes.calls == 0)
            notes.calls = calls;
    });
    if (!ending.notes.finished || ending.notes.problems[0] != 0 || ending.notes.calls == 0)
        throw std::runtime_error(std::string(scenario.name) + " fails without a fault: " + ending.crash + " "
            + ending.notes.problems.data());
    return ending.notes.calls;
}

std::vector<IoPoint> IoPoints::all(
    std::span<const Scenario> scenarios, const std::vector<FaultKind> &kinds, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    std::vector<IoPoint> points;
    for (const Scenario &scenario : scenarios) {
        const long changes = callsOf(scenario, FAULT_COUNT);
        for (const FaultKind &kind : kinds) {
            const long calls = kind.action == FAULT_READ_ERROR ? callsOf(scenario, FAULT_READ_ERROR) : changes;
            for (const long call : chosen(calls, scenario.callsOfASeed, random)) {
                const auto recoveryCalls = static_cast<std::uint64_t>(scenario.recoveryCalls);
                const long recovery = kind.compound ? 1 + static_cast<long>(random() % recoveryCalls) : 0;
                points.push_back({&scenario, kind.action, kind.sticky, call, recovery});
            }
        }
    }
    std::shuffle(points.begin(), points.end(), random); // so that the first ones are a fair choice of all
    return points;
}

std::optional<std::string> IoPoints::run(const IoPoint &point)
{
    const Scenario &scenario = *point.scenario;
    const fs::path folder = freshCopy(scenario);
    const fault_plan plan = planOf(point.action, point.call, point.sticky);
    Ending ending = isolated([&](Notes &notes) {
        fault_shim_arm(&plan);
        scenario.write(scenario, folder, notes);
    });
    acknowledged += ending.notes.savesAcknowledged;
    struck += ending.killed ? 1 : ending.notes.hits;
    told += ending.notes.savesFailed;
    const auto failed = [](const Ending &end) {
        return !end.crash.empty() || end.notes.problems[0] != 0 || (!end.killed && !end.notes.finished);
    };
    const auto report = [](const char *when, const Ending &end) {
        return std::string(when) + ": " + end.crash + " " + end.notes.problems.data();
    };
    if (failed(ending) || (ending.killed && !isKill(point.action)))
        return report("at work", ending);
    if (point.recoveryCall > 0) {
        const fault_plan second = planOf(FAULT_KILL_BEFORE, point.recoveryCall, false);
        const Ending recovery = isolated(
            [&](Notes &notes) {
                fault_shim_arm(&second);
                relaunch(scenario, folder, notes);
            },
            ending.notes);
        if (failed(recovery))
            return report("in the first launch after it", recovery);
    }
    const Ending recovery = isolated([&](Notes &notes) { relaunch(scenario, folder, notes); }, ending.notes);
    if (failed(recovery) || recovery.killed)
        return report("at the next launch", recovery);
    return std::nullopt;
}

std::string IoPoints::describe(const IoPoint &point)
{
    std::string text = std::string(point.scenario->name) + ", " + actionNames[point.action]
        + (point.sticky ? " for good" : "") + " at call " + std::to_string(point.call);
    if (point.recoveryCall > 0)
        text += ", and the next launch killed at call " + std::to_string(point.recoveryCall);
    return text;
}

int runIoHarness(int argc, char **argv, const std::string &name, const std::vector<FaultKind> &kinds)
{
    IoPoints io;
    std::vector<IoPoint> points;
    const auto prepare = [&](std::uint64_t seed) {
        points = io.all(scenarios(), kinds, seed);
        return static_cast<std::int64_t>(points.size());
    };
    const auto run = [&](std::int64_t number) -> std::optional<std::string> {
        const IoPoint &point = points[static_cast<std::size_t>(number)];
        const auto failure = io.run(point);
        return failure ? std::optional(IoPoints::describe(point) + ": " + *failure) : std::nullopt;
    };
    const auto seen = [&] {
        if (io.struck == 0 || io.acknowledged == 0)
            throw std::runtime_error("no fault struck or no save was acknowledged");
        return std::to_string(io.struck) + " faults struck, " + std::to_string(io.acknowledged)
            + " saves acknowledged, " + std::to_string(io.told) + " errors told";
    };
    return runHarness(argc, argv, {name, prepare, run, seen});
}

} // namespace faults
