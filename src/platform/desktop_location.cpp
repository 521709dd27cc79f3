// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop_location.h"

#include "foundation/log.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <limits>

namespace platform {

using location::LocationErrorCode;

namespace {

const QString service = QStringLiteral("org.freedesktop.GeoClue2");
const QString managerPath = QStringLiteral("/org/freedesktop/GeoClue2/Manager");
const QString managerInterface = service + QStringLiteral(".Manager");
const QString clientInterface = service + QStringLiteral(".Client");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

constexpr uint exact = 8; // the finest of the service's levels of accuracy
constexpr uint distanceThreshold = 50; // metres; a shorter way brings no other context near

} // namespace

DesktopLocation::DesktopLocation(QDBusConnection systemBus, QString desktopFile)
    : m_bus(std::move(systemBus))
    , m_desktopFile(std::move(desktopFile))
    , m_watcher(service, m_bus, QDBusServiceWatcher::WatchForUnregistration)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (std::exchange(m_client, {}).isEmpty())
            return;
        fail(LocationErrorCode::Unavailable, QT_TRANSLATE_NOOP("Location", "The desktop's location service has ended."),
            {});
    });
}

DesktopLocation::~DesktopLocation()
{
    if (m_client.isEmpty())
        return;
    m_bus.send(QDBusMessage::createMethodCall(service, m_client, clientInterface, QStringLiteral("Stop")));
    auto deletion
        = QDBusMessage::createMethodCall(service, managerPath, managerInterface, QStringLiteral("DeleteClient"));
    deletion << QVariant::fromValue(QDBusObjectPath(m_client));
    m_bus.send(deletion);
}

void DesktopLocation::startUpdatingLocation(Handlers handlers)
{
    m_handlers = std::move(handlers);
    if (!m_bus.isConnected()) { // a call would never be answered
        QMetaObject::invokeMethod(
            this,
            [this] {
                explain({QDBusError::Disconnected, {}});
            },
            Qt::QueuedConnection);
        return;
    }
    call(QDBusMessage::createMethodCall(service, managerPath, managerInterface, QStringLiteral("CreateClient")),
        [this](
            const QDBusMessage &answer) { takeClient(answer.arguments().value(0).value<QDBusObjectPath>().path()); });
}

void DesktopLocation::takeClient(const QString &client)
{
    m_client = client;
    m_bus.connect(service, m_client, clientInterface, QStringLiteral("LocationUpdated"), this,
        SLOT(onLocationUpdated(QDBusObjectPath, QDBusObjectPath)));
    set(QStringLiteral("DesktopId"), m_desktopFile);
    set(QStringLiteral("RequestedAccuracyLevel"), exact);
    set(QStringLiteral("DistanceThreshold"), distanceThreshold);
    call(QDBusMessage::createMethodCall(service, m_client, clientInterface, QStringLiteral("Start")), {});
}

void DesktopLocation::set(const QString &property, const QVariant &value)
{
    auto setting = QDBusMessage::createMethodCall(service, m_client, propertiesInterface, QStringLiteral("Set"));
    setting << clientInterface << property << QVariant::fromValue(QDBusVariant(value));
    call(setting, {});
}

void DesktopLocation::onLocationUpdated(const QDBusObjectPath &, const QDBusObjectPath &now)
{
    auto question = QDBusMessage::createMethodCall(service, now.path(), propertiesInterface, QStringLiteral("GetAll"));
    question << service + QStringLiteral(".Location");
    call(question, [this](const QDBusMessage &answer) {
        const auto values = qdbus_cast<QVariantMap>(answer.arguments().value(0));
        const double nothing = std::numeric_limits<double>::quiet_NaN();
        m_handlers.didUpdateToLocation({values.value(QStringLiteral("Latitude"), nothing).toDouble(),
            values.value(QStringLiteral("Longitude"), nothing).toDouble()});
    });
}

/// However long the answer takes: somebody may be asked first.
void DesktopLocation::call(const QDBusMessage &message, const std::function<void(const QDBusMessage &)> &answered)
{
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, std::numeric_limits<int>::max()), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, answered] {
        watcher->deleteLater();
        if (watcher->isError())
            explain(watcher->error());
        else if (answered)
            answered(watcher->reply());
    });
}

void DesktopLocation::explain(const QDBusError &error)
{
    const QString detail = error.name() + QStringLiteral(": ") + error.message();
    switch (error.type()) {
    case QDBusError::UnknownObject: // a position that the next one has overtaken
        return foundation::logLine("A position was gone: " + detail.toStdString());
    case QDBusError::AccessDenied:
        return fail(LocationErrorCode::Denied,
            QT_TRANSLATE_NOOP("Location",
                "The desktop's location service does not tell Quelvin where you are. Allow it in the desktop's privacy "
                "settings, then turn \"Use my location\" off and on."),
            detail);
    case QDBusError::ServiceUnknown:
    case QDBusError::Disconnected:
    case QDBusError::NoServer:
        return fail(LocationErrorCode::Unavailable,
            QT_TRANSLATE_NOOP("Location",
                "There is no location service on this desktop. Install GeoClue, or choose a receiver in the "
                "preferences."),
            detail);
    default:
        return fail(LocationErrorCode::Unavailable,
            QT_TRANSLATE_NOOP("Location", "The desktop's location service does not know where you are."), detail);
    }
}

void DesktopLocation::fail(LocationErrorCode code, const char *sentence, const QString &detail)
{
    m_handlers.didFailWithError({location::locationErrorDomain, static_cast<int>(code),
        QCoreApplication::translate("Location", sentence).toStdString(), detail.toStdString()});
}

} // namespace platform
