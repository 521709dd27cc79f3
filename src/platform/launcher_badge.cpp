// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/launcher_badge.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace platform {

namespace {

/// The launchers tell the entries of one program apart by an object path made from its URI.
uint hashOf(const QString &uri)
{
    uint hash = 5381;
    for (const char byte : uri.toUtf8())
        hash = hash * 33 + static_cast<unsigned char>(byte);
    return hash;
}

} // namespace

LauncherBadge::LauncherBadge(QDBusConnection bus, const QString &desktopFile)
    : m_bus(std::move(bus))
    , m_uri(QStringLiteral("application://%1.desktop").arg(desktopFile))
    , m_path(QStringLiteral("/com/canonical/unity/launcherentry/%1").arg(hashOf(m_uri)))
{ }

LauncherBadge::~LauncherBadge()
{
    show({});
}

void LauncherBadge::show(const QString &badge)
{
    auto signal = QDBusMessage::createSignal(
        m_path, QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    const qlonglong count = badge.section(QLatin1Char('/'), 0, 0).toLongLong();
    signal << m_uri
           << QVariantMap{{QStringLiteral("count"), count}, {QStringLiteral("count-visible"), !badge.isEmpty()}};
    m_bus.send(signal);
}

} // namespace platform
