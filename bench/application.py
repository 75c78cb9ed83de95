"""What the cockpit costs as a program that runs for months, beside a bare tray icon that is measured in the same rounds,
and beside keepassxc where it is installed: a packaged program of Qt's that stays in the tray as well.

`/usr/bin/python3 bench/application.py <mervo-cockpit> <bare tray> <rounds> <seconds of idleness>` prints the samples as
JSON: nanoseconds, KiB, and wake-ups a second. Needs no display: it makes one, with a session bus and a tray.
"""

import ctypes
import json
import os
import pathlib
import shutil
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/support"))

import desktop  # noqa: E402
from gi.repository import GLib  # noqa: E402
from doubles import Panel, Watcher, pump, wait_pumping  # noqa: E402

INSIDE_THE_POPOVER = (1160, 400)


class Screen:
    """The colour of one point of the screen, asked for in well under a millisecond."""

    def __init__(self):
        self.x11 = ctypes.CDLL("libX11.so.6")
        for name in ("XOpenDisplay", "XGetImage"):
            getattr(self.x11, name).restype = ctypes.c_void_p
        self.x11.XGetPixel.restype = ctypes.c_ulong
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def colour(self, x, y):
        image = ctypes.c_void_p(self.x11.XGetImage(self.display, self.root, x, y, 1, 1, ctypes.c_ulong(0xFFFFFFFF), 2))
        colour = self.x11.XGetPixel(image, 0, 0)
        self.x11.XFree(image)
        return colour


def pss(process, kind="Pss"):
    text = pathlib.Path("/proc/%d/smaps_rollup" % process.pid).read_text()
    return next(int(line.split()[1]) for line in text.splitlines() if line.startswith(kind + ":"))


def sleeps(process):
    """How often each thread of the program went to sleep until now."""
    texts = {file.parent.name: file.read_text() for file in pathlib.Path("/proc/%d/task" % process.pid).glob("*/status")}
    return {thread: int(line.split()[1])
            for thread, text in texts.items() for line in text.splitlines() if line.startswith("voluntary")}


def worked(process):
    """Nanoseconds of processor time that each thread took until now."""
    files = pathlib.Path("/proc/%d/task" % process.pid).glob("*/schedstat")
    return {file.parent.name: int(file.read_text().split()[0]) for file in files}


def grown(before, after):
    return sum(count - before.get(thread, 0) for thread, count in after.items())


def settle_keepassxc():
    """Has it start into the tray, ask nothing and reach for nothing."""
    file = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "keepassxc/keepassxc.ini"
    file.parent.mkdir(parents=True)
    file.write_text("[General]\nUpdateCheckMessageShown=true\n[GUI]\nCheckForUpdates=false\nShowTrayIcon=true\n"
                    "MinimizeOnStartup=true\nMinimizeToTray=true\n", encoding="utf-8")


def until(test):
    """Nanoseconds until it is true; asks without a pause."""
    begun = time.perf_counter_ns()
    while not test():
        if time.perf_counter_ns() - begun > 20e9:
            raise TimeoutError("nothing came in 20 s")
        pump()
    return time.perf_counter_ns() - begun


class Bench:
    def __init__(self, screen, display):
        self.screen, self.display, self.samples = screen, display, {}

    def take(self, name, value):
        self.samples.setdefault(name, []).append(value)

    def start(self, name, program, environment):
        tray = Watcher()
        begun = time.perf_counter_ns()
        process = self.display.start([program], env=environment)
        until(lambda: tray.items)
        self.take(name + " icon", time.perf_counter_ns() - begun)
        wait_pumping("a picture", lambda: tray.look()["IconPixmap"])
        return tray, process

    def round(self, programs, folder):
        environment = dict(os.environ, MERVO_HOME=folder + "/mervo")
        for name, program in programs.items():
            tray, process = self.start(name, program, environment)
            time.sleep(1)
            self.take(name, pss(process))
            if name == "cockpit":
                self.open_and_close(tray, process)
            self.display.end(process)
            tray.close()

    def open_and_close(self, tray, process):
        ground = self.screen.colour(*INSIDE_THE_POPOVER)
        for name in ("first opening", "opening"):
            tray.bus.call(tray.items[-1], tray.item_path, tray.item_interface, "Activate",
                          GLib.Variant("(ii)", (10, 10)), None, 0, 10_000, None, None)
            self.take(name, until(lambda: self.screen.colour(*INSIDE_THE_POPOVER) != ground))
            time.sleep(0.7)
            self.take("open", pss(process))
            tray.activate()
            until(lambda: self.screen.colour(*INSIDE_THE_POPOVER) == ground)
        time.sleep(0.5)
        self.take("closed again", pss(process))

    def idle(self, programs, folder, seconds):
        tray = Watcher()
        environment = dict(os.environ, MERVO_HOME=folder + "/mervo")
        processes = {}
        for number, (name, program) in enumerate(programs.items(), 1):
            processes[name] = self.display.start([program], env=environment)
            wait_pumping("an icon", lambda: len(tray.items) == number)
            if name == "cockpit":  # one that has been open has more that could wake up
                for _ in range(2):
                    tray.activate()
                    time.sleep(2)
        time.sleep(3)
        pump()
        before = {name: (sleeps(process), worked(process)) for name, process in processes.items()}
        time.sleep(seconds)
        for name, process in processes.items():
            self.take(name + " wake-ups", grown(before[name][0], sleeps(process)) / seconds)
            self.take(name + " work", grown(before[name][1], worked(process)))
            self.display.end(process)
        tray.close()


    def moving(self, programs, folder, seconds):
        """Ten actions wait, so the icon moves, and a panel reads every frame."""
        home = pathlib.Path(folder, "moving")
        (home / "pending").mkdir(parents=True)
        for number in range(10):
            action = {"id": "AAAA%04d" % number, "tool": "mail.delete", "args": {"from": "shop"}, "summary": "Delete",
                      "createdAt": "2026-01-01T10:00:00Z"}
            (home / "pending" / (action["id"] + ".json")).write_text(json.dumps(action), encoding="utf-8")
        for name in ("cockpit", "bare"):
            panel = Panel()
            process = self.display.start([programs[name], "--moving"][:1 if name == "cockpit" else 2],
                                         env=dict(os.environ, MERVO_HOME=str(home)))
            wait_pumping("an icon", lambda: panel.items)
            panel.watch(5)
            said = tempfile.TemporaryFile()
            monitor = self.display.start(["dbus-monitor", "--session", "--binary"], stdout=said)
            before = worked(process), pss(process, "Private_Dirty")
            frames = panel.watch(seconds)
            self.take(name + " moving", grown(before[0], worked(process)) / seconds)
            self.take(name + " growth", pss(process, "Private_Dirty") - before[1])
            self.display.end(monitor)
            self.take(name + " bytes", os.fstat(said.fileno()).st_size / seconds / 1000)
            self.take(name + " frames", frames / seconds)
            self.display.end(process)
            panel.close()


def main():
    cockpit, bare, rounds, seconds = sys.argv[1], sys.argv[2], int(sys.argv[3]), float(sys.argv[4])
    display = desktop.Desktop()
    programs = {"cockpit": cockpit, "bare": bare}
    if shutil.which("keepassxc"):
        settle_keepassxc()
        programs["keepassxc"] = "keepassxc"
    del os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
    try:
        with tempfile.TemporaryDirectory(prefix="mervo-bench-") as folder:
            bench = Bench(Screen(), display)
            bench.round(programs, folder)
            bench.samples.clear()  # the first round finds nothing in memory
            for _ in range(rounds):
                bench.round(programs, folder)
            for number in range(3):
                bench.moving(programs, folder + "/%d" % number, seconds / 10)
            bench.idle(programs, folder, seconds)
        print(json.dumps(bench.samples))
    finally:
        display.close()


if __name__ == "__main__":
    main()
