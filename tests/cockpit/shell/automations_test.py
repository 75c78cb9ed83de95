"""The page of the automations in the running cockpit, over the real engine, supervisor, tmux and terminal.

`automations_test.py <the bundle>`
"""

import os
import pathlib
import shutil
import subprocess
import sys
import unittest

import desk
from automations import AutomationTest
from desktop import DesktopTest, click, find, focused, keys, look, middle, press, wait

LABEL = "Library/LaunchAgents/org.mervolabs.rondel.%s.plist"
MESSAGE = ("Removes its launchd agent and its ~/mervo/automations folder (config, instructions, journal) + runtime state. "
           "The log file is kept.")


class Page(AutomationTest, DesktopTest):
    def setUp(self):
        super().setUp()
        self.desk.configure('[terminal]\ncommand = ["xterm"]\n')
        (self.desk.folder / "run").mkdir(mode=0o700)
        opener = self.desk.folder / "bin/xdg-open"
        opener.write_text('#!/bin/sh\necho "$@" >> "$HOME/opened"\n')
        opener.chmod(0o755)
        self.desk.environment |= {"TMPDIR": str(self.desk.folder), "XDG_RUNTIME_DIR": str(self.desk.folder / "run"),
                                  "PATH": f"{opener.parent}:{os.environ['PATH']}"}

    def show(self):
        cockpit = DesktopTest.start(self, self.desk.contents / "MacOS/mervo-cockpit", "--open",
                                    env=os.environ | self.desk.environment)
        self.view = self.desktop.application(cockpit, "mervo-cockpit")
        press(find(self.view, "page tab", "Automations"))

    def row(self, name, subtitle=""):
        return find(self.view, "list item", lambda text: text.startswith(f"{name}, {subtitle}"))

    def names(self):
        rows = look(self.view, "list item")
        return [node.name.split(",")[0] for node in sorted(rows, key=lambda node: int(middle(node)[1]))]

    def do(self, name, button):
        press(find(self.row(name), "push button", button))

    def choose(self, name, entry):
        self.do(name, "More actions for " + name)
        press(find(self.view, "menu item", entry))

    def said(self, text):
        find(self.view, "label", text)

    def opened(self):
        file = self.desk.folder / "opened"
        return wait("something opened", file.exists) and file.read_text().splitlines()

    def plist(self, name):
        return (self.desk.folder / (LABEL % name)).exists()

    def test_runs_are_started_stopped_and_told_of(self):
        self.script("echo ran >> ~/ran", "well")
        self.script("exit 3", "badly")
        self.script("echo $$ > ~/long; sleep 600", "long")
        self.show()
        self.assertEqual(self.names(), ["badly", "long", "well"])
        for name, subtitle in (("well", "every 6h"), ("badly", "every 6h · last run ✗ exit 3 "), ("long", "running...")):
            self.row(name, "every 6h")
            self.do(name, "Run now")
            self.said(f"▶ {name} - started")
            if name != "long":
                wait("its end", lambda: self.file(".json", name).exists() and "lastExit" in self.state(name))
            self.row(name, subtitle)
        self.assertEqual((self.desk.folder / "ran").read_text(), "ran\n")
        self.assertFalse(look(self.row("long"), "push button", "Run now"))
        self.do("long", "Stop run")
        self.said("■ long - stopping")
        self.assert_gone((self.desk.folder / "long").read_text())
        self.row("long", "every 6h · last run ✗ exit 143 ")
        self.script("true", "gone")
        self.row("gone")
        shutil.rmtree(self.home / "automations/gone")
        self.do("gone", "Run now")
        self.said("❌ gone - no such automation: gone")

    def test_an_agent_is_watched_while_it_works(self):
        self.work("sleep 600")
        self.add("agent", "# Do it", client="claude", visible=False)
        self.show()
        self.do("agent", "Preview prompt")
        find(self.view, "heading", "Do it")
        keys("Escape")
        self.do("agent", "Run now")
        self.row("agent", "running...")
        wait("its session", lambda: self.tmux("list-sessions"))
        self.do("agent", "Open live run in Terminal")
        self.said("↗ agent - opening in Terminal")
        wait("a terminal on it", lambda: self.tmux("list-clients"))
        press(find(self.view, "push button", "Open Mervo"))  # the popover has gone when the terminal came
        self.do("agent", "Stop run")
        self.row("agent", "every 6h · last run ■ stopped ")
        self.assertEqual(self.ended("agent"), 143)

    def test_what_else_can_be_done(self):
        folder = self.script("true", "a")
        self.show()
        self.choose("a", "Open log")
        self.said("no log yet for 'a'")
        self.file(".log", "a").parent.mkdir(parents=True, exist_ok=True)
        self.file(".log", "a").write_text("kept")
        self.choose("a", "Open log")
        self.assertEqual(self.opened(), [str(self.file(".log", "a"))])
        self.choose("a", "Open folder")
        wait("its folder", lambda: self.opened()[1:] == [str(folder.parent)])  # no file manager to show it in there
        for entry, subtitle, enabled in (("Pause", "paused", False), ("Resume", "every 6h", True)) * 2:
            self.choose("a", entry)
            self.row("a", subtitle)
            self.assertEqual((self.state("a")["enabled"], self.plist("a")), (enabled, enabled))
        self.row("a", "every 6h · next in ")

        def ask(key="Menu"):
            wait("the row", lambda: keys("Tab") or focused(self.view)[0] == "list item")
            if key == "mouse":
                subprocess.run(["xdotool", "mousemove", *middle(self.row("a")), "click", "3"], check=True)
            else:
                keys(key)
            find(self.view, "menu item", "Delete")
            keys("Down", "Down", "Down", "Return")
            self.said(MESSAGE)
            find(self.view, "heading", "Delete automation “a”?")
            wait("Cancel", lambda: focused(self.view) == ("push button", "Cancel"))
        for no, key in (("Return", "shift+F10"), ("Escape", "mouse")):
            ask(key)
            keys(no)
            wait("the keyboard again", lambda: focused(self.view) == ("push button", "More actions for a"))
            self.assertTrue(folder.exists())
        ask()
        keys("Tab", "Return")
        self.said("No automations")
        self.assertEqual((folder.exists(), self.plist("a"), self.file(".json", "a").exists()), (False, False, False))
        self.assertEqual(self.file(".log", "a").read_text(), "kept")

    def test_nothing_happens_to_another_one(self):
        for name in "bdfhijklm":
            self.script(f"echo {name} >> ~/ran", name)
        self.show()
        self.choose("d", "Delete")
        self.script("true", "a")
        self.row("a")  # above: all have moved
        run = middle(look(self.view, "push button", "Run now")[0])[0]  # a row's button is below that of the question
        click((run, middle(find(self.view, "push button", "Delete"))[1]), times=3, apart=150)
        wait("its end", lambda: self.names() == list("abfhijklm"))
        self.assertEqual(sorted(os.listdir(self.home / "automations")), ["a", "ask-harvest", *"bfhijklm"])
        self.assertFalse((self.desk.folder / "ran").exists())
        for entry, shown in ((None, "menu item"), ("Delete", "heading")):
            name = self.names()[0]
            (self.choose(name, entry) if entry else self.do(name, "More actions for " + name))
            find(self.view, shown, None)
            (self.home / "automations" / name).rename(self.home / "automations" / ("z" + name))
            loop = self.home / "automations" / ("z" + name) / "loop.json"
            loop.write_text(loop.read_text().replace(f'"name": "{name}"', f'"name": "z{name}"'))
            wait("it is closed", lambda: not look(self.view, shown))
            self.row("z" + name)
        wait("the keyboard", lambda: keys("Tab") or focused(self.view))


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv.pop(1))
    unittest.main()
