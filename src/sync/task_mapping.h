// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/data_utilities.h"
#include "toodledo/gtd_task.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace syncing {

/// Translates between the tasks of one context and the service's.
///
/// It keeps the folders, contexts, states, priorities and tags that it has looked up, so it serves one phase of a run:
/// what is made or gets an id later is not seen. Belongs to the context's thread; nothing is saved.
class TaskMapping
{
public:
    /// `records` must outlive the mapping.
    explicit TaskMapping(const model::DataUtilities &records);

    /// A new task with the service's values, placed in its folder, context, state and priority as far as these exist.
    model::Tasks &getToodledoTaskAsLocalTask(const toodledo::GtdTask &task);

    /// Overwrites the task with the service's values. It leaves the folder, the repetition and the dates of creation
    /// and modification as they are, and the tags too when the service has none.
    void copyToodledoTaskToLocalTask(const toodledo::GtdTask &from, model::Tasks &to);

    /// The same, and then what the plain copy leaves: the folder, tags that were taken away, and a context that was.
    void copyWholeToodledoTaskToLocalTask(const toodledo::GtdTask &from, model::Tasks &to);

    /// The task as it is sent. The dates of adding and of completion are `now`: those of the store do not travel.
    [[nodiscard]] static toodledo::GtdTask copyLocalTaskToToodledoTask(
        const model::Tasks &task, foundation::Instant now);

    /// The first folder with this id; else the folder titled "Inbox"; null where there is neither.
    [[nodiscard]] model::Folders *folderOrInbox(std::int64_t folderID) const;

private:
    template <class Record> using ById = std::unordered_map<std::int64_t, Record *>;

    void placeInContextPriorityAndState(const toodledo::GtdTask &from, model::Tasks &to) const;
    void setTags(const toodledo::GtdTask &from, model::Tasks &to);
    [[nodiscard]] objectstore::ManagedObject &tagNamed(const std::string &name);

    const model::DataUtilities &m_records;
    ById<model::Folders> m_folders;
    ById<model::Contexts> m_contexts;
    ById<model::States> m_states;
    ById<model::Priorities> m_priorities;
    std::map<std::string, model::Tags *, std::less<>> m_tags;
    model::Folders *m_inbox;
    model::Contexts *m_none;
};

} // namespace syncing
