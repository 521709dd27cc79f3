// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace objectstore
{

class ManagedObject;
class ObjectContext;
struct Property;

/// Records the changes of a context in named groups and takes them back or does them again, property by property.
/// Belongs to its context's thread. An undo is itself a set of changes: it is announced and saved like any other.
class UndoManager
{
public:
    explicit UndoManager(ObjectContext &context);
    ~UndoManager();

    /// Begins a group; changes made outside any group form one group for each `processPendingChanges`.
    void beginGroup(std::string name);
    void endGroup();

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] std::string undoName() const;
    [[nodiscard]] std::string redoName() const;
    void undo();
    void redo();
    void clear();

    /// Turns recording off and on; calls nest.
    void disableRegistration();
    void enableRegistration();

private:
    friend class ObjectContext;
    friend class ManagedObject;
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace objectstore
