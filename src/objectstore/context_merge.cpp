// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"
#include "objectstore/undo_manager.h"

#include <SQLiteCpp/Exception.h>

namespace objectstore {

using foundation::Failure;

void ObjectContext::mergeChanges(const ChangeSet &changes)
{
    forgetMembers();
    const auto known = [this](const ObjectID &id) -> ManagedObject * {
        auto &objects = m_state->objects[static_cast<std::size_t>(id.entity->index())];
        const auto found = objects.find(id.key);
        return found == objects.end() ? nullptr : found->second.get();
    };
    for (const ObjectID &id : changes.inserted) {
        ManagedObject *inserted = object(id);
        if (inserted->m_deleted && !m_state->changedOf(*id.entity).contains(inserted)) {
            inserted->m_deleted = false; // an undo elsewhere brought it back
            inserted->m_row.reset();
        }
        if (inserted->isFault() && !inserted->m_deleted)
            m_state->pendingInserted.insert(inserted);
    }
    for (const ObjectID &id : changes.updated) {
        ManagedObject *updated = known(id);
        if (!updated || updated->m_deleted || updated->m_inserted)
            continue;
        // a row with changes of our own stays as it was read: that is how the next save notices the conflict
        if (!updated->m_unsaved && updated->m_row) {
            updated->m_row.reset();
            updated->didTurnIntoFault();
            m_state->faults[static_cast<std::size_t>(id.entity->index())].push_back(id.key);
        }
        m_state->pendingUpdated.insert(updated);
    }
    m_state->linksMayDangle = m_state->linksMayDangle || !changes.deleted.empty();
    for (const ObjectID &id : changes.deleted) {
        ManagedObject *deleted = known(id);
        if (!deleted || deleted->m_deleted)
            continue;
        deleted->m_unsaved.reset();
        deleted->m_deleted = true;
        m_state->changedOf(deleted->entity()).erase(deleted);
        m_state->pendingUpdated.erase(deleted);
        m_state->pendingDeleted.insert(deleted);
    }
    processPendingChanges();
}

Result<bool> ObjectContext::mergeExternalChanges()
{
    if (!connected())
        return Failure(m_state->connectError);
    ChangeSet changes;
    try {
        Connection &connection = *m_state->connection;
        const std::int64_t version = connection.dataVersion();
        if (version == m_state->seenDataVersion)
            return false;
        connection.execute("BEGIN");
        const std::int64_t lastSave = std::stoll("0" + objectstore::storeValue(connection, "save"));
        for (const auto &entity : m_store.model().entities()) {
            auto &objects = m_state->objects[static_cast<std::size_t>(entity->index())];
            std::unordered_set<std::int64_t> present;
            Statement statement = connection.prepare("SELECT _key, _save FROM " + identifier(entity->name()));
            while (statement.step()) {
                const std::int64_t key = statement.integer(0);
                const auto kept = objects.find(key);
                if (kept != objects.end())
                    present.insert(key);
                if (kept != objects.end() && kept->second->m_row) {
                    if (kept->second->m_row->save() != statement.integer(1) && !kept->second->m_inserted)
                        changes.updated.push_back({entity.get(), key});
                } else if (statement.integer(1) > m_state->seenSave) {
                    changes.inserted.push_back({entity.get(), key});
                }
            }
            for (const auto &[key, object] : objects) {
                if (!object->m_inserted && !object->m_deleted && !present.contains(key))
                    changes.deleted.push_back(object->m_id);
            }
        }
        connection.execute("COMMIT");
        m_state->seenDataVersion = version;
        m_state->seenSave = lastSave;
    } catch (const SQLite::Exception &exception) {
        sqlite3_exec(m_state->connection->handle(), "ROLLBACK", nullptr, nullptr, nullptr);
        disconnect(exception);
        return Failure(storeError(StoreErrorCode::Unreadable, "The task store could not be read.", exception));
    }
    const bool some = !changes.isEmpty();
    mergeChanges(changes);
    return some;
}

} // namespace objectstore
