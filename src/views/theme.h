// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"

#include <QColor>
#include <QPalette>
#include <QString>

namespace views {

/// The colours of everything that is drawn: light or dark as the desktop asks, with the desktop's accent where it
/// states one. A value; the current one is `Theme::current`.
struct Theme {
    bool isDark = false;
    QColor window;
    QColor sidebar;
    QColor list;
    QColor field;
    QColor button;
    QColor text;
    QColor muted; ///< secondary text
    QColor mutedSelected; ///< the same on a selected row
    QColor faint; ///< what is not available
    QColor hairline;
    QColor border;
    QColor hover;
    QColor pressed;
    QColor accent;
    QColor onAccent;
    QColor selection; ///< behind a selected row
    QColor selectionInactive;
    QColor badge;
    QColor badgeInactive;
    QColor overdue;
    QColor overdueSelected; ///< the same on a selected row
    QColor star;
    QColor detail; ///< behind the detail pane
    QColor titleStart; ///< behind the headline, from top to bottom
    QColor titleEnd;

    /// The theme for a desktop with this palette. `appearance` is "light" or "dark"; anything else follows the palette.
    [[nodiscard]] static Theme of(const QPalette &desktop, const QString &appearance);

    /// Takes the colours that the user has chosen; those left at their defaults are the theme's own.
    void takeUserColors(const foundation::Settings &settings);
    /// What the widgets are drawn with from now on: style, palette and style sheet of the application.
    void apply() const;
    [[nodiscard]] static const Theme &current();

    [[nodiscard]] QPalette palette() const;
    [[nodiscard]] QString styleSheet() const;
};

/// How well text of one colour reads on the other, by the measure of WCAG 2: from 1, not at all, to 21, black on white.
[[nodiscard]] double contrast(const QColor &text, const QColor &background);

/// What all text reaches at least, but that of what is not available.
constexpr double leastContrast = 4.5;

/// `front` over `back`, of which `amount` (0 to 1) shows.
[[nodiscard]] QColor mixed(const QColor &front, const QColor &back, double amount);

} // namespace views
