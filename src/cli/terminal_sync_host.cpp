// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/terminal_sync_host.h"

#include "cli/text.h"

#include <chrono>
#include <future>

namespace cli {

using namespace std::chrono_literals;

void TerminalSyncHost::later(Work work)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    m_called.notify_one();
}

void TerminalSyncHost::andWait(Work work)
{
    // shared: the one who waits may go on before the other has left set_value
    const auto done = std::make_shared<std::promise<void>>();
    later([done, work = std::move(work)] {
        work();
        done->set_value();
    });
    done->get_future().wait();
}

void TerminalSyncHost::serveUntilEnd(const std::function<void()> &onIdle)
{
    while (!m_hasEnded) {
        Work work;
        {
            std::unique_lock lock(m_mutex);
            m_called.wait_for(lock, 100ms, [this] { return !m_work.empty(); });
            if (!m_work.empty()) {
                work = std::move(m_work.front());
                m_work.pop_front();
            }
        }
        onIdle();
        if (work)
            work();
    }
}

/// One line at once, so that progress is seen while it happens.
void TerminalSyncHost::print(std::string_view line)
{
    m_workplace.out += printable(line) + "\n";
    (void)m_workplace.flush(); // a reader that has gone away does not stop a synchronisation
}

void TerminalSyncHost::presentError(const foundation::Error &error)
{
    andWait([&] { m_workplace.presentError(error); });
}

void TerminalSyncHost::updateStatus(std::string_view text)
{
    // Before the run begins, statuses follow one another at once, and only the last of them says something.
    if (!m_hasBegun)
        m_waitingStatus = text;
    else if (!text.empty())
        later([this, line = std::string(text)] { print(line); });
}

void TerminalSyncHost::displayAlert(std::string_view title, std::string_view message)
{
    andWait([&] { complain(std::string(title) + ": " + std::string(message)); });
}

bool TerminalSyncHost::allowsDeletions(std::string_view sentence)
{
    m_hasRefusedDeletions = m_hasRefusedDeletions || !m_acceptDeletions;
    andWait([&] {
        complain(std::string(sentence)
            + (m_acceptDeletions ? " Yes, as --accept-deletions says."
                                 : " No; with --accept-deletions the answer is yes."));
    });
    return m_acceptDeletions;
}

void TerminalSyncHost::displayNotification(std::string_view, std::string_view description)
{
    if (m_hasBegun)
        later([this, line = std::string(description)] { print(line); });
}

void TerminalSyncHost::post(syncing::SyncNotification notification)
{
    if (notification == syncing::SyncNotification::QVLSyncDidBegin) {
        m_hasBegun = true;
        updateStatus(m_waitingStatus);
    } else {
        later([this] { m_hasEnded = true; });
    }
}

void TerminalSyncHost::unregisterForChangeNotifications()
{
    andWait([this] { m_workplace.tracking().unregisterForChangeNotifications(); });
}

void TerminalSyncHost::registerForChangeNotifications()
{
    andWait([this] { m_workplace.tracking().registerForChangeNotifications(); });
}

void TerminalSyncHost::mergeChanges(objectstore::ChangeSet changes)
{
    later([this, changes = std::move(changes)] {
        if (auto moc = m_workplace.context())
            (*moc)->mergeChanges(changes);
    });
}

void TerminalSyncHost::saveAction()
{
    if (auto saved = m_workplace.save(); !saved)
        m_workplace.presentError(saved.error()); // on the main thread already
}

} // namespace cli
