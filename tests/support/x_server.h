// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <stdexcept>

namespace support {

/// An X server of its own for a test, on a screen that nobody sees, with keys that are really pressed.
class XServer
{
public:
    XServer()
    {
        m_server.start(QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
                QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                // else it starts anew, and turns programs away meanwhile, whenever its last client goes
                QStringLiteral("-noreset")});
        if (!m_server.waitForReadyRead(20'000))
            throw std::runtime_error("Xvfb does not start");
        m_display = QStringLiteral(":") + QString::fromLatin1(m_server.readLine()).trimmed();
    }
    ~XServer()
    {
        m_server.terminate();
        m_server.waitForFinished();
    }

    [[nodiscard]] const QString &display() const { return m_display; }

    /// Runs xdotool with these words; its output, or nothing when it fails.
    QString xdotool(const QString &words) const
    {
        QProcess tool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), m_display);
        tool.setProcessEnvironment(environment);
        tool.start(QStringLiteral("xdotool"), QProcess::splitCommand(words));
        tool.waitForFinished();
        return tool.exitCode() == 0 ? QString::fromUtf8(tool.readAllStandardOutput()).trimmed() : QString();
    }
    /// Presses and releases a combination such as "ctrl+super+t".
    void press(const QString &keys) const { xdotool(QStringLiteral("key ") + keys); }

private:
    QProcess m_server;
    QString m_display;
};

} // namespace support
