// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"
#include "objectstore/undo_manager.h"

#include <SQLiteCpp/Exception.h>

namespace objectstore {

using foundation::Failure;

/// The object of a record if it is here already.
ManagedObject *ObjectContext::known(const ObjectID &id) const
{
    const auto &objects = m_state->objects[static_cast<std::size_t>(id.entity->index())];
    const auto found = objects.find(id.key);
    return found == objects.end() ? nullptr : found->second.get();
}

/// Makes an object that is here a fault again, because its row has changed in the store.
void ObjectContext::forgetRow(const ObjectID &id)
{
    ManagedObject *object = known(id);
    if (!object || !object->m_row || object->m_inserted)
        return;
    object->m_row.reset();
    object->didTurnIntoFault();
    m_state->addFault(*object);
}

void ObjectContext::mergeChanges(const ChangeSet &changes)
{
    m_state->noteSave(changes.save);
    forgetMembers();
    for (const ObjectID &id : changes.inserted) {
        ManagedObject *inserted = object(id);
        if (inserted->m_deleted && !m_state->changedOf(*id.entity).contains(*inserted)) {
            inserted->m_deleted = false; // an undo elsewhere brought it back
            inserted->m_row.reset();
        }
        if (inserted->isFault() && !inserted->m_deleted)
            m_state->pendingInserted.insert(*inserted);
    }
    for (const ObjectID &id : changes.updated) {
        ManagedObject *updated = object(id); // one that was not here may answer a question now that it did not before
        if (updated->m_deleted || updated->m_inserted)
            continue;
        // a row with changes of our own stays as it was read: that is how the next save notices the conflict
        updated->m_stale = updated->m_unsaved != nullptr;
        if (!updated->m_unsaved && updated->m_row) {
            updated->m_row.reset();
            updated->didTurnIntoFault();
            m_state->addFault(*updated);
        }
        m_state->pendingUpdated.insert(*updated);
    }
    m_state->linksMayDangle = m_state->linksMayDangle || !changes.deleted.empty();
    for (const ObjectID &id : changes.deleted) {
        ManagedObject *deleted = known(id);
        if (!deleted || deleted->m_deleted)
            continue;
        deleted->m_unsaved.reset();
        deleted->m_row.reset(); // the object stays, for those who point at it, and its memory goes
        deleted->m_deleted = true;
        m_state->changedOf(deleted->entity()).erase(*deleted);
        m_state->pendingUpdated.erase(*deleted);
        m_state->pendingDeleted.insert(*deleted);
    }
    processPendingChanges();
}

/// What the log tells of saves that this context has not seen; nothing where it no longer goes back so far.
std::optional<ChangeSet> ObjectContext::loggedChanges() const
{
    std::unordered_map<ObjectID, SaveLog::Kind> last; // what became of a record in the end
    const auto visit = [&](std::int64_t save, SaveLog::Kind kind, const ObjectID &id) {
        const ManagedObject *object = known(id);
        const bool seen = object && object->m_row && object->m_row->save() >= save;
        if (m_state->knownSaves.contains(save) || (seen && kind != SaveLog::Kind::Deleted))
            return;
        const auto [place, isNew] = last.emplace(id, kind);
        if (!isNew && !(place->second == SaveLog::Kind::Inserted && kind == SaveLog::Kind::Updated))
            place->second = kind;
    };
    if (!SaveLog(*m_state->connection).forEachAfter(m_state->seenSave, m_store.model(), visit))
        return std::nullopt;
    ChangeSet changes;
    for (const auto &[id, kind] : last) {
        const ManagedObject *object = known(id);
        if (kind == SaveLog::Kind::Deleted)
            changes.deleted.push_back(id);
        else if (kind == SaveLog::Kind::Inserted && (!object || object->m_deleted || object->isFault()))
            changes.inserted.push_back(id);
        else
            changes.updated.push_back(id);
    }
    return changes;
}

std::int64_t ObjectContext::knownSave() const
{
    return m_state->seenSave;
}

std::optional<ChangeSet> ObjectContext::changesSince(std::int64_t save) const
{
    if (!connected())
        return std::nullopt;
    ChangeSet changes;
    const auto listOf = [&changes](bool isInserted, bool isDeleted) -> std::vector<ObjectID> & {
        return isDeleted ? changes.deleted : isInserted ? changes.inserted : changes.updated;
    };
    try {
        const auto visit = [&](std::int64_t, SaveLog::Kind kind, const ObjectID &id) {
            listOf(kind == SaveLog::Kind::Inserted, kind == SaveLog::Kind::Deleted).push_back(id);
        };
        if (!SaveLog(*m_state->connection).forEachAfter(save, m_store.model(), visit))
            return std::nullopt;
    } catch (const SQLite::Exception &exception) {
        disconnect(exception);
        return std::nullopt;
    }
    for (const State::ChangedObjects &set : m_state->changed) {
        for (const ManagedObject *object : set) {
            if (object->hasChanges())
                listOf(object->m_inserted, object->m_deleted).push_back(object->m_id);
        }
    }
    return changes;
}

/// The same by a comparison of every record with what this context holds of it.
ChangeSet ObjectContext::comparedChanges() const
{
    ChangeSet changes;
    for (const auto &entity : m_store.model().entities()) {
        auto &objects = m_state->objects[static_cast<std::size_t>(entity->index())];
        std::unordered_set<std::int64_t> present;
        Statement statement = m_state->connection->prepare("SELECT _key, _save FROM " + identifier(entity->name()));
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
    return changes;
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
        const std::int64_t lastSave = SaveLog(connection).lastSave();
        auto logged = loggedChanges();
        changes = logged ? std::move(*logged) : comparedChanges();
        connection.execute("COMMIT");
        m_state->seenDataVersion = version;
        m_state->seenSave = lastSave;
        m_state->knownSaves.clear();
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
