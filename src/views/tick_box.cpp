// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/tick_box.h"

#include "views/task_cell.h"
#include "views/theme.h"

#include <QPainter>

namespace views {

namespace {
constexpr int boxSize = 20;
constexpr int margin = 3; // for the ring that shows the focus
} // namespace

TickBox::TickBox(QWidget *parent) : QAbstractButton(parent)
{
    setCheckable(true);
    setFixedSize(sizeHint());
}

QSize TickBox::sizeHint() const
{
    return {boxSize + 2 * margin, boxSize + 2 * margin};
}

void TickBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawTickBox(&painter, {margin, margin, boxSize, boxSize}, isChecked(), underMouse());
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Theme::current().accent, 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 7, 7);
    }
}

void TickBox::enterEvent(QEnterEvent *)
{
    update();
}

void TickBox::leaveEvent(QEvent *)
{
    update();
}

} // namespace views
