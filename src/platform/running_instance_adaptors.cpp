// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/running_instance_adaptors.h"

#include <memory>

namespace platform {

namespace {

constexpr qsizetype longestToken = 1024;
constexpr qsizetype longestInput = 65536; // characters of an action with its texts

void takeToken(const QVariantMap &platformData)
{
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty() && token.size() <= longestToken)
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace

void ApplicationAdaptor::Activate(const QVariantMap &platformData)
{
    takeToken(platformData);
    m_instance.run([](const RemoteCommands &commands) { commands.activate(); });
}

/// Quelvin opens no files, so that it merely comes to the front.
void ApplicationAdaptor::Open(const QStringList &, const QVariantMap &platformData)
{
    Activate(platformData);
}

void ApplicationAdaptor::ActivateAction(
    const QString &action, const QVariantList &arguments, const QVariantMap &platformData)
{
    takeToken(platformData);
    QStringList texts;
    qsizetype size = action.size();
    for (const QVariant &argument : arguments) {
        texts.append(argument.toString());
        size += 1 + texts.last().size();
    }
    if (size > longestInput) {
        m_instance.sendErrorReply(QDBusError::LimitsExceeded, QStringLiteral("The texts of the action are too long."));
        return;
    }
    m_instance.run([action, texts](const RemoteCommands &commands) { commands.activateAction(action, texts); });
}

QString TextServiceAdaptor::AddTask(const QString &text)
{
    const auto answer = std::make_shared<QString>(); // stays empty for a program that is still coming up
    m_instance.run([text, answer](const RemoteCommands &commands) { *answer = commands.addTask(text); });
    return *answer;
}

} // namespace platform
