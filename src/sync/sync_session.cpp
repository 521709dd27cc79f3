// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/sync_session.h"

#include "foundation/log.h"

namespace syncing {

using foundation::Error;
using toodledo::TDError;

namespace {
constexpr std::string_view keyRefusal = "key did not validate";
constexpr std::size_t fenceFrom = 3; // fewer deletions than these are carried out without a question
} // namespace

bool SyncSession::isLater(std::optional<foundation::Instant> date, bool inFirstRun) const
{
    if (!m_parts.comparisonDate)
        return inFirstRun;
    return date && *date > *m_parts.comparisonDate;
}

/// The error to show: the client's own, or one made of the reply where the client took a refusal for a success.
TDError SyncSession::failureOf(const TDError &error, std::string_view title) const
{
    if (error)
        return error;
    const toodledo::TDReply &reply = m_parts.client.lastReply();
    TDError failure{toodledo::toodledoApiErrorDomain, 30, {}, {}};
    if (reply.failure)
        failure.detail = reply.failure->detail;
    if (reply.errorText == keyRefusal)
        failure.message = "Too many synchronizations in the past hour. Please wait an hour and try again.";
    else if (title.empty())
        failure.message = "The service's answer could not be understood. " + reply.errorText;
    else
        failure.message = "The service did not take \"" + std::string(title) + "\". " + reply.errorText;
    return failure;
}

std::int64_t SyncSession::contextByTitle(std::string_view title) const
{
    // One that was renamed here goes by its old name there.
    if (isGuarding() && listedContexts) {
        if (const auto listed = listedContexts->find(title); listed != listedContexts->end())
            return listed->second;
    }
    // And one whose new name an old list does not have yet goes by that among the tasks already.
    const model::Contexts *context = m_records.getContextByTitle(title);
    return context ? context->contextID() : 0;
}

bool SyncSession::acceptList(bool hasList, const TDError &error)
{
    const bool refused = isGuarding() && m_parts.client.lastReplyWasRefused();
    if (!error && hasList && !refused)
        return true;
    m_isIncomplete = true;
    if (error || isGuarding())
        present(failureOf(error, {}));
    return false;
}

bool SyncSession::isUnanswered() const
{
    const auto &failure = m_parts.client.lastReply().failure;
    return failure && failure->domain == toodledo::httpErrorDomain;
}

Sent SyncSession::acceptItem(bool succeeded, const TDError &error, std::string_view title)
{
    const toodledo::TDReply &reply = m_parts.client.lastReply();
    if (!isGuarding()) {
        m_isIncomplete = m_isIncomplete || error || !succeeded;
        if (error)
            present(error);
        return error ? Sent::Refused : Sent::Confirmed;
    }
    if (succeeded && !error && !reply.wasRefused)
        return Sent::Confirmed;
    m_isIncomplete = true;
    const bool withoutKey = !m_parts.client.currentKey() || reply.errorText == keyRefusal;
    const bool unreachable = withoutKey || isUnanswered();
    const TDError failure = failureOf(error, title);
    // A service that refuses hundreds of items must not make the user dismiss hundreds of alerts.
    if (unreachable || m_shownInPhase++ == 0)
        present(failure);
    else
        foundation::logLine(failure.message + " " + failure.detail);
    if (unreachable)
        giveUp();
    return unreachable ? Sent::Unreachable : Sent::Refused;
}

void SyncSession::presentError(const Error &error)
{
    present(error);
    if (!isGuarding())
        return;
    m_hasReadAll = false;
    giveUp();
}

bool SyncSession::saveAction()
{
    if (!m_hasReadAll)
        return false;
    m_parts.ledger.write();
    auto saved = m_parts.moc.save();
    if (!saved) {
        m_isIncomplete = true;
        foundation::logLine("Failed to save to data store: " + saved.error().message);
        foundation::logLine("  " + saved.error().detail);
        m_parts.host.presentError(saved.error());
        return false;
    }
    for (const objectstore::DiscardedValue &discarded : saved->discarded)
        foundation::logLine("A value of the service for " + discarded.property + " of "
            + m_parts.moc.store().uri(discarded.object) + " gave way to one entered here.");
    if (!saved->changes.isEmpty())
        m_parts.host.mergeChanges(std::move(saved->changes));
    return true;
}

bool SyncSession::savesWhatIsSent()
{
    const bool isSaved = saveAction();
    if (!isSaved)
        giveUp();
    return isSaved;
}

void SyncSession::present(const Error &error)
{
    m_isIncomplete = true;
    if (!m_parts.stop.stop_requested()) // what a cancelled request says is no news
        m_parts.host.presentError(error);
}

bool SyncSession::allowsDeletions(std::size_t number, std::size_t all, bool listIsEmpty, std::string_view what)
{
    if (number == 0 || (!listIsEmpty && (number < fenceFrom || number * 2 <= all)))
        return true;
    const bool isAllowed = m_parts.host.allowsDeletions("The service says that " + std::to_string(number) + " of your "
        + std::to_string(all) + " " + std::string(what) + " were deleted there. Delete them here too?");
    m_isIncomplete = m_isIncomplete || !isAllowed;
    return isAllowed;
}

} // namespace syncing
