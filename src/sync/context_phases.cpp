// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/context_phases.h"

#include "toodledo/td_text.h"

#include <algorithm>

namespace syncing {

using model::Contexts;
using objectstore::ManagedObject;
using toodledo::GtdContext;
using toodledo::isServiceId;
using toodledo::TDError;

namespace {

constexpr std::string_view noneTitle = "None";

GtdContext asSent(const Contexts &context)
{
    return {.contextId = context.contextID(), .title = std::string(context.title())};
}

const GtdContext *withId(const std::vector<GtdContext> &listed, std::int64_t id)
{
    const auto found = std::ranges::find(listed, id, &GtdContext::contextId);
    return found == listed.end() ? nullptr : &*found;
}

bool isDefault(const Contexts &context)
{
    return !objectstore::isNil(context.value("contextID")) && context.contextID() == 0;
}

} // namespace

std::optional<ContextPhases::GtdContexts> ContextPhases::listContexts()
{
    TDError error;
    auto contexts = m_session.client().getContexts(&error);
    if (!m_session.acceptList(contexts.has_value(), error))
        return std::nullopt;
    if (m_session.isGuarding())
        std::erase_if(*contexts, [](const GtdContext &context) { return !isServiceId(context.contextId); });
    m_session.listedContexts.emplace();
    for (const GtdContext &context : *contexts)
        m_session.listedContexts->try_emplace(context.title.value_or(""), context.contextId);
    return contexts;
}

std::optional<std::vector<Contexts *>> ContextPhases::localContexts()
{
    const auto objects = m_session.records().fetch(Contexts::entityName, {});
    if (!objects)
        return std::nullopt;
    std::vector<Contexts *> contexts;
    for (ManagedObject *object : *objects)
        contexts.push_back(model::as<Contexts>(object));
    return contexts;
}

bool ContextPhases::getNewContexts()
{
    const auto listed = listContexts();
    if (!listed)
        return false;
    for (const GtdContext &context : *listed) {
        if (m_session.records().getContextById(context.contextId) || context.title == noneTitle)
            continue;
        if (Contexts *adopted = adoptableContext(context))
            adopt(*adopted, context);
        else
            makeContext(context);
    }
    return true;
}

/// What was sent is what both sides agree on: an edit made since is this side's.
void ContextPhases::adopt(Contexts &context, const GtdContext &listed)
{
    const ContentMark content = contentOf(listed);
    if (m_session.ledger().isUnanswered(context, content))
        m_session.ledger().agree(context, {content}, content);
    giveId(context, listed.contextId);
}

void ContextPhases::giveId(Contexts &context, std::int64_t id)
{
    context.setContextID(id);
    m_session.placesWithNewId.push_back(&context);
}

/// A context that was sent, whose id got lost on the way back.
Contexts *ContextPhases::adoptableContext(const GtdContext &context)
{
    if (!m_session.isGuarding())
        return nullptr;
    const auto contexts = localContexts().value_or(std::vector<Contexts *>());
    const auto found = std::ranges::find_if(contexts, [this, &context](const Contexts *local) {
        if (isServiceId(local->contextID()) || isDefault(*local))
            return false;
        return m_session.ledger().isUnanswered(*local, contentOf(context))
            || (local->title() == context.title.value_or("") && !local->markedForDeletion());
    });
    return found == contexts.end() ? nullptr : *found;
}

void ContextPhases::makeContext(const GtdContext &context)
{
    Contexts &made = model::insert<Contexts>(m_session.moc());
    made.setContextID(context.contextId);
    made.setTitle(context.title.value_or(""));
    m_session.ledger().agree(made, {contentOf(context)}, contentOf(asSent(made)));
    m_session.moc().processPendingChanges();
    m_session.saveAction(); // what goes wrong is shown, and the others are still made
}

bool ContextPhases::sendNewContexts()
{
    m_session.beginPhase();
    const auto listed = listContexts();
    if (!listed)
        return false;
    const auto contexts = localContexts();
    if (!contexts)
        return false;
    std::vector<Contexts *> deletedThere;
    std::size_t synchronised = 0;
    for (Contexts *context : *contexts) {
        if (m_session.isOver())
            return false;
        if (isDefault(*context) || (m_session.isGuarding() && context->markedForDeletion()))
            continue;
        synchronised += isServiceId(context->contextID()) ? 1 : 0;
        if (const GtdContext *match = withId(*listed, context->contextID()))
            reconcile(*context, *match);
        else if (context->title() == noneTitle)
            continue;
        else if (isNew(*context))
            sendNewContext(*context);
        else
            deletedThere.push_back(context);
    }
    if (m_session.isGuarding()
        && !m_session.allowsDeletions(deletedThere.size(), synchronised, listed->empty(), "contexts"))
        return false;
    for (Contexts *context : deletedThere)
        remove(*context);
    return true;
}

/// Whether a context that the service does not list has never been there; else it was deleted there.
bool ContextPhases::isNew(const Contexts &context)
{
    if (m_session.isGuarding() && (!isServiceId(context.contextID()) || m_session.ledger().isKnown(context)))
        return !isServiceId(context.contextID());
    return m_session.isLater(context.date("creationDate"), true);
}

void ContextPhases::reconcile(Contexts &context, const GtdContext &listed)
{
    const ContentMark server = contentOf(listed);
    const ContentMark local = contentOf(asSent(context));
    const Change change = m_session.ledger().compare(context, {server}, local);
    const bool same
        = change == Change::None || (change == Change::Unknown && context.title() == listed.title.value_or(""));
    if (same) {
        m_session.ledger().agree(context, {server}, local);
    } else if (change == Change::Local
        || (change == Change::Unknown && m_session.isLater(context.modifiedDate(), true))) {
        m_session.ledger().noteListed(context, {server});
        sendEdit(context, listed);
    } else {
        context.setTitle(listed.title.value_or(""));
        m_session.ledger().agree(context, {server}, contentOf(asSent(context)));
    }
}

void ContextPhases::sendEdit(Contexts &context, const GtdContext &listed)
{
    GtdContext edited = asSent(context);
    edited.contextId = listed.contextId;
    const ContentMark content = contentOf(edited);
    if (m_session.isGuarding()) {
        m_session.ledger().beginSending(context, content);
        if (!m_session.savesWhatIsSent())
            return;
    }
    TDError error;
    const bool succeeded = m_session.client().editContext(edited, m_session.isGuarding() ? &error : nullptr);
    if (m_session.acceptItem(succeeded, error, context.title()) == Sent::Confirmed)
        m_session.ledger().agree(context, {content}, content);
}

void ContextPhases::sendNewContext(Contexts &context)
{
    TDError error;
    const GtdContext added = asSent(context);
    if (m_session.isGuarding()) {
        m_session.ledger().beginSending(context, contentOf(added));
        if (!m_session.savesWhatIsSent())
            return;
        m_sent.insert(&context);
    }
    const std::int64_t id = m_session.client().addContext(added, &error);
    const Sent sent = m_session.acceptItem(id != -1, error, context.title());
    if (!m_session.isGuarding()) {
        context.setContextID(id);
        m_session.moc().processPendingChanges();
    } else if (sent == Sent::Confirmed && isServiceId(id)) {
        giveId(context, id);
        m_session.ledger().agree(context, {contentOf(added)}, contentOf(added));
        m_session.saveAction(); // at once: an id that is lost makes a second context of it
    }
}

bool ContextPhases::sendDeletedContexts()
{
    m_session.beginPhase();
    const auto marked = m_session.records().getRecordsWithPredicate(Contexts::entityName, "markedForDeletion==YES");
    if (!marked)
        return false;
    for (ManagedObject *object : *marked) {
        Contexts &context = *model::as<Contexts>(object);
        if (m_session.isOver())
            return false;
        if (deleteAtService(context))
            remove(context);
    }
    return true;
}

void ContextPhases::removeThoseDeletedThere()
{
    const auto marked = m_session.records().getRecordsWithPredicate(Contexts::entityName, "markedForDeletion==YES");
    if (!m_session.isGuarding() || !marked)
        return;
    for (ManagedObject *object : *marked) {
        Contexts &context = *model::as<Contexts>(object);
        if (isServiceId(context.contextID()) && !isListed(context.contextID()))
            remove(context);
    }
}

/// Whether the context may now go here. Without guards it goes whatever the service says.
bool ContextPhases::deleteAtService(const Contexts &context)
{
    const GtdContext deleted = asSent(context);
    if (!m_session.isGuarding()) {
        static_cast<void>(m_session.client().deleteContext(deleted));
        return true;
    }
    const bool wasJustSent = m_sent.contains(&context);
    if (!isServiceId(deleted.contextId))
        return !wasJustSent; // else it may be there under an id that only the next run's list tells
    if (!wasJustSent && !isListed(deleted.contextId))
        return true;
    TDError error;
    const bool succeeded = m_session.client().deleteContext(deleted, &error);
    return m_session.acceptItem(succeeded, error, context.title()) == Sent::Confirmed;
}

bool ContextPhases::isListed(std::int64_t contextID) const
{
    return !m_session.listedContexts || std::ranges::any_of(*m_session.listedContexts, [contextID](const auto &listed) {
        return listed.second == contextID;
    });
}

/// Deletes the context here; its tasks go to the default one, where they stay in sight.
void ContextPhases::remove(Contexts &context)
{
    Contexts *none = m_session.records().getContextByTitle(noneTitle);
    for (ManagedObject *task : std::vector<ManagedObject *>(context.tasks()))
        task->setRelated("contexts", none == &context ? nullptr : none);
    m_session.ledger().placeIsGone(Place::Context, context.contextID());
    m_session.ledger().forget(context);
    m_session.moc().remove(context);
}

} // namespace syncing
