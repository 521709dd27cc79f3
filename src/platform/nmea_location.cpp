// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/nmea_location.h"

#include "platform/nmea_device.h"

namespace platform {

namespace {

/// Leaves out what a receiver without a fix says, which a recording would bring, too.
class FixesOnly final : public QNmeaPositionInfoSource
{
public:
    using QNmeaPositionInfoSource::QNmeaPositionInfoSource;

protected:
    bool parsePosInfoFromNmeaData(const char *data, int size, QGeoPositionInfo *info, bool *hasFix) override
    {
        return QNmeaPositionInfoSource::parsePosInfoFromNmeaData(data, size, info, hasFix) && *hasFix;
    }
};

} // namespace

NmeaLocation::NmeaLocation(std::string file, std::int64_t baudRate) : m_file(std::move(file)), m_baudRate(baudRate) { }

NmeaLocation::~NmeaLocation() = default;

void NmeaLocation::startUpdatingLocation(Handlers handlers)
{
    m_handlers = std::move(handlers);
    auto device = NmeaDevice::open(m_file, m_baudRate);
    if (!device) {
        QMetaObject::invokeMethod(
            this, [this, error = device.error()] { m_handlers.didFailWithError(error); }, Qt::QueuedConnection);
        return;
    }
    m_device = std::move(*device);
    connect(m_device.get(), &NmeaDevice::failed, this,
        [this](const foundation::Error &error) { m_handlers.didFailWithError(error); });
    m_source = std::make_unique<FixesOnly>(
        m_device->isRecording() ? QNmeaPositionInfoSource::SimulationMode : QNmeaPositionInfoSource::RealTimeMode);
    connect(m_source.get(), &QGeoPositionInfoSource::positionUpdated, this, [this](const QGeoPositionInfo &info) {
        m_handlers.didUpdateToLocation({info.coordinate().latitude(), info.coordinate().longitude()});
    });
    m_source->setDevice(m_device.get());
    m_source->startUpdates();
}

} // namespace platform
