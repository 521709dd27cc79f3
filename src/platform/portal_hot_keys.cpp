// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/portal_hot_keys.h"

#include "hotkeys/qvl_key_code_translator.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QTimer>

namespace platform {

/// A shortcut as the portal wants it.
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

static QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace platform

Q_DECLARE_METATYPE(platform::PortalShortcut)

namespace platform {

using hotkeys::HotKeyEvent;

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

/// "CTRL+LOGO+t", as the portals write triggers.
QString triggerOf(const hotkeys::QVLKeyCombo &combo)
{
    constexpr std::pair<std::int64_t, const char *> names[] = {{hotkeys::controlKey, "CTRL"},
        {hotkeys::optionKey, "ALT"}, {hotkeys::shiftKey, "SHIFT"}, {hotkeys::cmdKey, "LOGO"}};
    QStringList parts;
    for (const auto &[modifier, name] : names) {
        if (combo.modifiers() & modifier)
            parts.append(QString::fromLatin1(name));
    }
    const hotkeys::KeyCode *key = hotkeys::QVLKeyCodeTranslator::withKeyCode(combo.keyCode());
    return key ? (parts << QString::fromLatin1(key->keysym)).join(QLatin1Char('+')) : QString();
}

} // namespace

PortalHotKeys::PortalHotKeys(QDBusConnection bus) : m_bus(std::move(bus))
{
    // a slot whose types nobody has named before is connected and then never called
    qRegisterMetaType<QDBusObjectPath>();
    qRegisterMetaType<QVariantMap>();
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    m_bus.connect(service, path, interface, QStringLiteral("Activated"), this,
        SLOT(onActivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    m_bus.connect(service, path, interface, QStringLiteral("Deactivated"), this,
        SLOT(onDeactivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
}

PortalHotKeys::~PortalHotKeys()
{
    endSession();
}

foundation::Result<void> PortalHotKeys::registerEventHotKey(const hotkeys::QVLHotKey &hotKey)
{
    const QString trigger = triggerOf(hotKey.keyCombo());
    if (trigger.isEmpty())
        return foundation::Failure(
            foundation::Error{hotkeys::hotKeyErrorDomain, static_cast<int>(hotkeys::HotKeyErrorCode::UnknownKey),
                QCoreApplication::translate("HotKeys", "This key is not known on this keyboard.").toStdString(), {}});
    m_shortcuts.push_back({hotKey.hotKeyID(),
        QString::fromStdString(hotKey.identifier()).toLower().replace(QLatin1Char(' '), QLatin1Char('-')),
        QString::fromStdString(hotKey.name()), trigger});
    renewSession();
    return {};
}

void PortalHotKeys::unregisterEventHotKey(hotkeys::HotKeyID id)
{
    std::erase_if(m_shortcuts, [id](const Shortcut &shortcut) { return shortcut.id == id; });
    renewSession();
}

/// On the next turn, so that a change, which takes one away and brings another, makes one session.
void PortalHotKeys::renewSession()
{
    if (std::exchange(m_isRenewing, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_isRenewing = false;
        endSession();
        if (m_shortcuts.empty())
            return;
        const QString token = expectAnswer(SLOT(onSessionCreated(uint, QVariantMap)));
        call(QStringLiteral("CreateSession"),
            {QVariantMap{{QStringLiteral("handle_token"), token}, {QStringLiteral("session_handle_token"), token}}});
    });
}

void PortalHotKeys::endSession()
{
    if (!m_session.isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(
            service, m_session, QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Close")));
    m_session.clear();
}

/// The portal answers by a signal at a path made from the caller and a token, which is heard before it is asked.
QString PortalHotKeys::expectAnswer(const char *slot)
{
    const QString token = QStringLiteral("quelvin%1").arg(++m_lastToken);
    const QString sender = m_bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    m_request = QStringLiteral("%1/request/%2/%3").arg(path, sender, token);
    m_bus.connect(service, m_request, requestInterface, QStringLiteral("Response"), this, slot);
    return token;
}

void PortalHotKeys::call(const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<> reply = *watcher;
        watcher->deleteLater();
        if (reply.isError())
            fail(reply.error().message());
    });
}

void PortalHotKeys::onSessionCreated(uint code, const QVariantMap &results)
{
    if (message().path() != m_request)
        return; // of a session that was given up before it came
    m_session = results.value(QStringLiteral("session_handle")).toString();
    if (code != 0 || m_session.isEmpty()) {
        fail(QStringLiteral("no session (%1)").arg(code));
        return;
    }
    QList<PortalShortcut> shortcuts;
    for (const Shortcut &shortcut : m_shortcuts)
        shortcuts.append({shortcut.name,
            {{QStringLiteral("description"), shortcut.description},
                {QStringLiteral("preferred_trigger"), shortcut.trigger}}});
    const QString token = expectAnswer(SLOT(onShortcutsBound(uint, QVariantMap)));
    call(QStringLiteral("BindShortcuts"),
        {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), QString(),
            QVariantMap{{QStringLiteral("handle_token"), token}}});
}

void PortalHotKeys::onShortcutsBound(uint code, const QVariantMap &)
{
    if (code != 0)
        fail(QStringLiteral("not bound (%1)").arg(code));
}

void PortalHotKeys::fail(const QString &detail)
{
    if (m_handlers.failure)
        m_handlers.failure({hotkeys::hotKeyErrorDomain, static_cast<int>(hotkeys::HotKeyErrorCode::NotSupported),
            QCoreApplication::translate("HotKeys", "The desktop did not accept the key combination.").toStdString(),
            detail.toStdString()});
}

void PortalHotKeys::pass(const QDBusObjectPath &session, const QString &shortcut, HotKeyEvent event)
{
    for (const Shortcut &known : m_shortcuts) {
        if (session.path() == m_session && known.name == shortcut && m_handlers.event) {
            m_handlers.event(known.id, event);
            return; // it may have changed the shortcuts
        }
    }
}

void PortalHotKeys::onActivated(
    const QDBusObjectPath &session, const QString &shortcut, qulonglong, const QVariantMap &more)
{
    const QString token = more.value(QStringLiteral("activation_token")).toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    pass(session, shortcut, HotKeyEvent::Pressed);
}

void PortalHotKeys::onDeactivated(
    const QDBusObjectPath &session, const QString &shortcut, qulonglong, const QVariantMap &)
{
    pass(session, shortcut, HotKeyEvent::Released);
}

} // namespace platform
