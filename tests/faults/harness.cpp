// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/harness.h"

#include "faults/sabotage.h"
#include "foundation/log.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace faults {

namespace {

constexpr int mostFailuresShown = 10;

struct Options {
    std::int64_t count = 0;
    std::int64_t first = 0;
    std::uint64_t seed = 1;
    std::optional<std::int64_t> single;
    std::string control;
};

Options read(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; i += 2) {
        const std::string_view name = argv[i];
        if (i + 1 == argc)
            throw std::invalid_argument("no value for " + std::string(name));
        const char *text = argv[i + 1];
        if (name == "--count")
            options.count = std::stoll(text);
        else if (name == "--first")
            options.first = std::stoll(text);
        else if (name == "--seed")
            options.seed = std::stoull(text);
        else if (name == "--case")
            options.single = std::stoll(text);
        else if (name == "--control")
            options.control = text;
        else
            throw std::invalid_argument("unknown option " + std::string(name));
    }
    if (options.single) {
        options.first = *options.single;
        options.count = 1;
    }
    return options;
}

/// Takes in how a case ended; false when no more are wanted.
using Take = std::function<bool(std::int64_t number, const std::optional<std::string> &failure)>;

void runInLanes(const Harness &harness, std::int64_t first, std::int64_t end, const Take &take)
{
    std::mutex mutex;
    std::int64_t next = first;
    const auto lane = [&] {
        std::unique_lock lock(mutex);
        while (next < end) {
            const std::int64_t number = next++;
            lock.unlock();
            std::optional<std::string> failure;
            try {
                failure = harness.run(number);
            } catch (const std::exception &exception) {
                failure = exception.what();
            }
            lock.lock();
            if (!take(number, failure))
                end = next;
        }
    };
    std::vector<std::jthread> lanes;
    for (int i = 0; i < harness.lanes; ++i)
        lanes.emplace_back(lane);
}

int run(const std::string &program, const Options &options, const Harness &harness)
{
    if (!options.control.empty() && !plant(options.control))
        throw std::invalid_argument("no bug is named " + options.control);
    const std::int64_t available = harness.prepare ? harness.prepare(options.seed) : 0;
    std::int64_t end = options.count > 0 ? options.first + options.count : available;
    if (available > 0)
        end = std::min(end, available);
    std::int64_t failures = 0;
    std::int64_t tried = 0;
    const auto take = [&](std::int64_t number, const std::optional<std::string> &failure) {
        if (failure && ++failures <= mostFailuresShown)
            std::printf("case %lld failed: %s\n  again: %s --seed %llu --case %lld%s%s\n",
                static_cast<long long>(number), failure->c_str(), program.c_str(),
                static_cast<unsigned long long>(options.seed), static_cast<long long>(number),
                options.control.empty() ? "" : " --control ", options.control.c_str());
        ++tried;
        return options.control.empty() || failures == 0; // a planted bug is to be found once
    };
    if (harness.lanes > 1)
        runInLanes(harness, options.first, end, take);
    else
        for (std::int64_t number = options.first; number < end; ++number) {
            if (!take(number, harness.run(number)))
                break;
        }
    const std::string seen
        = harness.seen && !options.single && options.control.empty() ? harness.seen() : std::string();
    std::printf("%s: %lld cases from %lld of %lld, seed %llu, %lld failures%s%s\n", harness.name.c_str(),
        static_cast<long long>(tried), static_cast<long long>(options.first), static_cast<long long>(available),
        static_cast<unsigned long long>(options.seed), static_cast<long long>(failures), seen.empty() ? "" : "; ",
        seen.c_str());
    if (options.control.empty())
        return failures == 0 ? 0 : 1;
    std::printf("the planted bug %s was %s\n", options.control.c_str(), failures > 0 ? "found" : "NOT found");
    return failures > 0 ? 0 : 1;
}

} // namespace

int runHarness(int argc, char **argv, const Harness &harness)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    foundation::setLogSink([](std::string_view) {}); // thousands of provoked errors are logged; failures are printed
    try {
        return run(argv[0], read(argc, argv), harness);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s: %s\n", harness.name.c_str(), exception.what());
        return 2;
    }
}

} // namespace faults
