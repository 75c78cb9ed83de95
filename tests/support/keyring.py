"""A Secret Service on a bus of our own: `with Keyring(folder) as keyring`, then use keyring.environment."""

import os
import pathlib
import signal
import subprocess


class Keyring:
    def __init__(self, folder, locked=False):
        self.folder, self.locked = pathlib.Path(folder), locked
        for part in ("run", "data"):
            (self.folder / part).mkdir(parents=True, mode=0o700)

    def __enter__(self):
        read, write = os.pipe()
        self.bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", f"--print-address={write}"],
                                    pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as stream:
            address = stream.readline().strip()
        self.environment = {"DBUS_SESSION_BUS_ADDRESS": address, "XDG_RUNTIME_DIR": str(self.folder / "run")}
        self._start("first")
        if self.locked:  # a keyring that exists, and a password that does not open it
            self._start("another")
        return self

    def _start(self, password):
        env = os.environ | self.environment | {"XDG_DATA_HOME": str(self.folder / "data"), "HOME": str(self.folder)}
        if getattr(self, "daemon", None):
            os.kill(self.daemon, signal.SIGTERM)
            self._gdbus("wait", "--session", "--timeout", "1", "org.freedesktop.secrets", check=False)
        subprocess.run(["gnome-keyring-daemon", "--replace", "--unlock", "--components=secrets"], input=password.encode(),
                       env=env, check=True, capture_output=True)
        self._gdbus("wait", "--session", "--timeout", "20", "org.freedesktop.secrets")
        answer = self._gdbus("call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
                             "/org/freedesktop/DBus", "--method",
                             "org.freedesktop.DBus.GetConnectionUnixProcessID", "org.freedesktop.secrets")
        self.daemon = int(answer.split()[1].strip(",)"))

    def _gdbus(self, *words, check=True):
        return subprocess.run(["gdbus", *words], env=os.environ | self.environment, check=check, capture_output=True,
                              text=True).stdout

    def __exit__(self, *_):
        os.kill(self.daemon, signal.SIGTERM)
        self.bus.terminate()
        self.bus.wait(10)
