// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/hot_key_back_end.h"

#include <optional>
#include <vector>

namespace hotkeys {

/// The hot keys of the program: registers them with the desktop and invokes the one that is pressed. Main thread.
class QVLHotKeyCenter
{
public:
    /// `backEnd` must outlive the centre.
    explicit QVLHotKeyCenter(HotKeyBackEnd &backEnd) : m_backEnd(backEnd) { }
    ~QVLHotKeyCenter();
    QVLHotKeyCenter(const QVLHotKeyCenter &) = delete;
    QVLHotKeyCenter &operator=(const QVLHotKeyCenter &) = delete;

    /// Registers a hot key, anew if it was registered before. True also for a combination that cannot be a hot key,
    /// of which nobody will hear; false when the desktop refuses, for the reason in `lastError`.
    [[nodiscard]] bool registerHotKey(QVLHotKey &hotKey);
    /// Nothing happens to one that is not registered.
    void unregisterHotKey(QVLHotKey &hotKey);
    [[nodiscard]] const std::optional<foundation::Error> &lastError() const { return m_lastError; }

    /// Hears of a registration that fails after `registerHotKey` has returned.
    void onLateFailure(std::function<void(const foundation::Error &)> handler) { m_lateFailure = std::move(handler); }
    /// "Ctrl+Super+T" in parts, with the key as the user's layout labels it.
    [[nodiscard]] std::vector<std::string> parts(const QVLKeyCombo &combo) const;

private:
    void installEventHandler();
    void sendEvent(HotKeyID id, HotKeyEvent event);

    HotKeyBackEnd &m_backEnd;
    std::vector<QVLHotKey *> m_hotKeys;
    std::optional<foundation::Error> m_lastError;
    std::function<void(const foundation::Error &)> m_lateFailure;
    std::uint32_t m_lastNumber = 0;
    bool m_hasEventHandler = false;
};

} // namespace hotkeys
