// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "location/location_manager.h"

#include <QString>
#include <memory>

namespace platform {

/// What tells positions: the receiver or recording `nmeaSource`, or the desktop's service where that is empty.
[[nodiscard]] std::unique_ptr<location::LocationManager> makeLocationManager(
    const std::string &nmeaSource, std::int64_t baudRate, const QString &desktopFile);

} // namespace platform
