// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "location/coordinate.h"
#include "model/entities.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {
class Predicate;
}

namespace model {

/// Finds records of one context by id, title or value, and places tasks.
///
/// Cheap to make wherever a context is at hand; belongs to the context's thread. A fetch that fails is shown through
/// the presenter and then counts as "nothing found". "First" and "last" are in the order of insertion. Nothing is
/// saved.
class DataUtilities
{
public:
    /// Both must outlive the object.
    DataUtilities(ObjectContext &moc, foundation::ErrorPresenter &presenter) : m_moc(moc), m_presenter(presenter) { }

    [[nodiscard]] ObjectContext &moc() const { return m_moc; }

    /// The last task with this id at the service, or null.
    [[nodiscard]] Tasks *getTaskById(std::int64_t id) const;

    /// The first match, or null.
    [[nodiscard]] Folders *getFolderById(std::int64_t id) const;
    [[nodiscard]] Folders *getFolderByTitle(std::string_view title) const;
    [[nodiscard]] Contexts *getContextById(std::int64_t id) const;
    [[nodiscard]] Contexts *getContextByTitle(std::string_view title) const;
    [[nodiscard]] States *getStateById(std::int64_t id) const;
    [[nodiscard]] States *getStateByName(std::string_view name) const;
    /// Matches `priorityID`, which no default priority has; priorities are found by `getPriorityByName`.
    [[nodiscard]] Priorities *getPriorityById(std::int64_t id) const;
    /// Matches the priority's value with the number at the beginning of `name`, 0 where there is none.
    [[nodiscard]] Priorities *getPriorityByName(std::string_view name) const;

    /// The last tag with this title, or null. The name becomes part of a predicate's text, so one with a double quote
    /// or a backslash may not be found (and is logged); `getTags` has no such limit.
    [[nodiscard]] Tags *getTagByName(std::string_view name) const;
    /// All tags whose title begins so, without regard to case; nothing on an error. The limit is that of
    /// `getTagByName`.
    [[nodiscard]] std::optional<std::vector<Tags *>> getTagsBySubstring(std::string_view prefix) const;
    /// Every tag that is not deleted, by title; of two with the same title the later one. Nothing on an error.
    [[nodiscard]] std::optional<std::map<std::string, Tags *, std::less<>>> getTags() const;

    [[nodiscard]] std::vector<Contexts *> getLocalContexts() const;
    /// All matches of a predicate without arguments; nothing when it is no predicate or the fetch fails.
    [[nodiscard]] std::optional<std::vector<ManagedObject *>> getRecordsWithPredicate(
        std::string_view entity, std::string_view predicateString) const;

    [[nodiscard]] static States *getStateForTask(const Tasks &task) { return task.states(); }
    [[nodiscard]] static Priorities *getPriorityForTask(const Tasks &task) { return task.priorities(); }
    [[nodiscard]] static Contexts *getContextForTask(const Tasks &task) { return task.contexts(); }
    [[nodiscard]] static Folders *getFolderForTask(const Tasks &task) { return task.folders(); }

    /// Puts the task where the key says, which takes it out of where it was. False, and no change, when the key or the
    /// task is missing or no record has the key.
    bool addTaskToState(std::optional<std::int64_t> stateID, Tasks *task) const;
    /// The key is the priority's value.
    bool addTaskToPriority(std::optional<std::int64_t> priority, Tasks *task) const;
    bool addTaskToContextId(std::optional<std::int64_t> contextID, Tasks *task) const;
    bool addTaskToFolder(std::optional<std::int64_t> folderID, Tasks *task) const;
    bool addTaskToContextObject(Contexts *context, Tasks *task) const;
    bool addTaskToFolderByObject(Folders *folder, Tasks *task) const;

    /// The contexts whose tasks can be done at `current`: those that use their coordinates and lie less than a
    /// kilometre away, and those that are always shown. None without a position.
    [[nodiscard]] std::vector<Contexts *> contextsNear(const std::optional<location::Coordinate> &current) const;
    /// Sets `isCurrentLocation` of the tasks of these contexts to `flag`, and that of all others to nothing. Touches
    /// only tasks that change, and builds no objects for the others.
    void markTasksForLocation(bool flag, const std::vector<Contexts *> &near) const;

    /// Objects of `entity` that answer, in the order of insertion; nothing, after showing the error, when that fails.
    [[nodiscard]] std::optional<std::vector<ManagedObject *>> fetch(
        std::string_view entity, const objectstore::Predicate &predicate) const;

    void presentError(const foundation::Error &error) const { m_presenter.presentError(error); }

private:
    ObjectContext &m_moc;
    foundation::ErrorPresenter &m_presenter;
};

} // namespace model
