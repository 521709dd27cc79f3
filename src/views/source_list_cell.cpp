// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/source_list_cell.h"

#include "viewcontrollers/source_list_controller.h"
#include "views/cell_painting.h"
#include "views/icons.h"
#include "views/theme.h"

#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QPainter>

namespace views {

using viewcontrollers::SourceKind;
using viewcontrollers::SourceListController;

namespace {

constexpr int iconSize = 20;
constexpr int iconGap = 8;
constexpr int sideMargin = 8; // of the selection from the edges of the list
constexpr int leftPadding = 10;

constexpr int badgeHeight = 14;
constexpr int badgeMargin = 5;
constexpr int narrowBadge = 20;
constexpr double narrowText = 8;

QString iconName(const QModelIndex &index)
{
    return index.data(SourceListController::IconRole).toString();
}

bool isGroupCell(const QModelIndex &index)
{
    return iconName(index).isEmpty();
}

QFont groupFont(const QFont &base)
{
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() * 0.82);
    font.setWeight(QFont::DemiBold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    return font;
}

QRect selectionRect(const QStyleOptionViewItem &option)
{
    const auto *view = qobject_cast<const QAbstractScrollArea *>(option.widget);
    const int width = view ? view->viewport()->width() : option.rect.right(); // beside the scroll bar
    return {sideMargin, option.rect.top() + 1, width - 2 * sideMargin, option.rect.height() - 2};
}

} // namespace

QRect ImageAndTextCell::titleRect(const QRect &row, const QModelIndex &index, int badgeWidth)
{
    const int left = row.left() + leftPadding + (isGroupCell(index) ? 0 : iconSize + iconGap);
    return {left, row.top(), row.right() - badgeWidth - left - leftPadding, row.height()};
}

void ImageAndTextCell::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Theme &theme = Theme::current();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool hasFocus = option.widget && option.widget->hasFocus();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);

    const QRect row = selectionRect(option);
    if (isSelected || (option.state.testFlag(QStyle::State_MouseOver) && !isGroupCell(index))) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(!isSelected ? mixed(theme.text, theme.sidebar, 0.05)
                : hasFocus            ? theme.selection
                                      : mixed(theme.text, theme.sidebar, 0.10));
        painter->drawRoundedRect(row, 7, 7);
    }

    if (isGroupCell(index)) {
        painter->setFont(groupFont(option.font));
        painter->setPen(isSelected ? theme.text : theme.muted);
        drawLine(painter, option, placed(option, row, titleRect(row, index, 0).adjusted(0, 6, 0, 0)),
            index.data().toString());
        painter->restore();
        return;
    }

    const QString name = iconName(index);
    const int indent = index.parent().isValid() ? 4 : 0;
    const QRect image(row.left() + leftPadding + indent, row.center().y() - iconSize / 2 + 1, iconSize, iconSize);
    painter->drawPixmap(placed(option, row, image).topLeft(),
        iconPixmap(name, iconTint(name), iconSize, painter->device()->devicePixelRatioF()));

    QStyleOptionViewItem badgeOption = option;
    badgeOption.rect = row;
    const QVariant count = index.data(SourceListController::BadgeRole);
    const int badgeWidth = count.isValid() ? drawBadge(painter, badgeOption, count.toInt()) : 0;

    painter->setFont(option.font);
    painter->setPen(theme.text);
    drawLine(painter, option, placed(option, row, titleRect(row, index, badgeWidth).adjusted(indent, 0, 0, 0)),
        index.data().toString());
    painter->restore();
}

/// Draws the pill at the right end of the row and returns what it takes of it.
int ImageAndTextCell::drawBadge(QPainter *painter, const QStyleOptionViewItem &option, int count)
{
    const Theme &theme = Theme::current();
    const QString text = QString::number(count);
    QFont measured = option.font;
    measured.setPixelSize(12);
    const double textWidth = QFontMetricsF(measured).horizontalAdvance(text);
    const int width = textWidth >= narrowText ? static_cast<int>(textWidth + 6) : narrowBadge;

    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool hasFocus = option.widget && option.widget->hasFocus();
    const bool isVisible = option.widget && option.widget->window()->isVisible();
    const QColor fill = isSelected ? (theme.isDark ? theme.text : QColor(Qt::white))
        : isVisible && hasFocus    ? theme.badge
                                   : theme.badgeInactive;
    const QColor ink = isSelected && !isVisible ? theme.faint
        : isSelected                            ? QColor(Qt::black)
                                                : (theme.isDark ? theme.text : QColor(Qt::black));

    QFont font = option.font;
    font.setPixelSize(11);
    font.setBold(true);
    const QRect pill = placed(option, option.rect,
        {option.rect.right() - badgeMargin - width + 1, option.rect.center().y() - badgeHeight / 2 + 1, width,
            badgeHeight});
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRoundedRect(pill, 7, 8);
    painter->setFont(font);
    painter->setPen(ink);
    painter->drawText(pill, Qt::AlignCenter, text);
    return width + badgeMargin;
}

QSize ImageAndTextCell::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int text = option.fontMetrics.height();
    return {120, isGroupCell(index) ? text + 18 : std::max(iconSize, text) + 11};
}

QWidget *ImageAndTextCell::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setObjectName(QStringLiteral("titleEditor"));
    editor->setAccessibleName(tr("Title of %1").arg(index.data().toString()));
    return editor;
}

void ImageAndTextCell::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    const QString title = index.data(Qt::EditRole).toString();
    if (line && !line->isModified() && line->text() != title) // refreshed while it is open, it keeps what was typed
        line->setText(title);
}

void ImageAndTextCell::updateEditorGeometry(
    QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QRect rect = titleRect(selectionRect(option), index, 0);
    rect.adjust(-6, -1, leftPadding - 2, 1);
    editor->setGeometry(placed(option, selectionRect(option), rect));
}

} // namespace views
