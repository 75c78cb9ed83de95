"""The calendar tools and the dictionary of Calendar over real files: `calendar_test.py CONTENTS-FOLDER`."""

import datetime
import pathlib
import sys
import unittest

from calendars import ZONE, Vdir, soon
from desk import APOSTROPHE, Desk, DeskTest
from peer import Peer, call, initialize

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()


class CalendarTest(DeskTest):
    options = {"accounts": (), "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.folder = self.desk.folder / "data/mervo-desk/calendars"

    def says(self, text, tool, **arguments):
        self.assertEqual(self.desk.call(tool, **arguments)["output"], text)

    def refuses(self, text, tool, **arguments):
        done = self.desk.call(tool, **arguments)
        self.assertEqual((done["outcome"], done["error"]), ("error", text))

    # ---- cal.add

    def test_an_event_is_what_was_asked_for(self):
        output = self.desk.call("cal.add", calendar="Home", summary="Thé; à \"deux\"\nsoon", days="3", hour="9",
                                duration="90", location="Café, 4", notes="a\\b\nc", url="message://%3Ca@b%3E")["output"]
        start = soon(3, 9)
        self.assertEqual(output, f"OK event @ {start:%A, %B} {start.day}, {start.year} at 9:00:00 AM")
        (event,) = Vdir(self.folder / "Home").items("VEVENT")
        self.assertEqual((event["SUMMARY"], event["LOCATION"], event["DESCRIPTION"], event["URL"]),
                         ("Thé; à \"deux\"\nsoon", "Café, 4", "a\\b\nc", "message://%3Ca@b%3E"))
        self.assertEqual(event["DTSTART"].dt, start)
        self.assertEqual(event["DTEND"].dt - event["DTSTART"].dt, datetime.timedelta(minutes=90))
        self.says(f"{start:%Y-%m-%d} 09:00 || Home || Thé; à \"deux\" soon @ Café, 4 🔗 message://%3Ca@b%3E", "cal.find")

    def test_without_an_hour_it_is_the_present_time_of_day(self):
        before = datetime.datetime.now(ZONE).replace(microsecond=0)
        self.desk.call("cal.add", calendar="Home", summary="x", days="-2")
        (event,) = Vdir(self.folder / "Home").items("VEVENT")
        late = event["DTSTART"].dt.replace(tzinfo=None) - before.replace(tzinfo=None)
        self.assertTrue(datetime.timedelta(-2) <= late < datetime.timedelta(-2, 30), late)
        self.assertEqual(event["DTEND"].dt - event["DTSTART"].dt, datetime.timedelta(hours=1))
        self.assertNotIn("LOCATION", event)

    def test_what_a_script_refuses_leaves_nothing_behind(self):
        front = "execution error: Calendar got an error: "
        self.refuses(f"{front}Can{APOSTROPHE}t get calendar \"Nope\". (-1728)", "cal.add", calendar="Nope", summary="x")
        for bad in ({"days": "x"}, {"hour": "noon"}, {"duration": ""}, {"days": "9999999"}):
            done = self.desk.call("cal.add", calendar="Home", summary="x", **bad)
            self.assertEqual(done["outcome"], "error", bad)
        self.assertEqual(list(self.desk.folder.rglob("*.ics")), [])

    # ---- cal.find, cal.update, cal.delete

    def test_the_dates_of_a_span_in_order(self):
        home, work = Vdir(self.folder / "a", "Home"), Vdir(self.folder / "deep/b", "Work")
        home.event("1", "Tea", soon(1, 9), "URL:https://x.example/a?b", "LOCATION:Kew\\, 2")
        work.event("2", "Standup", soon(1, 9), "RRULE:FREQ=DAILY;COUNT=3")
        home.put("VEVENT", "3", "SUMMARY:Fête", f"DTSTART;VALUE=DATE:{soon(2):%Y%m%d}")
        home.event("4", "Past", soon(-3, 9))
        home.event("5", "Far", soon(9, 9))
        work.todo("6", "no event")
        day = [f"{soon(ahead):%Y-%m-%d}" for ahead in range(4)]
        self.says(f"{day[1]} 09:00 || Home || Tea @ Kew, 2 🔗 https://x.example/a?b\n{day[1]} 09:00 || Work || Standup\n"
                  f"{day[2]} (all-day) || Home || Fête\n{day[2]} 09:00 || Work || Standup\n{day[3]} 09:00 || Work || Standup",
                  "cal.find")
        self.says(f"{soon(-3):%Y-%m-%d} 09:00 || Home || Past", "cal.find", days="-7")
        self.says(f"{day[2]} (all-day) || Home || Fête", "cal.find", contains="FÊTE", days="soon")
        self.says("(no events in the past 1 day(s) matching \"Tea\")", "cal.find", contains="Tea", days="-1")

    def test_one_date_of_a_series_is_changed_and_one_deleted(self):
        work = Vdir(self.folder / "Work")
        file = work.event("s", "Standup", soon(1, 9), "RRULE:FREQ=WEEKLY;COUNT=3", "X-KEPT;A=b:c")
        self.refuses("ambiguous: 3 events match - refine `contains`:\n" + "\n".join(["  Standup (Work)"] * 3),
                     "cal.delete", contains="STAND", days="20")
        self.says("OK updated [Standup @ -] → title=\"Standup\" location=\"Room 4\"", "cal.update", contains="stand",
                  days="3", location="Room 4", notes="bring\nslides")
        shown = lambda: [line.partition("Standup")[2] for line in self.desk.call("cal.find", days="20").lines]
        self.assertEqual(shown(), [" @ Room 4", "", ""])
        changed = [event for event in work.items("VEVENT") if "RECURRENCE-ID" in event]
        self.assertEqual([event["DESCRIPTION"] for event in changed], ["bring\nslides"])
        self.assertIn(b"X-KEPT;A=b:c\r\n", file.read_bytes())
        self.says("OK deleted [Standup @ Room 4]", "cal.delete", contains="stand", days="3")
        self.assertEqual(shown(), ["", ""])
        self.assertNotIn(b"RECURRENCE-ID", file.read_bytes())

    def test_the_doctor_names_a_rule_without_an_end(self):
        home = Vdir(self.folder / "Home")
        home.event("d", "Daily", soon(-900), "RRULE:FREQ=DAILY")
        home.event("s", "Tick", soon(), "RRULE:FREQ=SECONDLY")
        finding = self.desk.health()["desk.calendars.endless"]
        self.assertEqual((finding["ok"], finding["detail"]), (False, f"not every date is shown: {home.path}/s.ics"))

    def test_nothing_to_change_is_said_without_a_look(self):
        self.desk.configure("[calendars]\npath = 4\n")
        self.refuses("no change requested (pass at least one of title / location / notes / url).", "cal.update", contains="x")
        self.assertIn("desk.toml", self.desk.call("cal.find")["error"])

    def test_a_root_that_cannot_be_read_is_not_an_empty_one(self):
        root = self.desk.folder / "root"
        self.desk.configure("".join(f'[{part}]\npath = "{root}"\n'
                                    for part in ("calendars", "reminders", "contacts")))
        self.says("(no events in the next 7 day(s))", "cal.find")  # there is none yet
        for make, place in ((root.write_text, "a file"), (root.symlink_to, root), (root.symlink_to, "/no/such")):
            make(place)
            for tool, words in (("cal.find", {}), ("cal.add", {"calendar": "Home", "summary": "x"}),
                                ("reminder.clearCompleted", {}), ("contact.find", {"query": "x"})):
                self.assertIn(f"The folder “{root}” cannot be read", self.desk.call(tool, **words).get("error", ""))
            health = self.desk.health()
            for part in ("calendars", "reminders", "contacts"):
                self.assertFalse(health["desk." + part]["ok"], part)
            root.unlink()

    # ---- the gate and the stdio server

    def test_a_deletion_waits_for_the_owner(self):
        Vdir(self.folder / "Home").event("1", "Tea", soon())
        self.desk.set(autonomyMode="copilote")
        server = Peer(self.desk.contents / "Helpers/mervo-mcp", environment=self.desk.environment)
        self.addCleanup(server.kill)
        server.ask(initialize())
        text = lambda answer: answer["result"]["content"][0]["text"]
        self.assertIn("|| Home || Tea", text(server.ask(call(1, "cal.find"))))
        self.assertIn("pending", text(server.ask(call(2, "cal.delete", {"contains": "tea"}))))
        (waiting,) = self.desk.waiting()
        self.assertEqual(self.desk.approve(waiting).stdout, "OK deleted [Tea @ -]\n")
        self.says("(no events in the next 7 day(s))", "cal.find")
        self.assertEqual([row[1:4] for row in self.desk.audit()][-2:],
                         [("cal.delete", "executed", "approved"), ("cal.find", "executed", "read")])

    # ---- what other scripts see

    def test_scripts_see_every_property(self):
        home = Vdir(self.folder / "Home")
        (home.path / "color").write_text("#ff8000")
        file = home.event("u1", "Tea", soon(), "RRULE:FREQ=DAILY;COUNT=2", "STATUS:TENTATIVE", "SEQUENCE:4")
        show = lambda what: self.desk.script(f'tell application "Calendar" to get {what}')
        self.assertEqual(show('name of calendars'), "Home")
        self.assertEqual(show('color of calendar 1 & writable of calendar 1'), "65535, 32896, 0, true")
        event = 'event id "u1" of calendar "Home"'
        names = ("summary", "location", "uid", "recurrence", "status", "sequence", "allday event")
        self.assertEqual(show("{%s}" % ", ".join(f"{name} of {event}" for name in names)),
                         "Tea, missing value, u1, FREQ=DAILY;COUNT=2, tentative, 4, false")
        self.assertEqual(show(f'(end date of {event}) - (start date of {event})'), "3600")
        self.desk.script(f'tell application "Calendar"\nset {{status of {event}, url of {event}}} to {{cancelled, "x:y"}}\n'
                         'set name of calendar "Home" to "House"\nset color of calendar "House" to {0, 257, 65535}\nend tell')
        self.assertIn(b"STATUS:CANCELLED", file.read_bytes())
        self.assertEqual((home.path / "displayname").read_text().strip(), "House")
        self.assertEqual((home.path / "color").read_text().strip(), "#0001ff")
        self.assertEqual(show('count of (events of calendar "House" whose summary contains "TEA" and url is "x:y")'), "1")
        self.assertIn("“nonsense” is no rule by which an event repeats. (-10000)", self.desk.run(
            "Helpers/platform/osascript", "-e", 'tell application "Calendar" to set recurrence of event 1 of calendar 1 to "nonsense"').stderr)
        self.desk.script('tell application "Calendar" to delete (every event of calendar "House" whose uid is "u1")')
        self.assertFalse(file.exists())


if __name__ == "__main__":
    unittest.main()
