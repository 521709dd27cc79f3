// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "location/location_manager.h"

#include <QNmeaPositionInfoSource>
#include <QObject>
#include <memory>

namespace platform {

class NmeaDevice;

/// Positions from a satellite receiver, or from a recording of one, which is played at the pace at which it was taken.
/// A recording stays at its last position.
class NmeaLocation final : public QObject, public location::LocationManager
{
    Q_OBJECT

public:
    NmeaLocation(std::string file, std::int64_t baudRate);
    ~NmeaLocation() override;

    void startUpdatingLocation(Handlers handlers) override;

private:
    std::string m_file;
    std::int64_t m_baudRate;
    Handlers m_handlers;
    std::unique_ptr<NmeaDevice> m_device;
    std::unique_ptr<QNmeaPositionInfoSource> m_source; // goes before the device that it reads
};

} // namespace platform
