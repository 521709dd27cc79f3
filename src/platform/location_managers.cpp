// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/location_managers.h"

#include "platform/desktop_location.h"
#include "platform/nmea_location.h"

namespace platform {

std::unique_ptr<location::LocationManager> makeLocationManager(
    const std::string &nmeaSource, std::int64_t baudRate, const QString &desktopFile)
{
    if (nmeaSource.empty())
        return std::make_unique<DesktopLocation>(QDBusConnection::systemBus(), desktopFile);
    return std::make_unique<NmeaLocation>(nmeaSource, baudRate);
}

} // namespace platform
