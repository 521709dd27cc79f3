// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/text.h"
#include "objectstore/object_context.h"
#include "objectstore/undo_manager.h"

namespace viewcontrollers {

/// What happens while it lives is taken back by one undo, under the name that the Edit menu shows.
class UndoGroup
{
public:
    UndoGroup(objectstore::ObjectContext &moc, const QString &name) : m_undo(*moc.undoManager())
    {
        m_undo.beginGroup(app::toUtf8(name));
    }
    UndoGroup(const UndoGroup &) = delete;
    UndoGroup &operator=(const UndoGroup &) = delete;
    ~UndoGroup() { m_undo.endGroup(); }

private:
    objectstore::UndoManager &m_undo;
};

} // namespace viewcontrollers
