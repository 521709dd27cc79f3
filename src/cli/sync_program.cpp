// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/run.h"
#include "cli/terminal_sync_host.h"
#include "cli/workplace.h"
#include "keyring/keyring.h"
#include "sync/toodledo_sync.h"

#include <array>
#include <csignal>

namespace cli {

using foundation::Failure;
using syncing::SyncOutcome;

namespace {

volatile std::sig_atomic_t wantsToStop = 0;

void noteWishToStop(int)
{
    wantsToStop = 1;
}

/// Lets Ctrl-C end a run in good order while it lives; a second one ends the program at once.
class InterruptionByUser
{
public:
    InterruptionByUser()
    {
        wantsToStop = 0;
        struct sigaction action = {};
        action.sa_handler = noteWishToStop;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        for (std::size_t i = 0; i < signals.size(); ++i)
            ::sigaction(signals[i], &action, &m_before[i]);
    }
    InterruptionByUser(const InterruptionByUser &) = delete;
    InterruptionByUser &operator=(const InterruptionByUser &) = delete;
    ~InterruptionByUser()
    {
        for (std::size_t i = 0; i < signals.size(); ++i)
            ::sigaction(signals[i], &m_before[i], nullptr);
    }

private:
    static constexpr std::array<int, 2> signals{SIGINT, SIGTERM};
    std::array<struct sigaction, 2> m_before{};
};

Done conclusion(SyncOutcome outcome, bool hasRefusedDeletions)
{
    const bool wentThrough = outcome == SyncOutcome::Completed || outcome == SyncOutcome::Incomplete;
    if (wentThrough && hasRefusedDeletions)
        return failed("The deletions were not carried out; the rest was synchronised.");
    switch (outcome) {
    case SyncOutcome::Completed:
        return {};
    case SyncOutcome::Incomplete:
        return failed(
            "The synchronisation went through, but not everything was exchanged; the next one makes up for it.");
    case SyncOutcome::Cancelled:
        return failed("The synchronisation was cancelled.");
    default:
        return failed("The synchronisation failed; nothing was exchanged.");
    }
}

Done exchange(Workplace &workplace, const Arguments &arguments)
{
    auto store = workplace.store();
    if (!store)
        return Failure(std::move(store.error()));
    TerminalSyncHost host(workplace, arguments.has("accept-deletions"));
    syncing::ToodledoSync run({(*store)->store(), workplace.settings(), workplace.clock(), host});
    const InterruptionByUser interruption;
    if (auto started = run.startSyncTasks(); !started)
        return started;
    host.serveUntilEnd([&run] {
        if (wantsToStop != 0)
            run.cancel();
    });
    run.wait();
    return conclusion(run.outcome(), host.hasRefusedDeletions());
}

} // namespace
} // namespace cli

int main(int count, char **words)
{
    const std::array commands{cli::syncCommand(cli::exchange), cli::settingsCommand()};
    return cli::runProgram(count, words, commands, [](const std::filesystem::path &settingsFile) {
        return std::unique_ptr<foundation::SecretStore>(std::make_unique<keyring::Keyring>(settingsFile));
    });
}
