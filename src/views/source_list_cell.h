// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace views {

/// Draws a row of the source list: icon, title, and the count in a pill whose colours follow selection and focus; the
/// header of a group as its title alone.
class ImageAndTextCell final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void updateEditorGeometry(
        QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    [[nodiscard]] static QRect titleRect(const QRect &row, const QModelIndex &index, int badgeWidth);
    static int drawBadge(QPainter *painter, const QStyleOptionViewItem &option, int count);
};

} // namespace views
