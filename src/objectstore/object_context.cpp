// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/object_context.h"

#include "objectstore/context_state.h"
#include "objectstore/save_log.h"
#include "objectstore/undo_manager.h"

#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <array>

namespace objectstore {

namespace {

constexpr std::size_t faultBatch = 64;

RowPointer defaultRow(const EntityDescription &entity)
{
    RowBuilder builder;
    builder.begin(0);
    for (const Property *column : entity.columns())
        builder.add(view(column->defaultValue));
    return builder.finish();
}

} // namespace

std::vector<ManagedObject *> ObjectContext::State::sorted(std::vector<ManagedObject *> objects)
{
    if (!std::is_sorted(objects.begin(), objects.end(), ManagedObject::inKeyOrder))
        std::sort(objects.begin(), objects.end(), ManagedObject::inKeyOrder);
    return objects;
}

std::vector<ManagedObject *> ObjectContext::State::allChanged() const
{
    std::vector<ManagedObject *> all;
    for (const ChangedObjects &set : changed) {
        const auto ordered = sorted(set.inOrderOfArrival());
        all.insert(all.end(), ordered.begin(), ordered.end());
    }
    return all;
}

const std::vector<const Value *> &ObjectContext::State::unsavedBySlot(const ManagedObject &object)
{
    slots.assign(object.entity().columns().size(), nullptr);
    if (object.m_unsaved) {
        for (const auto &[slot, value] : object.m_unsaved->values)
            slots[static_cast<std::size_t>(slot)] = &value;
    }
    return slots;
}

void ObjectContext::State::noteSave(std::int64_t save)
{
    if (save > seenSave)
        knownSaves.insert(save);
    while (knownSaves.erase(seenSave + 1) > 0)
        ++seenSave;
}

void ObjectContext::State::addFault(ManagedObject &fault)
{
    if (!std::exchange(fault.m_isWaiting, true))
        faults[static_cast<std::size_t>(fault.entity().index())].push_back(&fault);
}

void ObjectContext::State::renewRow(ManagedObject &object, std::int64_t save)
{
    bool isRenewed = object.m_row.becomeOfSave(save);
    if (object.m_unsaved) {
        for (const auto &[slot, value] : object.m_unsaved->values)
            isRenewed = isRenewed && object.m_row.replace(slot, view(value));
    }
    if (!isRenewed)
        object.m_row = rowOf(object, save);
}

RowPointer ObjectContext::State::rowOf(const ManagedObject &object, std::int64_t save)
{
    rowBuilder.begin(save);
    const auto &unsaved = unsavedBySlot(object);
    for (const Property *column : object.entity().columns()) {
        const Value *value = unsaved[static_cast<std::size_t>(column->slot)];
        if (value || !object.m_row)
            rowBuilder.add(value ? view(*value) : ValueView());
        else
            rowBuilder.addFrom(*object.m_row, column->slot);
    }
    return rowBuilder.finish();
}

ObjectContext::ObjectContext(Store &store, MergePolicy policy)
    : m_store(store), m_policy(policy), m_state(std::make_unique<State>())
{
    const std::size_t entities = store.model().entities().size();
    m_state->objects.resize(entities);
    m_state->changed.resize(entities);
    m_state->faults.resize(entities);
    for (const auto &entity : store.model().entities())
        m_state->defaults.push_back(defaultRow(*entity));
    if (Connection *connection = connected()) {
        try {
            m_state->seenDataVersion = connection->dataVersion();
            m_state->seenSave = SaveLog(*connection).lastSave();
        } catch (const SQLite::Exception &exception) {
            disconnect(exception);
        }
    }
}

ObjectContext::~ObjectContext() = default;

void ObjectContext::setLongestWait(std::chrono::milliseconds wait)
{
    m_state->longestWait = wait;
    if (m_state->connection)
        m_state->connection->setBusyTimeout(wait);
}

/// The connection, made anew where there is none; null when that fails, and then `connectError` tells why.
Connection *ObjectContext::connected() const
{
    if (!m_state->connection) {
        if (auto connection = m_store.connect()) {
            m_state->connection = std::move(*connection);
            if (m_state->longestWait)
                m_state->connection->setBusyTimeout(*m_state->longestWait);
        } else {
            m_state->connectError = connection.error();
        }
    }
    return m_state->connection.get();
}

/// Gives up a connection that can be of no more use: one that met an error while it opened or mapped the files beside
/// the store may stay unable to write for good. The next one finds the disk as it is then.
void ObjectContext::disconnect(const SQLite::Exception &exception) const
{
    constexpr std::array useless{SQLITE_READONLY, SQLITE_CANTOPEN, SQLITE_PROTOCOL};
    constexpr std::array uselessErrors{
        SQLITE_IOERR_SHMOPEN, SQLITE_IOERR_SHMSIZE, SQLITE_IOERR_SHMMAP, SQLITE_IOERR_SHMLOCK};
    if (std::ranges::count(useless, primaryCode(exception)) == 0
        && std::ranges::count(uselessErrors, exception.getExtendedErrorCode()) == 0)
        return;
    m_state->connectError = storeError(StoreErrorCode::Unreadable, "The task store could not be read.", exception);
    m_state->connection.reset();
    m_state->seenDataVersion = -1; // counts anew with each connection
}

ManagedObject &ObjectContext::registered(const ObjectID &id)
{
    auto &kept = m_state->objects[static_cast<std::size_t>(id.entity->index())][id.key];
    if (!kept) {
        kept = id.entity->makeObject();
        kept->m_id = id;
        kept->m_context = this;
    }
    return *kept;
}

ManagedObject &ObjectContext::insert(std::string_view entityName, Awakening awakening)
{
    const EntityDescription *entity = m_store.model().entity(entityName);
    if (!entity)
        throw std::logic_error("There is no entity " + std::string(entityName));
    ManagedObject &object = registered({entity, m_store.nextKey()});
    object.m_row = m_state->defaults[static_cast<std::size_t>(entity->index())];
    object.m_inserted = true;
    m_state->changedOf(object.entity()).insert(object);
    m_state->pendingInserted.insert(object);
    if (m_undo)
        m_undo->recordInsertion(object);
    if (awakening == Awakening::FromInsert)
        object.awakeFromInsert();
    return object;
}

void ObjectContext::makeRoom(std::string_view entityName, std::size_t number)
{
    if (const EntityDescription *entity = m_store.model().entity(entityName)) {
        auto &objects = m_state->objects[static_cast<std::size_t>(entity->index())];
        objects.reserve(objects.size() + number);
    }
}

void ObjectContext::pack(ManagedObject &object)
{
    if (!object.m_inserted || object.m_deleted || !object.m_unsaved)
        return;
    object.m_row = m_state->rowOf(object, 0);
    object.m_unsaved->values = {};
    if (object.m_unsaved->members.empty())
        object.m_unsaved.reset();
}

void ObjectContext::remove(ManagedObject &object)
{
    if (object.m_deleted)
        return;
    if (object.isFault())
        load(object);
    if (object.m_deleted)
        return;
    applyDeleteRules(object);
    if (m_undo)
        m_undo->recordDeletion(object);
    markDeleted(object);
}

void ObjectContext::markDeleted(ManagedObject &object)
{
    object.m_deleted = true;
    m_state->changedOf(object.entity()).insert(object);
    m_state->pendingUpdated.erase(object);
    if (!m_state->pendingInserted.erase(object))
        m_state->pendingDeleted.insert(object);
}

/// Brings a deleted object back, for undo: as one to be inserted again where its deletion has been saved already.
void ObjectContext::revive(ManagedObject &object)
{
    object.m_deleted = false;
    if (m_state->changedOf(object.entity()).insert(object))
        object.m_inserted = true;
    if (!m_state->pendingDeleted.erase(object))
        m_state->pendingInserted.insert(object);
}

void ObjectContext::applyDeleteRules(ManagedObject &object)
{
    for (const Property *column : object.entity().columns()) {
        if (column->isToOne() && object.related(*column))
            object.setRelated(column->name, nullptr);
    }
    for (const Property *relationship : object.entity().toManyRelationships()) {
        const std::vector<ManagedObject *> members = object.objects(*relationship);
        for (ManagedObject *member : members) {
            if (relationship->deleteRule == DeleteRule::Cascade)
                remove(*member);
            else
                object.removeObject(relationship->name, *member);
        }
    }
}

void ObjectContext::noteChange(ManagedObject &object)
{
    m_state->changedOf(object.entity()).insert(object);
    if (!m_state->pendingInserted.contains(object))
        m_state->pendingUpdated.insert(object);
}

ManagedObject *ObjectContext::object(const ObjectID &id)
{
    if (!id)
        return nullptr;
    ManagedObject &found = registered(id);
    if (found.isFault() && !found.m_deleted)
        m_state->addFault(found);
    return &found;
}

ManagedObject *ObjectContext::existingObject(const ObjectID &id)
{
    ManagedObject *found = object(id);
    if (found && found->isFault() && !found->m_deleted)
        load(*found);
    return found && !found->m_deleted ? found : nullptr;
}

std::vector<ManagedObject *> ObjectContext::objects(std::span<const ObjectID> ids)
{
    std::vector<ManagedObject *> found;
    found.reserve(ids.size());
    if (ids.empty())
        return found;
    auto &kept = m_state->objects[static_cast<std::size_t>(ids.front().entity->index())];
    kept.reserve(std::max(kept.size(), ids.size()));
    for (const ObjectID &id : ids) {
        const std::size_t before = kept.size();
        ManagedObject &object = registered(id);
        if (kept.size() > before)
            m_state->addFault(object); // who works through them one by one has them read in batches
        if (object.m_deleted && !m_state->changedOf(*id.entity).contains(object)) {
            object.m_deleted = false; // an undo elsewhere brought it back
            object.m_row.reset();
        }
        found.push_back(&object);
    }
    return found;
}

ManagedObject *ObjectContext::objectWithURI(std::string_view uri)
{
    return existingObject(m_store.objectID(uri));
}

std::string ObjectContext::uri(const ManagedObject &object) const
{
    return m_store.uri(object.objectID());
}

/// Reads the row of a fault, and with it those of other faults of its kind that are waiting: who reads one of a list
/// will read the others.
void ObjectContext::load(const ManagedObject &fault) const
{
    if (fault.m_deleted || !connected())
        return;
    const EntityDescription &entity = fault.entity();
    auto &waiting = m_state->faults[static_cast<std::size_t>(entity.index())];
    std::vector<std::int64_t> keys{fault.m_id.key};
    while (!waiting.empty() && keys.size() < faultBatch) {
        ManagedObject &other = *waiting.back();
        waiting.pop_back();
        other.m_isWaiting = false;
        if (other.isFault() && !other.m_deleted)
            keys.push_back(other.m_id.key);
    }
    if (readRows(entity, keys))
        fault.m_deleted = !fault.m_row; // the record is in no store
}

void ObjectContext::fill(std::span<ManagedObject *const> objects) const
{
    std::vector<std::int64_t> keys;
    const auto read = [&] {
        if (!keys.empty() && connected())
            (void)readRows(objects.front()->entity(), keys);
        keys.clear();
    };
    for (const ManagedObject *object : objects) {
        if (object->isFault() && !object->m_deleted)
            keys.push_back(object->m_id.key);
        if (keys.size() == faultBatch)
            read();
    }
    read();
}

/// Reads at most `faultBatch` rows. False where the store gave an error: what was not read reads as nothing now and is
/// tried again at the next read; the next fetch or save reports the cause.
bool ObjectContext::readRows(const EntityDescription &entity, std::span<const std::int64_t> keys) const
{
    auto &objects = m_state->objects[static_cast<std::size_t>(entity.index())];
    const bool single = keys.size() == 1;
    std::string sql = selectRows(entity) + " WHERE t._key IN (?";
    for (std::size_t i = 1; !single && i < faultBatch; ++i)
        sql += ",?";
    sql += ")";
    std::vector<ManagedObject *> loaded;
    try {
        Statement statement = m_state->connection->prepare(sql);
        for (std::size_t i = 0; i < (single ? 1 : faultBatch); ++i)
            statement.bind(keys[std::min(i, keys.size() - 1)]);
        RowBuilder builder;
        while (statement.step()) {
            const auto found = objects.find(statement.integer(0));
            if (found == objects.end())
                continue; // a damaged index gives rows that were not asked for
            found->second->m_row = readRow(builder, statement, entity);
            loaded.push_back(found->second.get());
        }
    } catch (const SQLite::Exception &) {
        return false;
    }
    for (ManagedObject *object : loaded)
        object->awakeFromFetch();
    return true;
}

bool ObjectContext::hasChanges() const
{
    return std::any_of(m_state->changed.begin(), m_state->changed.end(), [](const State::ChangedObjects &set) {
        return std::any_of(set.begin(), set.end(), [](const ManagedObject *object) {
            return object->hasChanges() && !(object->m_inserted && object->m_deleted);
        });
    });
}

void ObjectContext::processPendingChanges()
{
    if (m_state->announcing)
        return;
    m_state->announcing = true;
    constexpr int patience = 16; // handlers that answer each other's changes for ever are cut short
    for (int round = 0; round < patience; ++round) {
        ObjectsChange change{
            m_state->pendingInserted.takeAll(), m_state->pendingUpdated.takeAll(), m_state->pendingDeleted.takeAll()};
        if (change.inserted.empty() && change.updated.empty() && change.deleted.empty())
            break;
        if (m_state->handlers.empty())
            break;
        for (auto *objects : {&change.inserted, &change.updated, &change.deleted})
            *objects = State::sorted(std::move(*objects));
        const auto handlers = m_state->handlers;
        for (const auto &handler : handlers)
            handler(change);
    }
    m_state->announcing = false;
    if (m_undo)
        m_undo->closeImplicitGroup();
}

Result<SaveReport> ObjectContext::save()
{
    processPendingChanges();
    if (!connected())
        return foundation::Failure(m_state->connectError);
    return ContextSaver(*this).save();
}

void ObjectContext::rollback()
{
    for (ManagedObject *object : m_state->allChanged()) {
        object->m_unsaved.reset();
        object->dropStaleRow();
        if (object->m_inserted)
            object->m_deleted = true;
        else if (object->m_deleted)
            object->m_deleted = false;
        if (object->m_deleted)
            m_state->pendingUpdated.erase(*object);
        else
            m_state->pendingUpdated.insert(*object);
    }
    for (auto &[table, changes] : m_state->joins)
        changes.clear();
    for (State::ChangedObjects &set : m_state->changed)
        set.takeAll();
    m_state->pendingInserted.takeAll();
    m_state->pendingDeleted.takeAll();
    forgetMembers();
    if (m_undo)
        m_undo->clear();
    processPendingChanges();
}

Subscription ObjectContext::onObjectsDidChange(std::function<void(const ObjectsChange &)> handler)
{
    const auto place = m_state->handlers.insert(m_state->handlers.end(), std::move(handler));
    return Subscription([state = m_state.get(), place] { state->handlers.erase(place); });
}

void ObjectContext::enableUndo()
{
    if (!m_undo)
        m_undo = std::make_unique<UndoManager>(*this);
}

} // namespace objectstore
