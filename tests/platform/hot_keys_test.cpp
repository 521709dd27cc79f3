// SPDX-License-Identifier: GPL-3.0-or-later
#include "hotkeys/qvl_hot_key_center.h"
#include "platform/portal_hot_keys.h"
#include "platform/x11_hot_keys.h"
#include "support/private_bus.h"
#include "support/shortcuts_portal.h"
#include "support/x_server.h"

#include <QTest>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <xcb/xcb.h>

using hotkeys::QVLHotKey;
using hotkeys::QVLHotKeyCenter;
using hotkeys::QVLKeyCombo;

namespace {

const auto controlSuperT = QVLKeyCombo::keyComboWithKeyCode(17, hotkeys::controlKey | hotkeys::cmdKey);
const auto altF5 = QVLKeyCombo::keyComboWithKeyCode(96, hotkeys::optionKey);
constexpr int patience = 10'000; // milliseconds

class X11 : public testing::Test
{
protected:
    /// A program on the screen with one hot key.
    struct Program {
        explicit Program(const QString &display) : backEnd(platform::X11HotKeys::connectTo(display.toLatin1())) { }
        std::unique_ptr<platform::X11HotKeys> backEnd;
        QVLHotKeyCenter center{*backEnd};
        int presses = 0;
        QVLHotKey hotKey{"Global Hot Key", "Quick Entry", controlSuperT, [this](QVLHotKey &) { ++presses; }};
    };

    /// How often the hot key is heard when the keys are pressed as xdotool is told.
    int heard(const char *words)
    {
        program.presses = 0;
        screen.xdotool(QString::fromLatin1(words));
        QTest::qWait(60);
        return program.presses;
    }

    support::XServer screen;
    Program program{screen.display()};
};

/// Another program's connection to the X server, without anything of ours.
class Stranger
{
public:
    explicit Stranger(const QString &display) : m_connection(xcb_connect(display.toLatin1().constData(), nullptr)) { }
    Stranger(const Stranger &) = delete;
    Stranger &operator=(const Stranger &) = delete;
    ~Stranger() { xcb_disconnect(m_connection); }

    /// Takes Ctrl+Super+T where nobody has it.
    [[nodiscard]] bool takesKeys() const
    {
        xcb_generic_error_t *refusal = xcb_request_check(m_connection,
            xcb_grab_key_checked(m_connection, 1, root(), XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4, keyOfT,
                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        std::free(refusal);
        return refusal == nullptr;
    }
    /// Puts another letter on a key that nobody uses, of which every program is told.
    void changeKeyboard(std::uint32_t letter) const
    {
        xcb_change_keyboard_mapping(m_connection, 1, unusedKey, 1, &letter);
        xcb_flush(m_connection);
    }

private:
    static constexpr xcb_keycode_t keyOfT = 28;
    static constexpr xcb_keycode_t unusedKey = 248;

    [[nodiscard]] xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root; }

    xcb_connection_t *m_connection;
};

class Portal : public testing::Test
{
protected:
    bool comes(const std::function<bool()> &condition) { return QTest::qWaitFor(condition, patience); }

    support::PrivateBus bus;
    support::ShortcutsPortal portal{bus.connection()};
    platform::PortalHotKeys backEnd{bus.connection()};
    QVLHotKeyCenter center{backEnd};
    int presses = 0;
    QVLHotKey hotKey{"Global Hot Key", "Quick Entry", controlSuperT, [this](QVLHotKey &) { ++presses; }};
};

} // namespace

TEST_F(X11, hearsTheKeysWhateverProgramIsInFrontAndNoOthers)
{
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    EXPECT_EQ(heard("key ctrl+super+t"), 1);
    EXPECT_EQ(heard("key ctrl+super+t key ctrl+super+t"), 2);
    for (const char *other :
        {"key ctrl+t", "key super+t", "key ctrl+super+shift+t", "key ctrl+super+alt+t", "key ctrl+super+y", "key t"})
        EXPECT_EQ(heard(other), 0) << other;
    const hotkeys::HotKeyID first = program.hotKey.hotKeyID();
    program.hotKey.setKeyCombo(altF5);
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    EXPECT_FALSE(program.hotKey.matchesHotKeyID(first)) << "or late events of the old keys would count";
    EXPECT_EQ(heard("key ctrl+super+t"), 0);
    EXPECT_EQ(heard("key alt+F5"), 1);
    program.hotKey.setKeyCombo({});
    EXPECT_TRUE(program.center.registerHotKey(program.hotKey)) << "none is no mistake";
    EXPECT_EQ(heard("key alt+F5"), 0) << "the old one is given up";
}

TEST_F(X11, hearsTheKeysUnderNumLockAndCapsLockToo)
{
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    for (const char *lock : {"key Num_Lock", "key Caps_Lock", "key Num_Lock"}) { // on, both, CapsLock alone
        screen.xdotool(QString::fromLatin1(lock));
        EXPECT_EQ(heard("key ctrl+super+t"), 1) << lock;
    }
}

TEST_F(X11, hearsKeysThatAreHeldDownOnce)
{
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    EXPECT_EQ(heard("keydown ctrl keydown super keydown t sleep 1.5 keyup t keyup super keyup ctrl"), 1);
    EXPECT_EQ(heard("key ctrl+super+t"), 1) << "and the next time again";
}

TEST_F(X11, saysThatAnotherProgramHasTheKeysUntilThatOneGivesThemUp)
{
    Program other(screen.display());
    ASSERT_TRUE(other.center.registerHotKey(other.hotKey));
    ASSERT_FALSE(program.center.registerHotKey(program.hotKey));
    EXPECT_EQ(program.center.lastError()->message, "Another program uses this key combination already.");
    EXPECT_EQ(heard("key ctrl+super+t"), 0);
    EXPECT_EQ(other.presses, 1);
    ASSERT_TRUE(other.center.registerHotKey(other.hotKey)); // twice is one grab, which
    other.center.unregisterHotKey(other.hotKey); // one call gives up
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    EXPECT_FALSE(program.center.lastError());
    EXPECT_EQ(heard("key ctrl+super+t"), 1);
}

TEST_F(X11, keepsTheKeysWhenTheKeyboardChanges)
{
    ASSERT_TRUE(program.center.registerHotKey(program.hotKey));
    const Stranger changing(screen.display());
    std::atomic_bool areLost = false;
    std::jthread waiting([&](const std::stop_token &stop) {
        const Stranger greedy(screen.display());
        while (!stop.stop_requested() && !areLost)
            areLost = greedy.takesKeys();
        while (!stop.stop_requested()) // a key that went is lost for as long as its new owner lives
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    for (std::uint32_t change = 0; change < 50 && !areLost; ++change) {
        changing.changeKeyboard('a' + change % 26);
        QTest::qWait(5);
    }
    EXPECT_FALSE(areLost) << "somebody may be pressing them at that moment";
    EXPECT_EQ(heard("key ctrl+super+t"), 1);
}

TEST_F(X11, refusesAKeyThatNoKeyboardHasAndReadsLabelsFromTheLayout)
{
    program.hotKey.setKeyCombo(QVLKeyCombo::keyComboWithKeyCode(66, hotkeys::controlKey));
    EXPECT_FALSE(program.center.registerHotKey(program.hotKey));
    EXPECT_EQ(program.center.parts(controlSuperT), (std::vector<std::string>{"Ctrl", "Super", "T"}));
    EXPECT_EQ(program.center.parts(altF5), (std::vector<std::string>{"Alt", "F5"}));
    EXPECT_EQ(platform::X11HotKeys::connectTo(":4711"), nullptr);
}

TEST_F(Portal, bindsTheHotKeyAndHearsItPressedNotReleased)
{
    ASSERT_TRUE(center.registerHotKey(hotKey));
    ASSERT_TRUE(comes([&] { return portal.bound.size() == 1; }));
    const auto shortcut = portal.bound[0];
    EXPECT_EQ(shortcut.id, QStringLiteral("global-hot-key"));
    EXPECT_EQ(shortcut.properties.value(QStringLiteral("description")).toString(), QStringLiteral("Quick Entry"));
    EXPECT_EQ(shortcut.properties.value(QStringLiteral("preferred_trigger")).toString(), QStringLiteral("CTRL+LOGO+t"));
    portal.send("Activated", shortcut);
    EXPECT_TRUE(comes([&] { return presses == 1; }));
    portal.send("Deactivated", shortcut);
    portal.send("Activated", {QStringLiteral("/org/freedesktop/portal/desktop/session/other"), shortcut.id, {}});
    portal.send("Activated", {shortcut.session, QStringLiteral("other"), {}});
    QTest::qWait(60);
    EXPECT_EQ(presses, 1);
}

TEST_F(Portal, aChangeLeavesOneSessionWithTheNewKeys)
{
    ASSERT_TRUE(center.registerHotKey(hotKey));
    ASSERT_TRUE(comes([&] { return portal.bound.size() == 1; }));
    hotKey.setKeyCombo(altF5);
    ASSERT_TRUE(center.registerHotKey(hotKey));
    EXPECT_TRUE(comes([&] {
        return portal.bound.size() == 1
            && portal.bound[0].properties.value(QStringLiteral("preferred_trigger")).toString()
            == QStringLiteral("ALT+F5");
    }));
    center.unregisterHotKey(hotKey);
    EXPECT_TRUE(comes([&] { return portal.bound.empty(); }));
}

TEST_F(Portal, saysLaterThatTheUserOrTheDesktopRefuses)
{
    std::vector<std::string> problems;
    center.onLateFailure([&](const foundation::Error &error) { problems.push_back(error.message); });
    portal.answer = 1;
    ASSERT_TRUE(center.registerHotKey(hotKey));
    EXPECT_TRUE(comes([&] { return problems.size() == 1; }));

    support::PrivateBus empty;
    platform::PortalHotKeys alone(empty.connection());
    QVLHotKeyCenter aloneCenter(alone);
    aloneCenter.onLateFailure([&](const foundation::Error &error) { problems.push_back(error.message); });
    QVLHotKey other("Global Hot Key", "Quick Entry", controlSuperT, [](QVLHotKey &) {});
    ASSERT_TRUE(aloneCenter.registerHotKey(other));
    EXPECT_TRUE(comes([&] { return problems.size() == 2; }));
    EXPECT_EQ(problems.back(), "The desktop did not accept the key combination.");
}
