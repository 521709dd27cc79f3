// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/entities.h"
#include "objectstore/object_context.h"

namespace model {

/// What the user wants to see in the lists.
struct ListFilter {
    bool showCompleted = false; ///< the setting `ShowCompletedTasks`
    bool byLocation = false; ///< only tasks of the current location
};

/// The tasks that each list shows, unsorted. `now` makes a task due.
[[nodiscard]] objectstore::FetchRequest todayTasks(Instant now, ListFilter filter);
/// Also the Inbox, with the folder titled "Inbox".
[[nodiscard]] objectstore::FetchRequest folderTasks(const Folders &folder, ListFilter filter);
[[nodiscard]] objectstore::FetchRequest contextTasks(const Contexts &context, ListFilter filter);
/// Deleted, and not yet emptied from the Trash.
[[nodiscard]] objectstore::FetchRequest trashTasks();
[[nodiscard]] objectstore::FetchRequest locationTasks();
/// Every task that is not in the Trash.
[[nodiscard]] objectstore::FetchRequest allTasks(ListFilter filter);
/// What a smart folder lists: what its predicate selects, unless deleted, and only completed or only open tasks where
/// `complete` says so.
[[nodiscard]] objectstore::FetchRequest smartFolderTasks(
    const objectstore::Predicate &predicate, std::optional<bool> complete);
/// Every task of the store, deleted ones included.
[[nodiscard]] objectstore::FetchRequest everyTask();

/// What the badges count. Today's badge does not heed the location, although the list does.
[[nodiscard]] objectstore::FetchRequest todayBadgeTasks(Instant now, bool showCompleted);
[[nodiscard]] objectstore::FetchRequest locationBadgeTasks(bool showCompleted);

/// Tasks whose reminder has come at `now`, completed ones included.
[[nodiscard]] objectstore::FetchRequest tasksToRemindOf(Instant now);

/// Everything that was deleted, emptied from the Trash or not.
[[nodiscard]] objectstore::FetchRequest deletedTasks();
/// Tasks, of all that are stored, whose title or notes contain `text` without regard to case; empty text finds all.
[[nodiscard]] objectstore::FetchRequest tasksContaining(std::string_view text);

} // namespace model
