// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/nmea_device.h"

#include "location/location_manager.h"

#include <QCoreApplication>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace platform {

using namespace std::chrono_literals;
using foundation::Error;

namespace {

constexpr auto receiverPause = 100ms;
constexpr std::size_t mouthful = 4096; // bytes; forty thousand a second are four times what the fastest receiver sends
constexpr qsizetype longestLine = 512; // the standard says 82
constexpr qint64 patience = 64 * 1024; // bytes of anything else after which it is no NMEA

Error unavailable(const char *sentence, const std::string &file, std::string detail = {})
{
    return {location::locationErrorDomain, static_cast<int>(location::LocationErrorCode::Unavailable),
        QCoreApplication::translate("Location", sentence).arg(QString::fromStdString(file)).toStdString(),
        std::move(detail)};
}

Error cannotRead(const std::string &file, int number)
{
    return unavailable(
        QT_TRANSLATE_NOOP("Location", "\"%1\" cannot be read for positions."), file, std::strerror(number));
}

Error gone(const std::string &file)
{
    return unavailable(QT_TRANSLATE_NOOP("Location", "\"%1\" sends no positions any more."), file);
}

Error noNmea(const std::string &file)
{
    return unavailable(QT_TRANSLATE_NOOP("Location", "\"%1\" holds or sends no positions in the form NMEA."), file);
}

/// A line discipline that passes bytes on as they are; an echo would confuse the receiver.
void makeRaw(int descriptor, std::int64_t baudRate)
{
    constexpr std::pair<int, speed_t> speeds[]
        = {{4800, B4800}, {9600, B9600}, {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}};
    termios settings{};
    if (::tcgetattr(descriptor, &settings) != 0)
        return;
    ::cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    for (const auto &[rate, speed] : speeds) {
        if (rate == baudRate)
            ::cfsetspeed(&settings, speed);
    }
    ::tcsetattr(descriptor, TCSANOW, &settings);
}

/// Whether the line is `$...*hh` with the right checksum.
bool isSentence(const QByteArray &line)
{
    const qsizetype star = line.size() - 3;
    if (star < 1 || (line[0] != '$' && line[0] != '!') || line[star] != '*')
        return false;
    unsigned sum = 0;
    for (qsizetype place = 1; place < star; ++place)
        sum ^= static_cast<unsigned char>(line[place]);
    bool isNumber = false;
    return line.mid(star + 1).toUInt(&isNumber, 16) == sum && isNumber;
}

} // namespace

foundation::Result<std::unique_ptr<NmeaDevice>> NmeaDevice::open(const std::string &file, std::int64_t baudRate)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return foundation::Failure(cannotRead(file, errno));
    struct stat status = {};
    ::fstat(descriptor, &status);
    const bool isRecording = S_ISREG(status.st_mode);
    if (!isRecording && !S_ISCHR(status.st_mode) && !S_ISFIFO(status.st_mode)) {
        ::close(descriptor);
        return foundation::Failure(cannotRead(file, S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP));
    }
    if (::isatty(descriptor))
        makeRaw(descriptor, baudRate);
    return std::unique_ptr<NmeaDevice>(new NmeaDevice(descriptor, file, isRecording));
}

NmeaDevice::NmeaDevice(int descriptor, std::string file, bool isRecording)
    : m_descriptor(descriptor), m_file(std::move(file)), m_isRecording(isRecording)
{
    m_nextLook.setSingleShot(true);
    if (m_isRecording) {
        connect(&m_nextLook, &QTimer::timeout, this, &NmeaDevice::receive);
        m_nextLook.start(0);
    } else {
        m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, &NmeaDevice::receive);
        connect(&m_nextLook, &QTimer::timeout, this, [this] { m_notifier->setEnabled(true); });
    }
    QIODevice::open(ReadOnly);
}

NmeaDevice::~NmeaDevice()
{
    stop();
}

void NmeaDevice::receive()
{
    std::array<char, mouthful> bytes{};
    const auto count = ::read(m_descriptor, bytes.data(), bytes.size());
    const int number = errno;
    if (m_notifier) { // in peace until then, however much is there
        m_notifier->setEnabled(false);
        m_nextLook.start(receiverPause);
    }
    if (count < 0 && (number == EAGAIN || number == EINTR))
        return;
    if (count < 0)
        return fail(number == EIO || number == ENODEV ? gone(m_file) : cannotRead(m_file, number));
    if (count == 0)
        return end();
    take({bytes.data(), static_cast<qsizetype>(count)});
    if (m_garbage > patience)
        return fail(noNmea(m_file));
    if (!m_sentences.isEmpty())
        Q_EMIT readyRead();
    else if (m_isRecording)
        m_nextLook.start(0);
}

void NmeaDevice::take(QByteArrayView bytes)
{
    for (const char byte : bytes) {
        if (byte == '\n')
            takeLine();
        else if (m_line.size() <= longestLine)
            m_line.append(byte);
        ++m_garbage;
    }
}

void NmeaDevice::takeLine()
{
    const QByteArray line = m_line.trimmed();
    m_line.clear();
    if (!isSentence(line))
        return;
    m_sentences += line + '\n';
    m_garbage = 0;
    m_hasSentences = true;
}

qint64 NmeaDevice::readData(char *data, qint64 size)
{
    const qsizetype count = std::min<qsizetype>(size, m_sentences.size());
    std::copy_n(m_sentences.begin(), count, data);
    m_sentences.remove(0, count);
    if (m_isRecording && m_descriptor >= 0 && m_sentences.isEmpty())
        m_nextLook.start(0);
    return count;
}

/// A recording is over, which leaves its last position; a receiver has gone.
void NmeaDevice::end()
{
    if (!m_isRecording)
        fail(gone(m_file));
    else if (!m_hasSentences)
        fail(noNmea(m_file));
    else
        stop();
}

void NmeaDevice::stop()
{
    m_nextLook.stop();
    m_notifier.reset();
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

void NmeaDevice::fail(const Error &error)
{
    stop();
    Q_EMIT failed(error);
}

} // namespace platform
