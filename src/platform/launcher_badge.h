// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QString>

namespace platform {

/// The number at the program's icon in docks and task bars that listen for `com.canonical.Unity.LauncherEntry`.
///
/// Main thread. A desktop that does not listen, or a missing session bus, is no failure: nothing is shown.
class LauncherBadge
{
public:
    /// `desktopFile` names the program without ".desktop", as the launchers know it.
    LauncherBadge(QDBusConnection bus, const QString &desktopFile);
    ~LauncherBadge();

    /// Shows the first number of a badge text such as "3/7", as there is room for one; none hides it.
    void show(const QString &badge);

private:
    QDBusConnection m_bus;
    QString m_uri;
    QString m_path;
};

} // namespace platform
