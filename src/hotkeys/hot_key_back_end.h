// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "hotkeys/qvl_hot_key.h"

namespace hotkeys {

inline constexpr const char *hotKeyErrorDomain = "HotKeyErrorDomain";
enum class HotKeyErrorCode { Taken = 1, UnknownKey = 2, NotSupported = 3 };

enum class HotKeyEvent { Pressed, Released };

/// What a desktop offers to be told of keys that are pressed in other programs. Main thread.
class HotKeyBackEnd
{
public:
    struct Handlers {
        std::function<void(HotKeyID, HotKeyEvent)> event;
        /// A registration that seemed to succeed has failed later.
        std::function<void(const foundation::Error &)> failure;
    };

    virtual ~HotKeyBackEnd() = default;

    /// To be called once, before the first registration.
    virtual void installEventHandler(Handlers handlers) = 0;
    /// Asks to be told of the combination of `hotKey`, which is a valid one and has its id.
    [[nodiscard]] virtual foundation::Result<void> registerEventHotKey(const QVLHotKey &hotKey) = 0;
    virtual void unregisterEventHotKey(HotKeyID id) = 0;
    /// What the user's keyboard layout has on a key; empty where that is not known.
    [[nodiscard]] virtual std::string keyLabel(std::int64_t) { return {}; }
};

} // namespace hotkeys
