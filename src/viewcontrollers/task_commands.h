// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "viewcontrollers/task_drag.h"

#include <QObject>
#include <vector>

namespace viewcontrollers {

/// The commands on tasks, each one undoable step. They change records only; the lists follow the store by themselves.
/// Main thread.
class TaskCommands final : public QObject
{
    Q_OBJECT

public:
    using TaskList = std::vector<model::Tasks *>;

    explicit TaskCommands(app::TMApplicationDelegate &delegate) : m_delegate(delegate) { }

    /// A new task in `folder`, or in the Inbox; an empty title stays the default one.
    model::Tasks &addTask(const QString &title, model::Folders *folder, const QString &notes = {});
    /// A new task of a text or link that was dropped; the status line tells where it was too long.
    model::Tasks &addDroppedTask(const DroppedTask &dropped, model::Folders *folder);
    /// A new task without a title in `folder`, or in the Inbox; nothing is taken over from another task.
    model::Tasks &cloneTask(model::Folders *folder);
    /// Puts the tasks into the Trash.
    void removeTasks(const TaskList &tasks);
    /// Takes them out of it.
    void undeleteTasks(const TaskList &tasks);

    void setComplete(const TaskList &tasks, bool complete);
    void setStar(const TaskList &tasks, bool star);
    /// For a single task; several are left alone.
    void clearDueDate(const TaskList &tasks);
    void clearStartDate(const TaskList &tasks);

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] QString undoName() const;
    [[nodiscard]] QString redoName() const;
    void undo();
    void redo();

private:
    model::Tasks &insertTask(model::Folders *folder);
    [[nodiscard]] objectstore::ObjectContext &moc() const { return m_delegate.managedObjectContext(); }
    [[nodiscard]] objectstore::UndoManager &undoManager() const;

    app::TMApplicationDelegate &m_delegate;
};

} // namespace viewcontrollers
