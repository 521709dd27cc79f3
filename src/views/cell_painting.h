// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOptionViewItem>

namespace views {

/// What cells say of places from left to right, where the user's script begins: in one that runs from the right it is
/// mirrored within `room`.
[[nodiscard]] inline QRect placed(const QStyleOption &option, const QRect &room, const QRect &place)
{
    return QStyle::visualRect(option.direction, room, place);
}

/// Draws one line of text that begins where the user's script does, and is cut with an ellipsis where it is too long.
void drawLine(QPainter *painter, const QStyleOption &option, const QRect &place, const QString &text);

} // namespace views
