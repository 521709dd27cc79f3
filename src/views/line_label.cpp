// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/line_label.h"

#include <QPainter>
#include <QStyle>

namespace views {

void LineLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QRect room = contentsRect();
    painter.drawText(room,
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment())) | Qt::TextSingleLine,
        fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

} // namespace views
