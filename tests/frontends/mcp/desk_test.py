"""Every tool of calendar, reminders, notes, contacts, Finder and applications, from the command line and through the
server, over the same desk: `desk_test.py CONTENTS-FOLDER`."""

import pathlib
import shutil
import sys
import unittest

from calendars import soon
from desk import Desk, DeskTest
from peer import Peer, call, initialize

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
TOMORROW = soon()
# Tool, arguments, what it says; what waits for the owner says its preview first.
DAY = [
    ("cal.add", {"calendar": "Home", "summary": "Tea", "days": "1", "hour": "9"},
     f"OK event @ {TOMORROW:%A, %B} {TOMORROW.day}, {TOMORROW.year} at 9:00:00 AM"),
    ("cal.find", {"contains": "TEA"}, f"{TOMORROW:%Y-%m-%d} 09:00 || Home || Tea"),
    ("cal.update", {"contains": "tea", "location": "Kew"}, 'OK updated [Tea @ -] → title="Tea" location="Kew"'),
    ("cal.delete", {"contains": "tea"}, "", "OK deleted [Tea @ Kew]"),
    ("reminder.addList", {"name": "Work"}, "OK list created: Work"),
    ("reminder.renameList", {"from": "Work", "to": "Büro"}, "OK list renamed: Work -> Büro"),
    ("reminder.add", {"name": "Call", "list": "Büro", "due": "2026-12-24"}, "OK reminder created"),
    ("reminder.add", {"name": "Write", "list": "Büro"}, "OK reminder created"),
    ("reminder.update", {"name": "call", "due": "2026-12-25"}, 'OK "Call" due 2026-12-24 -> 2026-12-25 (list "Büro")'),
    ("reminder.complete", {"name": "call"}, "OK updated 1 reminder(s)"),
    ("reminder.lists", {}, "Büro || active=1 || done=1"),
    ("reminder.find", {}, "Büro || todo ||  || Write"),
    ("reminder.clearCompleted", {"list": "Büro"}, 'Deletes 1 completed reminder(s) from list "Büro" - active ones '
     "untouched, irreversible.", 'OK deleted 1 completed reminder(s) from list "Büro"'),
    ("reminder.delete", {"name": "write"}, "", "OK deleted 1 reminder(s)"),
    ("reminder.deleteList", {"name": "Büro"}, 'Deletes list "Büro" and its 0 reminder(s) - irreversible.',
     'OK deleted list "Büro"'),
    ("note.add", {"title": "Plan", "body": "a\nb"}, "OK note: Plan"),
    ("note.update", {"name": "plan", "append": "c"}, "OK updated: Plan"),
    ("note.read", {"name": "plan"}, "Plan\n----\nPlan\na\nb\nc"),
    ("note.open", {"name": "plan"}, "OK opened: Plan"),
    ("note.list", {}, "Notes (1)"),
    ("note.delete", {"name": "plan"}, "1 note(s): Plan", "OK deleted 1 note(s)"),
    ("note.find", {"name": "plan"}, ""),
    ("contact.add", {"first": "Ann", "last": "One", "email": "a@x"}, "OK contact created: Ann One"),
    ("contact.find", {"email": "A@"}, "Ann One ||  || a@x  ||"),
    ("finder.reveal", {"path": "/"}, "OK revealed /"),
    ("app.quit", {"name": "mail"}, "(not running: Mail)"),
]


class DayTest(DeskTest):
    options = {"accounts": (), "mode": "copilote", "environment": {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/none"}}

    def setUp(self):
        super().setUp()
        tools = self.desk.folder / "bin"
        tools.mkdir()
        (tools / "xdg-open").symlink_to("/bin/true")
        self.desk.environment["PATH"] = f"{tools}:{self.desk.environment['PATH']}"

    def by_server(self, tool, arguments):
        content, = self.server.ask(call(1, tool, arguments))["result"]["content"]
        return content["text"]

    def by_command(self, tool, arguments):
        done = self.desk.mervo("run", tool, *(f"{key}={value}" for key, value in arguments.items()))
        return done.stdout.removesuffix("\n") or done.stderr

    def test_each_tool_does_its_work_by_both_ways(self):
        held = {tool for tool, _, _, *done in DAY if done}
        self.assertEqual(len({row[0] for row in DAY}), 25)
        self.server = Peer(self.desk.contents / "Helpers/mervo-mcp", environment=self.desk.environment)
        self.addCleanup(self.server.kill)
        self.server.ask(initialize())
        for way in (self.by_command, self.by_server):
            for tool, arguments, said, *done in DAY:
                answer = way(tool, arguments)
                if not done:
                    self.assertEqual(answer.rstrip(), said, (way, tool))
                    continue
                (waiting,) = self.desk.waiting()
                self.assertIn(said, answer, (way, tool))
                self.assertEqual(self.desk.approve(waiting).stdout, done[0] + "\n", (way, tool))
            shutil.rmtree(self.desk.folder / "data")
        rows = [row[1:3] for row in self.desk.audit()]
        self.assertEqual([tool for tool, outcome in rows if outcome == "executed"], [row[0] for row in DAY] * 2)
        self.assertEqual({tool for tool, outcome in rows if outcome != "executed"}, held)


if __name__ == "__main__":
    unittest.main()
