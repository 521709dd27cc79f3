// SPDX-License-Identifier: GPL-3.0-or-later
// A first pull and a run with nothing to do, from replies that lie in memory: the engine's own cost.
#include "generator.h"
#include "measure.h"
#include "silent_host.h"

#include "foundation/clock.h"
#include "model/settings_defaults.h"
#include "sync/toodledo_sync.h"

#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <map>
#include <stdexcept>
#include <sys/resource.h>

namespace {

std::string methodOf(const std::string &url)
{
    const std::size_t from = url.find("method=") + 7;
    return url.substr(from, url.find(';', from) - from);
}

/// Answers each method with the same text, in the pieces that a network would bring.
class CannedTransport final : public toodledo::HttpTransport
{
public:
    explicit CannedTransport(const std::map<std::string, std::string> &replies) : m_replies(replies) { }
    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        const auto found = m_replies.find(methodOf(request.url));
        if (found == m_replies.end())
            throw std::runtime_error("no reply for " + request.url.substr(0, 80));
        const std::string_view reply = found->second;
        for (std::size_t i = 0; i < reply.size(); i += 16384)
            body.receive(reply.substr(i, 16384));
        return toodledo::HttpReply{200, "text/xml"};
    }

private:
    const std::map<std::string, std::string> &m_replies;
};

std::string listOfTasks(int number, unsigned state)
{
    std::string xml = "<tasks>";
    for (int i = 1; i <= number; ++i) {
        const auto pick = [&state](unsigned of) {
            state = state * 1664525U + 1013904223U;
            return (state >> 8U) % of;
        };
        xml += "<task><id>" + std::to_string(i) + "</id><parent>0</parent><children>0</children><title>"
            + bench::words(38, state) + "</title><tag>tag " + std::to_string(pick(300)) + ",tag "
            + std::to_string(pick(300)) + "</tag><folder>" + std::to_string(pick(200) + 1)
            + "</folder><context id=\"1\">Context " + std::to_string(pick(100) + 1)
            + "</context><goal id=\"0\"></goal><added>2026-01-23</added><modified>2026-01-25 "
              "05:12:45</modified><startdate>"
            + (pick(3) == 0 ? "2026-02-01" : "") + "</startdate><starttime></starttime><duedate modifier=\"\">"
            + (pick(3) == 0 ? "2026-12-01" : "") + "</duedate><duetime></duetime><reminder>0</reminder><completed>"
            + (pick(10) < 7 ? "2026-01-25" : "") + "</completed><repeat>0</repeat><rep_advanced></rep_advanced><status>"
            + std::to_string(pick(11)) + "</status><star>" + std::to_string(pick(2)) + "</star><priority>"
            + std::to_string(pick(4)) + "</priority><length>" + std::to_string(pick(3) * 10)
            + "</length><timer onfor=\"0\">0</timer><note>" + (pick(10) < 4 ? bench::words(198, state) : std::string())
            + "</note></task>";
    }
    return xml + "</tasks>";
}

std::map<std::string, std::string> repliesFor(int tasks)
{
    std::string folders = "<folders>";
    for (int i = 1; i <= 200; ++i)
        folders += "<folder id=\"" + std::to_string(i) + "\" private=\"0\" archived=\"0\" order=\"1\">Folder "
            + std::to_string(i) + "</folder>";
    std::string contexts = "<contexts>";
    for (int i = 1; i <= 100; ++i)
        contexts += "<context id=\"" + std::to_string(i) + "\">Context " + std::to_string(i) + "</context>";
    return {{"getUserid", "<userid>a1b2c3</userid>"}, {"getToken", "<token>td1</token>"},
        {"getServerInfo", "<server><unixtime>1790000000</unixtime></server>"},
        {"getAccountInfo", "<account><userid>a1b2c3</userid><pro>0</pro><timezone>0</timezone></account>"},
        {"getFolders", folders + "</folders>"}, {"getContexts", contexts + "</contexts>"},
        {"getTasks", listOfTasks(tasks, 7)}, {"getDeleted", "<deleted></deleted>"}};
}

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
        const auto replies = repliesFor(tasks);
        foundation::MemorySettingsFile file;
        foundation::Settings settings(file, model::settingsDefaults());
        settings.set("ToodledoHost", std::string("127.0.0.1"));
        const foundation::SystemClock clock;
        bench::SilentHost host;
        const auto run = [&] {
            syncing::ToodledoSync sync(
                {made->store(), settings, clock, host, [&] { return std::make_unique<CannedTransport>(replies); }});
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
