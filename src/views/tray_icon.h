// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/tm_application_delegate.h"

#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace views {

/// The program's icon with a badge such as "3/7" painted over its corner; the icon alone without one.
[[nodiscard]] QIcon badgedIcon(const QString &badge);

/// The program in the desktop's tray, where there is one, with the badge and the commands that make sense without a
/// window. A click brings the window. Main thread.
class TrayIcon final : public QObject
{
    Q_OBJECT

public:
    /// The menu offers `actions`; they and the delegate must outlive the icon.
    TrayIcon(app::TMApplicationDelegate &delegate, const QList<QAction *> &actions);

Q_SIGNALS:
    void activated();

private:
    void showBadge();

    app::TMApplicationDelegate &m_delegate;
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};

} // namespace views
