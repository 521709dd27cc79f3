// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's commands: which part carries each one out, and when it is available.
#include "app/text.h"
#include "model/settings_defaults.h"
#include "views/detail_pane.h"
#include "views/first_run_controller.h"
#include "views/icons.h"
#include "views/main_window.h"
#include "views/management_window.h"
#include "views/preferences_window.h"
#include "views/shortcuts_window.h"
#include "views/smart_folder_edit_controller.h"
#include "views/source_list_view.h"
#include "views/tag_browser.h"
#include "views/task_drop_zone.h"
#include "views/tasks_table_view.h"
#include "views/theme.h"
#include "views/tip_view.h"

#include <QKeyEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
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
        .smartFolders = menuOf({Command::NewSmartFolder}),
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

/// What is being typed into a row of a list goes into its record; the editor stays open.
void MainWindow::commitOpenEditors()
{
    for (QAbstractItemView *view : findChildren<QAbstractItemView *>()) {
        for (QWidget *editor : view->viewport()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!editor->isHidden()) // one that is hidden is on its way out
                Q_EMIT view->itemDelegate()->commitData(editor);
        }
    }
}

void MainWindow::connectParts()
{
    connect(&m_delegate, &TMApplicationDelegate::commitEditing, this, &MainWindow::commitOpenEditors);
    connect(m_outline, &FoldersOutlineView::selectionMoved, this, &MainWindow::showSelectedSource);
    connect(m_outline, &QAbstractItemView::clicked, this, [this] {
        if (m_shown == Shown::Search)
            showSelectedSource(); // the list that is still selected
    });
    connect(m_outline, &QAbstractItemView::doubleClicked, action(Command::EditSmartFolder), &QAction::trigger);
    connect(&m_sources, &SourceListController::refreshed, this, &MainWindow::refreshTasks);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::updateStatusLine);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::updateTip);
    connect(&m_tasks, &TasksArrayController::contentChanged, this, &MainWindow::showSelectedTasks);
    acceptDrops();
    connect(m_newTask, &QLineEdit::returnPressed, this, &MainWindow::addTaskFromField);
    connect(m_searchField, &QLineEdit::textEdited, this, &MainWindow::search);
    connect(m_tagBrowser, &TagBrowser::tagSelectionChanged, this, [this] { showTasks(Shown::Tags); });
    connect(m_table, &TasksTableView::selectionMoved, this, &MainWindow::showSelectedTasks);
    connect(m_table, &TasksTableView::completeToggled, &m_commands, &TaskCommands::setComplete);
    connect(m_table, &TasksTableView::starToggled, &m_commands, &TaskCommands::setStar);
    m_rotationTimer.setInterval(50);
    connect(&m_rotationTimer, &QTimer::timeout, this, &MainWindow::rotateSyncButton);
    connect(&m_delegate, &TMApplicationDelegate::statusTextChanged, this, &MainWindow::updateStatusLine);
    connect(&m_delegate, &TMApplicationDelegate::syncDidBegin, this, [this] { showSyncing(true); });
    connect(&m_delegate, &TMApplicationDelegate::syncDidEnd, this, [this] { showSyncing(false); });
    connect(&m_delegate.locationController(), &app::QVLLocationManagerDelegate::statusChanged, this, [this] {
        updateHeadline();
        updateStatusLine();
        updateTip();
    });
    connect(&m_delegate, &TMApplicationDelegate::dockBadgeChanged, this, &MainWindow::updateWindowTitle);
    connect(&m_delegate, &TMApplicationDelegate::columnsDidChange, m_table, &TasksTableView::configureColumns);
    connect(&m_delegate, &TMApplicationDelegate::settingsDidChangeElsewhere, this, [this] {
        applyVisibility();
        Q_EMIT appearanceChanged();
    });
    connect(&m_delegate, &TMApplicationDelegate::objectsDidChange, this, &MainWindow::updateUndoCommands,
        Qt::QueuedConnection); // after the undo manager has closed the group
}

void MainWindow::acceptDrops()
{
    for (QWidget *target : {m_table->viewport(), static_cast<QWidget *>(m_tip)}) {
        auto *zone = new TaskDropZone(target);
        connect(zone, &TaskDropZone::dropped, this, [this](const viewcontrollers::DroppedTask &dropped) {
            model::Tasks &task = m_commands.addDroppedTask(dropped, targetFolder());
            refreshTasks();
            m_table->selectTask(task);
        });
    }
}

void MainWindow::connectTaskCommands()
{
    const auto selected = [this] { return m_table->selectedTasks(); };
    on(Command::NewTask, [this] { newTask(false); });
    on(Command::CloneTask, [this] { newTask(true); });
    on(Command::QuickTask, [this] { m_delegate.quickTask(); });
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
    on(Command::NewSmartFolder, [this] { newSmartFolder(); });
    on(Command::EditSmartFolder, [this, record] {
        if (auto *smartFolder = model::as<model::SmartFolder>(record()))
            editSmartFolder(*smartFolder);
    });
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

void MainWindow::connectWindowCommands()
{
    on(Command::Preferences, [this] { openPreferencesWindow(); });
    on(Command::Shortcuts, [this] { (new ShortcutsWindow(m_commandSet, this))->show(); });
    on(Command::About, [this] {
        QMessageBox::about(this, tr("About Quelvin"),
            tr("Quelvin %1\nTasks, the getting-things-done way.").arg(QCoreApplication::applicationVersion()));
    });
    const std::pair<Command, Managed> windows[]
        = {{Command::ManageFolders, Managed::Folders}, {Command::ManageContexts, Managed::Contexts},
            {Command::ManageTags, Managed::Tags}, {Command::ManageSmartFolders, Managed::SmartFolders}};
    for (const auto &[command, kind] : windows)
        on(command, [this, managed = kind] {
            auto *window = new ManagementWindow(managed, m_delegate, m_listCommands, this);
            connect(window, &ManagementWindow::editRequested, this, &MainWindow::editSmartFolder);
            window->show();
        });
}

void MainWindow::openPreferencesWindow()
{
    auto *window = new PreferencesWindow(m_delegate, this);
    connect(window, &PreferencesWindow::visibilityChanged, this, &MainWindow::applyVisibility);
    connect(window, &PreferencesWindow::appearanceChanged, this, &MainWindow::appearanceChanged);
    window->show();
}

void MainWindow::applyVisibility()
{
    const QSignalBlocker blocker(action(Command::ShowCompleted));
    action(Command::ShowCompleted)->setChecked(m_delegate.settings().boolean(keys::ShowCompletedTasks));
    m_sources.refreshOutlineView();
}

void MainWindow::showFirstRun()
{
    (new FirstRunController(m_delegate, this))->show();
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
            const QModelIndex place = m_sources.indexOf(wanted);
            action(Command::TagBrowser)->setChecked(false);
            if (m_outline->selectedRow() == place)
                showSelectedSource(); // under a search
            else
                m_outline->selectRow(place);
        });
    on(Command::FocusLists, [this] { m_sidebarPages->currentWidget()->setFocus(); });
    on(Command::FocusTasks, [this] {
        m_table->setFocus(); // which may make a row the current one without selecting it
        if (!m_table->selectionModel()->hasSelection())
            m_table->setCurrentIndex(m_table->currentIndex().isValid() ? m_table->currentIndex() : m_tasks.index(0, 0));
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
    action(Command::EditSmartFolder)->setEnabled(kind == SourceKind::SmartFolder);
    action(Command::Archive)->setEnabled(kind == SourceKind::Folder && m_sources.isRenamable(source));
    action(Command::Unarchive)->setEnabled(kind == SourceKind::ArchivedFolder);
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

/// One that is made and then cancelled goes again.
void MainWindow::newSmartFolder()
{
    model::SmartFolder &made = m_listCommands.newSmartFolder();
    m_sources.refreshOutlineView();
    action(Command::TagBrowser)->setChecked(false);
    m_outline->selectRow(m_sources.indexOf(made));
    SmartFolderEditController *editor = editSmartFolder(made);
    editor->editTitle();
    connect(editor, &QDialog::rejected, this, [this, &made] {
        if (!made.isDeleted())
            m_listCommands.deleteRecord(made);
    });
}

SmartFolderEditController *MainWindow::editSmartFolder(model::SmartFolder &smartFolder)
{
    const auto open = findChildren<SmartFolderEditController *>();
    const auto same = std::find_if(open.begin(), open.end(),
        [&](const auto *editor) { return editor->isVisible() && &editor->smartFolder() == &smartFolder; });
    auto *editor
        = same == open.end() ? new SmartFolderEditController(m_delegate, m_tasks.catalog(), smartFolder, this) : *same;
    editor->show();
    editor->raise();
    editor->activateWindow();
    return editor;
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
    m_delegate.filterTasks(byLocation);
    if (byLocation)
        m_tasks.setFilterPredicate(objectstore::Predicate::format("isCurrentLocation==YES"));
    else
        m_tasks.setFilterPredicate(std::nullopt);
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
    action(Command::Sync)->setToolTip(isSyncing ? QString() : tr("Sync with Toodledo"));
    m_syncAngle = 0;
    if (isSyncing)
        m_rotationTimer.start();
    else
        m_rotationTimer.stop();
    rotateSyncButton();
    updateStatusLine();
}

/// Turns the button's arrows a step further while a synchronisation runs.
void MainWindow::rotateSyncButton()
{
    constexpr int step = 15;
    if (!m_rotationTimer.isActive()) {
        action(Command::Sync)->setIcon(icon(QStringLiteral("sync")));
        return;
    }
    m_syncAngle = (m_syncAngle + step) % 360;
    const QPixmap upright = iconPixmap(QStringLiteral("sync"), Theme::current().accent, 20, devicePixelRatioF());
    QPixmap turned(upright.size());
    turned.setDevicePixelRatio(upright.devicePixelRatio());
    turned.fill(Qt::transparent);
    QPainter painter(&turned);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.translate(10, 10);
    painter.rotate(m_syncAngle);
    painter.drawPixmap(-10, -10, upright);
    painter.end();
    action(Command::Sync)->setIcon(turned);
}

} // namespace views
