// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/line_label.h"

#include "views/cell_painting.h"

namespace views {

void LineLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    painter.setPen(palette().color(foregroundRole()));
    drawLine(&painter, option, contentsRect(), text());
}

} // namespace views
