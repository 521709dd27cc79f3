// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sync/sync_session.h"
#include "toodledo/gtd_context.h"

#include <set>
#include <vector>

namespace syncing {

/// The phases of a run that reconcile contexts. Each returns whether it went through; only the run decides what
/// follows.
class ContextPhases
{
public:
    explicit ContextPhases(SyncSession &session) : m_session(session) { }

    /// Makes a context here for each of the service's that is missing.
    bool getNewContexts();
    /// Sends what is new or changed here, takes over what changed there, and deletes here what was deleted there.
    bool sendNewContexts();
    /// Deletes, there and here, the contexts that were marked for it.
    bool sendDeletedContexts();
    /// Deletes here those contexts marked for it that the service no longer has: a run that broke off deleted them
    /// there. Before tasks are compared, which have lost the context there by it.
    void removeThoseDeletedThere();

private:
    using GtdContexts = std::vector<toodledo::GtdContext>;

    [[nodiscard]] std::optional<GtdContexts> listContexts();
    [[nodiscard]] std::optional<std::vector<model::Contexts *>> localContexts();
    [[nodiscard]] model::Contexts *adoptableContext(const toodledo::GtdContext &context);
    void makeContext(const toodledo::GtdContext &context);
    [[nodiscard]] bool isNew(const model::Contexts &context);
    void reconcile(model::Contexts &context, const toodledo::GtdContext &listed);
    void sendEdit(model::Contexts &context, const toodledo::GtdContext &listed);
    void sendNewContext(model::Contexts &context);
    [[nodiscard]] bool deleteAtService(const model::Contexts &context);
    /// Whether a list of this run has it, or none was read.
    [[nodiscard]] bool isListed(std::int64_t contextID) const;
    void adopt(model::Contexts &context, const toodledo::GtdContext &listed);
    void giveId(model::Contexts &context, std::int64_t id);
    void remove(model::Contexts &context);

    SyncSession &m_session;
    std::set<const model::Contexts *> m_sent; ///< in this run
    std::set<std::int64_t> m_listed; ///< the ids of every list of this run, of which some may be old
};

} // namespace syncing
