// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/object_model.h"
#include "objectstore/row.h"

#include <memory>
#include <optional>

namespace objectstore {

class ObjectContext;

/// One record in a context. A fault knows only its id and loads its row when it is first read.
///
/// Belongs to its context and to the context's thread; the context owns it, and a pointer to it holds until the context
/// is destroyed. A record that is deleted, or that proves absent from the store, reads as nothing everywhere.
class ManagedObject
{
public:
    ManagedObject();
    ManagedObject(const ManagedObject &) = delete;
    ManagedObject &operator=(const ManagedObject &) = delete;
    virtual ~ManagedObject();

    [[nodiscard]] const ObjectID &objectID() const { return m_id; }
    [[nodiscard]] const EntityDescription &entity() const { return *m_id.entity; }
    [[nodiscard]] ObjectContext &context() const { return *m_context; }

    [[nodiscard]] bool isFault() const { return !m_row; }
    [[nodiscard]] bool isInserted() const { return m_inserted; }
    [[nodiscard]] bool isDeleted() const { return m_deleted; }
    [[nodiscard]] bool hasChanges() const;

    /// Reads an attribute, or a to-one relationship as the ObjectID of its target. Unknown names read as nothing.
    [[nodiscard]] ValueView value(const Property &property) const;
    [[nodiscard]] ValueView value(std::string_view name) const;
    [[nodiscard]] std::string_view text(std::string_view name) const { return toText(value(name)); }
    [[nodiscard]] std::int64_t integer(std::string_view name) const { return toInteger(value(name)); }
    [[nodiscard]] double number(std::string_view name) const { return toDouble(value(name)); }
    [[nodiscard]] bool boolean(std::string_view name) const { return toBoolean(value(name)); }
    [[nodiscard]] std::optional<Instant> date(std::string_view name) const;

    /// Sets an attribute, announcing the change and recording it for undo. Setting the same value changes nothing.
    void setValue(const Property &property, Value value);
    void setValue(std::string_view name, Value value);
    void setDate(std::string_view name, std::optional<Instant> date);
    /// Sets an attribute without announcing the change; it is saved like any other.
    void setPrimitiveValue(std::string_view name, Value value);

    /// The target of a to-one relationship, or null.
    [[nodiscard]] ManagedObject *related(const Property &relationship) const;
    [[nodiscard]] ManagedObject *related(std::string_view name) const;
    void setRelated(std::string_view name, ManagedObject *target);

    /// The members of a to-many relationship in key order, the context's unsaved changes included.
    [[nodiscard]] const std::vector<ManagedObject *> &objects(const Property &relationship) const;
    [[nodiscard]] const std::vector<ManagedObject *> &objects(std::string_view name) const;
    void addObject(std::string_view name, ManagedObject &member);
    void removeObject(std::string_view name, ManagedObject &member);
    void setObjects(std::string_view name, const std::vector<ManagedObject *> &members);

    /// What was set since the last save: attributes and to-one relationships with their new values, and to-many
    /// relationships (with no value) whose members changed.
    [[nodiscard]] std::vector<std::pair<const Property *, Value>> changedValues() const;
    [[nodiscard]] bool hasChanged(std::string_view name) const;

    /// Called once after insertion, after loading, before a save, and when the row is dropped.
    virtual void awakeFromInsert() { }
    virtual void awakeFromFetch() { }
    virtual void willSave() { }
    virtual void didTurnIntoFault() { }

    /// The sets of its context that an object can be in.
    enum Mark : std::uint8_t { Changed = 1, PendingInserted = 2, PendingUpdated = 4, PendingDeleted = 8 };

private:
    template <Mark mark> friend class ObjectSet;
    friend class ObjectContext;
    friend class ContextSaver;
    friend class ContextMerger;
    friend class PredicateEvaluator;
    friend class UndoManager;

    /// Values that differ from the row, by slot, and the to-many relationships whose members differ.
    struct Unsaved {
        std::vector<std::pair<int, Value>> values;
        std::vector<const Property *> members;
    };
    struct Members {
        const Property *relationship = nullptr;
        std::vector<ManagedObject *> objects;
        std::unique_ptr<Members> next;
    };

    /// The order of insertion among objects of one entity, and of the model among entities.
    [[nodiscard]] static bool inKeyOrder(const ManagedObject *left, const ManagedObject *right);
    [[nodiscard]] const Value *unsavedValue(int slot) const;
    void storeValue(const Property &property, Value value);
    void dropStaleRow();
    void change(const Property &property, Value value);
    [[nodiscard]] Members *loadedMembers(const Property &relationship) const;

    // ordered so that what a predicate looks at lies together at the head
    mutable RowPointer m_row; ///< as read from the store, or the entity's defaults for an inserted object
    mutable bool m_deleted = false;
    bool m_inserted = false;
    std::uint8_t m_marks = 0; ///< a bit for each set that the object is in
    bool m_isWaiting = false; ///< to be read with other faults
    bool m_stale = false; ///< another writer changed the record while values of ours kept its row as it was read
    std::unique_ptr<Unsaved> m_unsaved; ///< present only while something is changed
    mutable std::unique_ptr<Members> m_members; ///< the to-many relationships that were read
    ObjectID m_id;
    ObjectContext *m_context = nullptr;
};

} // namespace objectstore
