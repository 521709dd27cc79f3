// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/workplace.h"
#include "sync/sync_host.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

namespace cli {

/// Serves a synchronisation from a terminal: prints what it says, and does on the main thread what it asks to have done
/// there.
///
/// Its functions are called on the thread of the run; `serveUntilEnd` runs on the main thread.
class TerminalSyncHost final : public syncing::SyncHost
{
public:
    /// `acceptDeletions` is the answer to the question whether a mass of deletions shall be carried out.
    TerminalSyncHost(Workplace &workplace, bool acceptDeletions)
        : m_workplace(workplace), m_acceptDeletions(acceptDeletions)
    { }

    /// Does what the run asks for until it has ended; calls `onIdle` several times a second.
    void serveUntilEnd(const std::function<void()> &onIdle);
    /// Whether deletions were asked about and refused.
    [[nodiscard]] bool hasRefusedDeletions() const { return m_hasRefusedDeletions; }

    void presentError(const foundation::Error &error) override;
    void updateStatus(std::string_view text) override;
    void displayAlert(std::string_view title, std::string_view message) override;
    bool allowsDeletions(std::string_view sentence) override;
    void displayNotification(std::string_view title, std::string_view description) override;
    void post(syncing::SyncNotification notification) override;
    void unregisterForChangeNotifications() override;
    void registerForChangeNotifications() override;
    void mergeChanges(objectstore::ChangeSet changes) override;
    void saveAction() override;

private:
    using Work = std::function<void()>;

    void later(Work work);
    void andWait(Work work);
    void print(std::string_view line);

    Workplace &m_workplace;
    const bool m_acceptDeletions;
    bool m_hasRefusedDeletions = false; // written on the run's thread, read after its end
    std::mutex m_mutex;
    std::condition_variable m_called;
    std::deque<Work> m_work;
    std::string m_waitingStatus; ///< the last status from before the run began
    bool m_hasBegun = false;
    bool m_hasEnded = false; ///< main thread only
};

} // namespace cli
