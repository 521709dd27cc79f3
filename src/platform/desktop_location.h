// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "location/location_manager.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

namespace platform {

/// Positions from the desktop's location service, GeoClue, which asks the user whether the program may have them.
///
/// Main thread. The service is spoken to without waiting, which Qt's own source of positions does not do: a service
/// that hangs would hold up the window, and a user may take long to answer.
class DesktopLocation final : public QObject, public location::LocationManager
{
    Q_OBJECT

public:
    /// `desktopFile` names the program without ".desktop", as the service knows it.
    DesktopLocation(QDBusConnection systemBus, QString desktopFile);
    ~DesktopLocation() override;

    void startUpdatingLocation(Handlers handlers) override;

private Q_SLOTS:
    void onLocationUpdated(const QDBusObjectPath &before, const QDBusObjectPath &now);

private:
    void takeClient(const QString &client);
    void call(const QDBusMessage &message, const std::function<void(const QDBusMessage &)> &answered);
    void set(const QString &property, const QVariant &value);
    void explain(const QDBusError &error);
    void fail(location::LocationErrorCode code, const char *sentence, const QString &detail);

    QDBusConnection m_bus;
    QString m_desktopFile;
    QDBusServiceWatcher m_watcher;
    Handlers m_handlers;
    QString m_client; ///< the path of the service's object for this program; empty while there is none
};

} // namespace platform
