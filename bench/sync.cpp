// SPDX-License-Identifier: GPL-3.0-or-later
// A first pull and a run with nothing to do, from replies that lie in memory: the engine's own cost.
#include "canned_service.h"
#include "generator.h"
#include "measure.h"
#include "silent_host.h"

#include "foundation/clock.h"
#include "model/settings_defaults.h"
#include "sync/toodledo_sync.h"

#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <stdexcept>
#include <sys/resource.h>

namespace {

/// The time that Expat takes to find the elements and texts of a reply, with nothing done about them.
double expatTime(const std::string &reply)
{
    return bench::median(5, [&] {
        const XML_Parser parser = XML_ParserCreate("UTF-8");
        XML_SetElementHandler(
            parser, [](void *, const char *, const char **) {}, [](void *, const char *) {});
        XML_SetCharacterDataHandler(parser, [](void *, const char *, int) {});
        if (XML_Parse(parser, reply.data(), static_cast<int>(reply.size()), 1) != XML_STATUS_OK)
            throw std::runtime_error("the reply is no XML");
        XML_ParserFree(parser);
    });
}

double peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024;
}

} // namespace

int main(int count, char **arguments)
{
    try {
        const int tasks = count > 1 ? std::atoi(arguments[1]) : 100000;
        const bench::Workplace workplace;
        const auto made = bench::generate(
            workplace.path(), {.tasks = 0, .folders = 0, .contexts = 0, .tags = 0, .smartFolders = 0});
        const auto replies = bench::repliesFor(tasks);
        foundation::MemorySettingsFile file;
        foundation::Settings settings(file, model::settingsDefaults());
        settings.set("ToodledoHost", std::string("127.0.0.1"));
        const foundation::SystemClock clock;
        bench::SilentHost host;
        const auto run = [&] {
            syncing::ToodledoSync sync({made->store(), settings, clock, host,
                [&] { return std::make_unique<bench::CannedTransport>(replies); }});
            if (const auto started = sync.startSyncTasks(); !started)
                throw std::runtime_error(started.error().message);
            sync.wait();
            if (sync.outcome() != syncing::SyncOutcome::Completed)
                throw std::runtime_error("the run did not complete");
        };
        bench::printHeader("synchronisation, " + std::to_string(tasks) + " tasks, replies in memory");
        const double before = peakMemory();
        bench::printFigure("first pull, reply to saved store", bench::secondsFor(run), "s", "<= 3 s");
        bench::printFigure("memory of that, peak above the start", (peakMemory() - before) / 1048576, "MB",
            "<= 200 MB above the store's own");
        const double expat = expatTime(replies.at("getTasks"));
        bench::printRatio("a run with nothing to do (raw: Expat reads the reply)", bench::median(5, run) * 1000,
            expat * 1000, "ms", 1.3);
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
