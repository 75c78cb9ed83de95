"""A display, a session bus and a window manager of one's own, and the programs on them as a screen reader sees them.

For /usr/bin/python3, which knows pyatspi. Everything is ended by its process id.
"""

import os
import pathlib
import socket
import subprocess
import tempfile
import time
import unittest
import warnings

PATIENCE = 60  # seconds until something that must come has come, on a machine with much to do


def wait(what, test):
    """What the test gives once that is true; an AssertionError that names what did not come."""
    end = time.monotonic() + PATIENCE
    while True:
        found = test()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError("did not come: %s" % what)
        time.sleep(0.05)


class Desktop:
    def __init__(self, size="1280x900"):
        self._folder = tempfile.TemporaryDirectory(prefix="mervo-display-", ignore_cleanup_errors=True)
        self.root = pathlib.Path(self._folder.name)
        self._running = []
        runtime = self.root / "run"
        runtime.mkdir(mode=0o700)
        for name in ("DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS", "XAUTHORITY", "WAYLAND_DISPLAY"):
            os.environ.pop(name, None)
        os.environ.update(
            HOME=str(self.root / "home"), XDG_RUNTIME_DIR=str(runtime), XDG_CONFIG_HOME=str(self.root / "config"),
            XDG_CACHE_HOME=str(self.root / "cache"), XDG_DATA_HOME=str(self.root / "data"), LANG="C.UTF-8",
            QT_QPA_PLATFORM="xcb", QT_QUICK_BACKEND="software", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", NO_AT_BRIDGE="1")
        (self.root / "home").mkdir()
        settings = self.root / "config/mervo-desk/desk.toml"
        settings.parent.mkdir(parents=True)
        settings.write_text('[jobs]\nrunner = "none"\n')  # a runner would outlive the desktop
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self._told("dbus-daemon", "--session", "--nofork", "--print-address")
        os.environ["DISPLAY"] = self.display(size)

    def display(self, size="1280x900"):
        """The name of one more display, with a window manager."""
        name = ":" + self._told("Xvfb", "-displayfd", "1", "-screen", "0", size + "x24", "-nolisten", "tcp",
                                "-noreset")  # by the first client that leaves, before the window manager has come
        self.start(["openbox", "--sm-disable"], env=dict(os.environ, DISPLAY=name), stderr=subprocess.DEVNULL)
        return name

    def _told(self, *words):
        """Starts a server and gives the first line that it prints."""
        return self.start(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.readline().decode().strip()

    def start(self, words, **how):
        process = subprocess.Popen([str(word) for word in words], **how)
        self._running.append(process)
        return process

    def end(self, process):
        if process not in self._running:
            return  # somebody else was quicker
        self._running.remove(process)
        process.terminate()
        try:
            process.communicate(timeout=5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()

    def close(self):
        while self._running:
            self.end(self._running[-1])
        self._folder.cleanup()

    def application(self, process, name):
        """The accessible tree of a program that was started here."""
        import pyatspi  # asks for the bus when it is imported

        def found():
            if process.poll() is not None:
                raise AssertionError("%s ended with %s" % (name, process.returncode))
            desk = pyatspi.Registry.getDesktop(0)
            for number in range(desk.childCount):
                child = desk.getChildAtIndex(number)
                if child is not None and child.name == name and child.get_process_id() == process.pid:
                    return child if child.childCount else None
            return None

        return wait(name + " on the accessibility bus", found)


class DesktopTest(unittest.TestCase):
    """One desktop for all: the library of the accessibility bus stays with the first that it has met."""

    desktop = None

    @classmethod
    def setUpClass(cls):
        if DesktopTest.desktop is None:
            DesktopTest.desktop = Desktop()
            unittest.addModuleCleanup(DesktopTest.desktop.close)
        warnings.simplefilter("ignore", DeprecationWarning)  # of pyatspi's own

    def start(self, *words, **how):
        process = self.desktop.start(words, **how)
        self.addCleanup(self.desktop.end, process)
        return process

    def play(self, service):
        """A service of this test, one of the doubles."""
        self.addCleanup(service.close)
        return service

    def silent_display(self):
        """The name of a display that takes connections and never answers; the name of its socket is abstract."""
        number = 100_000 + os.getpid()
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(f"\0/tmp/.X11-unix/X{number}")
        listener.listen()
        return f":{number}"


def walk(node):
    """A node and all below it, in order. What vanishes meanwhile is left out."""
    try:
        children = [node.getChildAtIndex(number) for number in range(node.childCount)]
    except Exception:  # the bus says so in many ways
        return
    yield node
    for child in children:
        if child is not None:
            yield from walk(child)


def is_shown(node):
    """Whether it can be seen now. What is scrolled out of sight cannot, and reads as if it were hidden."""
    import pyatspi

    try:
        return node.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:
        return False


def look(node, role=None, name=None, anywhere=False):
    """The nodes that have this role and this name (a text, or a test of it), and are shown unless `anywhere`."""
    matches = name if callable(name) else (lambda text: name is None or text == name)

    def is_meant(one):
        try:
            return (role is None or one.getRoleName() == role) and matches(one.name)
        except Exception:  # it vanished since the walk came by
            return False

    return [one for one in walk(node) if is_meant(one) and (anywhere or is_shown(one))]


def find(node, role, name, anywhere=False):
    return wait("%s %s" % (role, name), lambda: look(node, role, name, anywhere))[0]


def press(node):
    actions = node.queryAction()
    names = [actions.getName(number) for number in range(actions.nActions)]
    assert "Press" in names, (node.name, names)
    actions.doAction(names.index("Press"))


def middle(node):
    """Where the mouse has to stand to click it."""
    box = node.queryComponent().getExtents(0)
    return str(box.x + box.width // 2), str(box.y + box.height // 2)


def click(place, times=1, apart=180):
    """Clicks with so many milliseconds between them; 180 is as fast as a hand clicks twice."""
    subprocess.run(["xdotool", "mousemove", *place, "click", "--repeat", str(times), "--delay", str(apart), "1"], check=True)


def hold(key, seconds=1.5):
    """Down for so long that it repeats itself."""
    subprocess.run(["xdotool", "keydown", key, "sleep", str(seconds), "keyup", key], check=True)


def keys(*names):
    subprocess.run(["xdotool", "key", "--clearmodifiers", *names], check=True)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "2", text], check=True)


def focused(application):
    """Role and name of what has the keyboard: the innermost one."""
    import pyatspi

    found = None
    for node in walk(application):
        if node.getState().contains(pyatspi.STATE_FOCUSED):
            found = node.getRoleName(), node.name
    return found
