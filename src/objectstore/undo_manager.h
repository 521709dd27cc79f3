// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/value.h"

#include <string>
#include <variant>
#include <vector>

namespace objectstore {

class ManagedObject;
class ObjectContext;
struct Property;

/// Records the changes of a context in named groups and takes them back or does them again, property by property.
/// Belongs to its context's thread. An undo is itself a set of changes: it is announced and saved like any other.
class UndoManager
{
public:
    explicit UndoManager(ObjectContext &context);

    /// Begins a group, inside which others join it; changes made outside any group form one group for each
    /// announcement of changes.
    void beginGroup(std::string name);
    void endGroup();

    [[nodiscard]] bool canUndo() const { return !m_done.empty() || !m_open.changes.empty(); }
    [[nodiscard]] bool canRedo() const { return !m_undone.empty(); }
    [[nodiscard]] std::string undoName() const;
    [[nodiscard]] std::string redoName() const;
    void undo();
    void redo();
    void clear();

    /// Turns recording off and on; calls nest.
    void disableRegistration() { ++m_disabled; }
    void enableRegistration() { --m_disabled; }

private:
    friend class ObjectContext;
    friend class ManagedObject;

    struct ValueChange {
        ManagedObject *object;
        const Property *property;
        Value before;
        Value after;
    };
    struct MemberChange {
        ManagedObject *owner;
        const Property *relationship;
        ManagedObject *member;
        bool added;
    };
    struct Insertion {
        ManagedObject *object;
    };
    struct Deletion {
        ManagedObject *object;
    };
    using Change = std::variant<ValueChange, MemberChange, Insertion, Deletion>;
    struct Group {
        std::string name;
        std::vector<Change> changes;
    };

    void recordValue(ManagedObject &object, const Property &property, Value before, Value after);
    void recordMember(ManagedObject &owner, const Property &relationship, ManagedObject &member, bool added);
    void recordInsertion(ManagedObject &object);
    void recordDeletion(ManagedObject &object);
    void record(Change change);
    void closeImplicitGroup();
    void close();
    void apply(const Change &change, bool forward);
    void applyGroup(const Group &group, bool forward);

    ObjectContext &m_context;
    std::vector<Group> m_done;
    std::vector<Group> m_undone;
    Group m_open;
    int m_depth = 0;
    int m_disabled = 0;
};

} // namespace objectstore
