// SPDX-License-Identifier: GPL-3.0-or-later
// The phases that send: edits, new tasks, deletions.
#include "sync/task_phases.h"

#include "model/task_queries.h"
#include "toodledo/td_text.h"

#include <algorithm>
#include <map>
#include <span>

namespace syncing {

using model::Tasks;
using objectstore::ManagedObject;
using toodledo::GtdTask;
using toodledo::isServiceId;
using toodledo::TDError;

namespace {

/// As many sends at most are marked by one save; so a crash leaves at most so many that the next list has to explain.
constexpr std::size_t longestBatch = 128;

/// One item, then twice as many each time: of a few sends a crash finds nearly all noted, and many need few saves.
template <class Item> std::vector<std::span<Item>> inBatches(std::vector<Item> &items)
{
    std::vector<std::span<Item>> batches;
    for (std::size_t from = 0; from < items.size(); from += batches.back().size())
        batches.push_back(std::span(items).subspan(from, std::min({longestBatch, from + 1, items.size() - from})));
    return batches;
}

} // namespace

bool TaskPhases::sendEdits(std::vector<Edit> edits)
{
    for (const std::span<Edit> batch : inBatches(edits)) {
        if (m_session.isGuarding()) {
            for (const Edit &edit : batch)
                m_session.ledger().beginSending(*edit.task, edit.content, edit.sent.folder, edit.sent.context);
            if (!m_session.savesWhatIsSent())
                return false;
        }
        for (Edit &edit : batch) {
            if (m_session.isOver())
                return false;
            sendEdit(edit);
        }
    }
    return true;
}

void TaskPhases::sendEdit(Edit &edit)
{
    TDError error;
    const bool succeeded = m_session.client().editTask(edit.sent, &error);
    if (m_session.acceptItem(succeeded, error, edit.task->title()) == Sent::Confirmed)
        m_session.ledger().agree(*edit.task, {edit.content, {}, edit.sent.folder, edit.sent.context}, edit.content);
}

bool TaskPhases::sendLateEdits()
{
    std::map<std::int64_t, Tasks *> changed; // by id
    const auto consider = [&changed](Tasks *task) {
        if (isServiceId(task->taskID()) && !task->deleteOnSync())
            changed.emplace(task->taskID(), task);
    };
    std::ranges::for_each(m_adopted, consider);
    for (ManagedObject *place : m_session.placesWithNewId) {
        for (ManagedObject *task : place->objects("tasks"))
            consider(model::as<Tasks>(task));
    }
    if (changed.empty())
        return true;
    std::vector<Edit> edits;
    for (const GtdTask &listed : m_tdTasks) {
        const auto found = changed.find(listed.taskId);
        if (found == changed.end())
            continue;
        GtdTask sent = asSent(*found->second);
        const ContentMark content = contentOf(sent);
        if (!m_session.ledger().isChangedHere(*found->second, content))
            continue;
        keepWhatIsNotCarried(sent, listed);
        edits.push_back({found->second, std::move(sent), content});
    }
    return sendEdits(std::move(edits));
}

bool TaskPhases::sendNewTasks()
{
    m_session.beginPhase();
    const auto created = m_session.moc().fetch({.entity = "Tasks",
        .predicate = objectstore::Predicate::format("(isNew==%@) && (deleteOnSync=NO)", {std::int64_t{1}}),
        .sortDescriptors = {}});
    if (!created) {
        m_session.present(created.error());
        return false;
    }
    const auto isUnanswered = [this](const ManagedObject *task) { return m_session.ledger().isAddUnanswered(*task); };
    if (std::ranges::any_of(*created, isUnanswered) && !lookAgainForUnanswered())
        return false;
    std::vector<Edit> additions;
    for (ManagedObject *object : *created) {
        auto &task = *model::as<Tasks>(object);
        if (!task.isNew())
            continue; // no longer
        GtdTask sent = asSent(task);
        const ContentMark content = contentOf(asAdded(sent));
        additions.push_back({&task, std::move(sent), content});
    }
    bool wentThrough = true;
    for (const std::span<Edit> batch : inBatches(additions)) {
        if (m_session.isGuarding()) {
            for (const Edit &addition : batch)
                m_session.ledger().beginSending(
                    *addition.task, addition.content, addition.sent.folder, addition.sent.context);
            if (!m_session.savesWhatIsSent()) // with the ids of the batch before
                break;
        }
        wentThrough = sendBatch(batch);
        if (m_session.isOver() || !wentThrough)
            break;
    }
    m_session.moc().processPendingChanges();
    if (m_session.isGuarding())
        m_session.saveAction();
    return wentThrough && !m_session.isOver();
}

/// Sends them in their order, several at once where the service takes that. False when the phase has to end.
bool TaskPhases::sendBatch(std::span<Edit> additions)
{
    while (!additions.empty() && !m_session.isOver()) {
        const std::size_t sent = sendTogether(additions);
        if (sent == 0 && !sendNewTask(additions.front()))
            return false;
        additions = additions.subspan(std::max<std::size_t>(sent, 1));
    }
    return true;
}

/// Adds the first of them by one request, where the service takes that; returns how many, whatever came of it.
std::size_t TaskPhases::sendTogether(std::span<Edit> additions)
{
    if (!m_session.isGuarding() || m_session.client().mostCalls() < 2)
        return 0;
    std::vector<toodledo::MarkedTask> tasks;
    for (std::size_t i = 0; i < additions.size() && !isKnownThere(additions[i]); ++i)
        tasks.push_back({&additions[i].sent, markOf(additions[i])});
    TDError error;
    auto added = m_session.client().addTasks(tasks, &error);
    if (added.sent == 0)
        return 0;
    const std::span<Edit> sent = additions.first(added.sent);
    const bool isAnswered = !added.ids.empty();
    if (!isAnswered) {
        added.ids = idsOfUnanswered(sent);
        // Those that are not found are noted, and wait for the next run's list.
        if (const auto missing = std::ranges::find(added.ids, -1); missing != added.ids.end())
            m_session.acceptItem(
                false, error, sent[static_cast<std::size_t>(missing - added.ids.begin())].task->title());
    }
    for (std::size_t i = 0; i < sent.size(); ++i) {
        if (isServiceId(added.ids[i]))
            noteAdded(sent[i], added.ids[i]);
        else if (isAnswered && added.ids[i] == -1 && !m_session.isOver())
            (void)sendNewTask(sent[i]); // refused: by itself it is told why
    }
    return sent.size();
}

/// Whether it is marked as new although the service has it: sending it as a new one would double it.
bool TaskPhases::isKnownThere(const Edit &addition) const
{
    return m_listedIds.contains(addition.task->taskID());
}

/// What the service knows the task's add by when it is sent again: an address that is this record's alone, in every
/// store and for ever.
std::string TaskPhases::markOf(const Edit &addition) const
{
    return m_session.isGuarding() ? m_session.moc().uri(*addition.task) : std::string();
}

/// False when the phase has to end.
bool TaskPhases::sendNewTask(Edit &added)
{
    Tasks &task = *added.task;
    if (m_session.isGuarding() && isKnownThere(added)) {
        const ContentMark whole = contentOf(added.sent);
        added.content = whole;
        sendEdit(added);
        if (m_session.ledger().compare(task, {whole}, whole) == Change::None)
            task.setIsNew(false);
        return true;
    }
    TDError error;
    std::int64_t id = m_session.client().addTask(added.sent, &error, markOf(added));
    if (const std::int64_t found = idsOfUnanswered({&added, 1}).front(); found != -1) {
        id = found;
        error = {};
    }
    const Sent sent = m_session.acceptItem(id != -1, error, task.title());
    if (!m_session.isGuarding()) {
        if (error)
            return false;
        task.setTaskID(id);
        task.setIsNew(false);
        return true;
    }
    if (sent == Sent::Confirmed && isServiceId(id))
        noteAdded(added, id);
    return sent != Sent::Unreachable;
}

/// The service has the task, still without its length, which the method that adds does not take.
void TaskPhases::noteAdded(Edit &added, std::int64_t id)
{
    const bool isListed = m_listedIds.contains(id);
    if (isListed && !takesPlaceOfCopy(id))
        return;
    Tasks &task = *added.task;
    task.setTaskID(id);
    task.setIsNew(false);
    m_sentIds.insert(id);
    m_session.ledger().agree(task, {added.content, {}, added.sent.folder, added.sent.context}, added.content);
    if (added.sent.length == 0 || isListed || m_session.isOver())
        return; // where it is listed, an edit would go over what another computer has changed
    added.sent.taskId = id;
    added.content = contentOf(added.sent);
    sendEdit(added);
}

/// The service knows by its mark the task of an add that went unanswered. Another computer had changed it, so that it
/// was taken here for another one: that copy goes, unless it has something that the service does not have yet.
bool TaskPhases::takesPlaceOfCopy(std::int64_t id)
{
    Tasks *copy = m_session.records().getTaskById(id);
    if (m_session.isOver() || (copy && m_session.ledger().isChangedHere(*copy, contentOf(asSent(*copy)))))
        return false;
    if (copy)
        remove(*copy);
    return true;
}

/// The ids of the tasks whose add went unanswered just now, -1 for one that did not arrive. Asked at once: when another
/// computer has changed the task, nothing tells any more that it is this one.
std::vector<std::int64_t> TaskPhases::idsOfUnanswered(std::span<const Edit> additions)
{
    std::vector<std::int64_t> ids(additions.size(), -1);
    if (!m_session.isGuarding() || m_session.isOver() || !m_session.isUnanswered())
        return ids;
    TDError error;
    auto listed = m_session.client().getTasks(&error);
    const auto known = listed ? index() : std::nullopt;
    if (!known || error || m_session.client().lastReplyWasRefused())
        return ids;
    placeByContextId(*listed);
    for (const GtdTask &task : *listed) {
        if (!isServiceId(task.taskId) || m_listedIds.contains(task.taskId) || known->firstID(task.taskId))
            continue;
        const ContentMark content = contentOf(task);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            if (ids[i] != -1 || additions[i].content != content)
                continue;
            ids[i] = task.taskId;
            break;
        }
    }
    return ids;
}

bool TaskPhases::sendDeletedTasks()
{
    m_session.beginPhase();
    const auto deleted = m_session.moc().fetch(model::deletedTasks());
    if (!deleted) {
        m_session.present(deleted.error());
        return false;
    }
    for (ManagedObject *object : *deleted) {
        auto &task = *model::as<Tasks>(object);
        if (m_session.isOver())
            return false;
        const GtdTask sent = asSent(task);
        const bool isGone = m_session.isGuarding() && isGoneThere(sent.taskId);
        const Sent answer = isGone ? Sent::Confirmed : deleteAtService(sent);
        if (answer == Sent::Confirmed)
            remove(task);
        else if (!m_session.isGuarding())
            return false;
    }
    return m_session.saveAction();
}

/// Whether the service has no such task, so that there is nothing to delete there.
bool TaskPhases::isGoneThere(std::int64_t taskID) const
{
    return !isServiceId(taskID) || (m_isListed && !m_listedIds.contains(taskID) && !m_sentIds.contains(taskID));
}

Sent TaskPhases::deleteAtService(const GtdTask &task)
{
    TDError error;
    GtdTask deleted = task;
    if (m_session.isGuarding() && !deleted.title)
        deleted.title.emplace(); // only the id is sent, but the operation wants a title
    const bool succeeded = m_session.client().deleteTask(deleted, &error);
    const Sent sent = m_session.acceptItem(succeeded, error, task.title.value_or(""));
    return succeeded || m_session.isGuarding() ? sent : Sent::Refused;
}

void TaskPhases::remove(Tasks &task)
{
    m_session.ledger().forget(task);
    m_session.moc().remove(task);
}

} // namespace syncing
