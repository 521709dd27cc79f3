// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_phases.h"

#include "foundation/log.h"
#include "model/task_queries.h"
#include "sync/unchanged_tasks.h"
#include "toodledo/td_text.h"

#include <algorithm>
#include <map>
#include <span>
#include <unordered_map>

namespace syncing {

using model::Tasks;
using objectstore::ManagedObject;
using toodledo::GtdTask;
using toodledo::isServiceId;
using toodledo::TDError;

namespace {

/// As many sends at most are marked by one save; so a crash leaves at most so many that the next list has to explain.
constexpr std::size_t sendBatch = 128;

/// One item, then twice as many each time: of a few sends a crash finds nearly all noted, and many need few saves.
template <class Item> std::vector<std::span<Item>> inBatches(std::vector<Item> &items)
{
    std::vector<std::span<Item>> batches;
    for (std::size_t from = 0; from < items.size(); from += batches.back().size())
        batches.push_back(std::span(items).subspan(from, std::min({sendBatch, from + 1, items.size() - from})));
    return batches;
}

/// What does not travel from here keeps the value that it has there, since an edit sends every field.
void keepWhatIsNotCarried(GtdTask &sent, const GtdTask &listed)
{
    sent.goal = listed.goal;
    sent.reminder = listed.reminder;
    sent.repeat = listed.repeat;
    sent.repeatAdvanced = listed.repeatAdvanced;
}

ServerVersion versionOf(const GtdTask &listed, ContentMark content)
{
    return {content, listed.modifiedDate, listed.folder, listed.context, listed.source};
}

} // namespace

bool TaskPhases::getTasks()
{
    TDError error;
    if (!m_session.isGuarding()) {
        auto listed = m_session.client().getTasks(&error);
        m_isListed = m_session.acceptList(listed.has_value(), error);
        m_tdTasks = std::move(listed).value_or(std::vector<GtdTask>());
        return m_isListed;
    }
    auto listed = m_session.client().getTasks(unchangedTasks(m_session), &error);
    m_isListed = m_session.acceptList(listed.has_value(), error);
    if (!listed || !m_isListed)
        return false;
    m_tdTasks = std::move(listed->tasks);
    placeByContextId(m_tdTasks);
    std::erase_if(m_tdTasks, [](const GtdTask &task) { return !isServiceId(task.taskId); });
    m_listedIds.reserve(m_tdTasks.size() + listed->unchanged.size());
    m_listedIds.insert(listed->unchanged.begin(), listed->unchanged.end());
    for (const GtdTask &task : m_tdTasks)
        m_listedIds.insert(task.taskId);
    setAsideWhatIsOld();
    return true;
}

/// Puts each task into the context whose id stands beside its name, where that is known here: the lists of tasks and of
/// contexts are not of one moment, and may know one context by two names.
void TaskPhases::placeByContextId(std::vector<GtdTask> &tasks) const
{
    std::unordered_map<std::int64_t, bool> isKnown;
    for (GtdTask &task : tasks) {
        if (!isServiceId(task.listedContext))
            continue;
        const auto [known, isFirst] = isKnown.try_emplace(task.listedContext);
        if (isFirst)
            known->second = m_session.records().getContextById(task.listedContext) != nullptr;
        if (known->second)
            task.context = task.listedContext;
    }
}

/// A list that has tasks in a folder that this run has deleted is an old one: what it says of them is not taken over.
void TaskPhases::setAsideWhatIsOld()
{
    for (GtdTask &task : m_tdTasks) {
        if (!m_session.deletedFolders.contains(task.folder))
            continue;
        m_setAside.insert(task.taskId);
        task.source.reset();
    }
}

std::optional<TaskIndex> TaskPhases::index()
{
    auto index = TaskIndex::read(m_session.moc());
    if (index)
        return std::move(*index);
    m_session.present(index.error());
    return std::nullopt;
}

/// The task as it is sent. With the guards on, an id that is not the service's stays at home.
GtdTask TaskPhases::asSent(const Tasks &task) const
{
    GtdTask sent = TaskMapping::copyLocalTaskToToodledoTask(task, m_session.now());
    if (!m_session.isGuarding())
        return sent;
    for (std::int64_t *id : {&sent.folder, &sent.context, &sent.parentId}) {
        if (!isServiceId(*id))
            *id = 0;
    }
    return sent;
}

/// What the service has of a task after it was added: the method takes no length.
GtdTask TaskPhases::asAdded(GtdTask task)
{
    task.length = 0;
    return task;
}

TaskPhases::Winner TaskPhases::whoWins(const GtdTask &listed, const Tasks &task, ContentMark server, ContentMark local)
{
    const ServerVersion version = versionOf(listed, server);
    switch (m_session.ledger().compare(task, version, local)) {
    case Change::OldList:
        return Winner::None;
    case Change::None:
        m_session.ledger().agree(task, version, local);
        return Winner::None;
    case Change::Local:
        m_session.ledger().noteListed(task, version);
        return Winner::Local;
    case Change::Server:
        return Winner::Server;
    case Change::Both:
        foundation::logLine("The task " + m_session.moc().uri(task)
            + " was changed here and at the service; the service's version was taken.");
        return Winner::Server;
    case Change::Unknown:
        break;
    }
    if (listed.modifiedDate && m_session.isLater(m_session.client().serverDateAsLocal(*listed.modifiedDate), true))
        return Winner::Server;
    if (m_session.isLater(task.modifiedDate(), false))
        return Winner::Local;
    if (m_session.isGuarding() && server == local) {
        m_session.ledger().agree(task, version, local);
        return Winner::None;
    }
    return m_session.isGuarding() ? Winner::Local : Winner::None;
}

void TaskPhases::takeOver(const GtdTask &listed, Tasks &task, ContentMark server, TaskMapping &mapping)
{
    if (!m_session.isGuarding()) {
        mapping.copyToodledoTaskToLocalTask(listed, task);
        return;
    }
    mapping.copyWholeToodledoTaskToLocalTask(listed, task);
    noteAgreement(listed, task, server);
}

/// The task is here as the service has it, except perhaps for a folder that is not known here.
void TaskPhases::noteAgreement(const GtdTask &listed, Tasks &task, ContentMark server)
{
    m_session.ledger().agree(task, versionOf(listed, server), contentOf(asSent(task)));
    const model::Folders *folder = task.folders();
    if (isServiceId(listed.folder) && (!folder || folder->folderID() != listed.folder))
        m_withoutFolder.emplace_back(&task, &listed);
}

void TaskPhases::placeInLateFolders()
{
    for (const auto &[task, listed] : std::exchange(m_withoutFolder, {})) {
        model::Folders *folder = m_session.records().getFolderById(listed->folder);
        if (!folder || task->isDeleted() || m_session.ledger().isChangedHere(*task, contentOf(asSent(*task))))
            continue; // what the user has done to it since counts for more
        task->setRelated("folders", folder);
        noteAgreement(*listed, *task, contentOf(*listed));
    }
}

bool TaskPhases::synchEditedTasks()
{
    m_session.beginPhase();
    const auto known = index();
    if (!known)
        return false;
    std::optional<TaskMapping> mapping; // made when it is needed: it reads every folder, context and tag
    std::vector<Edit> edits;
    for (const auto &[listing, id, server] : listedThatMayDiffer(*known)) {
        if (m_session.isOver())
            return false;
        const GtdTask &listed = *listing;
        auto *task = model::as<Tasks>(m_session.moc().existingObject(id));
        if (!task || task->deleteOnSync())
            continue;
        GtdTask sent = asSent(*task);
        const ContentMark local = m_session.isGuarding() ? contentOf(sent) : 0;
        const Winner winner = whoWins(listed, *task, server, local);
        if (winner == Winner::Server)
            takeOver(listed, *task, server, mapping ? *mapping : mapping.emplace(m_session.records()));
        if (winner != Winner::Local)
            continue;
        if (m_session.isGuarding())
            keepWhatIsNotCarried(sent, listed);
        edits.push_back({task, std::move(sent), local});
    }
    if (!sendEdits(std::move(edits)))
        return false;
    if (m_isListed && m_setAside.empty() && listsAllThatChangedHere(*known))
        m_session.ledger().noteComparison();
    return true;
}

/// Whether the list has every task that may have changed here: one that an old list does not have yet is still to be
/// compared.
bool TaskPhases::listsAllThatChangedHere(const TaskIndex &known) const
{
    const auto changedHere = m_session.ledger().tasksChangedHere();
    if (changedHere && changedHere->empty())
        return true;
    bool areListed = true;
    known.forEachSingle([&](std::int64_t taskID, const objectstore::ObjectID &task) {
        const bool mayHaveChanged = !known.isInTrash(task) && (!changedHere || changedHere->contains(task.key));
        areListed = areListed && (!mayHaveChanged || m_listedIds.contains(taskID));
    });
    return areListed;
}

/// The listed tasks that are here, without those of which it is known that neither side changed them: to read, of many,
/// only the few that differ is most of the time that a run takes.
std::vector<TaskPhases::Comparison> TaskPhases::listedThatMayDiffer(const TaskIndex &known)
{
    const auto changedHere = m_session.ledger().tasksChangedHere();
    std::vector<Comparison> comparisons;
    for (const GtdTask &listed : m_tdTasks) {
        const objectstore::ObjectID id = known.lastID(listed.taskId);
        if (!id || known.isInTrash(id) || m_setAside.contains(listed.taskId))
            continue;
        const ContentMark server = m_session.isGuarding() ? contentOf(listed) : 0;
        if (changedHere && !changedHere->contains(id.key)
            && m_session.ledger().isAgreed(id, versionOf(listed, server))) {
            m_session.ledger().noteSource(id.key, listed.source);
            continue;
        }
        (void)m_session.moc().object(id); // so that many are read at once
        comparisons.push_back({&listed, id, server});
    }
    return comparisons;
}

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

bool TaskPhases::getNewTasks()
{
    m_session.beginPhase();
    auto known = index();
    if (!known)
        return false;
    std::optional<TaskMapping> mapping;
    for (const GtdTask &listed : m_tdTasks) {
        if (m_session.isOver())
            break;
        if (const auto id = known->firstID(listed.taskId); id && !known->isInTrash(id))
            continue;
        Tasks *task = known->first(listed.taskId);
        if (!task && (task = adopt(listed)))
            known->add(*task);
        if (!task)
            makeTask(listed, mapping ? *mapping : mapping.emplace(m_session.records()));
        else if (task->deleteOnSync())
            deleteListed(listed, *task);
    }
    m_session.moc().processPendingChanges();
    return m_session.saveAction();
}

/// The task that was being added when the answer got lost, if the listed one is it: as it was added, or with the length
/// that was sent right after.
Tasks *TaskPhases::adopt(const GtdTask &listed)
{
    const ContentMark content = contentOf(listed);
    Tasks *task = takeUnanswered(content);
    if (!task && listed.length != 0)
        task = takeUnanswered(contentOf(asAdded(listed)), listed.length);
    if (!task)
        return nullptr;
    task->setTaskID(listed.taskId);
    task->setIsNew(false);
    m_session.ledger().agree(*task, versionOf(listed, content), content); // an edit made since is sent late
    m_adopted.push_back(task);
    return task;
}

/// A task that was being sent with this content and has no id yet, and that is so long where a length is given.
Tasks *TaskPhases::takeUnanswered(ContentMark content, std::optional<std::int64_t> length)
{
    while (const objectstore::ObjectID id = m_session.ledger().takeUnanswered(Tasks::entityName, content)) {
        auto *task = model::as<Tasks>(m_session.moc().existingObject(id));
        if (task && !isServiceId(task->taskID()) && task->length() == length.value_or(task->length()))
            return task;
    }
    return nullptr;
}

void TaskPhases::makeTask(const GtdTask &listed, TaskMapping &mapping)
{
    Tasks &made = mapping.getToodledoTaskAsLocalTask(listed);
    made.setIsNew(false);
    if (model::Folders *folder = mapping.folderOrInbox(listed.folder))
        made.setRelated("folders", folder);
    if (m_session.isGuarding())
        noteAgreement(listed, made, contentOf(listed));
    m_session.moc().pack(made);
}

bool TaskPhases::deleteListed(const GtdTask &listed, Tasks &task)
{
    if (deleteAtService(listed) != Sent::Confirmed)
        return false;
    remove(task);
    return true;
}

bool TaskPhases::getDeletedTasks()
{
    TDError error;
    auto deleted = m_session.client().getDeleted(&error);
    if (!m_session.acceptList(deleted.has_value(), error))
        return false;
    if (deleted->empty())
        return true;
    const auto known = index();
    if (!known)
        return false;
    std::unordered_set<Tasks *> gone;
    std::size_t inSight = 0;
    for (const GtdTask &record : *deleted) {
        // an id that is listed as well is taken for alive: the next run will know
        if (m_session.isGuarding() && (!isServiceId(record.taskId) || m_listedIds.contains(record.taskId)))
            continue;
        Tasks *task = known->last(record.taskId);
        if (task && gone.insert(task).second)
            inSight += task->deleteOnSync() ? 0 : 1;
    }
    if (m_session.isGuarding() && !m_session.allowsDeletions(inSight, known->size(), false, "tasks"))
        return false;
    for (Tasks *task : gone)
        remove(*task);
    return true;
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
    std::vector<Edit> additions;
    for (ManagedObject *object : *created) {
        auto &task = *model::as<Tasks>(object);
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
        for (Edit &addition : batch) {
            if (m_session.isOver() || !wentThrough)
                break;
            wentThrough = sendNewTask(addition);
        }
        if (m_session.isOver() || !wentThrough)
            break;
    }
    m_session.moc().processPendingChanges();
    if (m_session.isGuarding())
        m_session.saveAction();
    return wentThrough && !m_session.isOver();
}

/// False when the phase has to end.
bool TaskPhases::sendNewTask(Edit &added)
{
    Tasks &task = *added.task;
    if (m_session.isGuarding() && m_listedIds.contains(task.taskID())) {
        // marked as new although the service has it: sending it as a new one would double it
        const ContentMark whole = contentOf(added.sent);
        added.content = whole;
        sendEdit(added);
        if (m_session.ledger().compare(task, {whole}, whole) == Change::None)
            task.setIsNew(false);
        return true;
    }
    TDError error;
    std::int64_t id = m_session.client().addTask(added.sent, &error);
    if (const auto found = idOfUnanswered(added)) {
        id = *found;
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
    if (sent == Sent::Confirmed && isServiceId(id)) {
        task.setTaskID(id);
        task.setIsNew(false);
        m_sentIds.insert(id);
        m_session.ledger().agree(task, {added.content, {}, added.sent.folder, added.sent.context}, added.content);
        if (added.sent.length != 0) {
            added.sent.taskId = id;
            added.content = contentOf(added.sent);
            sendEdit(added);
        }
    }
    return sent != Sent::Unreachable;
}

/// The id of the task whose add went unanswered just now, if it did arrive. Asked at once: when another computer has
/// changed the task, nothing tells any more that it is this one.
std::optional<std::int64_t> TaskPhases::idOfUnanswered(const Edit &added)
{
    if (!m_session.isGuarding() || m_session.isOver() || !m_session.isUnanswered())
        return std::nullopt;
    TDError error;
    auto listed = m_session.client().getTasks(&error);
    const auto known = listed ? index() : std::nullopt;
    if (!known || error || m_session.client().lastReplyWasRefused())
        return std::nullopt;
    placeByContextId(*listed);
    const auto found = std::ranges::find_if(*listed, [&](const GtdTask &task) {
        return isServiceId(task.taskId) && !m_listedIds.contains(task.taskId) && !known->firstID(task.taskId)
            && contentOf(task) == added.content;
    });
    return found == listed->end() ? std::nullopt : std::optional(found->taskId);
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
