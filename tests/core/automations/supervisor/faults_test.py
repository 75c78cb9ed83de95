"""Runs that end otherwise than they should: the next one takes over, no lock stays, log and state say what happened."""

import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import time
import unittest

import desk
import desktop
from automations import AutomationTest, kill

GONE = "T the session has ended without a done signal"


class Killed(AutomationTest):
    def start_agent(self, **loop):
        for file in self.record.iterdir():
            file.unlink()
        self.work("sleep 600")
        self.add(visible=False, **loop)
        run = self.start()
        return run, int(self.told("process"))

    def assert_runs_again(self):
        """The next run is like the first one of all."""
        self.work("exit 0")
        self.run_once()
        self.assertEqual(self.ended(), 0)

    def test_supervisor(self):
        for kind, left in (("tmux", "closed the session that the run before had left"), ("script", "ended the processes that the run before had left")):
            with self.subTest(kind):
                if kind == "tmux":
                    run, process = self.start_agent()
                else:
                    self.script("sleep 600 & echo $! > ../../pid; wait")
                    run = self.start()
                    process = desktop.wait("a script", lambda: (self.home / "pid").exists()
                                           and (self.home / "pid").read_text())
                kill(run)
                self.assertTrue(self.file(".lock.d").exists())
                self.add(visible=False, prompt="")
                self.assert_runs_again()
                self.assert_gone(process)
                self.assertIn(f"T stale lock (pid {run.pid}) - taking over", self.log())
                self.assertIn(f"T {left}", self.log())
                self.file(".log").unlink()

    def test_session(self):
        """Each with the exit code and the last line of the log."""
        def parent(process):
            return int(pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()[1])

        for what, code, line in (("agent", 137, "===== rondel: a done (exit 137) ====="), ("shell", 1, GONE),
                                 ("server", 1, GONE)):
            with self.subTest(what):
                run, process = self.start_agent()
                os.kill({"agent": lambda: process, "shell": lambda: parent(process),
                         "server": lambda: parent(parent(process))}[what](), signal.SIGKILL)
                run.communicate(timeout=60)
                self.assertEqual((run.returncode, self.ended(), self.log()[-1]), (0, code, line))
                self.assert_gone(process)
                self.assert_runs_again()

    def test_supervisor_at_every_moment(self):
        """Killed after ever longer times: whatever it has left, the next run takes over."""
        self.work("exit 0")
        self.add(visible=False)
        for milliseconds in range(0, 120, 6):
            run = self.start()
            time.sleep(milliseconds / 1000)
            kill(run)
        self.assert_runs_again()
        self.assertFalse(list(self.file("x").parent.glob("*.lock.d*")))

    def test_supervisor_between_an_answer_and_its_agent(self):
        """Killed when it calls this for the nth time, it is followed by one that tells the answer again."""
        self.move_home(self.desk.folder / ("mervo" + "/long" * 30))
        self.work('cat "$to/input" >> "$to/all"')
        self.add(visible=False)
        for call, nth in (("rename", 2), ("rename", 3), ("vfork", 3), ("vfork", 4), ("unlink", 2)):
            with self.subTest(call, nth=nth):
                asked = self.desk.tool("ask", text="Well?", channel="cockpit", automation="a").stdout.split("#")[1][:8]
                self.desk.tool("ask.answer", id=asked, text="yes")
                killed = subprocess.run(["strace", "-o", "/dev/null", "-e", f"inject={call}:signal=SIGKILL:when={nth}",
                                         self.desk.contents / "Helpers/mervo", "auto-run", "a"], env=self.desk.environment)
                self.assertEqual(killed.returncode, -signal.SIGKILL)
                self.run_once()
                self.run_once()
                self.assertIn(self.told("all").decode().count(f"#{asked}"), (1, 2))
                self.assertNotIn(b"DECISIONS", self.told("input"))


class Hindered(AutomationTest):
    def test_unwritable_home(self):
        """It runs, and nothing can be said of it."""
        self.script("touch ran")
        (self.home / ".runtime").write_text("no folder")
        self.run_once()
        self.assertTrue((self.home / "automations/a/ran").exists())

    def test_full_disk(self):
        """No file can be written, as if the disk were full: no agent gets the prompt of an earlier run."""
        self.add(prompt="first", visible=False)
        self.run_once()
        (self.record / "input").unlink()
        self.add(prompt="second" * 10_000, visible=False)

        def small():
            signal.signal(signal.SIGXFSZ, signal.SIG_DFL)
            resource.setrlimit(resource.RLIMIT_FSIZE, (8192, 8192))

        self.run_once(preexec_fn=small)
        self.assertNotIn(b"first", (self.record / "input").read_bytes())
        self.assertIn("T the prompt could not be written: File too large", self.log())
        self.assertEqual(self.ended(), 0)

    def test_folder_replaced(self):
        """By the script itself, while it runs."""
        self.script("rm -r $PWD; mkdir $PWD; echo '{' > $PWD/loop.json; exit 4")
        self.run_once()
        self.assertEqual(self.ended(), 4)
        self.run_once(status=1, error="rondel: no such loop: a\n")

    def test_damaged_state(self):
        self.script("true")
        self.file(".json").parent.mkdir(parents=True)
        for text in ("", "[]", '{"enabled":"no","lastExit":{}}', "\0" * 9):
            self.file(".json").write_text(text)
            self.run_once()
            self.assertEqual(self.state()["lastExit"], 0)

    def test_odd_clients(self):
        """Without a terminal: much output takes no memory; what leads a session of its own is left, the rest is not."""
        self.move_home(self.desk.folder / ("mervo" + "/long" * 30))
        self.work("head -c 50000000 /dev/zero\ngrep VmHWM /proc/$PPID/status > $HOME/record/memory\n"
                  "(trap '' TERM; sleep 600) & echo $! > $HOME/record/left\nsetsid sleep 600 & echo $! > $HOME/record/stays\nsleep 0.3\n"
                  "exec < /dev/null > /dev/null 2>&1\nexit 6")
        self.add(visible=False)
        self.run_once()
        self.assertEqual((self.ended(), self.file(".log").stat().st_size > 50_000_000), (6, True))
        self.assertLess(int(self.told("memory").split()[1]), 40_000)  # kB
        stays = int(self.told("stays"))
        self.addCleanup(os.kill, stays, signal.SIGKILL)
        self.assert_gone(self.told("left"))
        self.assertFalse(self.is_gone(stays))


class Windows(AutomationTest):
    """In windows of a real terminal, on a display of the test's own."""

    @classmethod
    def setUpClass(cls):
        cls.desktop = desktop.Desktop()
        cls.addClassCleanup(cls.desktop.close)

    def setUp(self):
        super().setUp()
        self.desk.environment["DISPLAY"] = os.environ["DISPLAY"]
        self.desk.configure('[terminal]\ncommand = ["xterm"]\n')

    def sessions(self):
        return {file.stem: json.loads(file.read_text())["process"]
                for file in (self.desk.folder / "data/mervo-desk/terminals").glob("*.session")}

    def open(self, work, **loop):
        for file in self.record.iterdir():
            file.unlink()
        self.work(work)
        self.add(**loop)
        run = self.start()
        return run, self.told("process")

    def test_window(self):
        """Each with the exit code and the lines that follow the one of the launch."""
        end = "===== rondel: a done (exit %d) ====="
        for what, work, code, lines in (
                ("signal", "mervo auto-done 4; sleep 600", 4, []), ("end", "exit 5", 5, [end % 5]),
                ("stop", "trap '' HUP TERM; sleep 600", 143, ["T asked to end (signal 15)"]), ("close", "sleep 600", 1, [GONE])):
            with self.subTest(what):
                run, process = self.open(work, prompt="it's\n", screen=0)
                (session, shell), = self.sessions().items() if what in ("stop", "close") else [("", 0)]
                if what == "stop":
                    desktop.wait("its id", lambda: self.file(".window").exists())
                    size = subprocess.run(["xdotool", "search", "--class", "xterm", "getwindowgeometry"],
                                          capture_output=True, text=True).stdout
                    self.assertRegex(size, "Geometry: 1[12][0-9]{2}x[89][0-9]{2}")  # all of the screen
                    run.terminate()
                elif what == "close":
                    os.kill(shell, signal.SIGHUP)
                run.communicate(timeout=60)
                self.assertEqual((run.returncode, self.ended(), self.sessions()), (0, code, {}))
                self.assert_gone(process)
                self.assertRegex(self.file(".log").read_text(), r"(?m)^\[.*\] launched iTerm2 session " + (session or r"\S+") + "$")
                begin = "===== rondel: a @ T (client=claude) ====="
                log = [line for line in self.log() if line != begin and "launched" not in line]
                self.assertEqual((log, self.file(".window").exists()), (lines + ["T run finished"], False))
                self.assertTrue(self.told("input").startswith(b"it's\n\n\nWhen the task"))
                self.file(".log").unlink()

    def test_supervisor_killed(self):
        run, process = self.open("sleep 600")
        desktop.wait("its id", lambda: self.file(".window").exists())
        kill(run)
        self.script("true")
        self.run_once()
        self.assert_gone(process)
        self.assertEqual((self.ended(), self.sessions(), self.file(".window").exists()), (0, {}, False))
        self.assertIn("T closed the window that the run before had left", self.log())

    def test_no_window(self):
        """Then the run waits for a signal from wherever it may come."""
        del self.desk.environment["DISPLAY"]
        self.add()
        run = self.start()
        desktop.wait("the reason", lambda: any("no window opens" in line for line in self.log()))
        self.assertIn("no display to open a terminal on", "".join(self.log()))
        self.file(".done").write_text("0")
        run.communicate(timeout=60)
        self.assertEqual(self.ended(), 0)


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
