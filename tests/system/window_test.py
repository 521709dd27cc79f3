# SPDX-License-Identifier: GPL-3.0-or-later
"""The built programs as their user meets them: the window under a real X server, worked with mouse and keyboard, the
command line on the same store, and the service beside them. Each test has a desktop of its own, and each desktop a
process: a process can listen to one accessibility bus.

    window_test.py FOLDER_OF_PROGRAMS [TEST]
"""
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop, end, first_line, wait_until

programs = ""
password = "a password; with = & signs"


class Window(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="quelvin-system-")
        self.addCleanup(self.folder.cleanup)
        self.desktop = Desktop(self.folder.name)
        self.addCleanup(self.desktop.close)
        self.qvl("folder", "add", "Garden")
        self.qvl("settings", "HasBeenRun", "true")
        self.window = None

    # The programs.

    def place(self, side):
        return ["--store", f"{self.folder.name}/{side}", "--settings", f"{self.folder.name}/{side}.json"]

    def qvl(self, *words, side="a", given=""):
        done = subprocess.run([f"{programs}/qvl", *self.place(side), *words], input=given, text=True,
                              capture_output=True, env=self.desktop.environment, timeout=120)
        self.assertEqual(done.returncode, 0, f"qvl {words}: {done.stderr}")
        return done.stdout

    def tasks(self, side="a"):
        return json.loads(self.qvl("list", "all", "--json", side=side))

    def task(self, title, side="a"):
        return next((task for task in self.tasks(side) if task["title"] == title), None)

    def open_window(self):
        self.window = self.desktop.start([f"{programs}/quelvin", *self.place("a")])
        self.find("New task", "text")

    def find(self, name, *roles):
        return self.desktop.find(self.window, name, *roles)

    def find_task(self, title):
        return self.find(title, "table cell")

    def open_with_task(self, title):
        """The window with a task that the user has just typed, selected."""
        self.open_window()
        self.desktop.click(self.find("New task", "text"))
        self.desktop.type(title)
        self.desktop.key("Return")
        self.wait_for(title)

    def wait_for(self, title, **wanted):
        def is_there():
            task = self.task(title)
            return task and all(task.get(key) == value for key, value in wanted.items()) and task
        return wait_until(f"the store holds \"{title}\" with {wanted}", is_there)

    def serve(self):
        data = f"{self.folder.name}/service"
        added = subprocess.run([f"{programs}/quelvin-service", "--data", data, "add-user", "ana@example.org"],
                               input=password, text=True, capture_output=True, timeout=120)
        self.assertEqual(added.returncode, 0, added.stderr)
        service = self.desktop.start([f"{programs}/quelvin-service", "--listen", "127.0.0.1:0", "--data", data],
                                     stdout=subprocess.PIPE, text=True)
        address = re.fullmatch(r"listening on (.*)", first_line(service.stdout)).group(1)
        for side in "ab":
            for key, value in (("ToodledoHost", address), ("ToodleDoUsername", "ana@example.org"),
                               ("SyncToToodledo", "true")):
                self.qvl("settings", key, value, side=side)
            self.qvl("settings", "ToodleDoPassword", "-", side=side, given=password)
            with open(f"{self.folder.name}/{side}.json", encoding="utf-8") as settings:
                self.assertNotIn(password, settings.read())  # but in the keyring

    # What is promised.

    def test_a_working_day_is_all_there_after_a_restart_and_on_the_other_machine(self):
        self.serve()
        self.open_with_task("Buy seeds")
        self.assertEqual(self.task("Buy seeds")["folder"], "Inbox")

        self.desktop.click(self.find_task("Buy seeds"), times=2)
        self.desktop.key("ctrl+a")
        self.desktop.type("Buy tomato seeds")
        self.desktop.key("Return")
        self.wait_for("Buy tomato seeds")

        self.desktop.click(self.find("Notes", "text"))
        self.desktop.type("Ask for the old kinds.")
        self.wait_for("Buy tomato seeds", notes="Ask for the old kinds.")

        self.desktop.drag(self.find_task("Buy tomato seeds"), self.find("Garden", "table cell"))
        self.wait_for("Buy tomato seeds", folder="Garden")

        self.desktop.click(self.find("Sync with Toodledo", "push button"))

        def is_on_other_machine():
            self.qvl("sync", side="b")
            return self.task("Buy tomato seeds", side="b")
        there = wait_until("the other machine has the task", is_on_other_machine)
        self.assertEqual((there["folder"], there["notes"]), ("Garden", "Ask for the old kinds."))

        self.desktop.key("ctrl+q")
        self.assertEqual(self.window.wait(60), 0)
        self.open_window()
        self.desktop.click(self.find("Garden", "table cell"))
        self.desktop.click(self.find_task("Buy tomato seeds"))
        notes = self.find("Notes", "text")
        wait_until("the note is back", lambda: self.text_of(notes) == "Ask for the old kinds.")

    def test_a_working_day_needs_no_mouse(self):
        self.open_window()
        self.desktop.key("ctrl+n")
        self.desktop.type("Write to Ana")
        self.desktop.key("Return")
        self.desktop.type("About the garden.")
        self.wait_for("Write to Ana", notes="About the garden.", folder="Inbox", complete=False)

        self.desktop.key("ctrl+shift+n")
        self.desktop.type("Winter")
        self.desktop.key("Return")
        wait_until("there is a folder", lambda: "Winter" in [
            folder["title"] for folder in json.loads(self.qvl("folders", "--json"))])

        self.desktop.key("ctrl+2", "alt+2", "space")  # the Inbox, its first task, its tick box
        self.wait_for("Write to Ana", complete=True)
        self.desktop.key("ctrl+z")
        self.wait_for("Write to Ana", complete=False)

        self.desktop.key("alt+2", "Delete")
        wait_until("the task is in the Trash", lambda: [task["title"] for task in json.loads(
            self.qvl("list", "trash", "--json"))] == ["Write to Ana"])
        self.desktop.key("ctrl+z")
        wait_until("the task is back", lambda: not json.loads(self.qvl("list", "trash", "--json")))

        self.desktop.key("ctrl+1", "ctrl+f")
        self.desktop.type("GARDEN")
        self.find_task("Write to Ana")  # found by its note, in any case of letters
        self.desktop.key("Escape", "ctrl+q")
        self.assertEqual(self.window.wait(60), 0)

    def test_a_link_of_another_program_becomes_a_task_where_it_is_dropped(self):
        self.open_window()
        browser = self.desktop.start(
            [sys.executable, os.path.join(os.path.dirname(__file__), "link_source.py"), "https://example.org/currants",
             "Pruning currants"], stdout=subprocess.PIPE, text=True, env={**self.desktop.environment, "NO_AT_BRIDGE": "1"})
        link = [int(number) for number in first_line(browser.stdout).split()]
        self.desktop.drag_from(link, self.find("Garden", "table cell"))
        self.wait_for("Pruning currants", notes="https://example.org/currants", folder="Garden")
        self.desktop.click(self.find("Garden", "table cell"))
        self.desktop.drag_from(link, self.find_task("Pruning currants"))
        wait_until("there are two", lambda: [task["folder"] for task in self.tasks()] == ["Garden", "Garden"])

    def test_settings_hold_in_every_program_at_once_and_outlive_a_kill(self):
        self.qvl("done", self.qvl("add", "Sweep the yard").strip())
        self.open_window()
        self.desktop.key("ctrl+2")  # the Inbox
        self.qvl("settings", "ShowCompletedTasks", "yes")
        self.find_task("Sweep the yard")
        self.desktop.key("ctrl+h")  # hides it again
        wait_until("the command line knows", lambda: self.qvl("settings", "ShowCompletedTasks").strip() == "no")
        end(self.window, signal.SIGKILL)
        self.assertEqual(self.qvl("settings", "ShowCompletedTasks").strip(), "no")

    def test_F06_a_session_that_ends_saves_what_is_being_typed(self):
        self.open_with_task("Call the movers")
        self.desktop.click(self.find_task("Call the movers"), times=2)
        self.desktop.key("ctrl+a")
        self.desktop.type("Call other movers")
        self.desktop.click(self.find("Notes", "text"))  # the end of editing in the list, the beginning of it here
        self.desktop.type("Ana knows some.")
        notes = self.find("Notes", "text")
        wait_until("the note is typed", lambda: self.text_of(notes) == "Ana knows some.")
        self.window.send_signal(signal.SIGTERM)
        self.assertEqual(self.window.wait(60), 0)
        self.assertEqual(self.task("Call other movers")["notes"], "Ana knows some.")

    def test_F06_an_x_server_that_goes_takes_nothing_along(self):
        self.open_with_task("Call the movers")
        self.desktop.click(self.find("Notes", "text"))
        self.desktop.type("Is the piano insured?")
        self.wait_for("Call the movers", notes="Is the piano insured?")
        end(self.desktop.server, signal.SIGKILL)
        self.window.wait(60)
        self.assertEqual(self.task("Call the movers")["notes"], "Is the piano insured?")

    # What the user reads.

    def text_of(self, node):
        return self.desktop.atspi.Text.get_text(node, 0, -1)


if __name__ == "__main__":
    programs = os.path.abspath(sys.argv[1])
    if len(sys.argv) > 2:
        unittest.main(argv=[sys.argv[0], f"Window.{sys.argv[2]}"], warnings="ignore")
    sys.exit(any([subprocess.run([sys.executable, *sys.argv, test]).returncode
                  for test in unittest.defaultTestLoader.getTestCaseNames(Window)]))
