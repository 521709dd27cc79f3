// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/qvl_key_combo.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace hotkeys {

/// One key: the code in which it is stored, the code that Linux has for the same place on the keyboard, and its names.
struct KeyCode {
    std::int64_t keyCode;
    int linuxCode;
    const char *name; ///< as shown, on a keyboard of the United States
    const char *keysym; ///< as X and the desktop portal name it
};

/// Between the codes of keys and their names. Any thread may use it.
class QVLKeyCodeTranslator
{
public:
    [[nodiscard]] static std::span<const KeyCode> keyCodes();
    [[nodiscard]] static const KeyCode *withKeyCode(std::int64_t keyCode);
    [[nodiscard]] static const KeyCode *withLinuxCode(int linuxCode);
    [[nodiscard]] static const KeyCode *withName(std::string_view name);

    /// The parts of a combination as they are read out: {"Ctrl", "Super", "T"}; none for one that is no hot key.
    /// `keyLabel` is what is printed on the key, where that is known.
    [[nodiscard]] static std::vector<std::string> parts(const QVLKeyCombo &combo, std::string_view keyLabel = {});
};

} // namespace hotkeys
