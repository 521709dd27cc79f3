// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/main_menu_controller.h"
#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_commands.h"
#include "viewcontrollers/tasks_array_controller.h"
#include "views/command_set.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>

namespace views {

class DetailPane;
class FoldersOutlineView;
class SmartFolderEditController;
class TagBrowser;
class TasksTableView;
class TipPlaceHolderView;

/// The main window: lists at the left, their tasks in the middle, the selected task at the right. Closing it ends the
/// program, once everything is saved or the user says so.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(app::TMApplicationDelegate &delegate);
    ~MainWindow() override;

    /// Brings the window to the front.
    void showMainApplicationWindow();
    void openPreferencesWindow();
    /// The window of a new user.
    void showFirstRun();
    [[nodiscard]] QAction *action(Command command) const { return m_commandSet.action(command); }

Q_SIGNALS:
    /// The user has chosen other colours.
    void appearanceChanged();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// What decides which tasks are listed.
    enum class Shown { Source, Search, Tags };

    QWidget *makeSidebar();
    QWidget *makeCenter();
    QWidget *makeHeader();
    QWidget *makeStatusBar();
    QToolButton *makeToolButton(Command command);
    void makeMenus();
    void commitOpenEditors();
    void connectParts();
    void acceptDrops();
    void connectTaskCommands();
    void connectListCommands();
    void connectViewCommands();
    void connectWindowCommands();
    void on(Command command, const std::function<void()> &run);

    // The list of tasks.
    void showTasks(Shown shown);
    void showSelectedSource();
    [[nodiscard]] std::optional<objectstore::FetchRequest> shownTasks() const;
    void refreshTasks();
    void showSelectedTasks();
    void updateHeadline();
    void updateWindowTitle();
    void applyVisibility();
    void updateStatusLine();
    void updateTip();
    [[nodiscard]] bool isAboutLocation() const;
    [[nodiscard]] QString placeText() const;
    void updateCommands();
    void updateUndoCommands();

    // Commands.
    void addTaskFromField();
    void newTask(bool isClone);
    [[nodiscard]] model::Folders *targetFolder();
    void addRecord(objectstore::ManagedObject &record);
    void newSmartFolder();
    SmartFolderEditController *editSmartFolder(model::SmartFolder &smartFolder);
    void toggleTagExplorer(bool isShown);
    void filterTasks(bool byLocation);
    void search(const QString &text);
    void endSearch();
    void showSyncing(bool isSyncing);
    void rotateSyncButton();
    void restoreGeometryAndState();
    void saveGeometryAndState();

    app::TMApplicationDelegate &m_delegate;
    viewcontrollers::SourceListController m_sources;
    viewcontrollers::TasksArrayController m_tasks;
    viewcontrollers::TaskCommands m_commands;
    viewcontrollers::MainMenuController m_listCommands;
    CommandSet m_commandSet;
    Shown m_shown = Shown::Source;
    QTimer m_rotationTimer;
    int m_syncAngle = 0;

    QSplitter *m_splitter = nullptr;
    QLineEdit *m_searchField = nullptr;
    QStackedWidget *m_sidebarPages = nullptr;
    FoldersOutlineView *m_outline = nullptr;
    TagBrowser *m_tagBrowser = nullptr;
    QStackedWidget *m_listPages = nullptr;
    TasksTableView *m_table = nullptr;
    TipPlaceHolderView *m_tip = nullptr;
    DetailPane *m_detail = nullptr;
    QLabel *m_headline = nullptr;
    QLabel *m_subline = nullptr;
    QLabel *m_statusLine = nullptr;
    QLineEdit *m_newTask = nullptr;
    QToolButton *m_menuButton = nullptr;
    QMenu *m_tasksContextMenu = nullptr;
    QMenu *m_trashContextMenu = nullptr;
};

} // namespace views
