// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <vector>

namespace support {

/// A desktop portal with global shortcuts whose keys a test presses, and whose user accepts them or not.
class ShortcutsPortal : public QDBusVirtualObject
{
public:
    struct Shortcut {
        QString session;
        QString id;
        QVariantMap properties;
    };

    explicit ShortcutsPortal(QDBusConnection bus) : m_bus(std::move(bus))
    {
        m_bus.registerVirtualObject(m_path, this, QDBusConnection::SubPath);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        const QVariantList arguments = message.arguments();
        if (message.member() == QStringLiteral("CreateSession")) {
            const auto options = qdbus_cast<QVariantMap>(arguments.at(0));
            const QString token = options.value(QStringLiteral("session_handle_token")).toString();
            const QString session = QStringLiteral("%1/session/%2").arg(m_path, token);
            respond(message, options, 0, {{QStringLiteral("session_handle"), session}});
            return true;
        }
        if (message.member() == QStringLiteral("BindShortcuts")) {
            read(arguments.at(0).value<QDBusObjectPath>().path(), arguments.at(1).value<QDBusArgument>());
            respond(message, qdbus_cast<QVariantMap>(arguments.at(3)), answer, {});
            return true;
        }
        if (message.member() == QStringLiteral("Close"))
            std::erase_if(bound, [&](const Shortcut &shortcut) { return shortcut.session == message.path(); });
        return message.member() == QStringLiteral("Close");
    }

    /// Presses or releases the keys of a shortcut.
    void send(const char *signal, const Shortcut &shortcut)
    {
        auto message = QDBusMessage::createSignal(
            m_path, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"), QString::fromLatin1(signal));
        message << QVariant::fromValue(QDBusObjectPath(shortcut.session)) << shortcut.id << qulonglong{1}
                << QVariantMap();
        m_bus.send(message);
    }

    std::vector<Shortcut> bound; ///< of the sessions that are open
    uint answer = 0; ///< what the user says; 0 is yes

private:
    void read(const QString &session, const QDBusArgument &list)
    {
        list.beginArray();
        while (!list.atEnd()) {
            Shortcut shortcut{session, {}, {}};
            list.beginStructure();
            list >> shortcut.id >> shortcut.properties;
            list.endStructure();
            bound.push_back(shortcut);
        }
        list.endArray();
    }
    void respond(const QDBusMessage &call, const QVariantMap &options, uint code, const QVariantMap &results)
    {
        const QString sender = call.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString request = QStringLiteral("%1/request/%2/%3")
                                    .arg(m_path, sender, options.value(QStringLiteral("handle_token")).toString());
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        auto signal = QDBusMessage::createSignal(
            request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        signal << code << results;
        m_bus.send(signal);
    }

    const QString m_path = QStringLiteral("/org/freedesktop/portal/desktop");
    QDBusConnection m_bus;
};

} // namespace support
