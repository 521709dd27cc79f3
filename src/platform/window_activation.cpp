// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/window_activation.h"

#include <QGuiApplication>
#include <QWindow>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace platform {

namespace {

constexpr std::uint32_t askedByTheUser = 2; // as task bars say; a program's own wish would only blink

xcb_atom_t atom(xcb_connection_t *connection, std::string_view name)
{
    struct Free {
        void operator()(void *reply) const { std::free(reply); }
    };
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// Window managers give no focus to a program whose last key or click is older than another's. The key that led here
/// was pressed elsewhere, so that Qt knows nothing of it.
void activateOnX11(xcb_connection_t *connection, QWindow &window)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = static_cast<xcb_window_t>(window.winId());
    message.type = atom(connection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = askedByTheUser;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(connection, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
}

} // namespace

void bringToFront(QWindow &window)
{
    window.raise();
    window.requestActivate();
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->connection()) // without one where Qt draws off screen
        activateOnX11(x11->connection(), window);
}

} // namespace platform
