// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/running_instance.h"

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

namespace platform {

/// `org.freedesktop.Application` on the bus. The platform data may carry the token of the click that led here.
class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(RunningInstance &instance) : QDBusAbstractAdaptor(&instance), m_instance(instance) { }

public Q_SLOTS:
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(const QString &action, const QVariantList &arguments, const QVariantMap &platformData);

private:
    RunningInstance &m_instance;
};

/// `org.quelvin.TextService` on the bus: a text of another program becomes a task.
class TextServiceAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.quelvin.TextService")

public:
    explicit TextServiceAdaptor(RunningInstance &instance) : QDBusAbstractAdaptor(&instance), m_instance(instance) { }

public Q_SLOTS:
    QString AddTask(const QString &text);

private:
    RunningInstance &m_instance;
};

} // namespace platform
