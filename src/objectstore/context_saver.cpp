// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <random>

namespace objectstore {

using foundation::Failure;

ContextSaver::ContextSaver(ObjectContext &context)
    : m_context(context), m_state(*context.m_state), m_connection(*m_state.connection)
{ }

Result<SaveReport> ContextSaver::save()
{
    for (ManagedObject *object : m_state.allChanged()) {
        if (!object->m_deleted)
            object->willSave();
    }
    if (!m_context.hasChanges() && m_state.unsureSaves.empty())
        return adopt();
    if (m_connection.hasMoved())
        return Failure(foundation::Error{"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::Moved),
            "The task store was deleted or replaced while it was open. Your changes are kept in the program.",
            m_context.m_store.file().string()});
    try {
        try {
            WriteTransaction transaction(m_connection);
            write();
            transaction.commit();
        } catch (const SQLite::Exception &exception) {
            // A commit that reports an error may have been made all the same; asking spares the user a doubled save.
            if (!wasCommitted())
                throw exception;
        }
    } catch (const SQLite::Exception &exception) {
        m_context.disconnect(exception);
        return Failure(storeError(
            StoreErrorCode::NotSaved, "Your changes could not be saved. They are kept in the program.", exception));
    }
    return adopt();
}

void ContextSaver::write()
{
    static thread_local std::mt19937_64 random{std::random_device{}()};
    m_save = std::stoll("0" + storeValue(m_connection, "save")) + 1;
    m_unsureSave = m_state.unsureSaves.contains(storeValue(m_connection, "savedBy")) ? m_save - 1 : 0;
    m_token = std::to_string(random());
    m_state.unsureSaves.insert(m_token);
    const auto isToBeRemoved
        = [this](const ManagedObject &object) { return object.m_deleted && (!object.m_inserted || m_unsureSave > 0); };
    for (ManagedObject *object : m_state.allChanged()) {
        if (object->m_inserted && !object->m_deleted)
            insert(*object);
        else if (isToBeRemoved(*object))
            remove(*object);
        else if (!object->m_deleted && object->m_unsaved)
            update(*object);
    }
    writeJoins();
    for (const ManagedObject *object : m_state.allChanged()) {
        if (isToBeRemoved(*object))
            unlink(*object);
    }
    if (m_state.linksMayDangle || m_save - 1 != m_state.seenSave) // others saved, and may have deleted
        dropDanglingLinks();
    setStoreValue(m_connection, "save", std::to_string(m_save));
    setStoreValue(m_connection, "savedBy", m_token);
}

void ContextSaver::insert(ManagedObject &object)
{
    // "OR REPLACE" makes the insertion of a key that an earlier, seemingly failed save did write harmless.
    const auto &columns = object.entity().columns();
    std::string sql = "INSERT OR REPLACE INTO " + identifier(object.entity().name()) + " (_key, _save";
    std::string places = "?, ?";
    for (const Property *column : columns) {
        sql += ", " + identifier(column->name);
        places += ", ?";
    }
    Statement statement = m_connection.prepare(sql + ") VALUES (" + places + ")");
    statement.bind(object.m_id.key).bind(m_save);
    for (const Property *column : columns)
        statement.bind(object.value(*column));
    statement.run();
}

void ContextSaver::update(ManagedObject &object)
{
    std::vector<int> slots;
    for (const auto &[slot, value] : object.m_unsaved->values)
        slots.push_back(slot);
    std::sort(slots.begin(), slots.end());
    // a row whose links alone changed is still written, so that other contexts see its number of save change
    if (!writeColumns(object, slots, object.m_row ? object.m_row->save() : 0)
        && (m_unsureSave == 0 || !writeColumns(object, slots, m_unsureSave)))
        resolve(object);
}

bool ContextSaver::writeColumns(ManagedObject &object, const std::vector<int> &slots, std::int64_t expectedSave)
{
    std::string sql = "UPDATE " + identifier(object.entity().name()) + " SET _save = ?";
    for (const int slot : slots)
        sql += ", " + identifier(object.entity().columns()[static_cast<std::size_t>(slot)]->name) + " = ?";
    Statement statement = m_connection.prepare(sql + " WHERE _key = ? AND _save = ?");
    statement.bind(m_save);
    for (const int slot : slots)
        statement.bind(view(*object.unsavedValue(slot)));
    statement.bind(object.m_id.key).bind(expectedSave).run();
    return m_connection.changes() == 1;
}

/// The row was changed by another writer since it was read: the merge policy decides what becomes of our values.
void ContextSaver::resolve(ManagedObject &object)
{
    Conflict conflict{&object, {}, {}};
    {
        Statement statement = m_connection.prepare(selectRows(object.entity()) + " WHERE t._key = ?");
        statement.bind(object.m_id.key);
        if (statement.step())
            conflict.storeRow = readRow(m_builder, statement, object.entity());
    }
    std::vector<int> kept;
    for (const auto &[slot, value] : object.m_unsaved->values) {
        const EntityDescription *destination = object.entity().columns()[static_cast<std::size_t>(slot)]->destination;
        const bool storeChanged = !conflict.storeRow || !object.m_row
            || !sameValue(conflict.storeRow->value(slot, destination), object.m_row->value(slot, destination));
        if (m_context.m_policy == MergePolicy::Rollback || storeChanged)
            conflict.discardedSlots.push_back(slot);
        else
            kept.push_back(slot);
    }
    std::sort(kept.begin(), kept.end());
    if (conflict.storeRow && (!kept.empty() || !object.m_unsaved->members.empty()))
        writeColumns(object, kept, conflict.storeRow->save());
    m_conflicts.push_back(std::move(conflict));
}

void ContextSaver::remove(const ManagedObject &object)
{
    Statement statement = m_connection.prepare("DELETE FROM " + identifier(object.entity().name()) + " WHERE _key = ?");
    statement.bind(object.m_id.key).run();
}

/// Takes away all that still points at a deleted record: another context may have made a link since this one looked, or
/// looking may have failed.
void ContextSaver::unlink(const ManagedObject &object)
{
    const auto drop = [this, &object](const Property &relationship, const std::string &end) {
        Statement statement
            = m_connection.prepare("DELETE FROM " + identifier(relationship.joinTable) + " WHERE " + end + " = ?");
        statement.bind(object.m_id.key).run();
    };
    for (const auto &entity : m_context.m_store.model().entities()) {
        for (const Property *column : entity->columns()) {
            if (column->destination != &object.entity())
                continue;
            Statement statement = m_connection.prepare("UPDATE " + identifier(entity->name()) + " SET _save = ?, "
                + identifier(column->name) + " = NULL WHERE " + identifier(column->name) + " = ? RETURNING _key");
            statement.bind(m_save).bind(object.m_id.key);
            while (statement.step())
                m_unlinked.push_back({entity.get(), statement.integer(0)});
        }
        for (const Property *relationship : entity->toManyRelationships()) {
            if (!relationship->joinTable.empty() && entity.get() == &object.entity())
                drop(*relationship, relationship->joinOwner);
            if (!relationship->joinTable.empty() && relationship->destination == &object.entity())
                drop(*relationship, relationship->joinMember);
        }
    }
}

/// Of what this save linked, takes back the links to records that another context deleted.
void ContextSaver::dropDanglingLinks()
{
    for (const ManagedObject *object : m_state.allChanged()) {
        if (object->m_deleted)
            continue;
        for (const Property *column : object->entity().columns()) {
            if (!column->isToOne() || (!object->m_inserted && !object->unsavedValue(column->slot)))
                continue;
            const std::string name = identifier(column->name);
            Statement statement = m_connection.prepare("UPDATE " + identifier(object->entity().name()) + " SET " + name
                + " = NULL WHERE _key = ? AND " + name + " IS NOT NULL AND NOT EXISTS (SELECT 1 FROM "
                + identifier(column->destination->name()) + " d WHERE d._key = " + name + ")");
            statement.bind(object->m_id.key).run();
            if (m_connection.changes() > 0)
                m_unlinked.push_back(object->m_id);
        }
    }
    for (const auto &entity : m_context.m_store.model().entities()) {
        for (const Property *relationship : entity->toManyRelationships()) {
            const auto changes = m_state.joins.find(relationship->joinTable);
            if (changes == m_state.joins.end() || relationship->joinOwner != "owner")
                continue;
            const auto exists = [](const EntityDescription &end, const char *column) {
                return "EXISTS (SELECT 1 FROM " + identifier(end.name()) + " e WHERE e._key = " + column + ")";
            };
            for (const auto &[pair, there] : changes->second.byOwner) {
                Statement statement = m_connection.prepare("DELETE FROM " + identifier(relationship->joinTable)
                    + " WHERE owner = ? AND member = ? AND NOT (" + exists(*entity, "owner") + " AND "
                    + exists(*relationship->destination, "member") + ")");
                statement.bind(pair.first).bind(pair.second).run();
                m_linksDropped = m_linksDropped || m_connection.changes() > 0;
            }
        }
    }
}

void ContextSaver::writeJoins()
{
    for (const auto &[table, changes] : m_state.joins) {
        for (const auto &[pair, there] : changes.byOwner) {
            Statement statement = m_connection.prepare(there
                    ? "INSERT OR IGNORE INTO " + identifier(table) + " (owner, member) VALUES (?, ?)"
                    : "DELETE FROM " + identifier(table) + " WHERE owner = ? AND member = ?");
            statement.bind(pair.first).bind(pair.second).run();
        }
    }
}

bool ContextSaver::wasCommitted()
{
    if (m_token.empty() || !sqlite3_get_autocommit(m_connection.handle()))
        return false;
    return storeValue(m_connection, "savedBy") == m_token;
}

/// Makes the objects in memory what the store now holds.
SaveReport ContextSaver::adopt()
{
    SaveReport report;
    m_state.unsureSaves.clear();
    m_state.linksMayDangle = false;
    if (m_save > 0 && m_save - 1 == m_state.seenSave)
        m_state.seenSave = m_save;
    for (const Conflict &conflict : m_conflicts) {
        ManagedObject &object = *conflict.object;
        for (const int slot : conflict.discardedSlots) {
            const Property &column = *object.entity().columns()[static_cast<std::size_t>(slot)];
            report.discarded.push_back({object.m_id, column.name, *object.unsavedValue(slot)});
        }
        if (object.m_unsaved) {
            std::erase_if(object.m_unsaved->values, [&conflict](const auto &entry) {
                return std::find(conflict.discardedSlots.begin(), conflict.discardedSlots.end(), entry.first)
                    != conflict.discardedSlots.end();
            });
        }
        object.m_row = conflict.storeRow;
        object.m_deleted = !conflict.storeRow;
        m_state.pendingUpdated.insert(&object);
    }
    for (ManagedObject *object : m_state.allChanged()) {
        if (object->m_deleted) {
            if (!object->m_inserted)
                report.changes.deleted.push_back(object->m_id);
            object->m_inserted = false;
            continue;
        }
        if (!object->m_inserted && !object->m_unsaved)
            continue;
        (object->m_inserted ? report.changes.inserted : report.changes.updated).push_back(object->m_id);
        if (object->m_inserted || !object->m_unsaved->values.empty() || !object->m_unsaved->members.empty()) {
            m_builder.begin(static_cast<int>(object->entity().columns().size()), m_save);
            for (const Property *column : object->entity().columns())
                m_builder.add(object->value(*column));
            object->m_row = m_builder.finish();
        }
        object->m_unsaved.reset();
        object->m_inserted = false;
    }
    for (auto &[table, changes] : m_state.joins)
        changes.clear();
    for (auto &set : m_state.changed)
        set.clear();
    for (const ObjectID &id : m_unlinked) {
        report.changes.updated.push_back(id);
        m_context.forgetRow(id);
    }
    if (!m_conflicts.empty() || !m_unlinked.empty() || m_linksDropped)
        m_context.forgetMembers();
    m_context.processPendingChanges();
    return report;
}

} // namespace objectstore
