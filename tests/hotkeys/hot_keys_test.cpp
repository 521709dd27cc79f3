// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_key_code_translator.h"

#include <gmock/gmock.h>
#include <set>

using namespace hotkeys;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QVLKeyCombo stored(QVLKeyCombo::Plist plist)
{
    return QVLKeyCombo::initWithPlistRepresentation(plist);
}

} // namespace

TEST(KeyCombo, isReadFromSettingsAndAHotKeyWithAKeyAndAModifierOnly)
{
    const QVLKeyCombo combo = stored({{"keyCode", 17}, {"modifiers", 4352}});
    EXPECT_EQ(combo, QVLKeyCombo::keyComboWithKeyCode(17, controlKey | cmdKey));
    EXPECT_EQ(stored(combo.plistRepresentation()), combo);
    EXPECT_TRUE(combo.isValidHotKeyCombo());
    EXPECT_TRUE(QVLKeyCombo::keyComboWithKeyCode(0, cmdKey).isValidHotKeyCombo());
    EXPECT_FALSE(QVLKeyCombo::keyComboWithKeyCode(17, 0).isValidHotKeyCombo());
    for (const QVLKeyCombo::Plist &plist : {QVLKeyCombo::Plist(), {{"keyCode", 0}, {"modifiers", 4352}},
             {{"modifiers", 4352}}, {{"keyCode", 17}, {"modifiers", -7}}})
        EXPECT_FALSE(stored(plist).isValidHotKeyCombo());
    EXPECT_TRUE(stored({}).isClearCombo());
}

TEST(KeyCodes, areOneForEachPlaceAndName)
{
    std::set<std::int64_t> codes;
    std::set<int> places;
    std::set<std::string> names;
    for (const KeyCode &key : QVLKeyCodeTranslator::keyCodes())
        EXPECT_TRUE(
            codes.insert(key.keyCode).second && places.insert(key.linuxCode).second && names.insert(key.name).second)
            << key.name;
    EXPECT_EQ(QVLKeyCodeTranslator::withKeyCode(17), QVLKeyCodeTranslator::withName("T"));
    EXPECT_EQ(QVLKeyCodeTranslator::withKeyCode(17), QVLKeyCodeTranslator::withLinuxCode(20));
}

TEST(KeyCodes, areReadOutInOneOrderWithTheLabelOfTheKeyboard)
{
    const auto all = QVLKeyCombo::keyComboWithKeyCode(6, cmdKey | shiftKey | optionKey | controlKey);
    EXPECT_THAT(QVLKeyCodeTranslator::parts(all), ElementsAre("Ctrl", "Alt", "Shift", "Super", "Z"));
    EXPECT_THAT(QVLKeyCodeTranslator::parts(all, "Y"), ElementsAre("Ctrl", "Alt", "Shift", "Super", "Y"));
    EXPECT_THAT(QVLKeyCodeTranslator::parts({}), IsEmpty());
}
