// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace hotkeys {

/// The modifier keys of a combination, as the bits in which they are stored. `cmdKey` is the Super key here, and
/// `optionKey` is Alt.
enum Modifier : std::int64_t { cmdKey = 0x0100, shiftKey = 0x0200, optionKey = 0x0800, controlKey = 0x1000 };

/// A key, by its place on the keyboard, with modifiers; or none. A value.
class QVLKeyCombo
{
public:
    using Plist = std::map<std::string, std::int64_t>;

    /// The clear combination.
    QVLKeyCombo() = default;
    [[nodiscard]] static QVLKeyCombo keyComboWithKeyCode(std::int64_t keyCode, std::int64_t modifiers);
    /// From the form in the settings. A value below 1 reads as none; so key code 0, the A, is no key when read back.
    [[nodiscard]] static QVLKeyCombo initWithPlistRepresentation(const Plist &plist);

    [[nodiscard]] std::int64_t keyCode() const { return m_keyCode; }
    [[nodiscard]] std::int64_t modifiers() const { return m_modifiers; }
    [[nodiscard]] Plist plistRepresentation() const;

    [[nodiscard]] bool isClearCombo() const { return *this == QVLKeyCombo(); }
    /// Whether it can be a hot key: with a key and at least one modifier.
    [[nodiscard]] bool isValidHotKeyCombo() const { return m_keyCode >= 0 && m_modifiers > 0; }

    friend bool operator==(const QVLKeyCombo &, const QVLKeyCombo &) = default;

private:
    std::int64_t m_keyCode = -1;
    std::int64_t m_modifiers = -1;
};

} // namespace hotkeys
