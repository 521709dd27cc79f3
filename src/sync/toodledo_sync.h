// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/settings.h"
#include "objectstore/store.h"
#include "sync/sync_host.h"
#include "toodledo/http_transport.h"

#include <atomic>
#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

namespace syncing {

inline constexpr const char *syncErrorDomain = "SyncErrorDomain";

/// The codes of errors in `syncErrorDomain`.
enum class SyncErrorCode {
    AlreadyRunning = 1, ///< another run on the same store is under way, here or in another program
    NotLocked = 3, ///< the file that keeps two runs apart cannot be made or written
};

/// How a run ended.
enum class SyncOutcome {
    NotStarted,
    Running,
    Completed, ///< every phase did all its work
    Incomplete, ///< the run went through, but something was refused or failed; the next run makes up for it
    Failed, ///< the login or a first list failed; nothing was exchanged
    Cancelled
};

/// What a run works with; all of it must outlive the run.
struct SyncEnvironment {
    objectstore::Store &store;
    foundation::Settings &settings;
    const foundation::Clock &clock;
    SyncHost &host;
    /// Makes the transport that the run uses, on the run's thread; empty means libcurl as the settings ask.
    std::function<std::unique_ptr<toodledo::HttpTransport>()> makeTransport = {};
};

/// One synchronisation run: pulls and pushes folders, contexts and tasks in a fixed order, on a thread of its own with
/// an object context of its own. Make a fresh one for every run, on the main thread.
///
/// User name, password and address come from the settings. Only one run at a time works on a store, whichever program
/// it is in. Destruction cancels the run and waits for its end; meanwhile the host must go on serving it.
class ToodledoSync
{
public:
    explicit ToodledoSync(SyncEnvironment environment);
    ~ToodledoSync();
    ToodledoSync(const ToodledoSync &) = delete;
    ToodledoSync &operator=(const ToodledoSync &) = delete;

    /// Starts the run and returns at once; fails, with a sentence to show, when one is under way or
    /// nothing can keep another from starting. Called once.
    [[nodiscard]] foundation::Result<void> startSyncTasks();
    /// Ends the run within a second; what was exchanged so far stays.
    void cancel();
    /// Waits for the end of the run.
    void wait();
    /// Any thread may ask.
    [[nodiscard]] SyncOutcome outcome() const { return m_outcome; }

private:
    class RunLock;

    void syncTasks(const std::stop_token &stop);

    SyncEnvironment m_environment;
    std::unique_ptr<RunLock> m_lock;
    std::atomic<SyncOutcome> m_outcome = SyncOutcome::NotStarted;
    std::jthread m_thread; // last: joined before the rest goes
};

} // namespace syncing
