// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/quelvin_style.h"

#include "views/task_cell.h"

#include <QComboBox>
#include <QStyleFactory>
#include <QStyleOption>
#include <QStyledItemDelegate>

namespace views {

namespace {
constexpr int boxSize = 18;
constexpr int mostChoices = 14;
} // namespace

QuelvinStyle::QuelvinStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) { }

void QuelvinStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (auto *list = qobject_cast<QComboBox *>(widget)) {
        list->setMaxVisibleItems(mostChoices);
        if (!qobject_cast<QStyledItemDelegate *>(list->itemDelegate()))
            list->setItemDelegate(new QStyledItemDelegate(list)); // the one of a combo box knows no style sheet
    }
}

void QuelvinStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const
{
    if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck) {
        QRect box(0, 0, boxSize, boxSize);
        box.moveCenter(option->rect.center());
        drawTickBox(painter, box, option->state.testFlag(State_On), option->state.testFlag(State_MouseOver));
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

int QuelvinStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    if (metric == PM_IndicatorWidth || metric == PM_IndicatorHeight)
        return boxSize;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int QuelvinStyle::styleHint(
    StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *returned) const
{
    // Without a desktop's theme Qt would draw pictures of its own on OK and Cancel.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
        return 0;
    // The choices of a list open below it, like those of a picker, and not as a menu laid over it.
    if (hint == SH_ComboBox_Popup)
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

} // namespace views
