// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/context_state.h"
#include "objectstore/random_number.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>

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
    if (!m_context.hasChanges() && m_state.unsureSaves.empty())
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
        m_context.disconnect(exception);
        return Failure(
            storeError(primaryCode(exception) == SQLITE_BUSY ? StoreErrorCode::Busy : StoreErrorCode::NotSaved,
                "Your changes could not be saved. They are kept in the program.", exception));
    }
    return adopt();
}

void ContextSaver::write()
{
    m_save = m_log.lastSave() + 1;
    m_unsureSave = unsureSave();
    m_token = std::to_string(randomNumber());
    m_state.unsureSaves.emplace_back(m_save, m_token);
    Writing insertion;
    Writing updating;
    for (ManagedObject *object : m_objects) {
        if (object->m_inserted && !object->m_deleted)
            insert(*object, insertion);
        else if (isToBeRemoved(*object))
            remove(*object);
        else if (!object->m_deleted && object->m_unsaved)
            update(*object, updating);
    }
    writeJoins();
    for (const ManagedObject *object : m_objects) { // after the updates, which may have taken the links already
        if (isToBeRemoved(*object))
            unlink(*object);
    }
    if (m_state.linksMayDangle || othersSaved()) {
        dropDanglingReferences();
        dropDanglingLinks();
    }
    for (const auto &[group, keys] : m_written)
        m_log.append(m_save, m_token, *group.first, group.second, keys);
}

/// The number of a save that failed here and of which the store tells that it was made all the same.
std::int64_t ContextSaver::unsureSave()
{
    for (const auto &[save, token] : m_state.unsureSaves) {
        if (m_log.holds(save, token))
            return save;
    }
    return 0;
}

bool ContextSaver::othersSaved() const
{
    return m_save - 1 - m_state.seenSave != static_cast<std::int64_t>(m_state.knownSaves.size());
}

/// What was inserted and deleted here is in no store, unless a save between that failed was made after all.
bool ContextSaver::isToBeRemoved(const ManagedObject &object) const
{
    return object.m_deleted && (!object.m_inserted || m_unsureSave > 0);
}

void ContextSaver::note(const ManagedObject &object, SaveLog::Kind kind)
{
    m_written[{object.m_id.entity, kind}].push_back(object.m_id.key);
}

namespace {

/// A key that an earlier, seemingly failed save wrote is written again; one that belongs to a record of another process
/// is an error, and never overwritten.
std::string insertionOf(const EntityDescription &entity, bool mayBeThere)
{
    std::string sql
        = (mayBeThere ? "INSERT OR REPLACE INTO " : "INSERT INTO ") + identifier(entity.name()) + " (_key, _save";
    std::string places = "?, ?";
    for (const Property *column : entity.columns()) {
        sql += ", " + identifier(column->name);
        places += ", ?";
    }
    return sql + ") VALUES (" + places + ")";
}

} // namespace

void ContextSaver::insert(const ManagedObject &object, Writing &insertion)
{
    if (insertion.entity != &object.entity()) {
        insertion.entity = &object.entity();
        insertion.statement.reset();
        insertion.statement.emplace(m_connection.prepare(insertionOf(object.entity(), m_unsureSave > 0)));
    }
    Statement &statement = *insertion.statement;
    statement.bind(object.m_id.key).bind(m_save);
    const auto &unsaved = m_state.unsavedBySlot(object);
    for (const Property *column : object.entity().columns()) {
        const Value *value = unsaved[static_cast<std::size_t>(column->slot)];
        statement.bind(value ? view(*value) : object.value(*column));
    }
    statement.run();
    statement.again();
    note(object, SaveLog::Kind::Inserted);
}

void ContextSaver::update(ManagedObject &object, Writing &writing)
{
    m_slots.clear();
    for (const auto &[slot, value] : object.m_unsaved->values)
        m_slots.push_back(slot);
    std::sort(m_slots.begin(), m_slots.end());
    // a row whose links alone changed is still written, so that other contexts see its number of save change
    if (writeColumns(object, m_slots, object.m_row ? object.m_row->save() : 0, writing)
        || (m_unsureSave > 0 && writeColumns(object, m_slots, m_unsureSave, writing)) || resolve(object, writing))
        note(object, SaveLog::Kind::Updated);
}

bool ContextSaver::writeColumns(
    ManagedObject &object, const std::vector<int> &slots, std::int64_t expectedSave, Writing &writing)
{
    if (writing.entity != &object.entity() || writing.slots != slots) { // many in a row change the same
        std::string sql = "UPDATE " + identifier(object.entity().name()) + " SET _save = ?";
        for (const int slot : slots)
            sql += ", " + identifier(object.entity().columns()[static_cast<std::size_t>(slot)]->name) + " = ?";
        writing.entity = &object.entity();
        writing.slots = slots;
        writing.statement.reset();
        writing.statement.emplace(m_connection.prepare(sql + " WHERE _key = ? AND _save = ?"));
    }
    Statement &statement = *writing.statement;
    statement.bind(m_save);
    for (const int slot : slots)
        statement.bind(view(*object.unsavedValue(slot)));
    statement.bind(object.m_id.key).bind(expectedSave).run();
    statement.again();
    return m_connection.changes() == 1;
}

/// The row was changed by another writer since it was read: the merge policy decides what becomes of our values.
/// Whether some of them were written.
bool ContextSaver::resolve(ManagedObject &object, Writing &writing)
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
        && writeColumns(object, kept, conflict.storeRow->save(), writing);
    m_conflicts.push_back(std::move(conflict));
    return written;
}

void ContextSaver::remove(const ManagedObject &object)
{
    Statement statement = m_connection.prepare("DELETE FROM " + identifier(object.entity().name()) + " WHERE _key = ?");
    statement.bind(object.m_id.key).run();
    note(object, SaveLog::Kind::Deleted);
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
            const std::string name = identifier(column->name);
            Statement statement = m_connection.prepare("UPDATE " + identifier(entity->name()) + " SET _save = ?, "
                + name + " = NULL WHERE " + name + " = ? RETURNING _key");
            statement.bind(m_save).bind(object.m_id.key);
            while (statement.step()) {
                m_unlinked.push_back({entity.get(), statement.integer(0)});
                m_written[{entity.get(), SaveLog::Kind::Updated}].push_back(statement.integer(0));
            }
        }
        for (const Property *relationship : entity->toManyRelationships()) {
            if (!relationship->joinTable.empty() && entity.get() == &object.entity())
                drop(*relationship, relationship->joinOwner);
            if (!relationship->joinTable.empty() && relationship->destination == &object.entity())
                drop(*relationship, relationship->joinMember);
        }
    }
}

/// Of the records that this save made others point at, lets go of those that another context deleted.
void ContextSaver::dropDanglingReferences()
{
    for (const ManagedObject *object : m_objects) {
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
}

/// The same for the links of join tables.
void ContextSaver::dropDanglingLinks()
{
    const auto exists = [](const EntityDescription &end, const char *column) {
        return "EXISTS (SELECT 1 FROM " + identifier(end.name()) + " e WHERE e._key = " + column + ")";
    };
    for (const auto &entity : m_context.m_store.model().entities()) {
        for (const Property *relationship : entity->toManyRelationships()) {
            const auto changes = m_state.joins.find(relationship->joinTable);
            if (changes == m_state.joins.end() || relationship->joinOwner != "owner")
                continue;
            for (const auto &[pair, there] : changes->second) {
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
        Statement link
            = m_connection.prepare("INSERT OR IGNORE INTO " + identifier(table) + " (owner, member) VALUES (?, ?)");
        Statement unlink = m_connection.prepare("DELETE FROM " + identifier(table) + " WHERE owner = ? AND member = ?");
        for (const auto &[pair, there] : changes) {
            Statement &statement = there ? link : unlink;
            statement.bind(pair.first).bind(pair.second).run();
            statement.again();
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
    m_state.unsureSaves.clear();
    m_state.linksMayDangle = false;
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
        m_state.pendingUpdated.insert(object);
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
        const bool hasUnsaved
            = object->m_unsaved && !(object->m_unsaved->values.empty() && object->m_unsaved->members.empty());
        if (object->m_inserted || hasUnsaved)
            m_state.renewRow(*object, m_save);
        object->m_unsaved.reset();
        object->m_stale = false;
        object->m_inserted = false;
    }
    for (auto &[table, changes] : m_state.joins)
        changes.clear();
    for (auto &set : m_state.changed)
        set.takeAll();
    if (!m_written.empty()) { // a save of which nothing remained has taken no number of the log
        m_state.noteSave(m_save);
        report.changes.save = m_save;
    }
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
