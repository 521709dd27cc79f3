// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QProcess>
#include <stdexcept>

namespace support {

/// A session bus of its own for a test, with as many connections to it as the test plays programs.
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        if (!m_daemon.waitForReadyRead(10'000))
            throw std::runtime_error("dbus-daemon does not start");
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus()
    {
        for (const QString &name : m_names)
            QDBusConnection::disconnectFromBus(name);
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    [[nodiscard]] const QString &address() const { return m_address; }

    /// A new connection, as another program would have it.
    [[nodiscard]] QDBusConnection connection()
    {
        static int count = 0;
        m_names.append(QStringLiteral("test-%1").arg(++count));
        return QDBusConnection::connectToBus(m_address, m_names.last());
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};

/// Keeps every signal of one interface and name that is sent on a bus.
class SignalListener : public QObject
{
    Q_OBJECT

public:
    SignalListener(QDBusConnection bus, const QString &interface, const QString &name)
    {
        bus.connect({}, {}, interface, name, this, SLOT(receive(QDBusMessage)));
    }

    QList<QDBusMessage> received;

public Q_SLOTS:
    void receive(const QDBusMessage &message) { received.append(message); }
};

} // namespace support
