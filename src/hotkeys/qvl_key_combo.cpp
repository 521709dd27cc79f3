// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_key_combo.h"

namespace hotkeys {

QVLKeyCombo QVLKeyCombo::keyComboWithKeyCode(std::int64_t keyCode, std::int64_t modifiers)
{
    QVLKeyCombo combo;
    combo.m_keyCode = keyCode;
    combo.m_modifiers = modifiers;
    return combo;
}

QVLKeyCombo QVLKeyCombo::initWithPlistRepresentation(const Plist &plist)
{
    const auto read = [&plist](const char *key) {
        const auto found = plist.find(key);
        return found == plist.end() || found->second < 1 ? std::int64_t{-1} : found->second;
    };
    return keyComboWithKeyCode(read("keyCode"), read("modifiers"));
}

QVLKeyCombo::Plist QVLKeyCombo::plistRepresentation() const
{
    return {{"keyCode", m_keyCode}, {"modifiers", m_modifiers}};
}

} // namespace hotkeys
