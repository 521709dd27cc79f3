// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/unchanged_tasks.h"

#include "sync/task_index.h"

#include <set>

namespace syncing {

using toodledo::KnownTasks;
using toodledo::SourceMark;

namespace {

/// The bytes of a task name its context, whose id is what counts.
SourceMark meaningOf(const std::map<std::string, std::int64_t, std::less<>> &contexts)
{
    std::string text;
    for (const auto &[title, id] : contexts)
        text += std::to_string(id) + ' ' + title + '\n';
    return KnownTasks(0).markOf(text);
}

/// Where a record's id lies, and the title of the one that has none at the service.
struct KindOfPlace {
    std::string entity;
    std::string id;
    std::string_view defaultTitle;
};

/// Whether every record but the default one has an id that `listed` holds.
bool areListed(SyncSession &session, const KindOfPlace &place, const std::set<std::int64_t> &listed)
{
    bool areListed = true;
    const auto read = session.moc().fetchValues({.entity = place.entity, .predicate = {}, .sortDescriptors = {}},
        {place.id, "title"}, [&](const objectstore::ObjectID &, std::span<const objectstore::ValueView> values) {
            areListed = areListed
                && (objectstore::toText(values[1]) == place.defaultTitle
                    || listed.contains(objectstore::toInteger(values[0])));
        });
    return read && areListed;
}

/// Whether no folder or context will get an id in this run: its tasks would be sent then, with what the list says of
/// them.
bool placesKeepTheirIds(SyncSession &session)
{
    if (!session.placesWithNewId.empty() || !session.listedFolders || !session.listedContexts)
        return false;
    std::set<std::int64_t> contexts;
    for (const auto &[title, id] : *session.listedContexts)
        contexts.insert(id);
    return areListed(session, {"Folders", "folderID", "Inbox"}, *session.listedFolders)
        && areListed(session, {"Contexts", "contextID", "None"}, contexts);
}

} // namespace

KnownTasks unchangedTasks(SyncSession &session)
{
    KnownTasks known(session.listedContexts ? meaningOf(*session.listedContexts) : 0);
    const auto changedHere = session.ledger().tasksChangedHere();
    if (!changedHere || !placesKeepTheirIds(session))
        return known;
    const auto index = TaskIndex::read(session.moc());
    if (!index)
        return known; // whoever needs the index says what is wrong
    index->forEachSingle([&](std::int64_t taskID, const objectstore::ObjectID &task) {
        const auto source = session.ledger().agreedSource(task.key);
        if (source && !changedHere->contains(task.key) && !index->isInTrash(task))
            known.add(*source, taskID);
    });
    return known;
}

} // namespace syncing
