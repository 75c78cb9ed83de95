"""Windows of real terminals, opened, placed and closed by scripts and by `open`, on a display of the test's own."""

import json
import os
import pathlib
import shlex
import signal
import subprocess
import sys
import time
import unittest

import desk
import desktop

# As automations use them, to the letter.
OPEN = '''tell application "iTerm2"
  activate
  set newWindow to (create window with default profile)
  %s
  tell current session of newWindow
    write text "exec bash %s"
  end tell
  return id of current session of newWindow
end tell'''
CLOSE = '''tell application "iTerm2"
  repeat with w in windows
    repeat with t in tabs of w
      repeat with s in sessions of t
        if (id of s) is "%s" then
          close t
        end if
      end repeat
    end repeat
  end repeat
end tell'''
CLOSE_BY_TTY = {"iTerm": '''on run argv
  set t to item 1 of argv
  tell application "iTerm2"
  repeat with w in windows
    repeat with tb in tabs of w
      repeat with s in sessions of tb
        try
          if tty of s is t then close w
        end try
      end repeat
    end repeat
  end repeat
end tell
end run''', "Terminal": '''on run argv
  set t to item 1 of argv
  tell application "Terminal"
  repeat with w in windows
    try
      if tty of (selected tab of w) is t then close w saving no
    end try
  end repeat
end tell
end run'''}


class Terminals(desktop.DesktopTest):
    def setUp(self):
        self.desk = desk.Desk(accounts=(), environment={"DISPLAY": os.environ["DISPLAY"], "SHELL": "/bin/bash"})
        self.addCleanup(self.desk.close)
        self.addCleanup(self.end_all)
        self.use("xterm")
        self.out = self.desk.folder / "out"

    def end_all(self):
        """Ends what a failed test has left."""
        for file in self.files(".session"):
            try:
                os.kill(json.loads(file.read_text())["process"], signal.SIGTERM)
            except (OSError, ValueError):
                pass

    def use(self, *words):
        self.desk.configure("[terminal]\ncommand = %s\n" % json.dumps(words))

    def files(self, suffix=""):
        return sorted((self.desk.folder / "data/mervo-desk/terminals").glob("*" + suffix))

    def job(self, lines, name="job.sh"):
        """A script that first writes its process, terminal and folder to a file of its own."""
        file = self.desk.folder / name
        file.parent.mkdir(exist_ok=True)
        told = shlex.quote(str(file) + ".told")
        file.write_text('#!/bin/bash\necho "$$ $(tty) $PWD" >> %s\n%s\n' % (told, lines))
        file.chmod(0o755)
        return file

    def told(self, job):
        file = pathlib.Path(str(job) + ".told")
        lines = desktop.wait("the job", lambda: file.exists() and file.read_text().splitlines())
        self.assertEqual(len(lines), 1)  # run once
        return lines[0].split(" ", 2)

    def is_gone(self, process):
        try:
            os.kill(int(process), 0)
            return False
        except ProcessLookupError:
            return True

    def open(self, job, fragment=""):
        text = str(job).replace("\\", "\\\\").replace('"', '\\"')
        return self.desk.script(OPEN % (fragment, text)).replace("\n", "")

    def windows(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "."], capture_output=True, text=True)
        return set(found.stdout.split())

    # ---- the scripts of automations

    def test_visible_run(self):
        """Two windows from two processes; a third process closes the right one, with all that runs in it."""
        for words in (["xterm"], ["stterm"]):
            with self.subTest(words[0]):
                self.use(*words)
                jobs = [self.job("sleep 600 &\nsleep 600", words[0] + name) for name in (" a'b.sh", "c.sh")]
                ids = [self.open(job) for job in jobs]
                (process, tty, folder), other = map(self.told, jobs)
                self.assertTrue(tty.startswith("/dev/pts/"), tty)
                self.assertEqual(folder, str(self.desk.folder) if words == ["xterm"] else "/root")
                before = self.windows()
                self.desk.run("Helpers/platform/osascript", text=CLOSE % ids[0])
                self.assertTrue(self.is_gone(process))
                self.assertEqual([file.stem for file in self.files()], [ids[1]])
                desktop.wait("one window less", lambda: len(before - self.windows()) == 1)
                self.assertFalse(self.is_gone(other[0]))
                self.desk.run("Helpers/platform/osascript", text=CLOSE % ids[1])
                self.assertEqual((self.is_gone(other[0]), self.files()), (True, []))

    def test_place(self):
        """Pixels with the frame, counted from the main screen; a terminal without an option is moved once it is there."""
        for words in ("--delmonitor R", "--delmonitor L", "--setmonitor *R 640/2x900/2+640+0 screen",
                      "--setmonitor L 640/2x900/2+0+0 none"):
            subprocess.run(["xrandr", *words.split()], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for words in (["xterm", "-fs", "6", "-fa", "Mono"], ["stterm"]):
            with self.subTest(words[0]):
                self.use(*words)
                before = self.windows()
                job = self.open(self.job("sleep 600", words[0] + "p.sh"), "set bounds of newWindow to {-600, 100, -100, 500}")
                window = desktop.wait("a window", lambda: self.windows() - before).pop()

                def numbers():
                    told = subprocess.run(["xwininfo", "-id", window], capture_output=True, text=True).stdout
                    lines = dict(line.strip().split(":", 1) for line in told.splitlines() if line.count(":") == 1)
                    corner = [int(lines["Absolute upper-left " + axis]) - int(lines["Relative upper-left " + axis])
                              for axis in "XY"]
                    return *corner, 470 < int(lines["Width"]) < 500, 350 < int(lines["Height"]) < 380

                desktop.wait("its place", lambda: numbers() == (40, 100, True, True))
                self.desk.run("Helpers/platform/osascript", text=CLOSE % job)

    def test_attach(self):
        """A command in a window of its own, which closes itself by its terminal, or stays to show what went wrong."""
        host = shlex.quote(sys.argv[1] + "/Helpers/platform/osascript")
        for name in ("Terminal", "iTerm"):
            closing = ("TTY=\"$(tty)\"\nif $1; then\n  ( sleep 1; %s - \"$TTY\" >/dev/null 2>&1 <<'OSA'\n%s\nOSA\n  ) &\nfi"
                       % (host, CLOSE_BY_TTY[name]))
            other = self.job("sleep 600", name + "/other.command")
            good = self.job(closing.replace("$1", "true"), name + "/it's good.command")
            bad = self.job(closing.replace("$1", "false"), name + "/bad.command")
            for job in (other, good, bad):
                done = self.desk.run("Helpers/platform/open", "-a", name, job)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.told(good)
            desktop.wait("two windows", lambda: len(self.files()) == 2)
            ttys = {json.loads(file.read_text())["tty"] for file in self.files()}
            self.assertEqual(ttys, {self.told(other)[1], self.told(bad)[1]})
            for tty in ttys:
                self.desk.run("Helpers/platform/osascript", "-", tty, text=CLOSE_BY_TTY[name])
            self.assertEqual(self.files(), [])

    # ---- terminals that behave otherwise

    def stand_in(self, lines):
        """A terminal of the test's own; `session` runs what belongs into its window."""
        file = self.desk.folder / "stand-in"
        file.write_text('#!/bin/bash\nprintf "%%s\\0" "$@" > %s\nsession() { script -qec "$*" /dev/null < /dev/zero; }\n%s\n'
                        % (shlex.quote(str(self.out)), lines))
        file.chmod(0o755)
        self.use(str(file), "--own", "word")

    def failure(self, job="true"):
        done = self.desk.run("Helpers/platform/osascript", text=OPEN % ("", self.job(job, "late.sh")))
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(self.files(), [])
        return done.stderr.strip().split("iTerm2 got an error: ")[-1]

    def test_server(self):
        """The process that was started ends at once; the window is another's, and the id leads to that."""
        self.stand_in('shift 2; setsid xterm -e "$@" >/dev/null 2>&1 & exit 0')
        job = self.job("sleep 600")
        id = self.open(job)
        words = self.out.read_bytes().split(b"\0")
        self.assertEqual([words[0], words[1], pathlib.Path(words[2].decode()).name], [b"--own", b"word", "terminal-session"])
        process = self.told(job)[0]
        self.desk.run("Helpers/platform/osascript", text=CLOSE % id)
        self.assertEqual((self.is_gone(process), self.files()), (True, []))

    def test_no_window(self):
        self.stand_in("echo no fonts >&2; exit 3")
        self.assertEqual(self.failure(), "No terminal opens: stand-in ended with status 3: no fonts (-10000)")
        self.stand_in('shift 2; sleep 17; touch %s; session "$@"' % shlex.quote(str(self.out) + ".late"))
        start = time.monotonic()
        self.assertIn("stand-in has opened no window within 15 s", self.failure())
        self.assertLess(time.monotonic() - start, 20)
        time.sleep(3)
        self.assertFalse(pathlib.Path(str(self.out) + ".late").exists())  # it was ended
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            self.desk.environment.pop(name, None)
        self.assertIn("no display to open a terminal on", self.failure())
        self.desk.environment["DISPLAY"] = ":87654"
        self.use("xterm")
        self.assertIn("xterm ended with status 1", self.failure())

    # ---- how sessions end

    def test_ends(self):
        """Whatever ends first, nothing is left; a job that does not heed a hang-up is killed."""
        def process(id):
            return json.loads((self.files()[0].parent / (id + ".session")).read_text())["process"]

        deaf = self.job("trap '' HUP TERM\nsleep 600", "deaf.sh")
        id = self.open(deaf)
        self.told(deaf)
        os.kill(process(id), signal.SIGSTOP)
        self.desk.run("Helpers/platform/osascript", text=CLOSE % id)
        self.assertEqual((self.is_gone(self.told(deaf)[0]), self.files()), (True, []))
        for victim, at_once in (("shell", False), ("holder", False), *[("holder", True)] * 8):
            job = self.job("sleep 600", "killed.sh")
            told = pathlib.Path(str(job) + ".told")
            told.write_text("")
            id = self.open(job)
            shell = None if at_once else int(self.told(job)[0])
            os.kill(shell if victim == "shell" else process(id), signal.SIGKILL)
            desktop.wait("no window", lambda: not self.windows())
            desktop.wait("the end of the job", lambda: all(map(self.is_gone, told.read_text().split()[:1])))
            count = 'tell application "iTerm2" to count windows'  # a child not yet gone may hold the file once more
            desktop.wait("an empty list", lambda: self.desk.script(count) == "0" and not self.files())
        self.desk.environment["DISPLAY"] = name = self.desktop.display()
        job = self.job("sleep 600", "server.sh")
        self.open(job)
        self.told(job)
        server = [process for process in self.desktop._running if process.args[0] == "Xvfb"][-1]
        self.desktop.end(server)
        desktop.wait("the end with the display", lambda: self.is_gone(self.told(job)[0]) and not self.files())

    def test_windows(self):
        """A window without a text has a shell; what a session runs already takes no more; the consent is asked."""
        self.desk.script('tell application "iTerm2" to create window with default profile')
        self.assertEqual(len(self.files(".session")), 1)
        for name, count in (("iTerm2", "1"), ("Terminal", "0")):
            self.assertEqual(self.desk.script('tell application "%s" to count windows' % name), count)
        done = self.desk.run("Helpers/platform/osascript", text='tell application "iTerm2" to tell current session of '
                             'window 1 to write text "ls"')
        self.assertIn("nothing more can be typed", done.stderr)
        self.desk.script('tell application "iTerm2" to close window 1')
        self.assertEqual(self.files(), [])
        for bounds in ("{1, 2, 3}", "{0, 0, 0, 9}", "{0, 0, 99999, 9}", '"x"'):
            done = self.desk.run("Helpers/platform/osascript", text='tell application "iTerm2"\nset w to (create window with '
                                 'default profile)\nset bounds of w to %s\nend tell' % bounds)
            self.assertRegex(done.stderr, r"\((-10006|-1700)\)")
        record = self.desk.folder / "data/mervo-desk/consent.json"
        record.write_text('{"com.googlecode.iterm2": "refused"}')
        self.assertIn("Not authorized", self.desk.run("Helpers/platform/osascript", text=OPEN % ("", "/x")).stderr)

    def test_open(self):
        plain = self.desk.folder / "plain.command"
        plain.write_text("x")
        for words, why in ((["Terminal", "/none"], "does not exist"), (["iterm", plain], "chmod"), (["/none"], "no program"),
                           (["Nope", plain], "unknown application")):
            done = self.desk.run("Helpers/platform/open", "-a", *words)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)
        job = self.job("sleep 600", "a.command")
        done = self.desk.run("Helpers/platform/open", "-a", "/usr/bin/xterm", job)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        os.kill(int(self.told(job)[0]), signal.SIGKILL)
        health = self.desk.health()
        self.assertEqual(health["desk.terminal"]["detail"], "/usr/bin/xterm, from desk.toml")
        self.assertIn("(main)", health["desk.screens"]["detail"])
        self.use("/none")
        self.assertEqual(self.desk.health()["desk.terminal"]["ok"], False)


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
