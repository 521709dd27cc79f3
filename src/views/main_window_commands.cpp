// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's commands: which part carries each one out, and when it is available.
#include "app/text.h"
#include "model/settings_defaults.h"
#include "views/detail_pane.h"
#include "views/main_window.h"
#include "views/source_list_view.h"
#include "views/tag_browser.h"
#include "views/tasks_table_view.h"

#include <QKeyEvent>
#include <QMenuBar>
#include <QTimer>

namespace views {

using app::TMApplicationDelegate;
using objectstore::ManagedObject;
using viewcontrollers::SourceKind;
using viewcontrollers::SourceListController;
using viewcontrollers::TaskCommands;
using viewcontrollers::TasksArrayController;
namespace keys = model::keys;

void MainWindow::on(Command command, const std::function<void()> &run)
{
    connect(action(command), &QAction::triggered, this, run);
}

void MainWindow::makeMenus()
{
    const QList<QMenu *> menus = m_commandSet.makeMenus(this);
    auto *allMenus = new QMenu(this);
    for (QMenu *menu : menus) {
        menuBar()->addMenu(menu);
        allMenus->addMenu(menu);
    }
    m_menuButton->setMenu(allMenus);

    const auto menuOf = [this](std::initializer_list<Command> commands) {
        auto *menu = new QMenu(this);
        for (const Command command : commands)
            menu->addAction(action(command));
        return menu;
    };
    auto *trashMenu = new QMenu(this);
    connect(trashMenu->addAction(tr("Empty Trash")), &QAction::triggered, &m_listCommands,
        [this] { m_listCommands.emptyTrashFromContextMenu(); });
    m_outline->setMenus({
        .folder = menuOf({Command::Rename, Command::Archive, Command::DeleteList}),
        .context = menuOf({Command::Rename, Command::DeleteList}),
        .smartFolder = menuOf({Command::EditSmartFolder, Command::Rename, Command::DeleteList}),
        .archivedFolder = menuOf({Command::Rename, Command::Unarchive, Command::DeleteList}),
        .trash = trashMenu,
    });
    m_tasksContextMenu = menuOf({Command::EditTitle, Command::ToggleComplete, Command::ToggleStar, Command::CloneTask,
        Command::ClearStartDate, Command::ClearDueDate, Command::RemoveTask});
    m_trashContextMenu = menuOf({Command::UndeleteTask});
    m_table->setMenu(m_tasksContextMenu);

    // These keys mean something else elsewhere, so they hold in the table alone.
    for (const Command command : {Command::RemoveTask, Command::UndeleteTask, Command::ToggleComplete}) {
        removeAction(action(command));
        action(command)->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_table->addAction(action(command));
    }
}

void MainWindow::connectParts()
{
    connect(m_outline, &FoldersOutlineView::selectionMoved, this, &MainWindow::showSelectedSource);
    connect(m_outline, &QAbstractItemView::clicked, this, [this] {
        if (m_shown == Shown::Search)
            showSelectedSource(); // the list that is still selected
    });
    connect(&m_sources, &SourceListController::refreshed, this, &MainWindow::refreshTasks);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::updateStatusLine);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::updateTip);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::showSelectedTasks);
    connect(m_newTask, &QLineEdit::returnPressed, this, &MainWindow::addTaskFromField);
    connect(m_searchField, &QLineEdit::textEdited, this, &MainWindow::search);
    connect(m_tagBrowser, &TagBrowser::tagSelectionChanged, this, [this] { showTasks(Shown::Tags); });
    connect(m_table, &TasksTableView::selectionMoved, this, &MainWindow::showSelectedTasks);
    connect(m_table, &TasksTableView::completeToggled, &m_commands, &TaskCommands::setComplete);
    connect(m_table, &TasksTableView::starToggled, &m_commands, &TaskCommands::setStar);
    connect(&m_delegate, &TMApplicationDelegate::statusTextChanged, this, &MainWindow::updateStatusLine);
    connect(&m_delegate, &TMApplicationDelegate::syncDidBegin, this, [this] { showSyncing(true); });
    connect(&m_delegate, &TMApplicationDelegate::syncDidEnd, this, [this] { showSyncing(false); });
    connect(&m_delegate, &TMApplicationDelegate::columnsDidChange, m_table, &TasksTableView::configureColumns);
    connect(&m_delegate, &TMApplicationDelegate::objectsDidChange, this, &MainWindow::updateUndoCommands,
        Qt::QueuedConnection); // after the undo manager has closed the group
}

void MainWindow::connectTaskCommands()
{
    const auto selected = [this] { return m_table->selectedTasks(); };
    on(Command::NewTask, [this] { newTask(false); });
    on(Command::CloneTask, [this] { newTask(true); });
    on(Command::EditTitle, [this] { m_detail->isVisible() ? m_detail->editTitle() : m_table->editTitle(); });
    on(Command::ToggleComplete, [this, selected] {
        const auto tasks = selected();
        const bool allComplete
            = std::all_of(tasks.begin(), tasks.end(), [](const model::Tasks *task) { return task->complete(); });
        m_commands.setComplete(tasks, !allComplete);
    });
    on(Command::ToggleStar, [this, selected] {
        const auto tasks = selected();
        const bool allStarred
            = std::all_of(tasks.begin(), tasks.end(), [](const model::Tasks *task) { return task->star(); });
        m_commands.setStar(tasks, !allStarred);
    });
    on(Command::RemoveTask, [this, selected] {
        m_commands.removeTasks(selected());
        refreshTasks();
    });
    on(Command::UndeleteTask, [this, selected] {
        m_commands.undeleteTasks(selected());
        refreshTasks();
    });
    on(Command::ClearStartDate, [this, selected] { m_commands.clearStartDate(selected()); });
    on(Command::ClearDueDate, [this, selected] { m_commands.clearDueDate(selected()); });
    on(Command::Undo, [this] {
        Q_EMIT m_delegate.commitEditing();
        m_commands.undo();
        m_sources.refreshOutlineView();
    });
    on(Command::Redo, [this] {
        m_commands.redo();
        m_sources.refreshOutlineView();
    });
    on(Command::Sync, [this] { m_delegate.synchronizeTasks(); });
    on(Command::Quit, [this] { close(); });
}

void MainWindow::connectListCommands()
{
    const auto record = [this] { return m_sources.record(m_outline->selectedRow()); };
    on(Command::NewFolder, [this] { addRecord(m_listCommands.newFolder()); });
    on(Command::NewContext, [this] { addRecord(m_listCommands.newContext()); });
    on(Command::NewSmartFolder, [this] { addRecord(m_listCommands.newSmartFolder()); });
    on(Command::Rename, [this] {
        // on the next turn, when the menu has gone and given the focus back
        QTimer::singleShot(0, m_outline, [this] { m_outline->editOutlineRow(m_outline->selectedRow()); });
    });
    on(Command::DeleteList, [this, record] {
        if (ManagedObject *selected = record())
            m_listCommands.deleteRecord(*selected);
    });
    on(Command::Archive, [this, record] { m_listCommands.setArchived(*record(), true); });
    on(Command::Unarchive, [this, record] { m_listCommands.setArchived(*record(), false); });
    on(Command::EmptyTrash, [this] {
        m_listCommands.emptyTrash();
        m_sources.refreshOutlineView();
    });
}

void MainWindow::connectViewCommands()
{
    on(Command::Find, [this] {
        m_searchField->setFocus();
        m_searchField->selectAll();
    });
    action(Command::ShowCompleted)->setChecked(m_delegate.settings().boolean(keys::ShowCompletedTasks));
    connect(action(Command::ShowCompleted), &QAction::toggled, this, [this](bool isShown) {
        m_delegate.settings().set(keys::ShowCompletedTasks, isShown);
        m_sources.refreshOutlineView();
    });
    connect(action(Command::FilterByLocation), &QAction::toggled, this, &MainWindow::filterTasks);
    connect(action(Command::TagBrowser), &QAction::toggled, this, &MainWindow::toggleTagExplorer);
    connect(action(Command::ShowDetails), &QAction::toggled, m_detail, &QWidget::setVisible);
    connect(action(Command::ShowMenuBar), &QAction::toggled, menuBar(), &QWidget::setVisible);
    menuBar()->hide();
    action(Command::TagBrowser)->setToolTip(tr("Show Tag Browser"));
    action(Command::FilterByLocation)->setToolTip(tr("Turn location filtering on"));
    const std::pair<Command, SourceKind> places[]
        = {{Command::GoToToday, SourceKind::Today}, {Command::GoToInbox, SourceKind::Inbox},
            {Command::GoToLocation, SourceKind::Location}, {Command::GoToTrash, SourceKind::Trash}};
    for (const auto &[command, kind] : places)
        on(command, [this, wanted = kind] {
            m_outline->selectRow(m_sources.indexOf(wanted));
            showSelectedSource(); // also when it was selected, under a search
        });
    on(Command::FocusLists, [this] { m_sidebarPages->currentWidget()->setFocus(); });
    on(Command::FocusTasks, [this] {
        m_table->setFocus();
        if (!m_table->currentIndex().isValid())
            m_table->setCurrentIndex(m_tasks.index(0, 0));
    });
}

void MainWindow::updateCommands()
{
    const QModelIndex source = m_outline->selectedRow();
    const ManagedObject *record = m_sources.record(source);
    const SourceKind kind = m_sources.kind(source);
    const auto tasks = m_table->selectedTasks();
    const bool isTrash = m_shown == Shown::Source && kind == SourceKind::Trash;
    for (const Command command : {Command::EditTitle, Command::ClearStartDate, Command::ClearDueDate})
        action(command)->setEnabled(tasks.size() == 1);
    for (const Command command : {Command::CloneTask, Command::ToggleComplete, Command::ToggleStar})
        action(command)->setEnabled(!tasks.empty());
    action(Command::RemoveTask)->setEnabled(!tasks.empty() && !isTrash);
    action(Command::UndeleteTask)->setEnabled(!tasks.empty() && isTrash);
    for (const Command command : {Command::Rename, Command::DeleteList})
        action(command)->setEnabled(record && m_sources.isRenamable(source));
    action(Command::Archive)->setEnabled(kind == SourceKind::Folder && m_sources.isRenamable(source));
    action(Command::Unarchive)->setEnabled(kind == SourceKind::ArchivedFolder);
    action(Command::EditSmartFolder)->setEnabled(kind == SourceKind::SmartFolder);
    updateUndoCommands();
}

void MainWindow::updateUndoCommands()
{
    const auto show = [](QAction *shown, bool isPossible, const QString &verb, const QString &name) {
        shown->setEnabled(isPossible);
        shown->setText(name.isEmpty() || !isPossible ? verb : QStringLiteral("%1 %2").arg(verb, name));
    };
    show(action(Command::Undo), m_commands.canUndo(), tr("Undo"), m_commands.undoName());
    show(action(Command::Redo), m_commands.canRedo(), tr("Redo"), m_commands.redoName());
}

model::Folders *MainWindow::targetFolder()
{
    const QModelIndex source = m_outline->selectedRow();
    auto *folder = model::as<model::Folders>(m_sources.record(source));
    if (!folder)
        m_outline->selectRow(m_sources.indexOf(SourceKind::Inbox));
    if (m_shown != Shown::Source) {
        action(Command::TagBrowser)->setChecked(false);
        showSelectedSource();
    }
    return folder;
}

void MainWindow::addTaskFromField()
{
    const QString title = m_newTask->text();
    if (title.simplified().isEmpty())
        return;
    model::Tasks &task = m_commands.addTask(title, targetFolder());
    m_newTask->clear();
    refreshTasks();
    m_table->selectTask(task);
}

void MainWindow::newTask(bool isClone)
{
    model::Folders *folder = targetFolder();
    model::Tasks &task = isClone ? m_commands.cloneTask(folder) : m_commands.addTask({}, folder);
    refreshTasks();
    m_table->selectTask(task);
    action(Command::ShowDetails)->setChecked(true);
    m_detail->editTitle();
}

/// Shows a record that was just made, with its title open for the user's own.
void MainWindow::addRecord(ManagedObject &record)
{
    m_sources.refreshOutlineView();
    action(Command::TagBrowser)->setChecked(false);
    m_outline->editOutlineRow(m_sources.indexOf(record));
}

void MainWindow::toggleTagExplorer(bool isShown)
{
    m_sidebarPages->setCurrentWidget(isShown ? static_cast<QWidget *>(m_tagBrowser) : m_outline);
    QAction *toggle = action(Command::TagBrowser);
    toggle->setText(isShown ? tr("Folders and Contexts") : tr("Tag Browser"));
    toggle->setToolTip(isShown ? tr("Show Folders and Contexts view") : tr("Show Tag Browser"));
    if (isShown) {
        m_tagBrowser->refreshTagsTable();
        showTasks(Shown::Tags);
    } else {
        showSelectedSource();
    }
}

void MainWindow::filterTasks(bool byLocation)
{
    m_delegate.application().setIsFilteringByLocation(byLocation);
    action(Command::FilterByLocation)
        ->setToolTip(byLocation ? tr("Turn location filtering off") : tr("Turn location filtering on"));
    m_table->showCurrentLocation(byLocation);
    if (byLocation)
        m_tasks.setFilterPredicate(objectstore::Predicate::format("isCurrentLocation==YES"));
    else
        m_tasks.setFilterPredicate(std::nullopt);
    m_delegate.saveAction();
    m_sources.refreshOutlineView();
}

void MainWindow::search(const QString &)
{
    showTasks(Shown::Search);
}

void MainWindow::endSearch()
{
    m_searchField->clear();
    if (m_shown == Shown::Search)
        showSelectedSource();
    m_outline->setFocus();
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_searchField && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Escape) {
            endSearch();
            return true;
        }
        if (key == Qt::Key_Down || key == Qt::Key_Return) {
            action(Command::FocusTasks)->trigger();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::showSyncing(bool isSyncing)
{
    action(Command::Sync)->setEnabled(!isSyncing);
    action(Command::Sync)->setToolTip(isSyncing ? QString() : tr("Sync with Toodledo"));
    updateStatusLine();
}

} // namespace views
