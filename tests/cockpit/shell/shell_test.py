"""The cockpit as an application of a desktop: its icon, its windows, its start and its end.

`shell_test.py <mervo-cockpit>`
"""

import os
import signal
import subprocess
import sys
import unittest

from desk import Desk
from desktop import DesktopTest, find, keys, press
from doubles import Panel, Watcher, wait_pumping

COCKPIT = ""  # from the command line
ORANGE = (255, 255, 149, 0)


def windows(name="^Mervo$"):
    """The windows on the screen that have this name."""
    run = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", name], capture_output=True, text=True)
    return run.stdout.split()


def place(window):
    text = subprocess.run(["xwininfo", "-id", window], capture_output=True, text=True, check=True).stdout
    words = {line.split(":")[0].strip(): line.split(":")[1].strip() for line in text.splitlines() if ":" in line}
    return [int(words[name]) for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]


class Application(DesktopTest):
    """A home, and a runtime folder, of each test's own."""

    def setUp(self):
        self.desk = Desk(accounts=())
        self.addCleanup(self.desk.close)
        runtime = self.desk.folder / "run"
        runtime.mkdir(mode=0o700)
        self.environment = os.environ | self.desk.environment | {"XDG_RUNTIME_DIR": str(runtime)}

    def cockpit(self, *words):
        return self.start(COCKPIT, *words, env=self.environment, stderr=subprocess.PIPE, text=True)

    def run_to_its_end(self, *words, **environment):
        return subprocess.run([COCKPIT, *words], env=dict(self.environment, **environment), capture_output=True,
                              text=True, timeout=30)

    def panel(self, edge):
        return self.start("trayer", "--edge", edge, "--align", "right", "--widthtype", "request", "--height", "26",
                          "--SetDockType", "true", "--transparent", "false", stderr=subprocess.DEVNULL)


class TestInATray(Application):
    def test_the_icon_says_what_waits_and_opens_the_popover(self):
        tray = self.play(Watcher())
        cockpit = self.cockpit()
        wait_pumping("an icon", lambda: tray.items)
        wait_pumping("its picture", lambda: tray.pixels(22))
        dot = tray.pixels(22)[11][11]
        self.assertTrue(dot[0] > 150 and max(dot[1:]) < 60, "a dark dot on a light panel: %s" % (dot,))
        self.assertEqual(tray.pixels(22)[0][0], (0, 0, 0, 0))
        wait_pumping("a tip", lambda: "nothing waits" in tray.look()["ToolTip"][2])
        self.desk.queue("0A1B2C3D")
        wait_pumping("an orange mark", lambda: tray.pixels(22)[11][11] == ORANGE)
        self.assertIn("Mervo (Copilote): 1 waits for you", tray.look()["ToolTip"][2])

        tray.activate()
        wait_pumping("the popover", windows)
        x, y, width, height = place(windows()[0])
        self.assertTrue(x + width > 1200 and y < 40 and width > 300 and height > 400, (x, y, width, height))
        tray.activate()
        wait_pumping("closed by a second click", lambda: not windows())
        tray.activate()
        wait_pumping("opened by a third", windows)
        keys("Escape")
        wait_pumping("closed by Escape", lambda: not windows())
        self.assertIsNone(cockpit.poll())

    def test_the_icon_moves_no_more_than_the_eye_follows(self):
        tray = self.play(Panel())
        self.cockpit()
        wait_pumping("an icon", lambda: tray.items and "nothing waits" in tray.look()["ToolTip"][2])
        self.assertEqual(tray.watch(2), 0, "it stands still")
        self.desk.queue("0A1B2C3D")
        wait_pumping("an orange mark", lambda: tray.pixels(22)[11][11] == ORANGE)
        self.assertTrue(0 < tray.watch(4) <= 42, "of 48 frames, those that look like the one before are not sent")
        self.assertEqual([picture[0] for picture in tray.look()["IconPixmap"]], [22, 24])

    def test_the_older_kind_of_tray(self):
        panel = self.panel("top")
        wait_pumping("a panel", lambda: windows("^panel$"))
        cockpit = self.cockpit()
        wait_pumping("an icon", lambda: place(windows("^panel$")[0])[2] > 10)
        self.assertEqual(windows(), [])

        def click():
            x, y, width, height = place(windows("^panel$")[0])
            subprocess.run(["xdotool", "mousemove", str(x + width - 12), str(y + height // 2), "sleep", "0.2", "click", "1"],
                           check=True)
            return windows()

        wait_pumping("the popover by a click", click)
        x, y, width, height = place(windows()[0])
        self.assertTrue(26 <= y < 60 and x + width <= 1280, "below the icon: %s" % ((x, y, width, height),))
        self.desktop.end(panel)
        wait_pumping("a window and the popover", lambda: len(windows()) == 2)
        self.panel("bottom")
        wait_pumping("the icon again", lambda: len(windows()) < 2)
        self.assertIsNone(cockpit.poll())


class TestWithoutATray(Application):
    def test_a_window_takes_its_place_whenever_there_is_none(self):
        self.desk.queue("0A1B2C3D")
        cockpit = self.cockpit()
        tree = self.desktop.application(cockpit, "mervo-cockpit")
        find(tree, "label", "Mervo (Copilote): 1 waits for you")
        for _ in range(2):  # a tray comes and goes
            tray = self.play(Watcher())
            wait_pumping("the icon", lambda: tray.items)
            wait_pumping("no window in its place", lambda: not windows())
            wait_pumping("a picture", lambda: tray.pixels(22))
            tray.close()
            wait_pumping("the window again", windows)
        press(find(tree, "push button", "Open Mervo"))
        wait_pumping("the popover too", lambda: len(windows()) == 2)
        find(tree, "push button", lambda name: name.startswith("Approve"))
        self.assertIsNone(cockpit.poll())

    def test_closing_it_ends_the_cockpit(self):
        cockpit = self.cockpit()
        window, = wait_pumping("the window", windows)
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "--clearmodifiers", "alt+F4"], check=True)
        self.assertEqual(cockpit.wait(20), 0)


class TestStartAndEnd(Application):
    def test_one_for_each_person(self):
        tray = self.play(Watcher())
        first = self.cockpit("--hidden")
        wait_pumping("an icon", lambda: tray.items)
        self.assertEqual(self.run_to_its_end("--hidden").returncode, 0)
        self.assertEqual(windows(), [], "a log-in disturbs nobody")
        self.assertEqual(self.run_to_its_end(DISPLAY="").returncode, 0, "telling the first one needs no display")
        wait_pumping("the first one's popover", windows)
        self.assertEqual(len(tray.items), 1)
        self.environment["MERVO_HOME"] += "-other"
        other = self.cockpit()
        wait_pumping("an icon for another home", lambda: len(tray.items) == 2)
        self.desktop.end(other)
        self.environment["MERVO_HOME"] = str(self.desk.home)

        first.send_signal(signal.SIGKILL)
        first.wait()
        several = [self.cockpit() for _ in range(6)]
        wait_pumping("one is left", lambda: [one.poll() for one in several].count(None) == 1)
        self.assertEqual(sorted(one.returncode for one in several if one.poll() is not None), [0] * 5)
        wait_pumping("its icon", lambda: len(tray.items) == 3)

    def test_it_can_be_ended_politely(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            cockpit = self.cockpit("--open")
            wait_pumping("the popover", lambda: len(windows()) == 2)
            cockpit.send_signal(number)
            _, complaints = cockpit.communicate(timeout=20)
            self.assertEqual((cockpit.returncode, complaints), (0, ""))

    def test_it_starts_the_runner_of_jobs_again(self):
        self.desk.configure('[jobs]\nrunner = "own"\n')
        lock = self.desk.folder / "Library/LaunchAgents/.launchd/lock"
        processes = []

        def runner():
            number = lock.read_text() if lock.exists() else ""
            return bool(number) and number not in processes and os.path.exists(f"/proc/{number}/exe") and number
        for _ in range(2):
            cockpit = self.cockpit()
            processes.append(wait_pumping("a runner", runner))
            self.desktop.end(cockpit)
            os.kill(int(processes[-1]), signal.SIGKILL)

    def test_what_it_says_on_a_terminal(self):
        self.assertRegex(self.run_to_its_end("--version", DISPLAY="").stdout, r"^mervo-cockpit \d+\.\d+\.\d+\n$")
        self.assertIn("--hidden", self.run_to_its_end("--help", DISPLAY="").stdout)
        for words, environment, status, sentence in (
                (["--x"], {}, 2, '"--x" is no option; see mervo-cockpit --help.'),
                ([], {"DISPLAY": "", "QT_QPA_PLATFORM": ""}, 1, "There is no display; start it within a desktop session."),
                ([], {"DISPLAY": ":987"}, 1, "The display cannot be opened; start it within a desktop session.")):
            run = self.run_to_its_end(*words, **environment)
            self.assertEqual((run.returncode, run.stdout, run.stderr), (status, "", "mervo-cockpit: %s\n" % sentence))

    def test_a_home_that_cannot_be_made_is_told_of(self):
        self.desk.folder.joinpath("file").write_text("")
        self.environment["MERVO_HOME"] = str(self.desk.folder / "file/home")
        tray = self.play(Watcher())
        cockpit = self.cockpit()
        wait_pumping("an icon all the same", lambda: tray.items)
        cockpit.terminate()
        _, complaints = cockpit.communicate(timeout=20)
        self.assertIn("file/home", complaints)


if __name__ == "__main__":
    COCKPIT = sys.argv.pop()
    unittest.main()
