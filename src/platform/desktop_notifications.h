// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

/// What a notification says, as plain text, and which buttons it has. The action "default" is a click on all of it.
struct Notification {
    struct Action {
        QString key;
        QString text;
    };
    QString title;
    QString body;
    std::vector<Action> actions = {};
};

/// Notifications on the desktop, shown by whatever serves `org.freedesktop.Notifications`.
///
/// Main thread; nothing waits for the server. Where there is none, the log has the notification.
class DesktopNotifications final : public QObject
{
    Q_OBJECT

public:
    using Chosen = std::function<void(const QString &action)>;

    /// `name` and `desktopFile` (without ".desktop") tell the server whose notifications they are.
    DesktopNotifications(QDBusConnection bus, QString name, QString desktopFile);

    /// Shows a notification. `chosen` hears of the action that the user takes, unless the notification went before.
    /// The answer is a name for `close`.
    int show(const Notification &notification, Chosen chosen = {});
    /// Takes the notification away, also one that is only on its way to the server.
    void close(int notification);

private Q_SLOTS:
    void onActionInvoked(uint id, const QString &action);
    void onNotificationClosed(uint id, uint reason);
    void onActivationToken(uint id, const QString &token);

private:
    struct Shown {
        std::optional<uint> id; ///< the server's, once it has answered
        Chosen chosen;
        bool isClosed = false; ///< before the server answered
    };

    void send(int number, const Notification &notification);
    [[nodiscard]] int numberOf(uint id) const;
    [[nodiscard]] QDBusMessage call(const QString &method) const;

    QDBusConnection m_bus;
    QString m_name;
    QString m_desktopFile;
    std::optional<QStringList> m_capabilities; ///< unknown until the first notification
    QHash<int, Shown> m_shown;
    int m_lastNumber = 0;
};

} // namespace platform
