// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <functional>

namespace platform {

/// What one program asks of the other by D-Bus. All of it happens on the main thread.
struct RemoteCommands {
    /// The window is to come to the front.
    std::function<void()> activate;
    /// One of the actions that the desktop file lists, with what it works on.
    std::function<void(const QString &action, const QStringList &arguments)> activateAction;
    /// Another program's text is to become a task; the answer is the text of a failure.
    std::function<QString(const QString &text)> addTask;
};

/// Keeps the program to one running instance: the first owns a name on the session bus and serves
/// `org.freedesktop.Application` there; a later one hands over what it was started for.
///
/// What other programs send is read on the main thread and never waited for; more text than a person writes is refused.
///
/// Main thread. Without a session bus, and when the first one does not answer, the program works alone.
class RunningInstance final : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    /// `name` is a bus name such as "org.quelvin.Quelvin".
    RunningInstance(QDBusConnection bus, QString name);
    ~RunningInstance() override;

    /// Claims the name. When another has it, asks that one for `action` (to come to the front, if empty); true when it
    /// has taken over, so that nothing is left to do here.
    [[nodiscard]] bool handsOver(const QString &action, const QStringList &arguments);

    /// Serves what was asked meanwhile, and from now on.
    void serve(RemoteCommands commands);

private:
    [[nodiscard]] QString path() const;

    QDBusConnection m_bus;
    QString m_name;
    RemoteCommands m_commands;
    QList<std::function<void(const RemoteCommands &)>> m_waiting; ///< asked while the program was still coming up

    friend class ApplicationAdaptor;
    friend class TextServiceAdaptor;
    void run(std::function<void(const RemoteCommands &)> request);
};

} // namespace platform
