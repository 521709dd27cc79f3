// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>

namespace support {

/// The client, the location and the manager that a desktop's location service offers to one program.
class LocationClient : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.GeoClue2.Client")
    Q_PROPERTY(QString DesktopId MEMBER desktopId)
    Q_PROPERTY(uint RequestedAccuracyLevel MEMBER accuracy)
    Q_PROPERTY(uint DistanceThreshold MEMBER distance)

public:
    QString desktopId;
    uint accuracy = 0;
    uint distance = 0;
    bool isAllowed = true;
    bool isStarted = false;

public Q_SLOTS:
    void Start()
    {
        if (isAllowed)
            isStarted = true;
        else
            sendErrorReply(QDBusError::AccessDenied, QStringLiteral("not for you"));
    }
    void Stop() { }

Q_SIGNALS:
    void LocationUpdated(const QDBusObjectPath &before, const QDBusObjectPath &now);
};

class ServicedLocation : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.GeoClue2.Location")
    Q_PROPERTY(double Latitude MEMBER latitude)
    Q_PROPERTY(double Longitude MEMBER longitude)
    Q_PROPERTY(double Accuracy MEMBER accuracy)

public:
    double latitude = 52.4915;
    double longitude = 13.4236;
    double accuracy = 50;
};

class LocationService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.GeoClue2.Manager")

public:
    explicit LocationService(QDBusConnection bus) : m_bus(std::move(bus))
    {
        const auto options = QDBusConnection::ExportAllContents;
        m_bus.registerObject(QStringLiteral("/org/freedesktop/GeoClue2/Manager"), this, options);
        m_bus.registerObject(QStringLiteral("/client"), &client, options);
        m_bus.registerObject(QStringLiteral("/location"), &location, options);
        m_bus.registerService(name());
    }
    ~LocationService() override { m_bus.unregisterService(name()); }

    void tell() { Q_EMIT client.LocationUpdated(QDBusObjectPath("/"), QDBusObjectPath("/location")); }

    LocationClient client;
    ServicedLocation location;

public Q_SLOTS:
    QDBusObjectPath CreateClient() { return QDBusObjectPath("/client"); }

private:
    static QString name() { return QStringLiteral("org.freedesktop.GeoClue2"); }

    QDBusConnection m_bus;
};

} // namespace support
