// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_key_code_translator.h"

#include <algorithm>
#include <array>

namespace hotkeys {

namespace {

constexpr std::array<KeyCode, 96> QVLKeyCodes{{
    {0, 30, "A", "a"},
    {1, 31, "S", "s"},
    {2, 32, "D", "d"},
    {3, 33, "F", "f"},
    {4, 35, "H", "h"},
    {5, 34, "G", "g"},
    {6, 44, "Z", "z"},
    {7, 45, "X", "x"},
    {8, 46, "C", "c"},
    {9, 47, "V", "v"},
    {10, 86, "<", "less"},
    {11, 48, "B", "b"},
    {12, 16, "Q", "q"},
    {13, 17, "W", "w"},
    {14, 18, "E", "e"},
    {15, 19, "R", "r"},
    {16, 21, "Y", "y"},
    {17, 20, "T", "t"},
    {18, 2, "1", "1"},
    {19, 3, "2", "2"},
    {20, 4, "3", "3"},
    {21, 5, "4", "4"},
    {22, 7, "6", "6"},
    {23, 6, "5", "5"},
    {24, 13, "=", "equal"},
    {25, 10, "9", "9"},
    {26, 8, "7", "7"},
    {27, 12, "-", "minus"},
    {28, 9, "8", "8"},
    {29, 11, "0", "0"},
    {30, 27, "]", "bracketright"},
    {31, 24, "O", "o"},
    {32, 22, "U", "u"},
    {33, 26, "[", "bracketleft"},
    {34, 23, "I", "i"},
    {35, 25, "P", "p"},
    {36, 28, "Return", "Return"},
    {37, 38, "L", "l"},
    {38, 36, "J", "j"},
    {39, 40, "'", "apostrophe"},
    {40, 37, "K", "k"},
    {41, 39, ";", "semicolon"},
    {42, 43, "\\", "backslash"},
    {43, 51, ",", "comma"},
    {44, 53, "/", "slash"},
    {45, 49, "N", "n"},
    {46, 50, "M", "m"},
    {47, 52, ".", "period"},
    {48, 15, "Tab", "Tab"},
    {49, 57, "Space", "space"},
    {50, 41, "`", "grave"},
    {51, 14, "Backspace", "BackSpace"},
    {53, 1, "Esc", "Escape"},
    {65, 83, "Num .", "KP_Decimal"},
    {67, 55, "Num *", "KP_Multiply"},
    {69, 78, "Num +", "KP_Add"},
    {75, 98, "Num /", "KP_Divide"},
    {76, 96, "Enter", "KP_Enter"},
    {78, 74, "Num -", "KP_Subtract"},
    {81, 117, "Num =", "KP_Equal"},
    {82, 82, "Num 0", "KP_0"},
    {83, 79, "Num 1", "KP_1"},
    {84, 80, "Num 2", "KP_2"},
    {85, 81, "Num 3", "KP_3"},
    {86, 75, "Num 4", "KP_4"},
    {87, 76, "Num 5", "KP_5"},
    {88, 77, "Num 6", "KP_6"},
    {89, 71, "Num 7", "KP_7"},
    {91, 72, "Num 8", "KP_8"},
    {92, 73, "Num 9", "KP_9"},
    {96, 63, "F5", "F5"},
    {97, 64, "F6", "F6"},
    {98, 65, "F7", "F7"},
    {99, 61, "F3", "F3"},
    {100, 66, "F8", "F8"},
    {101, 67, "F9", "F9"},
    {103, 87, "F11", "F11"},
    {105, 183, "F13", "F13"},
    {106, 186, "F16", "F16"},
    {107, 184, "F14", "F14"},
    {109, 68, "F10", "F10"},
    {111, 88, "F12", "F12"},
    {113, 185, "F15", "F15"},
    {114, 110, "Ins", "Insert"},
    {115, 102, "Home", "Home"},
    {116, 104, "PgUp", "Page_Up"},
    {117, 111, "Del", "Delete"},
    {118, 62, "F4", "F4"},
    {119, 107, "End", "End"},
    {120, 60, "F2", "F2"},
    {121, 109, "PgDown", "Page_Down"},
    {122, 59, "F1", "F1"},
    {123, 105, "Left", "Left"},
    {124, 106, "Right", "Right"},
    {125, 108, "Down", "Down"},
    {126, 103, "Up", "Up"},
}};

constexpr std::array<std::pair<std::int64_t, const char *>, 4> modifierNames{
    {{controlKey, "Ctrl"}, {optionKey, "Alt"}, {shiftKey, "Shift"}, {cmdKey, "Super"}}};

template <typename Matches> const KeyCode *find(Matches matches)
{
    const auto found = std::find_if(QVLKeyCodes.begin(), QVLKeyCodes.end(), matches);
    return found == QVLKeyCodes.end() ? nullptr : &*found;
}

} // namespace

std::span<const KeyCode> QVLKeyCodeTranslator::keyCodes()
{
    return QVLKeyCodes;
}

const KeyCode *QVLKeyCodeTranslator::withKeyCode(std::int64_t keyCode)
{
    return find([keyCode](const KeyCode &key) { return key.keyCode == keyCode; });
}

const KeyCode *QVLKeyCodeTranslator::withLinuxCode(int linuxCode)
{
    return find([linuxCode](const KeyCode &key) { return key.linuxCode == linuxCode; });
}

const KeyCode *QVLKeyCodeTranslator::withName(std::string_view name)
{
    return find([name](const KeyCode &key) { return key.name == name; });
}

std::vector<std::string> QVLKeyCodeTranslator::parts(const QVLKeyCombo &combo, std::string_view keyLabel)
{
    if (!combo.isValidHotKeyCombo())
        return {};
    std::vector<std::string> parts;
    for (const auto &[modifier, name] : modifierNames) {
        if (combo.modifiers() & modifier)
            parts.emplace_back(name);
    }
    const KeyCode *key = withKeyCode(combo.keyCode());
    if (!keyLabel.empty())
        parts.emplace_back(keyLabel);
    else
        parts.emplace_back(key ? key->name : "#" + std::to_string(combo.keyCode()));
    return parts;
}

} // namespace hotkeys
