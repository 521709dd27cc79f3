// SPDX-License-Identifier: GPL-3.0-or-later
#include "faults/isolated.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace faults {

namespace {

constexpr unsigned deadline = 120; // seconds; a case takes milliseconds, so this tells a hang on the slowest machine

Notes &sharedNotes()
{
    static Notes *shared = [] {
        void *memory = ::mmap(nullptr, sizeof(Notes), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw std::runtime_error("no shared memory");
        return static_cast<Notes *>(memory);
    }();
    return *shared;
}

} // namespace

void Notes::problem(std::string_view text)
{
    const std::size_t used = std::strlen(problems.data());
    const std::size_t room = problems.size() - used - 2;
    const std::size_t length = std::min(text.size(), room);
    std::memcpy(problems.data() + used, text.data(), length);
    if (length > 0)
        problems[used + length] = '\n';
}

Ending isolated(const std::function<void(Notes &)> &work, const Notes &before)
{
    Notes &notes = *new (&sharedNotes()) Notes(before);
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no child process");
    if (child == 0) {
        ::alarm(deadline);
        try {
            work(notes);
            notes.finished = true;
        } catch (const std::exception &exception) {
            notes.problem(std::string("exception: ") + exception.what());
        }
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    Ending ending{notes, WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, {}};
    if (WIFSIGNALED(status) && !ending.killed)
        ending.crash = WTERMSIG(status) == SIGALRM ? "hung" : "signal " + std::to_string(WTERMSIG(status));
    else if (WIFEXITED(status) && WEXITSTATUS(status) != 0)
        ending.crash = "exit status " + std::to_string(WEXITSTATUS(status));
    return ending;
}

} // namespace faults
