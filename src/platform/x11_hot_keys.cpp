// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11_hot_keys.h"

#include "foundation/log.h"
#include "hotkeys/qvl_key_code_translator.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <cstdlib>
#include <xcb/xcb.h>

namespace platform {

using foundation::Error;
using hotkeys::HotKeyErrorCode;
using hotkeys::HotKeyEvent;
using hotkeys::QVLKeyCodeTranslator;

namespace {

constexpr int firstKeycode = 8; // the keycodes of X servers on Linux are the kernel's, and eight more
constexpr int linuxAlt = 56;
constexpr int linuxSuper = 125;
constexpr int linuxNumLock = 69;
constexpr std::uint16_t meaningfulMasks = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_2
    | XCB_MOD_MASK_3 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;
constexpr std::uint32_t repeatGap = 5; // milliseconds between the release and the press that make a repetition

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

Error error(HotKeyErrorCode code)
{
    const char *sentence = code == HotKeyErrorCode::Taken
        ? QT_TRANSLATE_NOOP("HotKeys", "Another program uses this key combination already.")
        : QT_TRANSLATE_NOOP("HotKeys", "This key is not known on this keyboard.");
    return {hotkeys::hotKeyErrorDomain, static_cast<int>(code),
        QCoreApplication::translate("HotKeys", sentence).toStdString(), {}};
}

xcb_keycode_t keycode(int linuxCode)
{
    return static_cast<xcb_keycode_t>(linuxCode + firstKeycode);
}

} // namespace

std::unique_ptr<X11HotKeys> X11HotKeys::connectTo(const QByteArray &display)
{
    int screen = 0;
    xcb_connection_t *connection = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screen);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen > 0 && screens.rem > 1; --screen)
        xcb_screen_next(&screens);
    return std::unique_ptr<X11HotKeys>(new X11HotKeys(connection, screens.data->root));
}

X11HotKeys::X11HotKeys(xcb_connection_t *connection, std::uint32_t root) : m_connection(connection), m_root(root)
{
    readMasks();
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11HotKeys::readEvents);
}

X11HotKeys::~X11HotKeys()
{
    m_notifier.reset();
    xcb_disconnect(m_connection); // which gives up the grabs, too
}

/// Finds which of the eight modifiers of the server a key belongs to; layouts move them about.
void X11HotKeys::readMasks()
{
    m_masks = {.alt = XCB_MOD_MASK_1, .super = XCB_MOD_MASK_4, .numLock = XCB_MOD_MASK_2};
    const Owned<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(m_connection, xcb_get_modifier_mapping(m_connection), nullptr));
    if (!mapping)
        return;
    const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    const std::pair<int, std::uint16_t *> wanted[]
        = {{linuxAlt, &m_masks.alt}, {linuxSuper, &m_masks.super}, {linuxNumLock, &m_masks.numLock}};
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int place = 0; place < mapping->keycodes_per_modifier; ++place, ++keys) {
            for (const auto &[linuxCode, mask] : wanted) {
                if (*keys == keycode(linuxCode))
                    *mask = static_cast<std::uint16_t>(1U << modifier);
            }
        }
    }
}

std::uint16_t X11HotKeys::mask(std::int64_t modifiers) const
{
    const std::pair<std::int64_t, std::uint16_t> masks[]
        = {{hotkeys::shiftKey, XCB_MOD_MASK_SHIFT}, {hotkeys::controlKey, XCB_MOD_MASK_CONTROL},
            {hotkeys::optionKey, m_masks.alt}, {hotkeys::cmdKey, m_masks.super}};
    std::uint16_t all = 0;
    for (const auto &[modifier, mask] : masks) {
        if (modifiers & modifier)
            all |= mask;
    }
    return all;
}

std::vector<std::uint16_t> X11HotKeys::masksWithLocks(std::int64_t modifiers) const
{
    const std::uint16_t plain = mask(modifiers);
    std::vector<std::uint16_t> masks;
    for (const int locks : {0, int{XCB_MOD_MASK_LOCK}, int{m_masks.numLock}, XCB_MOD_MASK_LOCK | m_masks.numLock})
        masks.push_back(static_cast<std::uint16_t>(plain | locks));
    return masks;
}

bool X11HotKeys::grab(const Grab &wanted)
{
    std::vector<xcb_void_cookie_t> requests;
    for (const std::uint16_t modifiers : masksWithLocks(wanted.modifiers))
        requests.push_back(xcb_grab_key_checked(
            m_connection, 1, m_root, modifiers, keycode(wanted.linuxCode), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    bool isGranted = true;
    for (const xcb_void_cookie_t request : requests)
        isGranted &= !Owned<xcb_generic_error_t>(xcb_request_check(m_connection, request));
    if (!isGranted)
        ungrab(wanted); // all of it or nothing
    // An event that came with the answers lies in the queue already, so that the socket does not tell of it.
    QMetaObject::invokeMethod(this, &X11HotKeys::readEvents, Qt::QueuedConnection);
    return isGranted;
}

void X11HotKeys::ungrab(const Grab &held)
{
    for (const std::uint16_t modifiers : masksWithLocks(held.modifiers))
        xcb_ungrab_key(m_connection, keycode(held.linuxCode), m_root, modifiers);
    xcb_flush(m_connection);
}

foundation::Result<void> X11HotKeys::registerEventHotKey(const hotkeys::QVLHotKey &hotKey)
{
    const hotkeys::QVLKeyCombo &combo = hotKey.keyCombo();
    const hotkeys::KeyCode *key = QVLKeyCodeTranslator::withKeyCode(combo.keyCode());
    if (!key || mask(combo.modifiers()) == 0)
        return foundation::Failure(error(HotKeyErrorCode::UnknownKey));
    const Grab wanted{hotKey.hotKeyID(), key->linuxCode, combo.modifiers()};
    if (!grab(wanted))
        return foundation::Failure(error(HotKeyErrorCode::Taken));
    m_grabs.push_back(wanted);
    return {};
}

void X11HotKeys::unregisterEventHotKey(hotkeys::HotKeyID id)
{
    const auto found = std::find_if(m_grabs.begin(), m_grabs.end(), [id](const Grab &held) { return held.id == id; });
    if (found == m_grabs.end())
        return;
    ungrab(*found);
    m_grabs.erase(found);
}

void X11HotKeys::readEvents()
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
        const int type = event->response_type & 0x7f;
        if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE)
            keyEvent(*reinterpret_cast<const xcb_key_press_event_t *>(event.get()), type == XCB_KEY_PRESS);
        else if (type == XCB_MAPPING_NOTIFY)
            keyboardChanged();
    }
    if (xcb_connection_has_error(m_connection)) {
        foundation::logLine("The X server has gone; hot keys are not heard any more.");
        m_notifier->setEnabled(false); // or it would call for ever
    }
}

void X11HotKeys::keyEvent(const xcb_key_press_event_t &event, bool isPress)
{
    if (!isPress)
        m_releases[event.detail] = event.time;
    const auto release = m_releases.find(event.detail);
    if (isPress && release != m_releases.end() && event.time - release->second < repeatGap)
        return; // the server releases and presses a key that is held down
    const int state = event.state & meaningfulMasks & ~m_masks.numLock;
    const auto isMeant = [&](const Grab &held) {
        return keycode(held.linuxCode) == event.detail && (!isPress || mask(held.modifiers) == state);
    };
    const auto found = std::find_if(m_grabs.begin(), m_grabs.end(), isMeant);
    if (found != m_grabs.end() && m_handlers.event)
        m_handlers.event(found->id, isPress ? HotKeyEvent::Pressed : HotKeyEvent::Released);
}

/// A second keyboard that is typed on, or another layout, seldom moves the modifiers. The grabs are renewed only then:
/// keys that are pressed while they are given up would not be heard.
void X11HotKeys::keyboardChanged()
{
    const Masks before = m_masks;
    readMasks();
    if (m_masks == before)
        return;
    const Masks now = std::exchange(m_masks, before);
    for (const Grab &held : m_grabs)
        ungrab(held);
    m_masks = now;
    for (const Grab &held : m_grabs) {
        if (!grab(held) && m_handlers.failure)
            m_handlers.failure(error(HotKeyErrorCode::Taken));
    }
}

/// Layouts put Latin letters and signs, or others as Unicode, on the first level of a key; names such as "Return" are
/// left to the table.
std::string X11HotKeys::keyLabel(std::int64_t keyCode)
{
    const hotkeys::KeyCode *key = QVLKeyCodeTranslator::withKeyCode(keyCode);
    if (!key)
        return {};
    const Owned<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, keycode(key->linuxCode), 1), nullptr));
    QMetaObject::invokeMethod(this, &X11HotKeys::readEvents, Qt::QueuedConnection);
    if (!mapping || xcb_get_keyboard_mapping_keysyms_length(mapping.get()) == 0)
        return {};
    const xcb_keysym_t keysym = xcb_get_keyboard_mapping_keysyms(mapping.get())[0];
    constexpr xcb_keysym_t unicodeBit = 0x0100'0000;
    const bool isLatin = (keysym > 0x20 && keysym < 0x7f) || (keysym > 0xa0 && keysym <= 0xff);
    if (!isLatin && (keysym & 0xff00'0000) != unicodeBit)
        return {};
    const auto character = static_cast<char32_t>(keysym & 0x00ff'ffff);
    return QString::fromUcs4(&character, 1).toUpper().toStdString();
}

} // namespace platform
