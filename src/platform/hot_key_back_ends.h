// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/hot_key_back_end.h"

#include <QDBusConnection>
#include <memory>

namespace platform {

/// The way to hot keys on this desktop: key grabs in an X session, the portal in a Wayland session and wherever there
/// is no X server. Without a session bus either, a back end that refuses every combination with a sentence.
[[nodiscard]] std::unique_ptr<hotkeys::HotKeyBackEnd> makeHotKeyBackEnd(const QDBusConnection &bus);

} // namespace platform
