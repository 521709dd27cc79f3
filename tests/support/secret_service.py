#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A keyring for tests: the Secret Service of the session bus, as far as programs store and look up secrets there, kept
in memory. It prints "ready" once it answers, and ends with the bus. A line "lock" on its standard input locks it: from
then on it asks its user at each step, and the user closes every prompt."""
import sys

from gi.repository import Gio, GLib

interfaces = Gio.DBusNodeInfo.new_for_xml("""
<node>
  <interface name="org.freedesktop.Secret.Service">
    <method name="OpenSession">
      <arg type="s" direction="in"/><arg type="v" direction="in"/>
      <arg type="v" direction="out"/><arg type="o" direction="out"/>
    </method>
    <method name="SearchItems">
      <arg type="a{ss}" direction="in"/><arg type="ao" direction="out"/><arg type="ao" direction="out"/>
    </method>
    <method name="Unlock">
      <arg type="ao" direction="in"/><arg type="ao" direction="out"/><arg type="o" direction="out"/>
    </method>
    <method name="GetSecrets">
      <arg type="ao" direction="in"/><arg type="o" direction="in"/><arg type="a{o(oayays)}" direction="out"/>
    </method>
    <method name="ReadAlias">
      <arg type="s" direction="in"/><arg type="o" direction="out"/>
    </method>
  </interface>
  <interface name="org.freedesktop.Secret.Collection">
    <method name="CreateItem">
      <arg type="a{sv}" direction="in"/><arg type="(oayays)" direction="in"/><arg type="b" direction="in"/>
      <arg type="o" direction="out"/><arg type="o" direction="out"/>
    </method>
    <property name="Locked" type="b" access="read"/>
  </interface>
  <interface name="org.freedesktop.Secret.Item">
    <method name="Delete">
      <arg type="o" direction="out"/>
    </method>
    <property name="Locked" type="b" access="read"/>
  </interface>
  <interface name="org.freedesktop.Secret.Prompt">
    <method name="Prompt">
      <arg type="s" direction="in"/>
    </method>
    <method name="Dismiss"/>
    <signal name="Completed">
      <arg type="b"/><arg type="v"/>
    </signal>
  </interface>
</node>""")

ROOT = "/org/freedesktop/secrets"
COLLECTION = ROOT + "/aliases/default"
SESSION = ROOT + "/session/1"
ITEM_PROMPT = ROOT + "/prompt/item"
UNLOCK_PROMPT = ROOT + "/prompt/unlock"
NONE = "/"


def once_idle(call, *arguments):
    def run():
        call(*arguments)
        return GLib.SOURCE_REMOVE
    GLib.idle_add(run)


class Items:
    """The secrets, each with the attributes it is found by."""

    def __init__(self, bus):
        self.bus = bus
        self.held = {}  # path: (attributes, secret, registration)
        self.made = 0
        self.locked = False

    def find(self, wanted):
        return [path for path, (attributes, _, _) in self.held.items() if wanted.items() <= attributes.items()]

    def add(self, attributes, secret):
        for path in self.find(attributes):
            self.remove(path)
        self.made += 1
        path = f"{COLLECTION}/{self.made}"
        self.held[path] = attributes, secret, register(self.bus, path, "Item", lambda *_: self.delete(path))
        return path

    def delete(self, path):
        if self.locked:
            return "(o)", (ITEM_PROMPT,)
        self.remove(path)
        return "(o)", (NONE,)

    def remove(self, path):
        registration = self.held.pop(path)[2]
        once_idle(self.bus.unregister_object, registration)  # when the answer is on its way


def register(bus, path, interface, answer):
    def call(_bus, _sender, _path, _interface, method, arguments, invocation):
        try:
            form, values = answer(method, arguments.unpack())
            invocation.return_value(GLib.Variant(form, values))
        except NotImplementedError:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.NotSupported", method)

    description = interfaces.lookup_interface("org.freedesktop.Secret." + interface)
    return bus.register_object(path, description, call, lambda *_: GLib.Variant("b", False), None)


def serve(bus):
    items = Items(bus)

    def answer(method, arguments):
        if method == "OpenSession":
            if arguments[0] != "plain":
                raise NotImplementedError
            return "(vo)", (GLib.Variant("s", ""), SESSION)
        if method == "SearchItems":
            found = items.find(arguments[0])
            return "(aoao)", ([], found) if items.locked else (found, [])
        if method == "Unlock":
            return "(aoo)", ([], UNLOCK_PROMPT) if items.locked else (arguments[0], NONE)
        if method == "GetSecrets":
            return "(a{o(oayays)})", ({path: items.held[path][1] for path in arguments[0]},)
        return "(o)", (COLLECTION,)

    def create(_method, arguments):
        if items.locked:
            return "(oo)", (NONE, ITEM_PROMPT)
        properties, (_, _, secret, kind), _replaces = arguments
        attributes = properties["org.freedesktop.Secret.Item.Attributes"]
        return "(oo)", (items.add(attributes, (SESSION, b"", bytes(secret), kind)), NONE)

    def closing(path, nothing):
        def prompt(_method, _arguments):
            once_idle(bus.emit_signal, None, path, "org.freedesktop.Secret.Prompt", "Completed",
                      GLib.Variant("(bv)", (True, nothing)))
            return "()", ()
        return prompt

    def command(*_):
        line = sys.stdin.readline()
        if line.strip() == "lock":
            items.locked = True
            print("locked", flush=True)
        return bool(line)

    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, command)
    for path, nothing in ((ITEM_PROMPT, GLib.Variant("o", NONE)), (UNLOCK_PROMPT, GLib.Variant("ao", []))):
        register(bus, path, "Prompt", closing(path, nothing))
    register(bus, ROOT, "Service", answer)
    register(bus, COLLECTION, "Collection", create)


def main():
    loop = GLib.MainLoop()
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.connect("closed", lambda *_: loop.quit())
    bus.set_exit_on_close(False)
    serve(bus)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.secrets", Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), lambda *_: sys.exit("the name is taken"))
    loop.run()


main()
