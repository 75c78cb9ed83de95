"""A Secret Service of our own on a bus of our own: the demonstration never touches the owner's keyring."""

import os
import signal
import subprocess
import time


class Keyring:
    def __init__(self, folder, environment):
        self.folder, self.daemon = folder, None
        self.folder.mkdir(mode=0o700)
        self.environment = environment | {"XDG_RUNTIME_DIR": str(folder)}

    def __enter__(self):
        read, write = os.pipe()
        self.bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", f"--print-address={write}"], pass_fds=[write],
                                    env=self.environment, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as stream:
            address = stream.readline().strip()
        self.variables = {"DBUS_SESSION_BUS_ADDRESS": address, "XDG_RUNTIME_DIR": str(self.folder)}
        self.daemon = subprocess.Popen(["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets"],
                                       env=self.environment | self.variables, stdin=subprocess.PIPE,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.daemon.stdin.write(b"demonstration")
        self.daemon.stdin.close()
        return self

    def __exit__(self, *_):
        self.daemon.send_signal(signal.SIGTERM)
        self.daemon.wait(10)
        self.bus.terminate()
        self.bus.wait(10)

    def wait(self, attempt):
        """Tries until the service answers."""
        deadline = time.monotonic() + 20
        while not (done := attempt()) and time.monotonic() < deadline:
            time.sleep(0.1)
        return done
