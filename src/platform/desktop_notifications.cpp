// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop_notifications.h"

#include "foundation/log.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace platform {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
constexpr int asTheServerLikes = -1;
constexpr uchar normalUrgency = 1;

} // namespace

DesktopNotifications::DesktopNotifications(QDBusConnection bus, QString name, QString desktopFile)
    : m_bus(std::move(bus)), m_name(std::move(name)), m_desktopFile(std::move(desktopFile))
{
    m_bus.connect(service, path, service, QStringLiteral("ActionInvoked"), this, SLOT(onActionInvoked(uint, QString)));
    m_bus.connect(
        service, path, service, QStringLiteral("NotificationClosed"), this, SLOT(onNotificationClosed(uint, uint)));
    m_bus.connect(
        service, path, service, QStringLiteral("ActivationToken"), this, SLOT(onActivationToken(uint, QString)));
}

QDBusMessage DesktopNotifications::call(const QString &method) const
{
    return QDBusMessage::createMethodCall(service, path, service, method);
}

int DesktopNotifications::show(const Notification &notification, Chosen chosen)
{
    const int number = ++m_lastNumber;
    m_shown.insert(number, {.id = {}, .chosen = std::move(chosen)});
    if (m_capabilities) {
        send(number, notification);
        return number;
    }
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call(QStringLiteral("GetCapabilities"))), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, number, notification] {
        const QDBusPendingReply<QStringList> reply = *watcher;
        watcher->deleteLater();
        if (!reply.isError())
            m_capabilities = reply.value();
        send(number, notification); // an error says so again
    });
    return number;
}

void DesktopNotifications::send(int number, const Notification &notification)
{
    if (m_shown.value(number).isClosed) {
        m_shown.remove(number);
        return;
    }
    QStringList actions;
    for (const Notification::Action &action : notification.actions)
        actions << action.key << action.text;
    const bool hasMarkup = m_capabilities && m_capabilities->contains(QStringLiteral("body-markup"));
    auto message = call(QStringLiteral("Notify"));
    message << m_name << uint{0} << m_desktopFile << notification.title
            << (hasMarkup ? notification.body.toHtmlEscaped() : notification.body) << actions
            << QVariantMap{{QStringLiteral("desktop-entry"), m_desktopFile},
                   {QStringLiteral("urgency"), QVariant::fromValue(normalUrgency)}}
            << asTheServerLikes;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, number, notification] {
        const QDBusPendingReply<uint> reply = *watcher;
        watcher->deleteLater();
        if (reply.isError()) {
            foundation::logLine((notification.title + QStringLiteral(": ") + notification.body).toStdString());
            m_shown.remove(number);
            return;
        }
        m_shown[number].id = reply.value();
        if (m_shown[number].isClosed)
            close(number);
    });
}

void DesktopNotifications::close(int notification)
{
    const auto shown = m_shown.find(notification);
    if (shown == m_shown.end())
        return;
    if (!shown->id) {
        shown->isClosed = true;
        return;
    }
    auto message = call(QStringLiteral("CloseNotification"));
    message << *shown->id;
    m_shown.erase(shown);
    m_bus.asyncCall(message);
}

int DesktopNotifications::numberOf(uint id) const
{
    for (auto shown = m_shown.begin(); shown != m_shown.end(); ++shown) {
        if (shown->id == id)
            return shown.key();
    }
    return 0;
}

void DesktopNotifications::onActionInvoked(uint id, const QString &action)
{
    const Shown shown = m_shown.value(numberOf(id)); // a copy, since the hearer may close it
    if (shown.chosen && !shown.isClosed)
        shown.chosen(action);
}

void DesktopNotifications::onNotificationClosed(uint id, uint)
{
    m_shown.remove(numberOf(id));
}

void DesktopNotifications::onActivationToken(uint id, const QString &token)
{
    if (numberOf(id) != 0)
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8()); // lets the window that the action brings come to the front
}

} // namespace platform
