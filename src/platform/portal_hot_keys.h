// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/hot_key_back_end.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

namespace platform {

/// Hot keys by the desktop portal's `GlobalShortcuts`, for desktops on which no program hears another's keys. The user
/// confirms them in a window of the desktop, and may choose other keys there.
///
/// Main thread; nothing waits for the portal, so that what it refuses comes as a late failure. A session takes its
/// shortcuts once, so that a change begins a new one.
class PortalHotKeys final : public QObject, public hotkeys::HotKeyBackEnd, protected QDBusContext
{
    Q_OBJECT

public:
    explicit PortalHotKeys(QDBusConnection bus);
    ~PortalHotKeys() override;

    void installEventHandler(Handlers handlers) override { m_handlers = std::move(handlers); }
    [[nodiscard]] foundation::Result<void> registerEventHotKey(const hotkeys::QVLHotKey &hotKey) override;
    void unregisterEventHotKey(hotkeys::HotKeyID id) override;

private Q_SLOTS:
    void onSessionCreated(uint code, const QVariantMap &results);
    void onShortcutsBound(uint code, const QVariantMap &results);
    void onActivated(const QDBusObjectPath &session, const QString &shortcut, qulonglong time, const QVariantMap &more);
    void onDeactivated(
        const QDBusObjectPath &session, const QString &shortcut, qulonglong time, const QVariantMap &more);

private:
    struct Shortcut {
        hotkeys::HotKeyID id;
        QString name; ///< the same in every run, so that the desktop knows it again
        QString description;
        QString trigger;
    };

    void renewSession();
    void endSession();
    /// The token of a new request, whose answer goes to `slot`.
    [[nodiscard]] QString expectAnswer(const char *slot);
    void call(const QString &method, const QVariantList &arguments);
    void fail(const QString &detail);
    void pass(const QDBusObjectPath &session, const QString &shortcut, hotkeys::HotKeyEvent event);

    QDBusConnection m_bus;
    Handlers m_handlers;
    std::vector<Shortcut> m_shortcuts;
    QString m_session; ///< empty while there is none
    QString m_request; ///< the path of the one that is to be answered
    int m_lastToken = 0;
    bool m_isRenewing = false;
};

} // namespace platform
