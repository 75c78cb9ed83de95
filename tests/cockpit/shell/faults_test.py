"""The running cockpit when things break around it. `faults_test.py <mervo-cockpit>`"""

import json
import os
import pathlib
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import unittest
import warnings


import desktop  # noqa: E402
from desktop import find, look, press, wait  # noqa: E402
from doubles import Notifications, Watcher, wait_pumping  # noqa: E402

COCKPIT, DESKTOP = "", None


class Faults(unittest.TestCase):
    """A home with an account whose post goes into a file, one line a message."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="mervo-faults-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.home, self.posted = self.root / "mervo", self.root / "posted"
        post = self.root / "post"
        post.write_text('#!/bin/sh\ngrep ^Subject: >> "%s"\n' % self.posted)
        post.chmod(0o700)
        configuration = self.root / "config/mervo-desk/desk.toml"
        configuration.parent.mkdir(parents=True)
        configuration.write_text('[[mail.account]]\nname = "Work"\nemail = ["work@desk.example"]\npath = "%s/Mail"\n'
                                 'sendmail = ["%s"]\n' % (self.root, post))
        for part in ("tmp", "new", "cur"):
            (self.root / "Mail" / part).mkdir(parents=True)
        self.tray = Watcher()
        self.addCleanup(self.tray.close)

    def cockpit(self, number=1, **display):
        """One more cockpit on the same home, as if in another session, with its popover open."""
        runtime = self.root / ("run%d" % number)
        runtime.mkdir(mode=0o700)
        environment = dict(os.environ, MERVO_HOME=str(self.home), XDG_RUNTIME_DIR=str(runtime),
                           XDG_CONFIG_HOME=str(self.root / "config"), XDG_DATA_HOME=str(self.root / "data"), **display)
        # A limit for files then works like a full disk: it does not end the program with a signal.
        process = DESKTOP.start([COCKPIT, "--open"], env=environment, restore_signals=False)
        self.addCleanup(DESKTOP.end, process)
        wait_pumping("an icon", lambda: len(self.tray.items) >= number)
        return process, DESKTOP.application(process, "mervo-cockpit")

    def queue(self, *numbers):
        (self.home / "pending").mkdir(parents=True, exist_ok=True)
        for number in numbers:
            action = {"id": "0000%04d" % number, "tool": "mail.send", "effect": "destructive", "source": "mcp:test",
                      "args": {"to": "you@far.example", "subject": "Letter %d" % number, "body": "Text", "account": "Work"},
                      "summary": "Send a letter", "createdAt": "2026-01-01T10:00:00.000Z"}
            file = self.home / "pending" / (action["id"] + ".json")
            file.with_suffix(".new").write_text(json.dumps(action))
            file.with_suffix(".new").rename(file)

    def letters(self):
        return sorted(self.posted.read_text().splitlines()) if self.posted.exists() else []

    def rows(self):
        try:
            with sqlite3.connect(self.home / "mervo.sqlite", timeout=10) as database:
                return database.execute("SELECT action, outcome, reason FROM audit ORDER BY id").fetchall()
        except sqlite3.OperationalError:
            return []  # just being made

    def cards(self, view):
        return look(view, "list item", "mail.send")

    def decide(self, view, verdict, number):
        """Presses a button of the card of that letter; false when the letter is not on the screen."""
        for card in self.cards(view):
            if look(card, "label", lambda name: "subject Letter %d " % number in name):
                press(find(card, "push button", verdict))
                return True
        return False

    def test_two_cockpits_and_a_notification_decide_once(self):
        notices = Notifications("actions")
        self.addCleanup(notices.close)
        (_, first), (_, second) = self.cockpit(1), self.cockpit(2, DISPLAY=DESKTOP.display())
        self.queue(0)
        wait_pumping("a notice of each", lambda: len(notices.shown) == 2)
        for number in list(notices.shown):
            notices.act(number, "APPROVE")
        wait_pumping("the letter", lambda: self.letters() and not self.cards(first) and not self.cards(second))

        for number in range(1, 7):
            one, other = (first, second) if number % 2 else (second, first)
            self.queue(number)
            for view in (first, second):
                wait_pumping("the card", lambda: len(self.cards(view)) == 1)
            if number == 6:
                self.decide(one, "Reject", number)
                press(find(one, "push button", "Confirm"))
            both = self.decide(one, "Approve", number) + self.decide(other, "Approve", number)
            self.assertGreater(both, 0)
            wait_pumping("nothing waits", lambda: not self.cards(first) and not self.cards(second))
        rows = wait_pumping("a row for each", lambda: (lambda rows: rows if len(rows) == 7 else None)(self.rows()))
        self.assertEqual([row[1:] for row in rows[:6]], [("executed", "approved")] * 6)
        self.assertIn(rows[6][1], ("executed", "rejected"))
        sent = 6 + (rows[6][1] == "executed")
        self.assertEqual(self.letters(), ["Subject: Letter %d" % number for number in range(sent)])

    def test_a_full_disk_is_told_of_and_room_again_is_used(self):
        process, view = self.cockpit()
        self.queue(1, 2)
        wait_pumping("the cards", lambda: len(self.cards(view)) == 2)
        subprocess.run(["prlimit", "--pid", str(process.pid), "--fsize=0:"], check=True)
        self.decide(view, "Approve", 1)
        find(view, "label", lambda name: name.startswith("❌ mail.send - "))
        self.assertEqual(self.letters(), [])
        subprocess.run(["prlimit", "--pid", str(process.pid), "--fsize=unlimited:"], check=True)
        self.decide(view, "Approve", 2)
        wait_pumping("the letter", lambda: self.letters() == ["Subject: Letter 2"])
        wait_pumping("its row", lambda: ("mail.send", "executed", "approved") in self.rows())
        self.assertIsNone(process.poll())

    def test_what_vanishes_and_comes_back_is_followed(self):
        notices = Notifications("actions")
        process, view = self.cockpit()
        self.queue(1)
        wait_pumping("a notice", lambda: notices.shown)
        notices.close()
        (self.home / "pending/00000002.json").write_text('{"id": "00000002", "tool"')
        self.queue(3)
        wait_pumping("the cards", lambda: len(self.cards(view)) == 2)
        shutil.rmtree(self.home)
        wait_pumping("nothing waits", lambda: not self.cards(view))
        find(view, "label", "All clear")
        self.queue(4)
        wait_pumping("a card again", lambda: len(self.cards(view)) == 1)
        (self.home / "mervo.sqlite").write_bytes(b"x" * 5000)
        (self.home / "config.json").write_text("[")
        self.queue(5)
        wait_pumping("the next card", lambda: len(self.cards(view)) == 2)
        self.decide(view, "Approve", 4)
        wait_pumping("the letter", lambda: self.letters() == ["Subject: Letter 4"])
        (self.home / "mervo.sqlite").unlink()
        self.decide(view, "Approve", 5)
        wait_pumping("its row", lambda: ("mail.send", "executed", "approved") in self.rows())
        self.assertIsNone(process.poll())

    def test_a_stopped_tool_keeps_nothing_waiting_but_itself(self):
        """A program that hangs for as long as it likes, and a database that another one holds."""
        self.root.joinpath("post").write_text('#!/bin/sh\nwhile [ ! -e "%s/go" ]; do sleep 0.1; done\ngrep ^Subject: >> "%s"\n'
                                              % (self.root, self.posted))
        process, view = self.cockpit()
        self.queue(1, 2)
        wait_pumping("the cards", lambda: len(self.cards(view)) == 2)
        self.decide(view, "Approve", 1)
        find(view, "label", "⏳ mail.send - running...")
        self.queue(3)
        wait_pumping("the next card", lambda: len(self.cards(view)) == 2)
        holder = sqlite3.connect(self.home / "mervo.sqlite", isolation_level=None)
        holder.execute("BEGIN EXCLUSIVE")
        self.queue(4)
        wait_pumping("another", lambda: len(self.cards(view)) == 3)
        self.decide(view, "Reject", 2)
        press(find(view, "push button", "Confirm", anywhere=True))
        holder.execute("ROLLBACK")
        holder.close()
        find(view, "label", "🚫 rejected mail.send")
        self.assertEqual(self.letters(), [])
        (self.root / "go").write_text("")
        wait_pumping("the letter", lambda: self.letters() == ["Subject: Letter 1"])
        wait_pumping("both rows", lambda: {row[1] for row in self.rows()} == {"executed", "rejected"})


if __name__ == "__main__":
    COCKPIT = sys.argv.pop(1)
    warnings.simplefilter("ignore", DeprecationWarning)  # of pyatspi's own
    DESKTOP = desktop.Desktop()
    try:
        unittest.main(warnings="ignore")
    finally:
        DESKTOP.close()
