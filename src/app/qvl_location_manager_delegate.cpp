// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qvl_location_manager_delegate.h"

#include "app/text.h"
#include "foundation/log.h"
#include "model/settings_defaults.h"

#include <chrono>
#include <cmath>

namespace app {

using namespace std::chrono_literals;
using location::Coordinate;

namespace {
constexpr auto takeOverInterval = 1s;
constexpr double secondsToRetry = 60;
constexpr double secondsOfSleep = 60; // between two checks, which are two seconds apart on a computer that is awake
} // namespace

QVLLocationManagerDelegate::QVLLocationManagerDelegate(
    const foundation::Settings &settings, const foundation::Clock &clock, MakeManager makeManager)
    : m_settings(settings), m_clock(clock), m_makeManager(std::move(makeManager))
{
    m_takeOverTimer.setSingleShot(true);
    m_takeOverTimer.setInterval(takeOverInterval);
    connect(&m_takeOverTimer, &QTimer::timeout, this, &QVLLocationManagerDelegate::takeOver);
}

bool QVLLocationManagerDelegate::locationServicesEnabled() const
{
    return m_makeManager && m_settings.boolean(model::keys::UseLocation);
}

void QVLLocationManagerDelegate::applySettings()
{
    m_takeOverTimer.stop();
    m_locationManager.reset();
    m_location.reset();
    if (locationServicesEnabled()) {
        setStatus(LocationStatus::Waiting);
        startUpdatingLocation();
    } else {
        setStatus(LocationStatus::Off);
    }
}

void QVLLocationManagerDelegate::startUpdatingLocation()
{
    m_takeOverTimer.stop();
    m_lastCheck = m_clock.now();
    m_locationManager.reset(); // a device has one reader
    m_locationManager = m_makeManager(m_settings);
    m_locationManager->startUpdatingLocation({
        .didUpdateToLocation = [this](const Coordinate &place) { didUpdateToLocation(place); },
        .didFailWithError = [this](const foundation::Error &error) { didFailWithError(error); },
    });
}

void QVLLocationManagerDelegate::checkLocation()
{
    if (m_status == LocationStatus::Off)
        return;
    const foundation::Instant now = m_clock.now();
    const bool hasFailed = m_status == LocationStatus::Failed;
    const bool isRefused = hasFailed && m_error.code == static_cast<int>(location::LocationErrorCode::Denied);
    const bool isAwakeAgain = std::abs(now.seconds - m_lastCheck.seconds) > secondsOfSleep;
    m_lastCheck = now;
    if (!isRefused && (isAwakeAgain || (hasFailed && now.seconds - m_failed.seconds >= secondsToRetry))) {
        m_failed = now;
        startUpdatingLocation();
    }
}

void QVLLocationManagerDelegate::didUpdateToLocation(const Coordinate &place)
{
    if (!isOnEarth(place))
        return; // a receiver that says such things may say them all day
    m_newest = place;
    if (m_status != LocationStatus::Known)
        takeOver();
    else if (!m_takeOverTimer.isActive() && place != *m_location)
        m_takeOverTimer.start();
}

void QVLLocationManagerDelegate::takeOver()
{
    const bool wasKnown = m_location.has_value();
    m_location = m_newest;
    setStatus(LocationStatus::Known);
    if (wasKnown)
        Q_EMIT locationUpdated();
}

void QVLLocationManagerDelegate::didFailWithError(const foundation::Error &error)
{
    m_takeOverTimer.stop();
    m_location.reset();
    m_failed = m_clock.now();
    if (m_status == LocationStatus::Failed && error.message == m_error.message)
        return; // tried again, and the same again
    foundation::logLine("The position is unknown: " + error.message + " " + error.detail);
    m_error = error;
    m_status = LocationStatus::Failed;
    Q_EMIT statusChanged();
}

void QVLLocationManagerDelegate::setStatus(LocationStatus status)
{
    if (std::exchange(m_status, status) != status)
        Q_EMIT statusChanged();
}

QString QVLLocationManagerDelegate::statusText() const
{
    switch (m_status) {
    case LocationStatus::Off:
        return tr("Quelvin does not know where you are. Turn on \"Use my location\" in the preferences.");
    case LocationStatus::Waiting:
        return tr("Looking for your position…");
    case LocationStatus::Failed:
        return toQString(m_error.message);
    case LocationStatus::Known:
        break;
    }
    return {};
}

} // namespace app
