// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/hot_key_back_ends.h"

#include "platform/portal_hot_keys.h"
#include "platform/x11_hot_keys.h"

#include <QCoreApplication>

namespace platform {

namespace {

class NoHotKeys final : public hotkeys::HotKeyBackEnd
{
public:
    void installEventHandler(Handlers) override { }
    foundation::Result<void> registerEventHotKey(const hotkeys::QVLHotKey &) override
    {
        return foundation::Failure(foundation::Error{hotkeys::hotKeyErrorDomain,
            static_cast<int>(hotkeys::HotKeyErrorCode::NotSupported),
            QCoreApplication::translate("HotKeys", "This desktop has no global key combinations.").toStdString(), {}});
    }
    void unregisterEventHotKey(hotkeys::HotKeyID) override { }
};

} // namespace

std::unique_ptr<hotkeys::HotKeyBackEnd> makeHotKeyBackEnd(const QDBusConnection &bus)
{
    // On Wayland an X server may be there, too; it hears keys only while a window of its own is in front.
    if (qEnvironmentVariable("XDG_SESSION_TYPE") != QStringLiteral("wayland")
        && !qEnvironmentVariableIsEmpty("DISPLAY")) {
        if (auto x11 = X11HotKeys::connectTo())
            return x11;
    }
    if (bus.isConnected())
        return std::make_unique<PortalHotKeys>(bus);
    return std::make_unique<NoHotKeys>();
}

} // namespace platform
