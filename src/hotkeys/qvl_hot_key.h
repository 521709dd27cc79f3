// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/qvl_key_combo.h"

#include <functional>

namespace hotkeys {

/// What the platform calls a registered hot key; number 0 means that it is not registered.
struct HotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t number = 0;

    friend bool operator==(const HotKeyID &, const HotKeyID &) = default;
};

/// "QVHk"
inline constexpr std::uint32_t hotKeySignature = 0x51'56'48'6B;

/// A key combination and what happens when it is pressed anywhere on the desktop. It must outlive its registration
/// with the centre. Main thread.
class QVLHotKey
{
public:
    using Action = std::function<void(QVLHotKey &)>;

    QVLHotKey(std::string identifier, std::string name, QVLKeyCombo keyCombo, Action action)
        : m_identifier(std::move(identifier))
        , m_name(std::move(name))
        , m_keyCombo(keyCombo)
        , m_action(std::move(action))
    { }
    QVLHotKey(const QVLHotKey &) = delete;
    QVLHotKey &operator=(const QVLHotKey &) = delete;

    [[nodiscard]] const std::string &identifier() const { return m_identifier; }
    /// What it does, for people to read.
    [[nodiscard]] const std::string &name() const { return m_name; }
    [[nodiscard]] const QVLKeyCombo &keyCombo() const { return m_keyCombo; }
    /// Holds from the next registration on.
    void setKeyCombo(QVLKeyCombo keyCombo) { m_keyCombo = keyCombo; }

    [[nodiscard]] HotKeyID hotKeyID() const { return m_id; }
    void setHotKeyID(HotKeyID id) { m_id = id; }
    [[nodiscard]] bool matchesHotKeyID(HotKeyID id) const { return m_id == id; }
    void invoke() { m_action(*this); }

private:
    std::string m_identifier;
    std::string m_name;
    QVLKeyCombo m_keyCombo;
    Action m_action;
    HotKeyID m_id;
};

} // namespace hotkeys
