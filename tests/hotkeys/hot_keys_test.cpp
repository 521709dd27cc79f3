// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_hot_key_center.h"
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

/// A desktop that keeps what is registered, and may refuse.
class Desktop final : public HotKeyBackEnd
{
public:
    void installEventHandler(Handlers given) override
    {
        handlers = std::move(given);
        ++installations;
    }
    foundation::Result<void> registerEventHotKey(const QVLHotKey &hotKey) override
    {
        if (isTaken)
            return foundation::Failure(foundation::Error{hotKeyErrorDomain, 1, "Taken.", {}});
        registered.insert(hotKey.hotKeyID().number);
        return {};
    }
    void unregisterEventHotKey(HotKeyID id) override { registered.erase(id.number); }

    Handlers handlers;
    std::set<std::uint32_t> registered;
    int installations = 0;
    bool isTaken = false;
};

class Center : public testing::Test
{
protected:
    void press(HotKeyID id) { desktop.handlers.event(id, HotKeyEvent::Pressed); }

    Desktop desktop;
    QVLHotKeyCenter center{desktop};
    int presses = 0;
    QVLHotKey hotKey{
        "Global Hot Key", "Quick Entry", stored({{"keyCode", 17}, {"modifiers", 4352}}), [this](QVLHotKey &pressed) {
            EXPECT_EQ(&pressed, &hotKey);
            ++presses;
        }};
};

} // namespace

TEST(KeyCombo, isAHotKeyWithAKeyAndAModifierOnly)
{
    EXPECT_TRUE(QVLKeyCombo::keyComboWithKeyCode(0, cmdKey).isValidHotKeyCombo());
    EXPECT_FALSE(QVLKeyCombo::keyComboWithKeyCode(17, 0).isValidHotKeyCombo());
    EXPECT_FALSE(QVLKeyCombo::keyComboWithKeyCode(-1, cmdKey).isValidHotKeyCombo());
    EXPECT_FALSE(QVLKeyCombo().isValidHotKeyCombo());
    EXPECT_TRUE(QVLKeyCombo::keyComboWithKeyCode(-1, -1).isClearCombo());
}

TEST(KeyCombo, isReadFromSettingsWithEveryValueBelowOneAsNone)
{
    const QVLKeyCombo combo = stored({{"keyCode", 17}, {"modifiers", 4352}});
    EXPECT_EQ(combo, QVLKeyCombo::keyComboWithKeyCode(17, controlKey | cmdKey));
    EXPECT_EQ(stored(combo.plistRepresentation()), combo);
    EXPECT_TRUE(stored({}).isClearCombo());
    EXPECT_FALSE(stored({{"keyCode", 0}, {"modifiers", 4352}}).isValidHotKeyCombo());
    EXPECT_FALSE(stored({{"modifiers", 4352}}).isValidHotKeyCombo());
    EXPECT_EQ(stored({{"keyCode", 17}, {"modifiers", -7}}).modifiers(), -1);
}

TEST(KeyCodes, areOneForEachPlaceAndName)
{
    std::set<std::int64_t> codes;
    std::set<int> places;
    std::set<std::string> names;
    for (const KeyCode &key : QVLKeyCodeTranslator::keyCodes()) {
        EXPECT_TRUE(codes.insert(key.keyCode).second) << key.name;
        EXPECT_TRUE(places.insert(key.linuxCode).second) << key.name;
        EXPECT_TRUE(names.insert(key.name).second) << key.name;
    }
    EXPECT_EQ(QVLKeyCodeTranslator::withKeyCode(17), QVLKeyCodeTranslator::withName("T"));
    EXPECT_EQ(QVLKeyCodeTranslator::withKeyCode(17), QVLKeyCodeTranslator::withLinuxCode(20));
    EXPECT_EQ(QVLKeyCodeTranslator::withKeyCode(66), nullptr);
}

TEST(KeyCodes, areReadOutInOneOrderWithTheLabelOfTheKeyboard)
{
    const auto all = QVLKeyCombo::keyComboWithKeyCode(6, cmdKey | shiftKey | optionKey | controlKey);
    EXPECT_THAT(QVLKeyCodeTranslator::parts(all), ElementsAre("Ctrl", "Alt", "Shift", "Super", "Z"));
    EXPECT_THAT(QVLKeyCodeTranslator::parts(all, "Y"), ElementsAre("Ctrl", "Alt", "Shift", "Super", "Y"));
    EXPECT_THAT(QVLKeyCodeTranslator::parts({}), IsEmpty());
}

TEST_F(Center, invokesAHotKeyWhenItIsPressedAndNeverWhenItIsReleased)
{
    ASSERT_TRUE(center.registerHotKey(hotKey));
    press(hotKey.hotKeyID());
    EXPECT_EQ(presses, 1);
    desktop.handlers.event(hotKey.hotKeyID(), HotKeyEvent::Released);
    press({hotKeySignature, 4711});
    press({});
    EXPECT_EQ(presses, 1);
}

TEST_F(Center, registersAHotKeyOnceHoweverOftenItIsAsked)
{
    ASSERT_TRUE(center.registerHotKey(hotKey));
    const HotKeyID first = hotKey.hotKeyID();
    EXPECT_EQ(first, (HotKeyID{hotKeySignature, 1}));
    ASSERT_TRUE(center.registerHotKey(hotKey));
    EXPECT_EQ(desktop.registered, std::set<std::uint32_t>{2});
    EXPECT_EQ(desktop.installations, 1);
    press(first);
    EXPECT_EQ(presses, 0) << "an event of the old registration";
    center.unregisterHotKey(hotKey);
    center.unregisterHotKey(hotKey);
    EXPECT_THAT(desktop.registered, IsEmpty());
}

TEST_F(Center, takesACombinationThatIsNoneWithoutAskingTheDesktop)
{
    ASSERT_TRUE(center.registerHotKey(hotKey));
    hotKey.setKeyCombo(stored({{"keyCode", 0}, {"modifiers", 4352}}));
    desktop.isTaken = true;
    EXPECT_TRUE(center.registerHotKey(hotKey));
    EXPECT_THAT(desktop.registered, IsEmpty()) << "the old one is given up";
}

TEST_F(Center, saysWhyADesktopRefusesAndDoesNotKeepTheHotKey)
{
    desktop.isTaken = true;
    EXPECT_FALSE(center.registerHotKey(hotKey));
    EXPECT_EQ(center.lastError()->message, "Taken.");
    press(hotKey.hotKeyID());
    EXPECT_EQ(presses, 0);
    desktop.isTaken = false;
    EXPECT_TRUE(center.registerHotKey(hotKey));
    EXPECT_FALSE(center.lastError());
}
