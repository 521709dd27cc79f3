// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sync/sync_session.h"
#include "sync/task_index.h"
#include "sync/task_mapping.h"

#include <span>
#include <unordered_set>
#include <vector>

namespace syncing {

/// The phases of a run that reconcile tasks. All of them work from one list of the service's tasks, which is fetched
/// first; each returns whether it went through, and only the run decides what follows.
class TaskPhases
{
public:
    explicit TaskPhases(SyncSession &session) : m_session(session) { }

    /// Fetches the list. What goes wrong is shown; without guards the run goes on with whatever came.
    bool getTasks();
    /// Exchanges what changed, in whichever direction it did; a task changed on both sides takes the service's version.
    bool synchEditedTasks();
    /// Makes a task here for each of the service's that is missing, and deletes there what is in the Trash here.
    bool getNewTasks();
    /// Puts tasks of this list where they belong whose folder has become known only since.
    void placeInLateFolders();
    /// Deletes here what was deleted there.
    bool getDeletedTasks();
    /// Sends the tasks made here, which get their ids by it.
    bool sendNewTasks();
    /// Sends again what became different while the run went on: tasks whose folder or context has got its id since, and
    /// those that were known again under another content.
    bool sendLateEdits();
    /// Deletes, there and then here, the tasks in the Trash.
    bool sendDeletedTasks();

private:
    using GtdTask = toodledo::GtdTask;

    struct Edit {
        model::Tasks *task;
        GtdTask sent;
        ContentMark content;
    };
    /// A listed task and the one here with its id.
    struct Comparison {
        const GtdTask *listed;
        objectstore::ObjectID task;
        ContentMark server; ///< what the listed one contains
    };
    enum class Winner { None, Server, Local };

    [[nodiscard]] std::vector<Comparison> listedThatMayDiffer(const TaskIndex &known);

    void placeByContextId(std::vector<GtdTask> &tasks) const;
    void setAsideWhatIsOld();
    [[nodiscard]] bool listsAllThatChangedHere(const TaskIndex &known) const;
    [[nodiscard]] GtdTask asSent(const model::Tasks &task) const;
    [[nodiscard]] static GtdTask asAdded(GtdTask task);
    /// What does not travel from here keeps the value that it has there, since an edit sends every field.
    static void keepWhatIsNotCarried(toodledo::GtdTask &sent, const toodledo::GtdTask &listed);
    [[nodiscard]] Winner whoWins(
        const GtdTask &listed, const model::Tasks &task, ContentMark server, ContentMark local);
    void noteAgreement(const GtdTask &listed, model::Tasks &task, ContentMark server);
    void takeOver(const GtdTask &listed, model::Tasks &task, ContentMark server, TaskMapping &mapping);
    [[nodiscard]] bool sendEdits(std::vector<Edit> edits);
    void sendEdit(Edit &edit);
    [[nodiscard]] model::Tasks *adopt(const GtdTask &listed);
    [[nodiscard]] model::Tasks *takeUnanswered(ContentMark content, std::optional<std::int64_t> length = {});
    [[nodiscard]] bool lookAgainForUnanswered();
    void makeTask(const GtdTask &listed, TaskMapping &mapping);
    bool deleteListed(const GtdTask &listed, model::Tasks &task);
    [[nodiscard]] bool sendBatch(std::span<Edit> additions);
    [[nodiscard]] std::size_t sendTogether(std::span<Edit> additions);
    [[nodiscard]] bool sendNewTask(Edit &added);
    [[nodiscard]] bool isKnownThere(const Edit &addition) const;
    [[nodiscard]] std::string markOf(const Edit &addition) const;
    void noteAdded(Edit &added, std::int64_t id);
    [[nodiscard]] bool takesPlaceOfCopy(std::int64_t id);
    [[nodiscard]] std::vector<std::int64_t> idsOfUnanswered(std::span<const Edit> additions);
    [[nodiscard]] bool isGoneThere(std::int64_t taskID) const;
    [[nodiscard]] Sent deleteAtService(const GtdTask &task);
    void remove(model::Tasks &task);
    [[nodiscard]] std::optional<TaskIndex> index();

    SyncSession &m_session;
    std::vector<GtdTask> m_tdTasks;
    bool m_isListed = false; ///< whether the list can be believed
    std::unordered_set<std::int64_t> m_sentIds; ///< of tasks that the service has since the list was fetched
    std::unordered_set<std::int64_t> m_listedIds;
    std::unordered_set<std::int64_t> m_setAside; ///< ids of tasks that are not compared in this run
    std::vector<model::Tasks *> m_adopted;
    std::vector<std::pair<model::Tasks *, const GtdTask *>> m_withoutFolder; ///< their folder is not known here
};

} // namespace syncing
