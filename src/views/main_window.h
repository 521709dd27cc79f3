// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/source_list_controller.h"
#include "viewcontrollers/task_commands.h"
#include "viewcontrollers/tasks_array_controller.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSplitter>
#include <QToolButton>

namespace views {

class FoldersOutlineView;
class TasksTableView;

/// The main window: lists at the left, their tasks in the middle. Closing it ends the program, once everything is
/// saved or the user says so.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(app::TMApplicationDelegate &delegate);
    ~MainWindow() override;

    /// Brings the window to the front.
    void showMainApplicationWindow();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *makeSidebar();
    QWidget *makeCenter();
    QWidget *makeHeader();
    void makeActions();
    void connectParts();
    void showSelectedSource();
    void refreshTasks();
    void addTaskFromField();
    void updateHeadline();
    void updateStatusLine();
    void showSyncing(bool isSyncing);
    void restoreGeometryAndState();
    void saveGeometryAndState();

    app::TMApplicationDelegate &m_delegate;
    viewcontrollers::SourceListController m_sources;
    viewcontrollers::TasksArrayController m_tasks;
    viewcontrollers::TaskCommands m_commands;

    QSplitter *m_splitter = nullptr;
    FoldersOutlineView *m_outline = nullptr;
    TasksTableView *m_table = nullptr;
    QLabel *m_headline = nullptr;
    QLabel *m_subline = nullptr;
    QLabel *m_statusLine = nullptr;
    QLineEdit *m_newTask = nullptr;
    QAction *m_syncAction = nullptr;
};

} // namespace views
