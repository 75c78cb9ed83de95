"""The reminder tools and the dictionary of Reminders over real files: `reminders_test.py CONTENTS-FOLDER`."""

import datetime
import pathlib
import random
import subprocess
import sys
import time
import unittest

from calendars import Vdir, soon
from desk import APOSTROPHE, Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
NO_LIST = 'no Reminders list named "Nope".'


class RemindersTest(DeskTest):
    options = {"accounts": (), "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.folder = self.desk.folder / "data/mervo-desk/reminders"

    def says(self, text, tool, **arguments):
        self.assertEqual(self.desk.call(tool, **arguments)["output"], text)

    def refuses(self, text, tool, **arguments):
        done = self.desk.call(tool, **arguments)
        self.assertEqual((done["outcome"], done["error"]), ("error", text))

    def test_lists_are_made_named_and_counted(self):
        self.says("Reminders || active=0 || done=0", "reminder.lists")
        self.assertFalse(self.folder.exists(), "a look makes nothing")
        self.says("OK reminder created", "reminder.add", name="b\nb", due="2026-12-24", notes="n\\1")
        self.says("OK list created: Work", "reminder.addList", name="Work")
        self.says("OK list exists: Work", "reminder.addList", name="Work")
        self.says("OK list renamed: Work -> Büro", "reminder.renameList", from_="Work", to="Büro")
        self.says("(no list named Work)", "reminder.renameList", from_="Work", to="x")
        self.says("OK reminder created", "reminder.add", name="a", list="Büro")
        self.says("Büro || active=1 || done=0\nReminders || active=1 || done=0", "reminder.lists")
        self.says("Reminders || todo || 2026-12-24 00:00 || b b\nBüro || todo ||  || a", "reminder.find")
        (todo,) = [item for item in Vdir(self.folder / "Reminders").items("VTODO")]
        self.assertEqual((todo["SUMMARY"], todo["DUE"].dt, todo["DESCRIPTION"]),
                         ("b\nb", datetime.date(2026, 12, 24), "n\\1"))
        self.desk.call("reminder.renameList", from_="Büro", to="At\nthe\toffice")
        self.says("At the office || active=1 || done=0\nReminders || active=1 || done=0", "reminder.lists")

    def test_a_list_that_is_not_there(self):
        Vdir(self.folder / "Home").todo("1", "x")
        for tool in ("reminder.add", "reminder.complete", "reminder.delete"):
            self.refuses(f"execution error: {NO_LIST} (-2700)", tool, name="x", list="Nope")
        self.refuses(NO_LIST, "reminder.find", list="Nope")
        self.refuses(NO_LIST, "reminder.update", name="x", due="2026-01-01", list="Nope")
        self.refuses(NO_LIST, "reminder.deleteList", name="Nope")
        self.refuses(NO_LIST, "reminder.clearCompleted", list="Nope")
        self.assertEqual(self.desk.call("reminder.add", name="y", due="soon")["outcome"], "error")
        self.says("Home || todo ||  || x", "reminder.find")

    def test_completing_counts_all_and_keeps_stamps(self):
        home, deep = Vdir(self.folder / "Home"), Vdir(self.folder / "group/deep", "Deep")
        home.todo("1", "Call Ann")
        home.todo("2", "call done", "STATUS:COMPLETED", "COMPLETED:20260101T100000Z")
        deep.todo("3", "recall", "DUE;VALUE=DATE:20260105", "RRULE:FREQ=WEEKLY;COUNT=3")
        deep.todo("4", "other")
        self.says("OK updated 3 reminder(s)", "reminder.complete", name="CALL")
        done = {str(item["UID"]): item for box in (home, deep) for item in box.items("VTODO")}
        self.assertEqual((str(done["1"]["STATUS"]), done["2"].to_ical().count(b"20260101T100000Z")), ("COMPLETED", 1))
        self.says("Deep || todo || 2026-01-12 00:00 || recall\nDeep || todo ||  || other", "reminder.find")
        self.says("OK updated 2 reminder(s)", "reminder.complete", name="call", list="Home", complete="false")
        self.says("Deep || active=2 || done=0\nHome || active=2 || done=0", "reminder.lists")
        self.says("OK deleted 3 reminder(s)", "reminder.delete", name="call")
        self.assertEqual(home.titles("VTODO") + deep.titles("VTODO"), ["other"])

    def test_a_new_due_date_takes_the_alarm_along(self):
        box = Vdir(self.folder / "Home")
        alarm = ("BEGIN:VALARM", "ACTION:DISPLAY", "DESCRIPTION:x", "TRIGGER;VALUE=DATE-TIME:20260327T100000Z", "END:VALARM")
        file = box.todo("1", "x", "DUE;TZID=Europe/Paris:20260327T120000", *alarm, "X-KEPT:y")
        self.says('OK "x" due 2026-03-27 -> 2026-03-30 12:00 (list "Home")', "reminder.update", name="X",
                  due="2026-03-30 12:00")
        self.assertIn(b"TRIGGER;VALUE=DATE-TIME:20260330T090000Z\r\n", file.read_bytes())
        self.assertIn(b"X-KEPT:y\r\n", file.read_bytes())
        self.says('OK "x" due 2026-03-30 -> 2026-04-01 (list "Home")', "reminder.update", name="x", due="2026-04-01")
        (todo,) = box.items("VTODO")
        self.assertEqual(todo["DUE"].dt, datetime.date(2026, 4, 1))

    def test_what_is_irreversible_is_previewed_and_waits(self):
        for name in ("a", "b"):
            Vdir(self.folder / name, "Work").todo(name, "open " + name)
        Vdir(self.folder / "a").todo("c", "done", "STATUS:COMPLETED", "COMPLETED:20260101T100000Z")
        Vdir(self.folder / "b").event("e", "kept", soon())
        self.desk.set(autonomyMode="copilote")
        calls = [self.desk.call("reminder.clearCompleted", list="Work"), self.desk.call("reminder.clearCompleted"),
                 self.desk.call("reminder.deleteList", name="Work"), self.desk.call("reminder.deleteList", name="Nope")]
        self.assertEqual([call["preview"] for call in calls],
                         ['Deletes 1 completed reminder(s) from list "Work" - active ones untouched, irreversible.',
                          "Deletes 1 completed reminder(s) from all lists - active ones untouched, irreversible.",
                          'Deletes list "Work" and its 3 reminder(s) - irreversible.',
                          'Deletes list "Nope" and its 0 reminder(s) - irreversible.'])
        done = [self.desk.approve(call["id"]).stdout for call in (calls[1], calls[2])]
        self.assertEqual(done, ["OK deleted 1 completed reminder(s) from all lists\n",
                                'OK deleted list "Work" (2 lists shared that name)\n'])
        self.assertEqual([file.name for file in self.folder.rglob("*.ics")], ["e.ics"])

    def test_what_is_killed_is_done_whole_or_not_at_all(self):
        box, chance = Vdir(self.folder / "Work"), random.Random(3)
        item = box.todo("0", "done", "STATUS:COMPLETED").read_bytes()
        counts = set()
        for kill in range(20):
            for number in range(200):
                box.path.mkdir(exist_ok=True)
                (box.path / f"{number}.ics").write_bytes(item.replace(b"UID:0", b"UID:%d" % number))
            words = (("reminder.clearCompleted", "list=Work"), ("reminder.deleteList", "name=Work"))[kill % 2]
            run = subprocess.Popen([Desk.contents / "Helpers/mervo", "run", *words], env=self.desk.environment,
                                   stdout=subprocess.DEVNULL)
            while run.poll() is None and not (self.folder / ".mervo/journal").exists():
                pass  # the commit comes in a moment
            time.sleep(chance.uniform(0, 0.004))
            run.kill()
            run.wait()
            shown = self.desk.call("reminder.lists")["output"]
            counts.add(len(list(box.path.glob("*.ics"))))
            self.assertIn(shown, ["Work || active=0 || done=200", "Work || active=0 || done=0",
                                  "Reminders || active=0 || done=0"], kill)
            self.assertLessEqual(counts, {0, 200}, kill)
        self.assertIn(200, counts, "a kill came before the last step")

    def test_the_health_report_counts_what_the_tools_see(self):
        both, tasks = self.desk.folder / "both", Vdir(self.desk.folder / "both/Mine")
        Vdir(both / "Team").event("e", "Tea", soon(1))
        Vdir(both / "empty")
        tasks.todo("t", "a")
        for default, calendars, lists in (
                ("", '2 calendars, 1 entry in {}; default "Team"', '2 lists, 1 entry in {}; default "Mine"'),
                ('default = "New"', '2 calendars, 1 entry in {}; default "New" (made when it is needed)',
                 '2 lists, 1 entry in {}; default "New" (made when it is needed)')):
            self.desk.configure("".join(f'[{kind}]\npath = "{both}"\n{default}\n' for kind in ("calendars", "reminders")))
            health = self.desk.health()
            self.assertEqual([health[f"desk.{kind}"]["detail"] for kind in ("calendars", "reminders")],
                             [calendars.format(both), lists.format(both)])
        self.says("OK reminder created", "reminder.add", name="b")
        self.says("empty || active=0 || done=0\nMine || active=1 || done=0\nNew || active=1 || done=0", "reminder.lists")

    def test_scripts_see_every_property(self):
        box = Vdir(self.folder / "Home")
        box.todo("u1", "x", "PRIORITY:5", "DUE;VALUE=DATE:20260401", "CREATED:20260101T100000Z")
        script = lambda what: self.desk.script(f'tell application "Reminders"\n{what}\nend tell')
        one = 'reminder "X" of list "Home"'
        names = ("id", "body", "priority", "flagged", "completed", "completion date")
        self.assertEqual(script("get {%s}" % ", ".join(f"{name} of {one}" for name in names)),
                         "u1, missing value, 5, false, false, missing value")
        self.assertEqual(script(f'get name of container of {one} & " " & name of default account'), "Home Local")
        script(f'set due date of {one} to (allday due date of {one}) + 9 * hours\n'
               f'set flagged of {one} to true\nset r to {one}\nset body of r to "n"\nset completed of r to true')
        (todo,) = box.items("VTODO")
        self.assertEqual((todo["DUE"].dt.hour, todo["DESCRIPTION"], str(todo["STATUS"])), (9, "n", "COMPLETED"))
        self.assertEqual(script('get {flagged of reminder 1, completed of reminder 1}'), "true, true")
        script('set r to reminder 1\nset remind me date of r to (current date) + 90\nset remind me date of r to (current date) + 60')
        self.assertEqual(script('((remind me date of reminder 1) - (current date)) > 50'), "true")
        script('set remind me date of reminder 1 to missing value')
        self.assertEqual(script('get remind me date of reminder 1'), "missing value")
        self.assertNotIn(b"VALARM", (box.path / "u1.ics").read_bytes())
        script('make new list with properties {name:"Other"}\nmove reminder "x" of list "Home" to list "Other"')
        self.assertEqual((box.items("VTODO"), script('get name of reminders of list "Other"')), ([], "x"))
        self.assertEqual(script(f'try\nget name of reminder "x" of list "Home"\non error number n\nn\nend try'), "-1728")
        script('delete list "Other"')
        self.assertEqual(script('get exists list "Other"'), "false")


if __name__ == "__main__":
    unittest.main()
