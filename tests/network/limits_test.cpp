// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/operations.h"
#include "objectstore/predicate.h"
#include "support/repeated.h"
#include "support/scripted_http_server.h"
#include "toodledo/curl_transport.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace network;
using support::repeated;
using testing_support::ScriptedHttpServer;
using testing_support::ScriptedReply;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsOurs = false; // a sanitizer holds on to what was freed
#else
constexpr bool memoryIsOurs = true;
#endif

constexpr long memoryLimit = 100 * 1024; // KiB

/// The most memory that this process ever held, in KiB; for a new child, what it holds.
long mostMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    return 0;
}

/// How many KiB more than before a child process held at most while it did `work`; -1 when it did not end well.
/// `work` tells whether all went as it should. Under a sanitizer there is no child and nothing is measured: a process
/// that forks while a thread of it allocates gets a child that cannot.
template <typename Work> long memoryFor(const char *name, Work work)
{
    if (!memoryIsOurs)
        return work() ? 0 : -1;
    int ends[2];
    if (::pipe(ends) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        ::malloc_trim(0); // what earlier tests left free would hide what is taken
        const long before = mostMemory();
        const bool good = work();
        const long more = good ? mostMemory() - before : -1;
        ::_exit(::write(ends[1], &more, sizeof more) == sizeof more ? 0 : 1);
    }
    ::close(ends[1]);
    long more = -1;
    const bool told = ::read(ends[0], &more, sizeof more) == sizeof more;
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    std::printf("%s: %ld MiB\n", name, more / 1024);
    return told && status == 0 ? more : -1;
}

template <typename Work> void expectLittleMemory(const char *name, Work work, long limit = memoryLimit)
{
    const long memory = memoryFor(name, work);
    EXPECT_GE(memory, 0) << name;
    EXPECT_LE(memory, limit) << name;
}

/// Whether a client that asks for tasks is told of a failure, or given the one title that `title` says.
bool asksForTasks(const std::string &host, std::size_t titleSize = 0)
{
    toodledo::CurlTransport transport(toodledo::CurlTransport::Options{});
    Bench bench(host, transport);
    const auto tasks = bench.client().getTasks();
    if (titleSize == 0)
        return !tasks || bench.client().lastReplyWasRefused();
    return tasks && tasks->size() == 1 && tasks->front().title.value_or("").size() == titleSize;
}

} // namespace

TEST(Limits, F28_aReplyWithoutEndTakesLittleMemory)
{
    constexpr long longestList = 128 * 1024; // KiB: what a quarter of a million true tasks take before their texts
    struct Case {
        const char *name;
        std::string start;
        std::string more;
        long limit = memoryLimit;
    };
    const std::vector<Case> cases{
        {"blanks", "<tasks>", " "},
        {"text", "<tasks><task><title>", "text "},
        {"tags", "<tasks><task><tag>", "a,"},
        {"tasks", "<tasks>", "<task/>", longestList},
        {"tasks with titles", "<tasks>", "<task><title>a title that is not short</title></task>", longestList},
        {"errors", "<tasks>", "<error/>"},
        {"attributes", "<tasks><task", " a='b'"},
        {"different attributes", "<tasks><task a='", "bbbbbbbbbbbb"},
        {"comment", "<tasks><!--", "comment "},
        {"name", "<tasks><", "name"},
    };
    for (const Case &one : cases) {
        const ScriptedHttpServer server([&one](const std::string &) {
            const std::string more = repeated(one.more, 100'000 / one.more.size());
            return ScriptedReply{.body = one.start, .mode = ScriptedReply::Mode::Endless, .more = more};
        });
        expectLittleMemory(
            one.name, [&] { return asksForTasks(server.host()); }, one.limit);
    }
}

TEST(Limits, longTextsAreReadOrRefused)
{
    std::size_t size = 0;
    const ScriptedHttpServer server([&size](const std::string &) {
        return ScriptedReply{.body = "<tasks><task><title>" + std::string(size, 'x') + "</title></task></tasks>"};
    });
    size = 20'000'000;
    expectLittleMemory("a title of 20 MB", [&] { return asksForTasks(server.host()); });
    size = 10'000'000;
    expectLittleMemory("a title of 10 MB", [&] { return asksForTasks(server.host(), size); });
    expectLittleMemory("a title of 10 MB to send", [&] {
        toodledo::CurlTransport transport(toodledo::CurlTransport::Options{});
        Bench bench(server.host(), transport);
        toodledo::GtdTask task;
        task.title = std::string(size, ';');
        toodledo::TDError error;
        return bench.client().addTask(task, &error) == -1 && error;
    });
}

TEST(Limits, F35_markupNestedWithoutReasonIsRefused)
{
    const ScriptedHttpServer server(
        [](const std::string &) { return ScriptedReply{.body = "<tasks>" + repeated("<task>", 1'000'000)}; });
    expectLittleMemory("elements nested 1,000,000 deep", [&] { return asksForTasks(server.host()); });
}

TEST(Limits, F50_hugePredicatesAreRefused)
{
    using objectstore::Predicate;
    const auto isRefused = [](const std::string &text) { return !Predicate::parse(text).has_value(); };
    constexpr std::size_t count = 100'000;
    const struct {
        const char *name;
        std::string text;
    } cases[]{
        {"100,000 comparisons", repeated("pages == 1 AND ", count) + "pages == 1"},
        {"100,000 negations", repeated("NOT ", count) + "pages == 1"},
        {"100,000 parentheses", repeated("(", count) + "pages == 1" + repeated(")", count)},
        {"100,000 open parentheses", repeated("(", count)},
        {"100,000 values", "pages IN {" + repeated("1, ", count) + "1}"},
        {"100,000 sums", "pages == " + repeated("1 + ", count) + "1"},
        {"100,000 sums in parentheses", "pages == " + repeated("(1 + ", count) + "1" + repeated(")", count)},
        {"100,000 functions", "bought == " + repeated("DATE(", count) + "1" + repeated(")", count)},
    };
    for (const auto &one : cases)
        expectLittleMemory(one.name, [&] { return isRefused(one.text); });

    expectLittleMemory("an archive of 1,000,000 levels", [] {
        std::string bytes("QPRD\1", 5);
        bytes += repeated(std::string_view("\4\1\0\0\0\0\0\0\0", 9), 1'000'000);
        return !objectstore::fromArchive(std::as_bytes(std::span(bytes.data(), bytes.size()))).has_value();
    });
}
