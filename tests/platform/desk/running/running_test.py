"""Which applications run, how they start and quit; finder.reveal; on a desktop of the test's own."""

import concurrent.futures
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import threading
import time
import unittest

from gi.repository import GLib

import desk
import desktop
import doubles



class Quitting(doubles.Service):
    """A program's application object; `asked` are the actions it was asked for."""

    path = "/org/example/Post"
    interface = """<interface name="org.freedesktop.Application"><method name="ActivateAction">
        <arg type="s" direction="in"/><arg type="av" direction="in"/><arg type="a{sv}" direction="in"/>
        </method></interface>"""

    def __init__(self):
        self.name, self.asked = "org.example.Post", []
        super().__init__()

    def ActivateAction(self, sender, action, parameters, platform):
        self.asked.append(action)


class Running(desktop.DesktopTest):
    def setUp(self):
        bus = {name: os.environ[name] for name in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY")}
        self.desk = desk.Desk(accounts=(), mode="yolo", environment=bus)
        self.addCleanup(self.desk.close)
        self.desk.configure("")
        self.addCleanup(self.end_all)

    def end_all(self):
        for process in self.presences():
            os.kill(process, signal.SIGKILL)

    def presences(self):
        """The processes of this desk's presences."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                command, environment = (entry / "cmdline").read_bytes(), (entry / "environ").read_bytes()
            except OSError:
                continue
            if b"desk-application\0" in command and f"={self.desk.folder}".encode() in environment:
                found.append(int(entry.name))
        return found

    def open(self, *words):
        return self.desk.run("Helpers/platform/open", *words)

    def names(self):
        return self.desk.script('tell application "System Events" to get name of every process').split(", ")

    def quit(self, name):
        call = self.desk.call("app.quit", name=name)
        return call["output"] if call["outcome"] == "executed" else call["error"]

    def pumped(self, work):
        """The result of what waits for a service of this test."""
        results = []
        thread = threading.Thread(target=lambda: results.append(work()))
        thread.start()
        doubles.wait_pumping("an answer", lambda: not thread.is_alive())
        return results[0]

    # ---- the desk's own processes

    def test_an_application_starts_and_quits(self):
        self.assertEqual(self.quit("mail"), "(not running: Mail)")
        self.assertFalse((self.desk.folder / "data/mervo-desk/running").exists(), "a question writes nothing")
        self.assertEqual(self.open("-g", "-j", "-b", "com.apple.mail").returncode, 0)
        self.assertEqual(self.open("-a", "reminders").returncode, 0)
        self.assertEqual(self.names(), ["Mail", "Reminders", "Finder", "System Events"])
        self.assertEqual(self.desk.script('{application "Mail" is running, application "Notes" is running}'), "true, false")
        self.assertEqual(self.quit("MAIL"), "OK quit: Mail")
        self.assertEqual(self.names(), ["Reminders", "Finder", "System Events"])
        self.assertEqual(len(self.presences()), 1)
        self.assertEqual(self.open("-b", "com.apple.finder").returncode, 0)
        self.assertEqual(len(self.presences()), 1)

    def test_what_open_refuses(self):
        for words, sentence in (((), "usage: open"), (("-b",), "usage: open"), (("-a", "x", "-b", "y"), "usage: open"),
                                (("-a", "Nothing"), "unknown application “Nothing”"),
                                (("-b", "com.apple.nothing"), "unknown application “com.apple.nothing”"),
                                (("-a", "Mail", "/no/such"), "the file /no/such does not exist")):
            done = self.open(*words)
            self.assertEqual((done.returncode, done.stdout), (1, ""), words)
            self.assertTrue(done.stderr.startswith(f"open: {sentence}"), done.stderr)
        self.assertEqual(self.presences(), [])

    def test_one_presence_however_many_start_it(self):
        starts = [subprocess.Popen([self.desk.contents / "Helpers/platform/desk-application", "Notes"],
                                   env=self.desk.environment) for _ in range(20)]
        self.assertEqual([start.wait(20) for start in starts], [0] * 20)
        desktop.wait("the others to end", lambda: len(self.presences()) == 1)
        self.assertIn("Notes", self.names())

    def test_a_killed_presence_runs_no_more(self):
        self.open("-a", "Mail")
        os.kill(*self.presences(), signal.SIGKILL)
        desktop.wait("its end", lambda: not self.presences())
        self.assertEqual(self.quit("Mail"), "(not running: Mail)")
        self.assertEqual((self.desk.folder / "data/mervo-desk/running/Mail").read_bytes(), b"", "a stale lock is none")
        self.open("-a", "Mail")
        self.assertEqual(self.quit("Mail"), "OK quit: Mail")

    def test_it_outlives_the_group_that_started_it(self):
        shell = subprocess.Popen(["/bin/sh", "-c", f"{self.desk.contents}/Helpers/platform/open -a Mail; sleep 60"],
                                 env=self.desk.environment, start_new_session=True)
        desktop.wait("its start", self.presences)
        os.killpg(shell.pid, signal.SIGKILL)
        shell.wait()
        time.sleep(0.2)
        self.assertEqual(self.quit("Mail"), "OK quit: Mail")

    def test_a_folder_that_cannot_be_written(self):
        (self.desk.folder / "data").write_text("no folder")
        done = self.open("-a", "Mail")
        self.assertEqual(done.returncode, 1)
        self.assertIn("open: Mail cannot be started: ", done.stderr)

    # ---- the owner's own programs

    def program(self, name, kind):
        """A program that sleeps: an executable, a script, or a script that becomes another file of its name."""
        file = self.desk.folder / "bin" / name
        file.parent.mkdir(exist_ok=True)
        if kind == "executable":
            shutil.copy("/bin/sleep", file)
        elif kind == "script":
            file.write_text("#!/bin/sh\nread x\n")
        else:
            inner = self.desk.folder / "lib" / name
            inner.parent.mkdir(exist_ok=True)
            shutil.copy("/bin/sleep", inner)
            file.write_text(f"#!/bin/sh\nexec {inner} 60\n")
        file.chmod(0o755)
        self.desk.configure(f'[applications]\nMail = "{file}"\n')
        return self.start(file, *["60"] * (kind == "executable"), stdin=subprocess.PIPE)

    def test_the_owners_program_is_the_application(self):
        for kind in ("executable", "script", "wrapper"):
            with self.subTest(kind):
                process = self.program(f"post-{kind}", kind)
                desktop.wait("the program", lambda: "Mail" in self.names())
                self.assertRegex(self.quit("Mail"), "Mail cannot be asked to quit: it offers no action “quit”.*, and it has no window.*; "
                                                       f"close post-{kind} yourself.")
                self.assertIsNone(process.poll(), "never by a signal")
                self.desktop.end(process)
                self.assertEqual(self.quit("Mail"), "(not running: Mail)")

    def test_it_is_asked_through_the_bus(self):
        application = self.play(Quitting())
        self.desk.configure(f'[applications]\nMail = "{sys.executable}"\n')
        self.assertEqual(self.pumped(lambda: self.quit("Mail")), "OK quit: Mail")
        self.assertEqual(application.asked, ["quit"])

    def test_its_windows_are_closed(self):
        file = self.desk.folder / "post"
        shutil.copy("/usr/bin/xmessage", file)
        self.desk.configure(f'[applications]\nMail = "{file}"\n')
        process = self.start(file, "-title", "Post", "hello")
        tell = ["xprop", "-name", "Post", "-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID", str(process.pid)]
        desktop.wait("its window", lambda: subprocess.run(tell, capture_output=True).returncode == 0)
        other = self.start("/usr/bin/xmessage", "-title", "Other", "hello")
        desktop.wait("the answer", lambda: self.quit("Mail") == "OK quit: Mail")
        self.assertEqual(process.wait(10), 1)  # its way of saying that its window was closed
        self.assertIsNone(other.poll())

    def test_the_desktops_default(self):
        applications = pathlib.Path(self.desk.environment["XDG_DATA_HOME"]) / "applications"
        applications.mkdir(parents=True)
        process = self.program("post", "executable")
        for categories, names in (("Email;", ["Mail", "Finder", "System Events"]),
                                  ("Network;WebBrowser;", ["Finder", "System Events"])):
            (applications / "post.desktop").write_text(
                f"[Desktop Entry]\nType=Application\nName=Post\nExec={self.desk.folder}/bin/post %u\n"
                f"MimeType=x-scheme-handler/mailto;\nCategories={categories}\n")
            (applications / "mimeapps.list").write_text("[Default Applications]\nx-scheme-handler/mailto=post.desktop\n")
            self.desk.configure("")
            self.assertEqual(self.names(), names)
        self.assertIsNone(process.poll())

    def test_settings(self):
        self.desk.configure('[applications]\nMail = "no-such-program"\n')
        finding = self.desk.health()["desk.applications.mail"]
        self.assertEqual((finding["ok"], finding["detail"]), (False, "the program no-such-program is not found"))
        self.desk.configure('[applications]\nFinder = "x"\n')
        self.assertIn('Finder', self.desk.health()["desk.configuration"]["detail"])
        self.assertIn("Finder", self.open("-a", "Mail").stderr)

    def test_a_bus_and_a_display_that_never_answer(self):
        self.program("post", "executable")
        self.xdg_open("exit 1")
        silent = self.silent_display()
        self.desk.environment |= {"DISPLAY": silent,
                                  "DBUS_SESSION_BUS_ADDRESS": f"unix:abstract=/tmp/.X11-unix/X{silent[1:]}"}
        start = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor() as pool:
            reveal = pool.submit(self.desk.call, "finder.reveal", path=self.desk.folder)
            self.assertIn("cannot be asked to quit: the session bus does not answer within 10 s, and the X display does "
                          "not answer within 5 s; close post yourself.", self.quit("Mail"))
            self.assertIn("no file manager answers (the session bus does not answer within 10 s), and xdg-open ended "
                          "with status 1. (", reveal.result()["error"])
        self.assertLess(time.monotonic() - start, 20)

    # ---- the file manager

    def test_the_file_manager_shows_it(self):
        manager = self.play(doubles.FileManager())
        file = self.desk.folder / "a b#%é.txt"
        file.write_text("x")
        call = self.pumped(lambda: self.desk.call("finder.reveal", path=file))
        self.assertEqual(call["output"], f"OK revealed {file}")
        self.assertEqual(manager.revealed, [GLib.filename_to_uri(str(file), None)])
        call = self.pumped(lambda: self.desk.call("finder.reveal", path=self.desk.folder / "not there"))
        self.assertIn("wasn’t found. (-43)", call["error"])
        self.assertEqual(len(manager.revealed), 1)

    def xdg_open(self, script):
        folder = self.desk.folder / "programs"
        folder.mkdir(exist_ok=True)
        (folder / "xdg-open").write_text(f"#!/bin/sh\n{script}\n")
        (folder / "xdg-open").chmod(0o755)
        self.desk.environment["PATH"] = f"{folder}:{self.desk.environment['PATH']}"
        return folder

    def test_without_one_the_folder_is_opened(self):
        folder = self.xdg_open(f'echo "$1" > "{self.desk.folder}/opened"')
        self.desk.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
        self.assertEqual(self.desk.call("finder.reveal", path=folder)["output"], f"OK revealed {folder}")
        self.assertEqual((self.desk.folder / "opened").read_text(), f"{self.desk.folder}\n")
        self.xdg_open("echo no program. >&2; exit 3")
        self.assertIn("and xdg-open ended with status 3: no program. (",
                      self.desk.call("finder.reveal", path=folder)["error"])


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
