// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "model/data_utilities.h"
#include "sync/sync_host.h"
#include "sync/sync_ledger.h"
#include "toodledo/td_api.h"

#include <map>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace syncing {

/// What came of sending one item.
enum class Sent {
    Confirmed,
    Refused, ///< the service said no; another item may fare better
    Unreachable ///< there was no answer, or no key to ask with
};

/// What the phases of one run share: the context, the client, the ledger, and how errors and stops are dealt with.
///
/// Belongs to the thread of the run. With the guards off it never ends a run early, and takes an operation's result for
/// what it says; with them on, a reply that holds an error is a failure whatever the operation made of it.
class SyncSession : private foundation::ErrorPresenter
{
public:
    struct Parts {
        objectstore::ObjectContext &moc;
        SyncLedger &ledger;
        toodledo::TDApi &client;
        SyncHost &host;
        const foundation::Clock &clock;
        std::optional<foundation::Instant> comparisonDate; ///< the end of the last run; nothing in a first run
        std::stop_token stop;
    };

    explicit SyncSession(Parts parts) : m_parts(std::move(parts)), m_records(m_parts.moc, *this) { }

    [[nodiscard]] objectstore::ObjectContext &moc() { return m_parts.moc; }
    [[nodiscard]] SyncLedger &ledger() { return m_parts.ledger; }
    [[nodiscard]] toodledo::TDApi &client() { return m_parts.client; }
    [[nodiscard]] const model::DataUtilities &records() const { return m_records; }
    [[nodiscard]] bool isGuarding() const { return m_parts.ledger.isGuarding(); }
    [[nodiscard]] foundation::Instant now() const { return m_parts.clock.now(); }

    /// Whether `date` is later than the end of the last run; where nothing tells that end, `inFirstRun`. A record
    /// without a date has not changed.
    [[nodiscard]] bool isLater(std::optional<foundation::Instant> date, bool inFirstRun) const;

    /// Whether the phases shall go no further: the user cancelled, or the service is out of reach.
    [[nodiscard]] bool isOver() const { return m_isOver || m_parts.stop.stop_requested(); }
    void giveUp() { m_isOver = true; }
    /// Whether every record that was looked up could be read; nothing is saved any more once it could not.
    [[nodiscard]] bool hasReadAll() const { return m_hasReadAll; }
    /// Whether something was refused or failed.
    [[nodiscard]] bool isIncomplete() const { return m_isIncomplete; }

    /// Whether the last list can be believed. `error` is what the client said of it; it is shown.
    [[nodiscard]] bool acceptList(bool hasList, const toodledo::TDError &error);
    /// Whether the last request got no answer, so that nothing tells whether it arrived.
    [[nodiscard]] bool isUnanswered() const;
    /// What came of the last operation on an item. A failure is shown, or only logged after the first of a phase.
    Sent acceptItem(bool succeeded, const toodledo::TDError &error, std::string_view title);
    /// Tells that a new phase begins, whose first failure is to be shown again.
    void beginPhase() { m_shownInPhase = 0; }

    /// Saves the context, has the main context merge what was saved, and shows what goes wrong. Nothing is saved after
    /// a record could not be looked up: what follows from "there is none" would double or misplace others.
    bool saveAction();
    /// Saves what is marked as being sent, or gives up: without the mark the next run would send it a second time.
    [[nodiscard]] bool savesWhatIsSent();
    void present(const foundation::Error &error);

    /// Whether `number` of `all` synchronised records may be deleted because a list says so: asks when they are more
    /// than half of them, and three at least, or when the list is empty.
    [[nodiscard]] bool allowsDeletions(std::size_t number, std::size_t all, bool listIsEmpty, std::string_view what);

    // What the run's lists tell of the service's ids; nothing while they could not be had.
    std::optional<std::set<std::int64_t>> listedFolders = {};
    std::optional<std::map<std::string, std::int64_t, std::less<>>> listedContexts = {}; ///< by title

    /// The ids of the folders that were deleted in this run: a list that still has them is an old one.
    std::set<std::int64_t> deletedFolders = {};

    /// The folders and contexts that got an id in this run: what is sent of their tasks has changed by it.
    std::vector<objectstore::ManagedObject *> placesWithNewId = {};

    /// The id of the context of this title: the service's own, else the one that is known here; 0 without any.
    [[nodiscard]] std::int64_t contextByTitle(std::string_view title) const;

private:
    void presentError(const foundation::Error &error) override; // a look-up by `records` failed
    [[nodiscard]] toodledo::TDError failureOf(const toodledo::TDError &error, std::string_view title) const;

    Parts m_parts;
    model::DataUtilities m_records;
    bool m_isOver = false;
    bool m_isIncomplete = false;
    bool m_hasReadAll = true;
    int m_shownInPhase = 0;
};

} // namespace syncing
