// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/connection.h"
#include "objectstore/object_context.h"
#include "objectstore/object_set.h"
#include "objectstore/save_log.h"
#include "objectstore/schema.h"

#include <map>
#include <unordered_map>
#include <unordered_set>

namespace objectstore {

/// The unsaved links and unlinks of one join table: (owner, member) to whether the pair is to be there.
using JoinChanges = std::map<std::pair<std::int64_t, std::int64_t>, bool>;

/// What an ObjectContext keeps.
struct ObjectContext::State {
    using Objects = std::unordered_map<std::int64_t, std::unique_ptr<ManagedObject>>;
    using ChangedObjects = ObjectSet<ManagedObject::Changed>;

    std::list<std::function<void(const ObjectsChange &)>> handlers; ///< outlives the objects, which may subscribe
    std::unique_ptr<Connection> connection;
    foundation::Error connectError; ///< why there is no connection
    std::optional<std::chrono::milliseconds> longestWait; ///< for other writers; none leaves the connection's own
    std::vector<Objects> objects; ///< by entity index, then key
    std::vector<std::vector<ManagedObject *>> faults; ///< each once, by entity index; loaded in batches
    std::vector<RowPointer> defaults; ///< the row that an inserted object starts from, by entity index
    std::vector<ChangedObjects> changed; ///< inserted, updated or deleted since the last save, by entity index
    ObjectSet<ManagedObject::PendingInserted> pendingInserted; ///< the same since the last announcement
    ObjectSet<ManagedObject::PendingUpdated> pendingUpdated;
    ObjectSet<ManagedObject::PendingDeleted> pendingDeleted;
    std::vector<const ManagedObject *> withMembers; ///< those that hold read to-many relationships
    std::map<std::string, JoinChanges> joins; ///< by table
    std::int64_t seenDataVersion = 0;
    std::int64_t seenSave = 0; ///< the last save up to which everything is known here
    std::unordered_set<std::int64_t> knownSaves; ///< after that, of this context and of others that told of them
    std::vector<std::pair<std::int64_t, std::string>>
        unsureSaves; ///< number and token of saves that failed, of which the store may hold one all the same
    bool linksMayDangle = false; ///< records were deleted elsewhere that unsaved changes here may point at
    bool announcing = false;
    std::vector<const Value *> slots; ///< of the last call of `unsavedBySlot`
    RowBuilder rowBuilder;

    /// What the save with this number changed is known here; 0 for no save.
    void noteSave(std::int64_t save);
    /// Has the row of a fault read together with those of others.
    void addFault(ManagedObject &fault);
    [[nodiscard]] ChangedObjects &changedOf(const EntityDescription &entity)
    {
        return changed[static_cast<std::size_t>(entity.index())];
    }
    /// Whether what the store says of `object` is not what this context says of it.
    [[nodiscard]] bool isChanged(ManagedObject &object)
    {
        return object.hasChanges() && changedOf(object.entity()).contains(object);
    }
    /// The unsaved value of each column, null where there is none; holds until the next call.
    [[nodiscard]] const std::vector<const Value *> &unsavedBySlot(const ManagedObject &object);
    /// Makes the object's row what it says now, of the save with this number.
    void renewRow(ManagedObject &object, std::int64_t save);
    /// What the object says now, as a row of the save with this number.
    [[nodiscard]] RowPointer rowOf(const ManagedObject &object, std::int64_t save);
    /// Takes the objects of keys and saves, as `statement` gives them, that have no unsaved changes. False as soon as
    /// one is not here as the store has it.
    [[nodiscard]] bool takeKnown(
        Statement &statement, const EntityDescription &entity, std::vector<ManagedObject *> &found) const;
    /// How many records the store has of one kind.
    [[nodiscard]] std::size_t recordsOf(const EntityDescription &entity) const;
    [[nodiscard]] std::vector<ManagedObject *> allChanged() const;
    [[nodiscard]] static std::vector<ManagedObject *> sorted(std::vector<ManagedObject *> objects);
};

/// Writes a context's changes in one transaction and then lets its objects know.
class ContextSaver
{
public:
    explicit ContextSaver(ObjectContext &context);
    [[nodiscard]] Result<SaveReport> save();

private:
    struct Conflict {
        ManagedObject *object;
        RowPointer storeRow; ///< none when the record was deleted
        std::vector<int> discardedSlots;
    };

    void write();
    /// The statement that writes records of one kind, and of an update these columns, kept from one to the next.
    struct Writing {
        const EntityDescription *entity = nullptr;
        std::vector<int> slots = {};
        std::optional<Statement> statement = {};
    };

    void insert(const ManagedObject &object, Writing &insertion);
    void update(ManagedObject &object, Writing &writing);
    [[nodiscard]] bool resolve(ManagedObject &object, Writing &writing);
    bool writeColumns(
        ManagedObject &object, const std::vector<int> &slots, std::int64_t expectedSave, Writing &writing);
    [[nodiscard]] bool isToBeRemoved(const ManagedObject &object) const;
    void remove(const ManagedObject &object);
    void unlink(const ManagedObject &object);
    void writeJoins();
    [[nodiscard]] std::int64_t unsureSave();
    [[nodiscard]] bool othersSaved() const;
    void dropDanglingReferences();
    void dropDanglingLinks();
    void note(const ManagedObject &object, SaveLog::Kind kind);
    [[nodiscard]] bool wasCommitted();
    SaveReport adopt();

    ObjectContext &m_context;
    ObjectContext::State &m_state;
    Connection &m_connection;
    std::int64_t m_save = 0;
    std::int64_t m_unsureSave = 0; ///< an earlier save that failed here and yet was made; 0 for none
    std::string m_token;
    SaveLog m_log;
    std::map<std::pair<const EntityDescription *, SaveLog::Kind>, std::vector<std::int64_t>> m_written;
    std::vector<ManagedObject *> m_objects; ///< what is written, by entity and key
    std::vector<int> m_slots; ///< that are unsaved of the object that is updated
    std::vector<Conflict> m_conflicts;
    std::vector<ObjectID> m_unlinked; ///< rows that pointed at a deleted record
    bool m_linksDropped = false;
    RowBuilder m_builder;
};

} // namespace objectstore
