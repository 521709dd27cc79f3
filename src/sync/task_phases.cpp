// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/task_phases.h"

#include "foundation/log.h"
#include "model/task_queries.h"
#include "sync/unchanged_tasks.h"
#include "toodledo/td_text.h"

#include <algorithm>
#include <unordered_map>

namespace syncing {

using model::Tasks;
using objectstore::ManagedObject;
using toodledo::GtdTask;
using toodledo::isServiceId;
using toodledo::TDError;

namespace {

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

void TaskPhases::keepWhatIsNotCarried(GtdTask &sent, const GtdTask &listed)
{
    sent.goal = listed.goal;
    sent.reminder = listed.reminder;
    sent.repeat = listed.repeat;
    sent.repeatAdvanced = listed.repeatAdvanced;
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

bool TaskPhases::getNewTasks()
{
    m_session.beginPhase();
    auto known = index();
    if (!known)
        return false;
    m_session.moc().makeRoom(Tasks::entityName, m_tdTasks.size());
    m_session.ledger().expectTasks(m_tdTasks.size());
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

/// An add that went unanswered in an earlier run is sent again only where two lists lack it: one may be an old list.
bool TaskPhases::lookAgainForUnanswered()
{
    TDError error;
    auto listed = m_session.client().getTasks(&error);
    if (!m_session.acceptList(listed.has_value(), error))
        return false;
    const auto known = index();
    if (!known)
        return false;
    placeByContextId(*listed);
    for (GtdTask &task : *listed) {
        if (!isServiceId(task.taskId) || known->firstID(task.taskId) || m_listedIds.contains(task.taskId)
            || !adopt(task))
            continue;
        m_listedIds.insert(task.taskId);
        m_tdTasks.push_back(std::move(task));
    }
    return true;
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
    for (const std::int64_t id : *deleted) {
        // an id that is listed as well is taken for alive: the next run will know
        if (m_session.isGuarding() && (!isServiceId(id) || m_listedIds.contains(id)))
            continue;
        Tasks *task = known->last(id);
        if (task && gone.insert(task).second)
            inSight += task->deleteOnSync() ? 0 : 1;
    }
    if (m_session.isGuarding() && !m_session.allowsDeletions(inSight, known->size(), false, "tasks"))
        return false;
    for (Tasks *task : gone)
        remove(*task);
    return true;
}

} // namespace syncing
