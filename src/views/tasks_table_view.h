// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"
#include "viewcontrollers/tasks_array_controller.h"

#include <QMenu>
#include <QTreeView>

namespace views {

/// The table of tasks. Shows the columns that the settings ask for and keeps their order, widths and sorting from run
/// to run.
class TasksTableView final : public QTreeView
{
    Q_OBJECT

public:
    /// All must outlive the view.
    TasksTableView(
        viewcontrollers::TasksArrayController &tasks, foundation::Settings &settings, QWidget *parent = nullptr);

    /// Shows and hides columns as the settings say.
    void configureColumns();
    /// Shows the column of what is near while the lists are narrowed to it.
    void showCurrentLocation(bool isShown);
    void saveLayout();

    [[nodiscard]] std::vector<model::Tasks *> selectedTasks() const;
    void setMenu(QMenu *menu) { m_menu = menu; }
    /// Begins to edit the title of the current task in its row.
    void editTitle();
    void selectTask(const model::Tasks &task);

Q_SIGNALS:
    void selectionMoved();
    void completeToggled(const std::vector<model::Tasks *> &tasks, bool complete);
    void starToggled(const std::vector<model::Tasks *> &tasks, bool star);

protected:
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void startDrag(Qt::DropActions actions) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void restoreLayout();
    void fitTitle();
    void hover(const QModelIndex &index);
    [[nodiscard]] std::vector<model::Tasks *> selectionWith(const QModelIndex &index) const;

    viewcontrollers::TasksArrayController &m_tasks;
    foundation::Settings &m_settings;
    QMenu *m_menu = nullptr;
    QPersistentModelIndex m_hovered;
    bool m_showsCurrentLocation = false;
};

} // namespace views
