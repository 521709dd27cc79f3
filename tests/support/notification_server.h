// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>
#include <optional>
#include <vector>

namespace support {

/// A desktop's notification server that shows nothing and lets a test press the buttons.
class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Shown {
        uint id;
        QString title;
        QString body;
        QStringList actions;
    };

    explicit NotificationServer(QDBusConnection bus)
    {
        bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }

    QStringList capabilities{QStringLiteral("body"), QStringLiteral("actions")};
    std::vector<Shown> shown;
    std::vector<uint> closed;

public Q_SLOTS:
    QStringList GetCapabilities() { return capabilities; }
    uint Notify(const QString &, uint, const QString &, const QString &title, const QString &body,
        const QStringList &actions, const QVariantMap &, int)
    {
        shown.push_back({static_cast<uint>(100 + shown.size()), title, body, actions});
        return shown.back().id;
    }
    void CloseNotification(uint id) { closed.push_back(id); }

Q_SIGNALS:
    void ActionInvoked(uint id, const QString &action);
    void NotificationClosed(uint id, uint reason);
};

} // namespace support
