# SPDX-License-Identifier: GPL-3.0-or-later
"""A window of another toolkit in the corner of the screen, which is a link that can be dragged away as browsers offer
theirs. Prints where to take hold of it when it can be.

    link_source.py ADDRESS NAME
"""
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402 - the version is asked for first

address, name = sys.argv[1:]
lines = f"{address}\n{name}"
OFFERS = [("text/x-moz-url", lines.encode("utf-16-le")), ("_NETSCAPE_URL", lines.encode()),
          ("text/x-moz-url-data", address.encode("utf-16-le")), ("text/x-moz-url-desc", name.encode("utf-16-le")),
          ("text/plain;charset=utf-8", address.encode()), ("UTF8_STRING", address.encode())]

link = Gtk.Button(label="A link")
link.drag_source_set(Gdk.ModifierType.BUTTON1_MASK,
                     [Gtk.TargetEntry.new(kind, 0, place) for place, (kind, _) in enumerate(OFFERS)],
                     Gdk.DragAction.COPY | Gdk.DragAction.LINK)
link.connect("drag-data-get", lambda _link, _context, selection, place, _time:
             selection.set(selection.get_target(), 8, OFFERS[place][1]))
window = Gtk.Window(type=Gtk.WindowType.POPUP)  # no window manager puts it elsewhere
window.set_default_size(80, 40)
window.add(link)
window.connect("map-event", lambda *_: print("40 20", flush=True))
window.show_all()
Gtk.main()
