"""`mervo permissions` and `bootstrap-permissions` over a real desk: `permissions_test.py CONTENTS-FOLDER`."""

import json
import os
import pathlib
import signal
import sys
import unittest

from desk import Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()

NAMES = {"mail": "Mail", "iCal": "Calendar", "reminders": "Reminders", "AddressBook": "Contacts", "Notes": "Notes",
         "MobileSMS": "Messages", "finder": "Finder", "systemevents": "System Events"}
CLOSED = "not set up yet - run Set up access"
REFUSED = "denied - allow in System Settings \u2192 Privacy & Security \u2192 Automation"


class Permissions(DeskTest):
    def setUp(self):
        super().setUp()
        self.consent = self.desk.folder / "data/mervo-desk/consent.json"
        self.grants = self.desk.home / "autonomy-grants.json"
        self.addCleanup(self.end_all)

    def record(self, words):
        self.consent.parent.mkdir(parents=True, exist_ok=True)
        self.consent.write_text(json.dumps(words))

    def start(self, name):
        self.assertEqual(self.desk.run("Helpers/platform/open", "-g", "-j", "-a", name).returncode, 0)

    def end_all(self):
        """Ends the applications of this desk, known by its folder among their variables."""
        for place in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if (place / "comm").read_text().strip() == "desk-applicatio" and (
                        f"HOME={self.desk.folder}\0".encode() in (place / "environ").read_bytes()):
                    os.kill(int(place.name), signal.SIGTERM)
            except OSError:
                continue  # it has ended

    def rows(self, command="permissions"):
        done = self.desk.mervo(command, "--json")
        found = json.loads(done.stdout)
        is_open = command != "permissions" and any("granted" not in row for row in found)
        self.assertEqual((done.returncode, done.stderr[:31]), (0, "note: not everything is settled" * is_open))
        self.assertEqual([row["id"] for row in found],
                         [f"automation:com.apple.{key}" for key in NAMES] + ["calendar", "reminders"])
        for row in found:
            self.assertEqual(list(row), ["id", "label", *(["granted"] if "granted" in row else []), "detail"])
        return {row["id"].replace("automation:com.apple.", "to "): (row.get("granted"), row["detail"]) for row in found}

    def test_a_fresh_machine_is_asked_once(self):
        fresh = {f"to {key}": (None, CLOSED) for key in NAMES} | dict.fromkeys(
            ("to finder", "to systemevents", "calendar", "reminders"), (None, "not yet granted"))
        self.assertEqual(self.rows(), fresh)
        self.assertFalse(self.grants.exists() or self.consent.exists(), "a status writes nothing")
        self.start("Notes")
        self.assertEqual(self.rows("bootstrap-permissions"), dict.fromkeys(fresh, (True, "allowed")))
        self.assertEqual(json.loads(self.grants.read_text()), {f"com.apple.{key}": True for key in NAMES})
        self.assertEqual(set(json.loads(self.consent.read_text()).values()), {"allowed"})
        closed = (True, "allowed (granted at setup; app closed)")
        self.assertEqual(self.rows(), dict.fromkeys(fresh, (True, "allowed"))
                         | dict.fromkeys((f"to {key}" for key in ("mail", "iCal", "reminders", "AddressBook", "MobileSMS")),
                                         closed),
                         "what was started is closed again, and what the owner had open stays")
        text = self.desk.mervo("permissions").stdout.splitlines()
        self.assertEqual(text[0], "\u2705 Mail (control)         allowed (granted at setup; app closed)")

    def test_what_is_recorded_stands(self):
        for name in ("Mail", "Calendar"):
            self.start(name)
        for ask in ("", "[consent]\nask = true\n"):
            self.desk.configure(self.desk.account("Work") + ask)
            self.record({"com.apple.mail": "refused", "com.apple.iCal": "allowed", "calendar": "write-only",
                         "reminders": "restricted", "com.apple.finder": "perhaps"})
            rows = self.rows()
            self.assertEqual((rows["to mail"], rows["to iCal"], rows["to Notes"], rows["to finder"]),
                             ((False, REFUSED), (True, "allowed"), (None, CLOSED), (None, "not yet granted")))
            self.assertEqual(rows["calendar"], (False, "write-only - set Full Access in System Settings \u2192 "
                                                       "Privacy & Security \u2192 Calendars"))
            self.assertEqual(rows["reminders"], (False, "restricted by system policy"))
        self.record({"calendar": "refused", "reminders": "allowed"})
        rows = self.rows("bootstrap-permissions")  # nobody can be asked: what is not decided stays so
        self.assertEqual((rows["to mail"], rows["to Notes"]), ((None, "not yet granted"),) * 2)
        self.assertEqual(rows["calendar"], (False, "denied - allow in System Settings \u2192 Privacy & Security"))
        self.assertEqual(json.loads(self.consent.read_text()), {"calendar": "refused", "reminders": "allowed"})
        self.assertEqual(json.loads(self.grants.read_text()), {})

    def test_a_damaged_record_is_no_decision_and_is_left_alone(self):
        self.consent.parent.mkdir(parents=True)
        self.consent.write_text("{")
        self.assertEqual(self.rows("bootstrap-permissions")["to finder"], (None, "unavailable (status -10000)"))
        self.assertEqual(self.consent.read_text(), "{")


if __name__ == "__main__":
    unittest.main()
