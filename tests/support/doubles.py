"""Services of a desktop on the session bus, played by the test. For /usr/bin/python3, which knows gi."""

import os
import signal
import time

from gi.repository import Gio, GLib

from desktop import wait

CONTEXT = GLib.MainContext.default()


def pump():
    while CONTEXT.iteration(False):
        pass


def wait_pumping(what, test):
    """Like wait, while the services answer."""
    def look():
        pump()
        return test()

    return wait(what, look)


def bus():
    return Gio.DBusConnection.new_for_address_sync(
        os.environ["DBUS_SESSION_BUS_ADDRESS"],
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)


class Service:
    """One object under a well-known name, on a connection of its own. A subclass has `interface` (XML), `name`, `path`,
    and a method for each of the interface's that takes its sender and arguments and gives a GLib.Variant or None."""

    def __init__(self):
        self.bus = bus()
        self.bus.set_exit_on_close(False)
        info = Gio.DBusNodeInfo.new_for_xml("<node>%s</node>" % self.interface).interfaces[0]
        self.bus.register_object(self.path, info, self._call, lambda *words: self.property(words[4]), None)
        wait_pumping("the name " + self.name, self._owned)

    def _owned(self):
        """Takes the name. A real service that the bus has started meanwhile for a program of the test must give way."""
        if self._bus("RequestName", GLib.Variant("(su)", (self.name, 4))) in ((1,), (4,)):
            return True
        try:
            os.kill(self._bus("GetConnectionUnixProcessID", GLib.Variant("(s)", (self.name,)))[0], signal.SIGTERM)
        except (GLib.Error, ProcessLookupError):
            pass  # it went by itself
        return False

    def _bus(self, method, arguments):
        return self.ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments)

    def _call(self, bus, sender, path, interface, method, arguments, invocation):
        answer = getattr(self, method)(sender, *arguments.unpack())
        invocation.return_value(answer)

    def property(self, name):
        return None

    def emit(self, signal, arguments):
        self.bus.emit_signal(None, self.path, self.name, signal, arguments)
        self.bus.flush_sync()

    def ask(self, name, path, interface, method, arguments=None):
        """The unpacked answer of another service, while ours answers."""
        answers = []
        self.bus.call(name, path, interface, method, arguments, None, 0, 10_000, None,
                      lambda bus, result: answers.append(bus.call_finish(result)))
        return wait_pumping(method, lambda: answers)[0].unpack()

    def close(self):
        """As if its program had died."""
        if not self.bus.is_closed():
            self.bus.close_sync()


class Watcher(Service):
    """A tray: org.kde.StatusNotifierWatcher and its host in one."""

    name, path = "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher"
    interface = """<interface name="org.kde.StatusNotifierWatcher">
        <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
        <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
        <property name="ProtocolVersion" type="i" access="read"/>
        <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
        <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
        <signal name="StatusNotifierHostRegistered"/></interface>"""
    item_path, item_interface = "/StatusNotifierItem", "org.kde.StatusNotifierItem"

    def __init__(self):
        self.items = []
        super().__init__()

    def RegisterStatusNotifierItem(self, sender, item):
        self.items.append(sender)

    def RegisterStatusNotifierHost(self, sender, host):
        pass

    def property(self, name):
        return {"IsStatusNotifierHostRegistered": GLib.Variant("b", True), "ProtocolVersion": GLib.Variant("i", 0),
                "RegisteredStatusNotifierItems": GLib.Variant("as", self.items)}[name]

    def look(self):
        """What the icon says of itself."""
        return self.ask(self.items[-1], self.item_path, "org.freedesktop.DBus.Properties", "GetAll",
                        GLib.Variant("(s)", (self.item_interface,)))[0]

    def pixels(self, side):
        """The icon's drawing of this size: rows of (alpha, red, green, blue)."""
        for width, height, data in self.look()["IconPixmap"]:
            if width == side:
                bytes_ = bytes(data)
                quads = [tuple(bytes_[at:at + 4]) for at in range(0, len(bytes_), 4)]
                return [quads[row * width:(row + 1) * width] for row in range(height)]
        return None

    def activate(self):
        self.ask(self.items[-1], self.item_path, self.item_interface, "Activate", GLib.Variant("(ii)", (10, 10)))


class Panel(Watcher):
    """A tray that reads the whole icon whenever that says that it has changed, as panels do."""

    def __init__(self):
        self.frames = 0
        super().__init__()
        self.bus.signal_subscribe(None, self.item_interface, "NewIcon", None, None, 0, self._changed)

    def _changed(self, bus, sender, path, *_):
        self.frames += 1
        bus.call(sender, path, "org.freedesktop.DBus.Properties", "GetAll", GLib.Variant("(s)", (self.item_interface,)),
                 None, 0, -1, None, lambda bus, answer: bus.call_finish(answer))

    def watch(self, seconds):
        """The frames of so many seconds."""
        before, end = self.frames, time.monotonic() + seconds
        while time.monotonic() < end:
            GLib.timeout_add(50, lambda: False)  # so that waiting ends
            CONTEXT.iteration(True)
        return self.frames - before


class Notifications(Service):
    name, path = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
    interface = """<interface name="org.freedesktop.Notifications">
        <method name="GetCapabilities"><arg type="as" direction="out"/></method>
        <method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
            <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
            <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/></method>
        <method name="CloseNotification"><arg type="u" direction="in"/></method></interface>"""

    def __init__(self, *capabilities):
        self.capabilities = list(capabilities)
        self.shown, self.closed, self.last = {}, [], 40
        super().__init__()

    def GetCapabilities(self, sender):
        return GLib.Variant("(as)", (self.capabilities,))

    def Notify(self, sender, application, replaced, icon, title, body, actions, hints, timeout):
        number = replaced
        if not replaced:
            self.last = number = self.last + 1
        self.shown[number] = {"title": title, "body": body, "actions": actions, "hints": hints, "replaced": replaced}
        return GLib.Variant("(u)", (number,))

    def CloseNotification(self, sender, number):
        self.closed.append(number)
        self.shown.pop(number, None)

    def act(self, number, action):
        self.emit("ActionInvoked", GLib.Variant("(us)", (number, action)))


class FileManager(Service):
    name, path = "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1"
    interface = """<interface name="org.freedesktop.FileManager1"><method name="ShowItems">
        <arg type="as" direction="in"/><arg type="s" direction="in"/></method></interface>"""

    def __init__(self):
        self.revealed = []
        super().__init__()

    def ShowItems(self, sender, files, startup):
        self.revealed += files


class Portal(Service):
    name, path = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
    interface = """<interface name="org.freedesktop.portal.Settings"><method name="ReadAll">
        <arg type="as" direction="in"/><arg type="a{sa{sv}}" direction="out"/></method></interface>"""

    def ReadAll(self, sender, groups):
        return GLib.Variant("(a{sa{sv}})", ({"org.freedesktop.appearance": {"color-scheme": GLib.Variant("u", 1)}},))

    def change(self, group, key, value):
        self.bus.emit_signal(None, self.path, "org.freedesktop.portal.Settings", "SettingChanged",
                             GLib.Variant("(ssv)", (group, key, value)))
        self.bus.flush_sync()
