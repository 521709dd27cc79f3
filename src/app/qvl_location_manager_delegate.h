// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/clock.h"
#include "foundation/settings.h"
#include "location/location_manager.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace app {

enum class LocationStatus {
    Off, ///< the user does not want it
    Waiting, ///< for the first position
    Known,
    Failed,
};

/// Knows where the computer is, as far as the user lets it: asks nobody while the setting `UseLocation` is off.
///
/// Main thread. Positions are taken over once a second at most, however many come; nonsense is dropped. What failed is
/// tried again by `checkLocation` a minute later, unless it was refused, and a computer that slept is asked anew; a
/// position that was known then holds until it is known better.
class QVLLocationManagerDelegate final : public QObject
{
    Q_OBJECT

public:
    using MakeManager = std::function<std::unique_ptr<location::LocationManager>(const foundation::Settings &)>;

    /// `makeManager` may be empty: then there is no position. The others must outlive the object.
    QVLLocationManagerDelegate(
        const foundation::Settings &settings, const foundation::Clock &clock, MakeManager makeManager);

    [[nodiscard]] bool locationServicesEnabled() const;
    /// Starts, starts anew, or stops, as the settings now say.
    void applySettings();
    /// The tick, every few seconds.
    void checkLocation();

    [[nodiscard]] LocationStatus status() const { return m_status; }
    [[nodiscard]] const std::optional<location::Coordinate> &location() const { return m_location; }
    /// Why there is no position, as a sentence; empty while there is one.
    [[nodiscard]] QString statusText() const;

Q_SIGNALS:
    /// There is another position, after one that was known before.
    void locationUpdated();
    /// The status has changed, by a first position, too.
    void statusChanged();

private:
    void startUpdatingLocation();
    void didUpdateToLocation(const location::Coordinate &place);
    void didFailWithError(const foundation::Error &error);
    void takeOver();
    void setStatus(LocationStatus status);

    const foundation::Settings &m_settings;
    const foundation::Clock &m_clock;
    MakeManager m_makeManager;
    std::unique_ptr<location::LocationManager> m_locationManager;
    LocationStatus m_status = LocationStatus::Off;
    std::optional<location::Coordinate> m_location;
    location::Coordinate m_newest; ///< what comes while the timer runs
    QTimer m_takeOverTimer;
    foundation::Error m_error;
    foundation::Instant m_failed;
    foundation::Instant m_lastCheck;
};

} // namespace app
