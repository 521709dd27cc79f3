// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"
#include "model/smart_folder.h"

namespace viewcontrollers {

/// The commands on lists: making, deleting and archiving folders, contexts and smart folders, and emptying the Trash.
/// Each is one undoable step and changes records only. Main thread; an error of the store is shown and changes nothing.
class MainMenuController final : public QObject
{
    Q_OBJECT

public:
    explicit MainMenuController(app::TMApplicationDelegate &delegate) : m_delegate(delegate) { }

    objectstore::ManagedObject &newFolder();
    objectstore::ManagedObject &newContext();
    /// It finds the tasks with "task" in their title until it is edited.
    model::SmartFolder &newSmartFolder();

    /// A folder's tasks go to the Inbox and a context's lose it; both stay, marked, until the service has deleted them
    /// too. A smart folder goes at once.
    void deleteRecord(objectstore::ManagedObject &record);
    void setArchived(objectstore::ManagedObject &folder, bool archived);

    /// Deletes what is in the Trash from the store and saves.
    void emptyTrash();
    /// Takes it out of sight; the next synchronisation deletes it at the service and here.
    void emptyTrashFromContextMenu();

private:
    objectstore::ManagedObject &insert(std::string_view entity, const QString &undoName);
    void deleteFolder(model::Folders &folder);
    [[nodiscard]] objectstore::ObjectContext &moc() const { return m_delegate.managedObjectContext(); }
    [[nodiscard]] std::vector<objectstore::ManagedObject *> trash() const;

    app::TMApplicationDelegate &m_delegate;
};

} // namespace viewcontrollers
