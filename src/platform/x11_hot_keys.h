// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hotkeys/hot_key_back_end.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <map>
#include <memory>

struct xcb_connection_t;
struct xcb_key_press_event_t;

namespace platform {

/// Hot keys by key grabs on an X server, over a connection of their own. CapsLock and NumLock make no difference, and
/// a key that is held down counts once. Main thread; when the server goes, no key is heard any more.
class X11HotKeys final : public QObject, public hotkeys::HotKeyBackEnd
{
    Q_OBJECT

public:
    /// None when no X server answers for `display`; empty means the one in the environment.
    [[nodiscard]] static std::unique_ptr<X11HotKeys> connectTo(const QByteArray &display = {});
    ~X11HotKeys() override;

    void installEventHandler(Handlers handlers) override { m_handlers = std::move(handlers); }
    [[nodiscard]] foundation::Result<void> registerEventHotKey(const hotkeys::QVLHotKey &hotKey) override;
    void unregisterEventHotKey(hotkeys::HotKeyID id) override;
    [[nodiscard]] std::string keyLabel(std::int64_t keyCode) override;

private:
    struct Grab {
        hotkeys::HotKeyID id;
        int linuxCode;
        std::int64_t modifiers;
    };
    /// The modifier masks of this keyboard.
    struct Masks {
        std::uint16_t alt;
        std::uint16_t super;
        std::uint16_t numLock;
        friend bool operator==(const Masks &, const Masks &) = default;
    };

    X11HotKeys(xcb_connection_t *connection, std::uint32_t root);
    void readMasks();
    [[nodiscard]] std::uint16_t mask(std::int64_t modifiers) const;
    [[nodiscard]] std::vector<std::uint16_t> masksWithLocks(std::int64_t modifiers) const;
    [[nodiscard]] bool grab(const Grab &wanted);
    void ungrab(const Grab &held);
    void readEvents();
    void keyEvent(const xcb_key_press_event_t &event, bool isPress);
    void keyboardChanged();

    xcb_connection_t *m_connection;
    std::uint32_t m_root;
    Masks m_masks{};
    Handlers m_handlers;
    std::vector<Grab> m_grabs;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<int, std::uint32_t> m_releases; ///< when each key was last released, in the server's time
};

} // namespace platform
