// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace views {

/// Draws the cells of the task table and takes clicks on the tick box and the star.
class TaskCell final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
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
};

/// A tick box: a ring that fills with the accent.
void drawTickBox(QPainter *painter, const QRect &rect, bool isTicked, bool isHovered);

} // namespace views
