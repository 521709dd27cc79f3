# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop that nobody sees: an X server, a session bus and a window manager, and a user who works on it with a mouse,
a keyboard and what a screen reader is told. Everything it starts ends with it."""
import os
import select
import signal
import subprocess
import time

LIMIT = 90  # seconds that anything may take on a slow machine; nothing waits for longer than it has to


def wait_until(what, condition):
    """The first true value of `condition`; fails when there is none for too long."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"waited in vain until {what}")


def end(process, with_signal=signal.SIGTERM):
    if process.poll() is None:
        process.send_signal(with_signal)
        try:
            process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def first_line(pipe):
    ready, _, _ = select.select([pipe], [], [], LIMIT)
    return pipe.readline().strip() if ready else ""


class Desktop:
    def __init__(self, home):
        self.started = []
        try:
            self.set_up(home)
        except BaseException:
            self.close()
            raise

    def set_up(self, home):
        self.environment = dict(os.environ, HOME=home, XDG_RUNTIME_DIR=home, XDG_CURRENT_DESKTOP="none", LC_ALL="C.UTF-8",
                                QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", TZ="Europe/Berlin",
                                ASAN_OPTIONS="detect_leaks=0")  # the programs let nothing read their memory
        for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "WAYLAND_DISPLAY", "AT_SPI_BUS_ADDRESS"):
            self.environment.pop(name, None)
        reader, writer = os.pipe()
        self.server = self.start(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1400x900x24", "-nolisten", "tcp", "-noreset"],
                                 pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as pipe:
            self.environment["DISPLAY"] = ":" + first_line(pipe)
        bus = self.start(["dbus-daemon", "--session", "--nofork", "--print-address=1"], stdout=subprocess.PIPE, text=True)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = first_line(bus.stdout)
        self.start(["openbox"])
        keyring = self.start(["/usr/bin/python3", os.path.join(os.path.dirname(__file__), "../support/secret_service.py")],
                             stdout=subprocess.PIPE, text=True)
        first_line(keyring.stdout)
        os.environ.update(self.environment)  # for the library that speaks to the accessibility bus
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        Atspi.init()
        self.atspi = Atspi

    def start(self, command, **options):
        options = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "env": self.environment} | options
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, **options)
        self.started.append(process)
        return process

    def close(self):
        for process in reversed(self.started):
            end(process)

    # What the user sees.

    def tree(self, process):
        """Every accessible object that the program shows, from the outside in."""
        desktop = self.atspi.get_desktop(0)
        desktop.clear_cache()
        for place in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(place)
            if application is not None and application.get_process_id() == process.pid:
                application.set_cache_mask(self.atspi.Cache.NONE)
                yield from self.below(application)

    def below(self, node):
        yield node
        for place in range(node.get_child_count()):
            child = node.get_child_at_index(place)
            if child is not None:
                yield from self.below(child)

    def look(self, process, name, roles):
        """The object of that name and one of the roles that is on the screen, or None."""
        try:
            for node in self.tree(process):
                if node.get_name() == name and node.get_role_name() in roles \
                        and node.get_state_set().contains(self.atspi.StateType.SHOWING):
                    return node
        except self.atspi_errors():
            pass  # the window changed while it was looked at
        return None

    @staticmethod
    def atspi_errors():
        from gi.repository import GLib
        return (GLib.Error,)

    def find(self, process, name, *roles):
        def look():
            assert process.poll() is None, "the program has ended"
            return self.look(process, name, roles)
        return wait_until(f"\"{name}\" is on the screen", look)

    def middle(self, node):
        place = node.get_extents(self.atspi.CoordType.SCREEN)
        return place.x + place.width // 2, place.y + place.height // 2

    # What the user does.

    def xdotool(self, *words):
        subprocess.run(["xdotool", *map(str, words)], env=self.environment, check=True, timeout=LIMIT)

    def click(self, node, times=1):
        x, y = self.middle(node)
        self.xdotool("mousemove", x, y, "click", "--repeat", times, "--delay", 60, 1)

    def type(self, text):
        self.xdotool("type", "--delay", 15, text)

    def key(self, *names):
        self.xdotool("key", "--delay", 30, *names)

    def drag(self, source, target):
        self.drag_from(self.middle(source), target)

    def drag_from(self, place, target):
        """A drag in small steps, as a hand makes it: a jump is none to a program that waits for motion."""
        (x1, y1), (x2, y2) = place, self.middle(target)
        steps = 12
        words = ["mousemove", x1, y1, "mousedown", 1]
        for step in range(1, steps + 1):
            words += ["sleep", 0.03, "mousemove", x1 + (x2 - x1) * step // steps, y1 + (y2 - y1) * step // steps]
        words += ["sleep", 0.1, "mousemove", x2 + 2, y2, "sleep", 0.3, "mouseup", 1]
        self.xdotool(*words)
