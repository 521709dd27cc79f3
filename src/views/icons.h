// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace views {

/// The icon family: line drawings that take the colour of the place they stand in, sharp at every scale.
/// "today_1" to "today_31" carry the day of the month.
[[nodiscard]] QPixmap iconPixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio);
/// For buttons and menus, in the colours of the theme.
[[nodiscard]] QIcon icon(const QString &name);
[[nodiscard]] QIcon icon(const QString &name, const QColor &color);

/// The colour in which a source-list icon is drawn.
[[nodiscard]] QColor iconTint(const QString &name);

/// To be called when the theme changes.
void clearIconCache();

} // namespace views
