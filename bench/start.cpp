// SPDX-License-Identifier: GPL-3.0-or-later
// What a command that does one thing waits for: a fresh process that opens the store, inserts one task and saves.
#include "generator.h"
#include "measure.h"

#include "foundation/clock.h"

#include <cstdio>
#include <cstring>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

extern char **environ; // NOLINT: POSIX names it so

namespace {

class Presenter final : public foundation::ErrorPresenter
{
public:
    void presentError(const foundation::Error &error) override { throw std::runtime_error(error.message); }
};

void insertOne(const std::filesystem::path &folder)
{
    const foundation::SystemClock clock;
    Presenter presenter;
    const auto store = model::TaskStore::open(folder, clock, presenter);
    if (!store)
        throw std::runtime_error(store.error().message);
    (*store)->managedObjectContext().insert("Tasks");
    if (const auto saved = (*store)->managedObjectContext().save(); !saved)
        throw std::runtime_error(saved.error().message);
}

void run(const char *program, const char *mode, const char *folder)
{
    const std::array<const char *, 4> arguments{program, mode, folder, nullptr};
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, program, nullptr, nullptr, const_cast<char **>(arguments.data()), environ) != 0
        || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("a child process failed");
}

} // namespace

int main(int count, char **arguments)
{
    try {
        if (count == 3 && std::strcmp(arguments[1], "nothing") == 0)
            return 0;
        if (count == 3 && std::strcmp(arguments[1], "insert") == 0) {
            insertOne(arguments[2]);
            return 0;
        }
        const bench::Workplace workplace;
        (void)bench::generate(workplace.path(), {.tasks = 100000});
        const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
        const std::string folder = workplace.path().string();
        bench::printHeader("a fresh process over 100,000 tasks");
        const auto pair = bench::alternate(
            101, [&] { run(program.c_str(), "insert", folder.c_str()); },
            [&] { run(program.c_str(), "nothing", folder.c_str()); }, bench::secondsFor);
        bench::printFigure("start and end, without a store", pair.raw * 1000, "ms", "");
        bench::printFigure(
            "open, insert one task, save and end, beyond that", (pair.ours - pair.raw) * 1000, "ms", "< 5 ms");
        return 0;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
