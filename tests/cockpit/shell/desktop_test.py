"""What the cockpit asks of a desktop, against services that the test plays and a real notification daemon.

`desktop_test.py <the probe>`
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

from desktop import DesktopTest
from doubles import FileManager, Notifications, Portal, bus, pump, wait_pumping
from gi.repository import Gio, GLib

PROBE = ""  # from the command line
ASK = [["APPROVE", "Approve"], ["REJECT", "Reject"]]


class Probe:
    """The program under test, on a line."""

    def __init__(self, process):
        self.process = process
        os.set_blocking(self.process.stdout.fileno(), False)
        self.heard = []
        self.hear("ready")

    def do(self, what, **words):
        self.process.stdin.write(json.dumps(dict(words, do=what)) + "\n")
        self.process.stdin.flush()

    def listen(self):
        for line in iter(self.process.stdout.readline, ""):
            self.heard.append(json.loads(line))
        return self.heard

    def hear(self, key):
        """The next thing said that has this key; what was said before is dropped."""
        found = wait_pumping(key, lambda: [line for line in self.listen() if key in line])[0]
        del self.heard[:self.heard.index(found) + 1]
        return found


class OnTheDesktop(DesktopTest):
    def probe(self, login="/bin/true", **environment):
        return Probe(self.start(PROBE, login, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                env=dict(os.environ, QT_QPA_PLATFORM="offscreen", **environment)))

    def folder(self):
        folder = tempfile.TemporaryDirectory(prefix="mervo-desktop-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        return pathlib.Path(folder.name)


class TestNotices(OnTheDesktop):
    def test_a_message_is_replaced_answered_once_and_taken_away(self):
        service = self.play(Notifications("actions", "body"))
        probe = self.probe()
        probe.do("post", id="one", title="Approve mail.delete?", body="<b>3</b> & more", actions=ASK, context="AB12")
        wait_pumping("a message", lambda: service.shown)
        (number, shown), = service.shown.items()
        self.assertEqual(shown["body"], "<b>3</b> & more", "plain where the service reads no markup")
        self.assertEqual(shown["actions"], ["default", "Open", "APPROVE", "Approve", "REJECT", "Reject"])
        self.assertEqual((shown["hints"]["urgency"], shown["hints"]["sound-name"]), (1, "message-new-instant"))

        # Three quick ones under one id stand as one message, the last.
        for title in ("second", "third", "fourth"):
            probe.do("post", id="one", title=title, actions=ASK, context=title)
        wait_pumping("the last", lambda: service.shown.get(number, {}).get("title") == "fourth")
        self.assertEqual(list(service.shown), [number])

        probe.do("post", id="two", title="stays", context="CD34")
        wait_pumping("the other", lambda: len(service.shown) == 2)
        service.act(number, "APPROVE")
        service.act(number, "APPROVE")
        self.assertEqual(probe.hear("action"), {"action": "APPROVE", "context": "fourth"})
        wait_pumping("it is closed", lambda: number in service.closed)
        service.act(max(service.shown), "default")
        self.assertEqual(probe.hear("action")["context"], "CD34", "a second answer to the first would have come before")

    def test_a_removed_message_goes_also_while_it_is_on_its_way(self):
        service = self.play(Notifications("actions", "body-markup"))
        probe = self.probe()
        probe.do("post", id="a", title="stays", body="1 < 2 & <i>x</i>")
        wait_pumping("a", lambda: service.shown)
        self.assertEqual(list(service.shown.values())[0]["body"], "1 &lt; 2 &amp; &lt;i&gt;x&lt;/i&gt;")
        probe.do("post", id="b", title="goes")
        probe.do("remove", id="b")
        wait_pumping("b was closed", lambda: service.closed)
        self.assertEqual([one["title"] for one in service.shown.values()], ["stays"])
        probe.do("remove", id="a")
        wait_pumping("all closed", lambda: not service.shown)

    def test_a_service_that_dies_takes_its_numbers_along(self):
        first = self.play(Notifications("actions"))
        probe = self.probe()
        probe.do("post", id="one", title="before", context="old")
        wait_pumping("a message", lambda: first.shown)
        number, = first.shown
        first.close()
        second = self.play(Notifications())
        probe.do("post", id="one", title="after", actions=ASK)
        wait_pumping("a message again", lambda: second.shown)
        (again, shown), = second.shown.items()
        self.assertEqual((shown["replaced"], shown["actions"]), (0, []), "no number of the dead, no unasked actions")
        stranger = bus()  # anybody on the bus may send a signal that looks like an answer
        stranger.emit_signal(None, Notifications.path, Notifications.name, "ActionInvoked",
                             GLib.Variant("(us)", (again, "APPROVE")))
        stranger.flush_sync()
        second.act(again, "default")
        self.assertEqual(probe.hear("action")["action"], "default")

    def test_a_real_daemon_brings_the_answer(self):
        root = self.folder()
        pick = root / "pick"
        pick.write_text("#!/bin/sh\ngrep -m1 -F Reject\n")
        pick.chmod(0o755)
        settings = root / "dunstrc"
        settings.write_text("[global]\n    font = DejaVu Sans 10\n    dmenu = %s\n[urgency_normal]\n    timeout = 0\n" % pick)
        ask = bus()

        def is_there():
            return ask.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                                 GLib.Variant("(s)", (Notifications.name,)), None, 0, 10_000, None).unpack()[0]

        def start():
            daemon = self.start("dunst", "-conf", settings, stderr=subprocess.DEVNULL)
            wait_pumping("dunst", is_there)  # a message to it before that would have the bus start another one
            return daemon

        def displayed():
            run = subprocess.run(["dunstctl", "count", "displayed"], capture_output=True, text=True)
            return run.stdout.strip()

        daemon = start()
        probe = self.probe()
        probe.do("post", id="one", title="Approve mail.delete?", body="3 messages", actions=ASK, context="AB12")
        wait_pumping("the message", lambda: displayed() == "1")
        subprocess.run(["dunstctl", "context"], check=True)
        self.assertEqual(probe.hear("action"), {"action": "REJECT", "context": "AB12"})
        wait_pumping("nothing on the screen", lambda: displayed() == "0")
        daemon.send_signal(signal.SIGKILL)
        self.desktop.end(daemon)
        wait_pumping("no dunst", lambda: not is_there())
        start()
        probe.do("post", id="one", title="2 actions to approve")
        wait_pumping("a message of the new one", lambda: displayed() == "1")


class TestTheRest(OnTheDesktop):
    def test_log_in_starts_the_program_and_the_file_tells_the_truth(self):
        root = self.folder()
        program = root / 'a "b" $c\\d `e`'
        program.write_text('#!/bin/sh\necho "$@" > "$RECORD"\n')
        program.chmod(0o755)
        os.environ["RECORD"] = str(root / "record")
        probe = self.probe(program, XDG_CONFIG_HOME=str(root / "config"))
        probe.do("login", on=True)
        self.assertTrue(probe.hear("login")["login"])
        entry = root / "config/autostart/mervo.desktop"
        Gio.DesktopAppInfo.new_from_filename(str(entry)).launch([], None)  # another reader of such files
        wait_pumping("a start", (root / "record").exists)
        wait_pumping("its option", lambda: (root / "record").read_text() == "--hidden\n")

        text = entry.read_text()
        for switched in (text + "Hidden=true\n", text.replace("enabled=true", "enabled=false"), "", "[Other]\nExec=x\n"):
            entry.write_text(switched)
            probe.do("login?")
            self.assertFalse(probe.hear("login")["login"], switched)
        entry.write_text(text + "[Desktop Action x]\nHidden=true\n")
        probe.do("login?")
        self.assertTrue(probe.hear("login")["login"])
        for _ in range(2):  # off when it is off already is no failure
            probe.do("login", on=False)
            self.assertFalse(probe.hear("login")["login"])
        self.assertFalse(entry.exists())
        entry.parent.rmdir()
        entry.parent.write_text("in the way")
        probe.do("login", on=True)
        self.assertIn("autostart", probe.hear("failure")["failure"])
        self.assertFalse(probe.hear("login")["login"])

    def test_files_addresses_and_the_dock(self):
        root = self.folder()
        opener = root / "xdg-open"
        opener.write_text('#!/bin/sh\nprintf "%%s\\n" "$@" >> %s/opened\n' % root)
        opener.chmod(0o755)
        probe = self.probe(PATH="%s:%s" % (root, os.environ["PATH"]))
        for what, word, opens in (("url", "mailto:a@b.example?subject=x", True), ("url", "--help", False),
                                  ("url", "no scheme", False), ("file", "/tmp/a b", True)):
            probe.do(what, **{what: word})
            self.assertEqual(probe.hear("opened")["opened"], opens, word)
        opened = root / "opened"
        wait_pumping("both", lambda: opened.exists() and sorted(opened.read_text().splitlines())
             == ["/tmp/a b", "mailto:a@b.example?subject=x"])

        probe.do("reveal", file=str(root / "shown"))
        wait_pumping("its folder, without a file manager on the bus", lambda: str(root) in opened.read_text().splitlines())
        manager = self.play(FileManager())
        probe.do("reveal", file=str(root / "é x"))
        wait_pumping("the file", lambda: manager.revealed)
        self.assertEqual(manager.revealed, [(root / "é x").as_uri()])

        ear, badges = bus(), []
        ear.signal_subscribe(None, "com.canonical.Unity.LauncherEntry", "Update", None, None, 0,
                             lambda *words: badges.append(words[5].unpack()))
        ear.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId", None, None, 0, 10_000, None)
        for label in ("3", ""):
            probe.do("badge", label=label)
        wait_pumping("two badges", lambda: len(badges) == 2)
        self.assertEqual(badges, [("application://mervo.desktop", {"count": 3, "count-visible": True}),
                                  ("application://mervo.desktop", {"count": 0, "count-visible": False})])

    def test_small_settings_outlive_the_program(self):
        place = {"XDG_CONFIG_HOME": str(self.folder())}
        probe = self.probe(**place)
        probe.do("recall", key="mervo.onboarding.completed")
        self.assertFalse(probe.hear("default")["default"])
        probe.do("remember", key="mervo.onboarding.completed")
        probe.do("recall", key="mervo.onboarding.completed")
        self.assertTrue(probe.hear("default")["default"])
        probe.process.stdin.close()
        probe.process.stdin = None
        self.assertEqual(probe.process.wait(10), 0)
        again = self.probe(**place)
        again.do("recall", key="mervo.onboarding.completed")
        self.assertTrue(again.hear("default")["default"])

    def test_the_look_follows_the_portal(self):
        portal = self.play(Portal())
        probe = self.probe()
        self.assertEqual(probe.hear("dark"), {"dark": True, "animated": True})
        portal.change("org.freedesktop.appearance", "color-scheme", GLib.Variant("u", 2))
        self.assertFalse(probe.hear("dark")["dark"])
        portal.change("org.gnome.desktop.interface", "enable-animations", GLib.Variant("b", False))
        self.assertFalse(probe.hear("dark")["animated"])
        pump()


if __name__ == "__main__":
    PROBE = sys.argv.pop()
    unittest.main()
