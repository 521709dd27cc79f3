// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/running_instance.h"

#include "foundation/log.h"
#include "platform/running_instance_adaptors.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QLibrary>
#include <limits>

namespace platform {

namespace {

const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
constexpr int handOverTimeout = 5000; // milliseconds; a first instance that hangs must not hang the second

/// What lets the other program's window come to the front for this one's user.
QVariantMap platformData()
{
    QVariantMap data;
    constexpr std::pair<const char *, const char *> tokens[]
        = {{"activation-token", "XDG_ACTIVATION_TOKEN"}, {"desktop-startup-id", "DESKTOP_STARTUP_ID"}};
    for (const auto &[key, variable] : tokens) {
        if (qEnvironmentVariableIsSet(variable))
            data.insert(QString::fromLatin1(key), qEnvironmentVariable(variable));
    }
    return data;
}

/// Lets the connection read on whatever messages wait for the main thread. Beyond 63 MiB of them libdbus stops reading
/// until they are dealt with, and Qt cannot start it again from another thread than the one that reads: a single long
/// text would leave the program deaf for good. What is read at most is then for the bus daemon to say.
void neverStopReading(const QDBusConnection &bus)
{
    if (!bus.isConnected())
        return;
    const auto setMost = reinterpret_cast<void (*)(void *connection, long bytes)>(
        QLibrary::resolve(QStringLiteral("dbus-1"), 3, "dbus_connection_set_max_received_size"));
    if (setMost)
        setMost(bus.internalPointer(), std::numeric_limits<std::int32_t>::max());
    else
        foundation::logLine(
            "The limit on what the bus sends could not be lifted; a very long text ends the connection.");
}

} // namespace

RunningInstance::RunningInstance(QDBusConnection bus, QString name) : m_bus(std::move(bus)), m_name(std::move(name))
{
    neverStopReading(m_bus);
    new ApplicationAdaptor(*this);
    new TextServiceAdaptor(*this);
}

RunningInstance::~RunningInstance()
{
    m_bus.unregisterService(m_name); // before the object: a call that comes now starts the next program
    m_bus.unregisterObject(path());
}

QString RunningInstance::path() const
{
    return QLatin1Char('/') + QString(m_name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

bool RunningInstance::handsOver(const QString &action, const QStringList &arguments)
{
    if (!m_bus.isConnected())
        return false;
    m_bus.registerObject(path(), this); // before the name, so that nobody finds it empty
    if (m_bus.registerService(m_name))
        return false;
    const bool isAction = !action.isEmpty();
    auto message = QDBusMessage::createMethodCall(
        m_name, path(), applicationInterface, isAction ? QStringLiteral("ActivateAction") : QStringLiteral("Activate"));
    if (isAction) {
        QVariantList list;
        for (const QString &argument : arguments)
            list.append(argument);
        message << action << list;
    }
    message << platformData();
    const QDBusMessage reply = m_bus.call(message, QDBus::Block, handOverTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return true;
    foundation::logLine("The running program does not answer: " + reply.errorMessage().toStdString());
    return false;
}

void RunningInstance::serve(RemoteCommands commands)
{
    m_commands = std::move(commands);
    for (const auto &request : std::exchange(m_waiting, {}))
        request(m_commands);
}

void RunningInstance::run(std::function<void(const RemoteCommands &)> request)
{
    if (m_commands.activate)
        request(m_commands);
    else
        m_waiting.append(std::move(request));
}

} // namespace platform
