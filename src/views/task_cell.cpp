// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/task_cell.h"

#include "views/cell_painting.h"
#include "views/icons.h"
#include "views/theme.h"

#include <QMouseEvent>
#include <QPainter>

namespace views {

using viewcontrollers::TaskColumn;
using viewcontrollers::TasksArrayController;

namespace {

constexpr int boxSize = 18;
constexpr int boxLeft = 16;
constexpr int boxGap = 11;
constexpr int starSize = 18;
constexpr int textMargin = 8;

QRect boxRect(const QStyleOptionViewItem &option)
{
    const QRect &cell = option.rect;
    return placed(option, cell, {cell.left() + boxLeft, cell.center().y() - boxSize / 2 + 1, boxSize, boxSize});
}

/// The colour of what is secondary in a row.
QColor quietInk(const QStyleOptionViewItem &option)
{
    const Theme &theme = Theme::current();
    return option.state.testFlag(QStyle::State_Selected) ? theme.mutedSelected : theme.muted;
}

TaskColumn columnOf(const QModelIndex &index)
{
    return static_cast<TaskColumn>(index.column());
}

void paintIcon(QPainter *painter, const QRect &cell, const QString &name, const QColor &color)
{
    painter->drawPixmap(cell.center().x() - starSize / 2 + 1, cell.center().y() - starSize / 2 + 1,
        iconPixmap(name, color, starSize, painter->device()->devicePixelRatioF()));
}

} // namespace

void drawTickBox(QPainter *painter, const QRect &rect, bool isTicked, bool isHovered)
{
    const Theme &theme = Theme::current();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect).adjusted(0.75, 0.75, -0.75, -0.75);
    if (isTicked) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(theme.accent);
        painter->drawRoundedRect(QRectF(rect), 5.5, 5.5);
        painter->drawPixmap(rect.topLeft() + QPoint(1, 1),
            iconPixmap(
                QStringLiteral("check"), theme.onAccent, rect.width() - 2, painter->device()->devicePixelRatioF()));
    } else {
        painter->setPen(QPen(isHovered ? theme.accent : mixed(theme.text, theme.list, 0.45), 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(box, 5, 5);
    }
    painter->restore();
}

int TaskCell::titleInset()
{
    return boxLeft + boxSize + boxGap;
}

void TaskCell::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Theme &theme = Theme::current();
    switch (columnOf(index)) {
    case TaskColumn::Title:
        paintTitle(painter, option, index);
        return;
    case TaskColumn::Star: {
        const bool isStarred = index.data(Qt::EditRole).toBool();
        const bool isOver = option.state.testFlag(QStyle::State_MouseOver);
        if (isStarred || isOver || option.state.testFlag(QStyle::State_Selected))
            paintIcon(painter, option.rect, isStarred ? QStringLiteral("star-filled") : QStringLiteral("star"),
                isStarred ? theme.star : mixed(theme.text, theme.list, 0.3));
        return;
    }
    case TaskColumn::CurrentLocation:
        if (index.data(Qt::EditRole).toBool())
            paintIcon(painter, option.rect, QStringLiteral("location"), iconTint(QStringLiteral("location")));
        return;
    default:
        paintText(painter, option, index);
    }
}

void TaskCell::paintTitle(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const Theme &theme = Theme::current();
    const bool isComplete = index.data(TasksArrayController::CompleteRole).toBool();
    drawTickBox(painter, boxRect(option), isComplete, option.state.testFlag(QStyle::State_MouseOver));

    QFont font = option.font;
    font.setStrikeOut(isComplete);
    painter->setFont(font);
    painter->setPen(isComplete ? quietInk(option) : theme.text);
    drawLine(painter, option, placed(option, option.rect, option.rect.adjusted(titleInset(), 0, -textMargin, 0)),
        index.data().toString().replace(QLatin1Char('\n'), QLatin1Char(' ')));
}

void TaskCell::paintText(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const Theme &theme = Theme::current();
    const bool isOverdue
        = columnOf(index) == TaskColumn::DueDate && index.data(TasksArrayController::OverdueRole).toBool();
    painter->setFont(option.font);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->setPen(!isOverdue ? quietInk(option) : isSelected ? theme.overdueSelected : theme.overdue);
    drawLine(painter, option, option.rect.adjusted(textMargin, 0, -textMargin, 0), index.data().toString());
}

QSize TaskCell::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return {60, std::max(boxSize, option.fontMetrics.height()) + 18};
}

bool TaskCell::editorEvent(
    QEvent *event, QAbstractItemModel *, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const bool isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (!isPress && event->type() != QEvent::MouseButtonRelease)
        return false;
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton || mouse->modifiers() != Qt::NoModifier)
        return false;
    const bool isTickBox
        = columnOf(index) == TaskColumn::Title && boxRect(option).adjusted(-6, -8, 5, 8).contains(mouse->pos());
    const bool isStar = columnOf(index) == TaskColumn::Star && option.rect.contains(mouse->pos());
    if (!isTickBox && !isStar)
        return false;
    if (isPress)
        return true; // so that the click neither edits nor opens
    if (isTickBox)
        Q_EMIT completeToggled(index, !index.data(TasksArrayController::CompleteRole).toBool());
    else
        Q_EMIT starToggled(index, !index.data(Qt::EditRole).toBool());
    return true;
}

} // namespace views
