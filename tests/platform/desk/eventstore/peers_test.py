"""The store and the programs that share its folders: `peers_test.py <bundle>`.

khal, todoman and vdirsyncer read what the store wrote, and the store reads what they wrote, after every kind of change.
"""

import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import threading
import time
import unittest

BUNDLE = pathlib.Path()  # from the command line
ZONE = "Europe/Paris"
NINE = 1767600000  # 2026-01-05 09:00 in Paris
DAY = 86400

KHAL = """[calendars]
[[office]]
path = {0}/cal/office
[locale]
timeformat = %H:%M
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
datetimeformat = %Y-%m-%d %H:%M
longdatetimeformat = %Y-%m-%d %H:%M
local_timezone = Europe/Paris
default_timezone = Europe/Paris
[sqlite]
path = {0}/cache/khal.db
[default]
default_calendar = office
"""
TODOMAN = """path = "{0}/cal/*"
date_format = "%Y-%m-%d"
time_format = "%H:%M"
default_list = "office"
cache_path = "{0}/cache/todo.db"
"""
VDIRSYNCER = """[general]
status_path = "{0}/status/"
[pair both]
a = "ours"
b = "theirs"
collections = ["from a", "from b"]
[storage ours]
type = "filesystem"
path = "{0}/cal/"
fileext = ".ics"
[storage theirs]
type = "filesystem"
path = "{0}/copy/"
fileext = ".ics"
"""
DAILY = """BEGIN:VCALENDAR\r
VERSION:2.0\r
PRODID:-//x//y\r
BEGIN:VEVENT\r
UID:daily\r
DTSTAMP:20200101T000000Z\r
DTSTART:20260201T080000Z\r
DTEND:20260201T083000Z\r
SUMMARY:Daily\r
RRULE:FREQ=DAILY;COUNT=3\r
X-KEEP;X-A="b;c":d\\,e\r
END:VEVENT\r
END:VCALENDAR\r
"""


class Peers(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = pathlib.Path(home.name)
        for name in ("cal/office", "copy", "cache", "config/mervo-desk"):
            (self.home / name).mkdir(parents=True)
        for name, text in (("khal.conf", KHAL), ("todoman.py", TODOMAN), ("vdirsyncer.conf", VDIRSYNCER)):
            (self.home / name).write_text(text.format(self.home))
        (self.home / "config/mervo-desk/desk.toml").write_text(
            f'[calendars]\npath = "{self.home}/cal"\n[reminders]\npath = "{self.home}/cal"\n')
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", "TZ": ZONE, "HOME": str(self.home),
                            "XDG_CONFIG_HOME": str(self.home / "config"), "XDG_CACHE_HOME": str(self.home / "cache"),
                            "XDG_DATA_HOME": str(self.home / "data")}

    def run_program(self, *words):
        done = subprocess.run([str(word) for word in words], env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        return done.stdout

    def store(self, *words):
        return self.run_program(BUNDLE / "Tests/event-probe", *words)

    def our_events(self):
        return sorted((title, int(start), int(end)) for _, title, start, end, _, _ in
                      (line.split("|") for line in self.store("events", NINE - DAY, NINE + 60 * DAY).splitlines()))

    def their_events(self):
        listed = self.run_program("khal", "-c", self.home / "khal.conf", "list", "--format",
                                  "{title}|{start-long}|{end-long}", "--day-format", "", "2026-01-04", "61d")
        rows = (line.split("|") for line in listed.splitlines() if line)
        return sorted((title, self.moment(start), self.moment(end)) for title, start, end in rows)

    @staticmethod
    def moment(text):
        return int(time.mktime(time.strptime(text, "%Y-%m-%d %H:%M")))

    def our_tasks(self):
        return sorted((title, state, due) for _, title, state, due in
                      (line.split("|") for line in self.store("reminders").splitlines()))

    def their_tasks(self):
        listed = self.run_program("todoman", "--config", self.home / "todoman.py", "--porcelain", "list", "--status",
                                  "ANY")
        return sorted((task["summary"], "done" if task["completed"] else "todo",
                       time.strftime("%Y-%m-%d", time.localtime(task["due"])) if task["due"] else "")
                      for task in json.loads(listed))

    def agree(self):
        self.assertEqual(self.our_events(), self.their_events())
        self.assertEqual(self.our_tasks(), self.their_tasks())

    def test_events_both_ways(self):
        self.store("add-event", "Tea, with; Zoë", NINE)
        self.agree()
        self.assertEqual(self.our_events(), [("Tea, with; Zoë", NINE, NINE + 3600)])
        self.run_program("khal", "-c", self.home / "khal.conf", "new", "-a", "office", "2026-01-06", "14:00", "15:00",
                         "Theirs")
        self.agree()
        self.assertEqual(len(self.our_events()), 2)
        (self.home / "cal/office/daily.ics").write_bytes(DAILY.encode())
        for change in (("retitle", "Theirs", "Ours now"), ("move", "Ours now", 3600), ("move", "Daily", 7200),
                       ("remove", "Daily"), ("remove", "Tea, with; Zoë")):
            self.store(*change)
            self.agree()
        self.assertEqual([title for title, *_ in self.our_events()], ["Daily", "Daily", "Ours now"])
        self.assertIn('X-KEEP;X-A="b;c":d\\,e\r\n', (self.home / "cal/office/daily.ics").read_bytes().decode())

    def test_reminders_both_ways(self):
        self.store("add-task", "Milk", 2026, 12, 24)
        self.agree()
        self.run_program("todoman", "--config", self.home / "todoman.py", "new", "-l", "office", "-d", "2026-12-25",
                         "Bread")
        self.agree()
        self.store("complete", "Bread")
        self.agree()
        self.run_program("todoman", "--config", self.home / "todoman.py", "done", "1", "2")
        self.agree()
        self.assertEqual([state for _, state, _ in self.our_tasks()], ["done", "done"])
        self.store("clear")
        self.assertEqual(self.our_tasks(), [])
        self.agree()

    def sync(self):
        command = ["vdirsyncer", "-c", str(self.home / "vdirsyncer.conf")]
        subprocess.run([*command, "discover"], env=self.environment, input="y\n" * 20, text=True, check=True,
                       capture_output=True, timeout=60)
        self.run_program(*command, "sync")

    def copies(self):
        files = {}
        for side in ("cal", "copy"):
            root = self.home / side
            files[side] = {str(path.relative_to(root)): path.read_text() for path in sorted(root.rglob("*.ics"))}
        return files["cal"], files["copy"]

    def test_what_is_synchronised(self):
        self.store("add-event", "Ours", NINE)
        (self.home / "copy/office").mkdir()
        (self.home / "copy/office/daily.ics").write_bytes(DAILY.encode())
        for change in (None, ("retitle", "Daily", "Changed"), ("remove", "Ours")):
            if change:
                self.store(*change)
            self.sync()
            ours, theirs = self.copies()
            self.assertEqual(ours, theirs)
        self.assertEqual(list(ours), ["office/daily.ics"])
        self.agree()

    def test_writers_at_once_lose_nothing(self):
        """Two of our processes and another program add to one collection, while it is synchronised."""
        def add(name):
            for number in range(8):
                self.store("add-event", f"{name}{number}", NINE + number)

        def theirs():
            for number in range(8):
                (self.home / f"copy/office/t{number}.ics").write_text(
                    DAILY.replace("daily", f"t{number}").replace("COUNT=3", "COUNT=1"))
        (self.home / "copy/office").mkdir()
        self.sync()
        writers = [threading.Thread(target=add, args=(name,)) for name in "ab"] + [threading.Thread(target=theirs)]
        for writer in writers:
            writer.start()
        self.sync()
        for writer in writers:
            writer.join()
        self.sync()
        ours, copies = self.copies()
        self.assertEqual(ours, copies)
        self.assertEqual(len(ours), 24)

    def test_clearing_is_whole_when_it_is_killed(self):
        """40 kills here; the moments within a commit are tested where they can be aimed at."""
        task = ("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:x\r\nBEGIN:VTODO\r\nUID:{0}\r\nDTSTAMP:20200101T000000Z\r\n"
                "SUMMARY:{0}\r\nSTATUS:COMPLETED\r\nEND:VTODO\r\nEND:VCALENDAR\r\n")
        folder, chance = self.home / "cal/office", random.Random(3)
        seen = set()
        for kill in range(40):
            for number in range(200):
                (folder / f"{number}.ics").write_text(task.format(number))
            run = subprocess.Popen([BUNDLE / "Tests/event-probe", "clear"], env=self.environment)
            time.sleep(chance.uniform(0.002, 0.15))
            run.kill()
            run.wait()
            left = len(self.store("reminders").splitlines())
            seen.add(left)
            self.assertIn(left, (0, 200), f"kill {kill}")
            self.assertEqual(len(list(folder.glob("*.ics"))), left)
        self.assertEqual(seen, {0, 200}, "kills came before and after")


if __name__ == "__main__":
    BUNDLE = pathlib.Path(sys.argv[1]).resolve()
    os.environ["TZ"] = ZONE
    time.tzset()
    unittest.main(argv=sys.argv[:1])
