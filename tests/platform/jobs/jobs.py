"""A home of one's own with jobs in it. The programs are the bundle's; whatever they start is ended by its id."""

import os
import pathlib
import plistlib
import signal
import subprocess
import tempfile
import time
import unittest

from desktop import wait

BUNDLE = None  # the folder Contents
DOMAIN = "gui/%d" % os.getuid()


class JobCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="mervo-jobs-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        self.agents = self.home / "Library/LaunchAgents"
        self.agents.mkdir(parents=True)
        (self.home / "run").mkdir()
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"],
                            "XDG_RUNTIME_DIR": str(self.home / "run"), "XDG_CONFIG_HOME": str(self.home / "config"),
                            "RONDEL_RUN": "other", "SECRET": "x"}
        if "ASAN_OPTIONS" in os.environ:
            self.environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]
        self.addCleanup(self.end)

    def configure(self, text):
        file = self.home / "config/mervo-desk/desk.toml"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def program(self, name):
        return BUNDLE / "Helpers/platform" / name

    def ctl(self, *words, status=0):
        ran = subprocess.run([self.program("launchctl"), *map(str, words)], env=self.environment, text=True, timeout=60,
                             capture_output=True, check=False)
        self.assertEqual(ran.returncode, status, ran.stderr)
        return ran.stdout + ran.stderr

    def job(self, name, script="", **keys):
        """The property list of a job that runs a script of the shell in the home."""
        file = self.agents / f"org.example.{name}.plist"
        keys = {"Label": file.stem, "ProgramArguments": ["/bin/sh", "-c", script], "WorkingDirectory": str(self.home),
                "StandardOutPath": str(self.home / "out"), "StandardErrorPath": str(self.home / "out")} | keys
        file.write_bytes(plistlib.dumps(keys))
        return file

    def load(self, name, script="", **keys):
        file = self.job(name, script, **keys)
        self.ctl("bootstrap", DOMAIN, file)
        return file

    def lines(self, name="out"):
        file = self.home / name
        return file.read_text().splitlines() if file.exists() else []

    def wait_lines(self, count, name="out"):
        return wait(f"{count} lines in {name}", lambda: len(self.lines(name)) >= count and self.lines(name))

    def runners(self):
        """The numbers of the runners of this home that live."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.readlink(process / "exe") == str(self.program("launchd")) \
                        and f"HOME={self.home}".encode() in (process / "environ").read_bytes().split(b"\0"):
                    found.append(int(process.name))
            except OSError:
                continue
        return found

    def runner(self):
        return wait("one runner", lambda: len(self.runners()) == 1 and self.runners())[0]

    def kill(self, process, number=signal.SIGKILL):
        os.kill(process, number)
        wait("the end of a runner", lambda: process not in self.runners())

    def start(self, *words):
        ran = subprocess.run([self.program("launchd"), *words], env=self.environment, timeout=60, check=True)
        return ran.returncode

    def end(self):
        for link in (self.agents / ".launchd/loaded").glob("*"):
            link.unlink()
        for process in self.runners():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                continue
        for record in (self.agents / ".launchd/runs").glob("*"):
            words = record.read_text().split()
            if words[:1] == ["running"]:
                try:
                    os.killpg(int(words[1]), signal.SIGKILL)
                except (ProcessLookupError, PermissionError):
                    continue


def own_memory(process):
    """In KiB, without what it shares with others; 0 where a sanitizer holds freed memory back."""
    if os.environ.get("MERVO_SANITIZED"):
        return 0
    text = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
    return int(next(line for line in text.splitlines() if line.startswith("Anonymous:")).split()[1])


def wake_ups(process):
    text = pathlib.Path(f"/proc/{process}/status").read_text()
    return sum(int(line.split()[1]) for line in text.splitlines() if "ctxt_switches" in line)


def settled(process):
    """How often it has woken up, once it sleeps."""
    before = -1
    while before != (before := wake_ups(process)):
        time.sleep(0.5)
    return before
