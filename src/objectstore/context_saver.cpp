// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <random>

namespace objectstore {

using foundation::Failure;

ContextSaver::ContextSaver(ObjectContext &context)
    : m_context(context), m_state(*context.m_state), m_connection(*m_state.connection), m_log(m_connection)
{ }

Result<SaveReport> ContextSaver::save()
{
    for (ManagedObject *object : m_state.allChanged()) {
        if (!object->m_deleted)
            object->willSave();
    }
    m_objects = m_state.allChanged();
    if (!m_context.hasChanges())
        return adopt();
    if (m_connection.hasMoved())
        return Failure({"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::Moved),
            "The file of the task store was moved, replaced or deleted while it was open. Your changes are kept in the "
            "program.",
            m_context.store().file().string()});
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
        return Failure(storeError(
            StoreErrorCode::NotSaved, "Your changes could not be saved. They are kept in the program.", exception));
    }
    return adopt();
}

void ContextSaver::write()
{
    static thread_local std::mt19937_64 random{std::random_device{}()};
    m_save = m_log.lastSave() + 1;
    m_token = std::to_string(random());
    for (ManagedObject *object : m_objects) {
        if (object->m_inserted && !object->m_deleted)
            insert(*object);
        else if (object->m_deleted && !object->m_inserted)
            remove(*object);
        else if (!object->m_deleted && object->m_unsaved)
            update(*object);
    }
    writeJoins();
    for (const auto &[group, keys] : m_written)
        m_log.append(m_save, m_token, *group.first, group.second, keys);
}

void ContextSaver::note(const ManagedObject &object, SaveLog::Kind kind)
{
    m_written[{object.m_id.entity, kind}].push_back(object.m_id.key);
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
    note(object, SaveLog::Kind::Inserted);
}

void ContextSaver::update(ManagedObject &object)
{
    std::vector<int> slots;
    for (const auto &[slot, value] : object.m_unsaved->values)
        slots.push_back(slot);
    std::sort(slots.begin(), slots.end());
    // a row whose links alone changed is still written, so that other contexts see its number of save change
    if (writeColumns(object, slots, object.m_row ? object.m_row->save() : 0) || resolve(object))
        note(object, SaveLog::Kind::Updated);
}

bool ContextSaver::writeColumns(ManagedObject &object, const std::vector<int> &slots, std::int64_t expectedSave)
{
    if (m_updateEntity != &object.entity() || m_updateSlots != slots) { // many in a row change the same
        m_updateEntity = &object.entity();
        m_updateSlots = slots;
        m_updateSql = "UPDATE " + identifier(object.entity().name()) + " SET _save = ?";
        for (const int slot : slots)
            m_updateSql += ", " + identifier(object.entity().columns()[static_cast<std::size_t>(slot)]->name) + " = ?";
        m_updateSql += " WHERE _key = ? AND _save = ?";
    }
    Statement statement = m_connection.prepare(m_updateSql);
    statement.bind(m_save);
    for (const int slot : slots)
        statement.bind(view(*object.unsavedValue(slot)));
    statement.bind(object.m_id.key).bind(expectedSave).run();
    return m_connection.changes() == 1;
}

/// The row was changed by another writer since it was read: the merge policy decides what becomes of our values.
/// Whether some of them were written.
bool ContextSaver::resolve(ManagedObject &object)
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
    const bool written = conflict.storeRow && (!kept.empty() || !object.m_unsaved->members.empty())
        && writeColumns(object, kept, conflict.storeRow->save());
    m_conflicts.push_back(std::move(conflict));
    return written;
}

void ContextSaver::remove(ManagedObject &object)
{
    Statement statement = m_connection.prepare("DELETE FROM " + identifier(object.entity().name()) + " WHERE _key = ?");
    statement.bind(object.m_id.key).run();
    for (const Property *relationship : object.entity().toManyRelationships()) {
        if (relationship->joinTable.empty())
            continue;
        Statement links = m_connection.prepare(
            "DELETE FROM " + identifier(relationship->joinTable) + " WHERE " + relationship->joinOwner + " = ?");
        links.bind(object.m_id.key).run();
    }
    note(object, SaveLog::Kind::Deleted);
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
    return m_log.holds(m_save, m_token);
}

/// Makes the objects in memory what the store now holds.
SaveReport ContextSaver::adopt()
{
    SaveReport report;
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
    for (ManagedObject *object : m_objects) {
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
            m_builder.begin(m_save);
            for (const Property *column : object->entity().columns()) {
                if (const Value *unsaved = object->unsavedValue(column->slot); unsaved || !object->m_row)
                    m_builder.add(unsaved ? view(*unsaved) : ValueView());
                else
                    m_builder.addFrom(*object->m_row, column->slot);
            }
            object->m_row = m_builder.finish();
        }
        object->m_unsaved.reset();
        object->m_stale = false;
        object->m_inserted = false;
    }
    for (auto &[table, changes] : m_state.joins)
        changes.clear();
    for (auto &set : m_state.changed)
        set = {};
    if (m_save == m_state.seenSave + 1)
        m_state.seenSave = m_save;
    else if (m_save > 0)
        m_state.ownSaves.insert(m_save);
    if (!m_conflicts.empty())
        m_context.forgetMembers();
    m_context.processPendingChanges();
    return report;
}

} // namespace objectstore
