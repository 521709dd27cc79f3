// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "viewcontrollers/tasks_array_controller.h"

#include <QStyledItemDelegate>

namespace views {

/// Draws the cells of the task table, edits them in their place, and takes clicks on the tick box and the star.
class TaskCell final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// `tasks` must outlive the delegate.
    explicit TaskCell(viewcontrollers::TasksArrayController &tasks, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    void updateEditorGeometry(
        QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
        const QModelIndex &index) override;

    /// Where the title begins in its cell, which is where the line below the row begins.
    [[nodiscard]] static int titleInset();

Q_SIGNALS:
    void completeToggled(const QModelIndex &index, bool complete);
    void starToggled(const QModelIndex &index, bool star);

private:
    static void paintTitle(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index);
    static void paintText(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index);

    viewcontrollers::TasksArrayController &m_tasks;
};

/// A tick box: a ring that fills with the accent.
void drawTickBox(QPainter *painter, const QRect &rect, bool isTicked, bool isHovered);

} // namespace views
