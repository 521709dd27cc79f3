// SPDX-License-Identifier: GPL-3.0-or-later
// Plays random histories of one to three computers and prints the first that goes wrong, shrunk, with the command that
// plays it again.
#include "foundation/log.h"
#include "histories/history.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

struct Options {
    std::uint64_t seed = 1;
    std::uint64_t count = 1000;
    int clients = 0; ///< 0: one, two and three in turn
    bool guards = true;
    bool expectFailure = false;
};

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
        else if (!std::strcmp(arguments[i], "--no-guards"))
            options.guards = false;
        else if (!std::strcmp(arguments[i], "--expect-failure"))
            options.expectFailure = true;
        else
            throw std::invalid_argument(std::string("unknown option ") + arguments[i]);
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
    std::printf("again: sync_histories --seed %llu --count 1 --clients %d%s\n", static_cast<unsigned long long>(seed),
        history.clients, history.guards ? "" : " --no-guards");
}

} // namespace

int main(int count, char **arguments)
{
    try {
        const Options options = read(count, arguments);
        foundation::setLogSink([](std::string_view) {});
        std::uint64_t wrong = 0;
        std::uint64_t doubled = 0;
        for (std::uint64_t seed = options.seed; seed < options.seed + options.count; ++seed) {
            const int clients = options.clients != 0 ? options.clients : static_cast<int>(1 + seed % 3);
            const auto history = histories::draw(seed, clients, options.guards);
            const auto verdict = histories::play(history);
            if (verdict.doubled > 0 && !options.expectFailure) {
                ++doubled;
                std::printf("a task is there twice after the history of seed %llu with %d client(s)\n",
                    static_cast<unsigned long long>(seed), clients);
                if (options.count == 1)
                    report(history, seed);
            }
            if (verdict.isWell())
                continue;
            if (++wrong <= 3 && !options.expectFailure)
                report(history, seed);
        }
        std::printf("%llu histories from seed %llu, guards %s: %llu went wrong, %llu with a doubled task\n",
            static_cast<unsigned long long>(options.count), static_cast<unsigned long long>(options.seed),
            options.guards ? "on" : "off", static_cast<unsigned long long>(wrong),
            static_cast<unsigned long long>(doubled));
        const bool isWell = wrong == 0 && doubled * 1000 <= options.count;
        return isWell != options.expectFailure ? 0 : 1;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "sync_histories: %s\n", exception.what());
        return 2;
    }
}
