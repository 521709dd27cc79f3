// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <QByteArray>
#include <QIODevice>
#include <QSocketNotifier>
#include <QTimer>
#include <memory>

namespace platform {

/// The sentences of a receiver (a serial device, a pipe) or of a recording (a file), and nothing else: lines without
/// the checksum that makes them a sentence are dropped here, as are lines that never end.
///
/// Main thread. Nothing waits, whatever stands at the other end: a receiver is read ten times a second at most and a
/// little at a time, a recording as fast as its reader takes it.
class NmeaDevice final : public QIODevice
{
    Q_OBJECT

public:
    /// `baudRate` is set where the file is a serial device; one that no such device has leaves it alone.
    [[nodiscard]] static foundation::Result<std::unique_ptr<NmeaDevice>> open(
        const std::string &file, std::int64_t baudRate);
    ~NmeaDevice() override;

    [[nodiscard]] bool isRecording() const { return m_isRecording; }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_sentences.size() + QIODevice::bytesAvailable(); }
    [[nodiscard]] bool canReadLine() const override { return !m_sentences.isEmpty() || QIODevice::canReadLine(); }

Q_SIGNALS:
    /// Nothing more will come: the device has gone, or what it sends is no NMEA.
    void failed(const foundation::Error &error);

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    NmeaDevice(int descriptor, std::string file, bool isRecording);
    void receive();
    void take(QByteArrayView bytes);
    void takeLine();
    void end();
    void stop();
    void fail(const foundation::Error &error);

    int m_descriptor;
    std::string m_file;
    bool m_isRecording;
    std::unique_ptr<QSocketNotifier> m_notifier; ///< none for a recording
    QTimer m_nextLook;
    QByteArray m_line; ///< as far as it has come
    QByteArray m_sentences; ///< for the reader
    qint64 m_garbage = 0; ///< bytes since the last sentence
    bool m_hasSentences = false; ///< there has been one
};

} // namespace platform
