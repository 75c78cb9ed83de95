"""The owner's consent as scripts, tools and the doctor meet it: `consent_test.py CONTENTS-FOLDER`."""

import json
import pathlib
import sys
import unittest

from desk import Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()

MAIL = "com.apple.mail"
REFUSED = "Not authorized to send Apple events to Mail."


class ConsentTest(DeskTest):
    def record(self, **words):
        file = self.desk.folder / "data/mervo-desk/consent.json"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(json.dumps({scope.replace("_", "."): word for scope, word in words.items()}))
        return file


class Scripts(ConsentTest):
    def test_a_refused_application_answers_nothing(self):
        self.record(com_apple_mail="refused")
        for ask in ("", "[consent]\nask = true\n"):
            self.desk.configure(self.desk.account("Work") + ask)
            for statement in ("get name of every account", "activate", "launch", "make new outgoing message",
                              "set x to inbox", "check for new mail", "count messages of inbox"):
                self.assertEqual(self.desk.failure(statement), REFUSED + " (-1743)", statement)
            self.assertEqual(self.desk.script(
                f'set a to application "Mail" is running\ntry\ntell application id "{MAIL}" to get inbox\n'
                'on error m number n\nreturn {a, version of application "Mail", m, n}\nend try'), f"false, 1.0, {REFUSED}, -1743")
            self.assertEqual(self.desk.tool("mail.accounts").returncode, 1)
            self.assertIn(REFUSED, self.desk.tool("mail.accounts").stderr)

    def test_what_is_not_decided(self):
        mail = 'tell application "Mail" to get name of every account'
        data = self.desk.folder / "data"
        self.assertEqual(self.desk.script(mail), "Work")
        self.assertFalse(list(data.rglob("consent*")), "a use records nothing")
        self.desk.configure(self.desk.account("Work") + "[consent]\nask = true\n")
        self.assertIn(REFUSED + " Nobody could be asked whether Mervo may use Mail; run \"mervo bootstrap-permissions\"",
                      self.desk.failure("get name of every account"))
        file = self.record(com_apple_mail="allowed", com_apple_MobileSMS="sometimes")
        self.assertEqual(self.desk.script(mail), "Work")
        self.assertIn("Apple events to Messages. Nobody",
                      self.desk.run("Helpers/platform/osascript", "-e", mail.replace("Mail", "Messages")).stderr)
        file.write_text('{"com.apple.mail": "allowed"')
        self.assertIn(f"{REFUSED} The record of consent {file} is damaged", self.desk.failure("get inbox"))
        self.desk.configure("[consent]\nask = 1\n")
        file.unlink()
        self.assertIn('desk.toml, line 2: "ask" must be true or false. (-10000)', self.desk.failure("get inbox"))


class TheDoctor(ConsentTest):
    def test_names_what_is_refused_and_how_to_allow_it(self):
        def found():
            report = {one["id"]: one for one in json.loads(self.desk.mervo("doctor", "--json").stdout)}
            return report["desk.consent"]["state"], report["desk.consent"]["detail"], report["desk.consent"]["remedy"]
        self.assertEqual(found(), ("works", "nothing is decided", ""))
        file = self.record(com_apple_mail="refused", calendar="write-only", com_apple_Notes="allowed")
        self.assertEqual(found(), (
            "limited", "Mail (com.apple.mail): refused\nCalendars (calendar): write-only, which lets nothing be read",
            f'To allow what you refused, write "allowed" for it in {file}: "com.apple.mail", "calendar".'))
        file.write_text("[]")
        self.assertEqual(found()[0], "broken")
        self.assertIn(str(file), found()[1])


if __name__ == "__main__":
    unittest.main()
