# SPDX-License-Identifier: GPL-3.0-or-later
"""Installs the build into a folder and looks at it as a desktop does: installation_test.py BUILD [TEST]..."""
import configparser
import gzip
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
NAME = "org.quelvin.Quelvin"
PROGRAMS = ["quelvin", "quelvin-service", "qvl", "qvl-sync"]


def key_file(path):
    """A file of groups, keys and values; of a key that is there more than once the last."""
    parser = configparser.RawConfigParser(strict=False, delimiters="=", comment_prefixes="#")
    parser.optionxform = str
    parser.read(path, encoding="utf-8")
    return parser


def output(*command, **variables):
    """How a command ends and what it says, in a session without a screen."""
    session = {"QT_QPA_PLATFORM": "offscreen", "DBUS_SESSION_BUS_ADDRESS": "disabled:",
               "XDG_RUNTIME_DIR": tempfile.gettempdir(), "QT_LOGGING_RULES": "*=false",
               "ASAN_OPTIONS": "detect_leaks=0"}  # the programs let nothing read their memory
    done = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, env=os.environ | session | variables)
    return done.returncode, done.stdout


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="quelvin-installation.")
        first = Path(cls.folder.name) / "first"
        code, text = output("cmake", "--install", cls.build, "--prefix", first)
        assert code == 0, text
        cls.desktop = key_file(first / f"share/applications/{NAME}.desktop")
        cls.prefix = first

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_the_desktop_accepts_its_files(self):
        share = self.prefix / "share"
        for command in (["desktop-file-validate", share / f"applications/{NAME}.desktop"],
                        ["appstreamcli", "validate", "--no-net", "--no-color", share / f"metainfo/{NAME}.metainfo.xml"]):
            code, text = output(*command)
            self.assertEqual(code, 0, text)
            self.assertNotIn("warning", text)

    def test_every_program_that_a_file_names_is_there(self):
        entries = [(group, shlex.split(self.desktop[group]["Exec"])[0]) for group in self.desktop.sections()]
        bus = key_file(self.prefix / f"share/dbus-1/services/{NAME}.service")
        unit = key_file(self.prefix / "lib/systemd/user/quelvin-service.service")
        entries += [("D-Bus", bus["D-BUS Service"]["Exec"]), ("systemd", unit["Service"]["ExecStart"].split()[0])]
        for place, program in entries:
            with self.subTest(place):
                path = self.prefix / "bin" / program  # which an absolute path takes the place of
                self.assertTrue(os.access(path, os.X_OK), f"{path} is no program")
                self.assertIn(self.prefix, path.parents)

    def test_the_desktop_finds_name_icon_and_actions(self):
        entry = self.desktop["Desktop Entry"]
        bus = key_file(self.prefix / f"share/dbus-1/services/{NAME}.service")
        self.assertEqual(entry["DBusActivatable"], "true")
        self.assertEqual(bus["D-BUS Service"]["Name"], NAME)
        flatpak = json.loads((SOURCE / f"packaging/flatpak/{NAME}.json").read_text())
        self.assertEqual((flatpak["id"], flatpak["command"]), (NAME, shlex.split(entry["Exec"])[0]))
        listed = [action for action in entry["Actions"].split(";") if action]
        self.assertEqual([f"Desktop Action {action}" for action in listed], self.desktop.sections()[1:])
        offered = re.findall(r'Action = QStringLiteral\("([^"]+)"\)', (SOURCE / "src/quelvin/main.cpp").read_text())
        self.assertEqual(sorted(listed), sorted(offered))
        for group in self.desktop.sections():
            for key in ("Name", "Comment", "GenericName", "Keywords"):
                if key in self.desktop[group] and (group, key) != ("Desktop Entry", "Name"):
                    self.assertIn(f"{key}[de]", self.desktop[group], group)
        icons = self.prefix / "share/icons/hicolor"
        for size in (16, 22, 24, 32, 48, 64, 128, 256):
            drawn = (icons / f"{size}x{size}/apps/{entry['Icon']}.png").read_bytes()
            self.assertEqual([int.from_bytes(drawn[place:place + 4], "big") for place in (16, 20)], [size, size])
        for vector in ("scalable/apps/{}.svg", "symbolic/apps/{}-symbolic.svg"):
            self.assertEqual(ElementTree.parse(icons / vector.format(entry["Icon"])).getroot().tag.split("}")[1], "svg")

    def test_all_say_the_same_version(self):
        versions = {program: output(self.prefix / "bin" / program, "--version")[1].split()[-1] for program in PROGRAMS}
        metainfo = ElementTree.parse(self.prefix / f"share/metainfo/{NAME}.metainfo.xml")
        versions["metainfo"] = metainfo.find("releases/release").get("version")
        for package in ("quelvin", "quelvin-service"):
            with gzip.open(self.prefix / f"share/doc/{package}/changelog.Debian.gz", "rt") as changelog:
                versions[f"Debian, {package}"] = re.match(r"quelvin \((.+)-\d+\)", changelog.readline())[1]
        self.assertEqual(len(set(versions.values())), 1, versions)
        self.assertEqual(metainfo.find("launchable").text, f"{NAME}.desktop")

    def test_every_program_has_a_manual_and_every_file_its_shape(self):
        self.assertEqual(sorted(path.name for path in (self.prefix / "bin").iterdir()), PROGRAMS)
        for program in PROGRAMS:
            with gzip.open(self.prefix / f"share/man/man1/{program}.1.gz", "rt") as page:
                self.assertRegex(page.read(), rf"\.Nm {program}\n")
        checks = {"bash": self.prefix / "share/bash-completion/completions/qvl", "zsh": next(self.prefix.glob("share/zsh/*/_qvl"))}
        for shell, completion in checks.items():
            if shutil.which(shell):
                self.assertEqual(output(shell, "-n", completion), (0, ""))

    def test_systemd_accepts_the_unit(self):
        if not shutil.which("systemd-analyze"):
            self.skipTest("systemd-analyze is not here")
        unit = self.prefix / "lib/systemd/user/quelvin-service.service"
        code, text = output("systemd-analyze", "--user", "verify", unit)
        complaints = [line for line in text.splitlines() if unit.name in line and "man quelvin-service" not in line]
        self.assertEqual(complaints, [], text)

    def test_the_programs_run_where_they_were_not_installed(self):
        moved = self.prefix.rename(self.prefix.parent / "moved")
        self.addCleanup(moved.rename, self.prefix)
        store = ["--store", self.prefix.parent / "store", "--settings", self.prefix.parent / "settings.json"]
        self.assertEqual(output(moved / "bin/qvl", *store, "settings", "ToodledoHost", "127.0.0.1:1")[0], 0)
        for key in ("ToodleDoUsername", "ToodleDoPassword"):
            self.assertEqual(output(moved / "bin/qvl", *store, "settings", key, "ana@example.org")[0], 0)
        code, text = output(moved / "bin/qvl", *store, "sync")
        self.assertEqual(code, 1, text)
        self.assertIn("Could not log on", text)  # so the program that synchronises was found, and nobody answered it
        self.assertIn("Ordner der Aufgabendatei",
                      output(moved / "bin/quelvin", "--help", LC_ALL="de_DE.UTF-8", LANGUAGE="de")[1])


if __name__ == "__main__":
    Installation.build = sys.argv.pop(1)
    unittest.main()
