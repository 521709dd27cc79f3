// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewcontrollers/main_menu_controller.h"

#include "viewcontrollers/undo_group.h"

namespace viewcontrollers {

using model::as;
using objectstore::ManagedObject;

ManagedObject &MainMenuController::insert(std::string_view entity, const QString &undoName)
{
    const UndoGroup group(moc(), undoName);
    return moc().insert(entity);
}

ManagedObject &MainMenuController::newFolder()
{
    return insert("Folders", tr("New Folder"));
}

ManagedObject &MainMenuController::newContext()
{
    return insert("Contexts", tr("New Context"));
}

model::SmartFolder &MainMenuController::newSmartFolder()
{
    const UndoGroup group(moc(), tr("New Smart Folder"));
    auto &record = model::insert<model::SmartFolder>(moc());
    record.setTitle(app::toUtf8(tr("New Smart Folder")));
    return record;
}

void MainMenuController::deleteFolder(model::Folders &folder)
{
    const model::DataUtilities records = m_delegate.records();
    model::Folders *inbox = records.getFolderByTitle("Inbox");
    if (&folder == inbox)
        return; // its tasks would have nowhere to go
    folder.setMarkedForDeletion(true);
    const std::vector<ManagedObject *> tasks = folder.tasks();
    for (ManagedObject *task : tasks)
        records.addTaskToFolderByObject(inbox, as<model::Tasks>(task));
}

void MainMenuController::deleteRecord(ManagedObject &record)
{
    const UndoGroup group(moc(), tr("Delete \"%1\"").arg(app::toQString(record.text("title"))));
    if (auto *folder = as<model::Folders>(&record)) {
        deleteFolder(*folder);
    } else if (auto *context = as<model::Contexts>(&record)) {
        context->setMarkedForDeletion(true);
        context->setObjects("tasks", {});
    } else if (record.entity().name() == "SmartFolder") {
        moc().remove(record);
    }
}

void MainMenuController::setArchived(ManagedObject &folder, bool archived)
{
    const UndoGroup group(moc(), archived ? tr("Archive") : tr("Unarchive"));
    folder.setValue("archived", archived);
}

std::vector<ManagedObject *> MainMenuController::trash() const
{
    auto found = moc().fetch(model::deletedTasks());
    if (found)
        return std::move(*found);
    m_delegate.user().presentError(found.error());
    return {};
}

void MainMenuController::emptyTrash()
{
    {
        const UndoGroup group(moc(), tr("Empty Trash"));
        for (ManagedObject *task : trash())
            moc().remove(*task);
    }
    m_delegate.saveAction();
}

void MainMenuController::emptyTrashFromContextMenu()
{
    const UndoGroup group(moc(), tr("Empty Trash"));
    for (ManagedObject *task : trash())
        task->setValue("markedDeleted", true);
}

} // namespace viewcontrollers
