"""Automations in a home of the test's own, run by the real program over clients that write down how they were called."""

import json
import os
import pathlib
import re
import signal
import subprocess
import unittest

import desk
import desktop

CLIENTS = ("claude", "codex", "agy", "grok")
CLIENT = r"""#!/bin/bash
to=$HOME/record
printf '%s\0' "${0##*/}" "$@" > "$to/arguments"
[ -t 0 ] || cat > "$to/input"
env -0 > "$to/environment"
pwd > "$to/folder"
echo $$ > "$to/process"
[ ! -f "$HOME/work" ] || . "$HOME/work"
"""
TIME = r"\[?\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\]?"


class AutomationTest(unittest.TestCase):
    folder = "mervo"  # of the home; in a long one no tmux socket can be made
    options = {"accounts": ()}  # of the desk

    def setUp(self):
        self.desk = desk.Desk(**self.options, environment={"SHELL": "/bin/bash"})
        self.addCleanup(self.desk.close)
        self.desk.environment["KEPT"] = "a b\n'c'"
        self.move_home(self.desk.folder / self.folder)
        self.record = self.desk.folder / "record"
        self.record.mkdir()
        (self.desk.folder / "bin").mkdir()
        for name in CLIENTS:
            client = self.desk.folder / "bin" / name
            client.write_text(CLIENT)
            client.chmod(0o755)
        self.running = []
        self.addCleanup(self.end_all)

    def move_home(self, home):
        self.home = home
        self.desk.environment["MERVO_HOME"] = str(home)

    def end_all(self):
        for process in self.running:
            process.kill()
            process.communicate()
        self.tmux("kill-server")

    def tmux(self, *words):
        return subprocess.run(["tmux", "-S", self.home / ".runtime/run/rondel.sock", *words], capture_output=True,
                              text=True).stdout

    def add(self, name="a", prompt=None, **loop):
        folder = self.home / "automations" / name
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "loop.json").write_text(json.dumps({"name": name} | loop))
        if prompt is not None:
            (folder / "AGENT.md").write_bytes(prompt if isinstance(prompt, bytes) else prompt.encode())
        return folder

    def script(self, command, name="a", **loop):
        return self.add(name, kind="script", command=command, **loop)

    def work(self, lines):
        """What a client does when it has written down how it was called."""
        (self.desk.folder / "work").write_text(lines)

    def start(self, *words, **options):
        process = subprocess.Popen([self.desk.contents / "Helpers/mervo", "auto-run", *(words or ("a",))],
                                   env=self.desk.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                   **options)
        self.running.append(process)
        return process

    def run_once(self, *words, status=0, error="", **options):
        process = self.start(*words, **options)
        out, err = process.communicate(timeout=60)
        self.assertEqual((process.returncode, out, err), (status, "", error))

    def file(self, suffix, name="a"):
        return self.home / ".runtime" / {".log": "logs", ".log.1": "logs", ".json": "state"}.get(suffix, "run") / (name + suffix)

    def log(self, name="a"):
        """The lines of the log, with what differs from run to run taken out."""
        text = self.file(".log", name).read_text() if self.file(".log", name).exists() else ""
        return re.sub(TIME, "T", text).replace(str(self.home), "HOME").splitlines()

    def state(self, name="a"):
        return json.loads(self.file(".json", name).read_text())

    def ended(self, name="a"):
        """The exit code of the last run; nothing of it is left."""
        self.assertFalse(self.file(".lock.d", name).exists())
        self.assertEqual(self.tmux("list-sessions"), "")
        return self.state(name)["lastExit"]

    def told(self, name):
        """What a client has written down."""
        def content():
            file = self.record / name
            return file.exists() and (file.read_bytes() or name == "input" and b" ")
        return desktop.wait(name, content)

    def is_gone(self, process):
        try:
            os.kill(int(process), 0)
            with open(f"/proc/{int(process)}/stat") as status:
                return status.read().rsplit(")", 1)[1].split()[0] == "Z"
        except (ProcessLookupError, FileNotFoundError):
            return True

    def assert_gone(self, process):
        desktop.wait(f"the end of {process}", lambda: self.is_gone(process))


def kill(process):
    process.send_signal(signal.SIGKILL)
    process.wait()
