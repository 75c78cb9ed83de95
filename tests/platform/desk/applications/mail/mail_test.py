"""The desk's Mail through scripts, with Python's own mail library as the other program: `mail_test.py CONTENTS-FOLDER`."""

import email
import email.policy
import os
import pathlib
import sys
import time
import unittest

from desk import APOSTROPHE, Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
os.environ["TZ"] = "Europe/Paris"
time.tzset()

class Parts(DeskTest):
    def test_people_and_files_are_those_that_python_finds(self):
        self.desk.generate("--messages", "400", "--folders", "15", "--seed", "3")
        script = ('set out to ""\nrepeat with m in (every message of mailbox (item 1 of argv) of account "Work")\n'
                  'repeat with a in (get address of every to recipient of m)\nset out to out & a & ","\nend repeat\n'
                  'repeat with a in (get address of every cc recipient of m)\nset out to out & a & ","\nend repeat\n'
                  'set out to out & (count of mail attachments of m)\n'
                  'repeat with a in (get name of every mail attachment of m)\nset out to out & "," & a\nend repeat\n'
                  'set out to out & linefeed\nend repeat\nreturn out\n')
        for name, folder in (("INBOX", ""), ("Sent", ".Sent")):
            expected = []
            for file in sorted(self.desk.files(folder), key=lambda file: -file.stat().st_mtime):
                message = email.message_from_bytes(file.read_bytes(), policy=email.policy.default)
                people = [one.addr_spec for field in ("to", "cc") for one in (message[field].addresses if message[field] else ())]
                files = [part.get_filename() for part in message.iter_attachments()]
                expected.append("".join(one + "," for one in people) + ",".join([str(len(files)), *files]) + "\n")
            for _ in range(2):  # from the files, then from what the index has learned
                self.assertEqual(self.desk.mail(script, name), "".join(expected))


class Reading(DeskTest):
    def test_properties_of_one_message(self):
        self.desk.deliver(
            b"From: =?utf-8?Q?Andr=C3=A9?= <a@x.example>\r\nTo: Bee <b@x.example>, c@x.example\r\nCc: d@x.example\r\n"
            b"Reply-To: list@x.example\r\nSubject: raw caf\xe9\r\nMessage-ID: <1@x>\r\n"
            b"Date: Thu, 15 Jan 2026 10:00:00 +0100\r\n\r\nhello\r\n", flags="FRS")
        get = 'set m to message 1 of mailbox "INBOX" of account "Work"\nreturn %s of m'
        for what, expected in {
                "sender": "André <a@x.example>", "subject": "raw café", "reply to": "list@x.example", "message id": "1@x",
                "content": "hello\n", "was replied to": "true", "flag index": "0", "deleted status": "false",
                "name of every recipient": "Bee, missing value, missing value",
                "address of every cc recipient": "d@x.example", "name of mailbox": "INBOX", "unread count of mailbox": "0",
                "name of account of mailbox": "Work", "content of header 1": "=?utf-8?Q?Andr=C3=A9?= <a@x.example>",
        }.items():
            self.assertEqual(self.desk.mail(get % what), expected, what)
        self.assertIn("Cc: d@x.example", self.desk.mail(get % "all headers"))
        number = self.desk.mail(get % "id")
        self.assertEqual(self.desk.mail('return subject of message id %s of mailbox "INBOX" of account "Work"' % number),
                         "raw café")
        self.assertIn("-1728", self.desk.failure('return subject of message id 999999999 of mailbox "INBOX" of account "Work"'))

    def test_words_for_what_is_not_there(self):
        self.desk.maildir()
        self.assertEqual(self.desk.failure('return name of mailbox "X" of account "Work"'),
                         "Mail got an error: Can%st get mailbox \"X\" of account \"Work\". (-1728)" % APOSTROPHE)
        self.assertIn("(-1719)", self.desk.failure('return first account whose name is "Nope"'))
        self.assertIn("(-1719)", self.desk.failure('return message 1 of mailbox "INBOX" of account "Work"'))

    def test_a_missing_account_folder_says_so(self):
        self.assertEqual(self.desk.mail("return name of every account"), "Work")
        missing = "The folder %s of the mail account \u201cWork\u201d is not there. Synchronise" % (self.desk.folder / "Work")
        for statement in ('return name of every mailbox of account "Work"', "return count of messages of inbox",
                          'return exists mailbox "X" of account "Work"',
                          'save (make new outgoing message with properties {subject:"x"})'):
            self.assertIn(missing, self.desk.failure(statement), statement)
        self.assertFalse((self.desk.folder / "Work").exists(), "a draft makes no mistyped tree")
        (self.desk.folder / "Work").touch()
        self.assertIn("is a file.", self.desk.failure('return name of every mailbox of account "Work"'))

    def test_a_mistake_in_the_configuration_is_every_scripts_error(self):
        self.desk.configure("[[mail.account]]\nname = 'Work'\nemial = ['a@b']\n")
        for statement in ("return name of every account", "return count of accounts",
                          "make new outgoing message with properties {subject:\"x\"}"):
            line = self.desk.failure(statement)
            self.assertIn("desk.toml, line 3: \"emial\" is not a known key", line, statement)

    def test_what_is_not_done_is_said(self):
        self.desk.deliver("Subject: x\n\n")
        m = 'message 1 of mailbox "INBOX" of account "Work"'
        for statement in ('delete mailbox "INBOX" of account "Work"', 'move %s to account "Work"' % m):
            self.assertRegex(self.desk.failure(statement), "Mail got an error: This desk.*[.] [(]-10000[)]", statement)
        for statement in ("set flag index of %s to 7" % m, "set flag index of %s to -2" % m,
                          'set mailbox of %s to account "Work"' % m):
            self.assertIn("(-10006)", self.desk.failure(statement), statement)
        self.assertTrue((self.desk.maildir() / "new/1.host").exists())


class WithoutConfiguration(DeskTest):
    options = {"accounts": ()}

    def test_there_is_a_local_account_at_once(self):
        self.assertEqual(self.desk.mail("return name of every account"), "Local")
        self.assertEqual(self.desk.mail('return name of every mailbox of account "Local"'),
                         "INBOX, Drafts, Junk, Sent, Trash")
        self.assertEqual(self.desk.mail('return count of messages of inbox'), "0")

    def test_an_unwritable_home_is_no_reason_to_fail(self):
        (self.desk.folder / "data").write_text("a file where the data folder should be")
        (self.desk.folder / "cache").write_text("and here the cache")
        self.assertEqual(self.desk.mail('return count of messages of mailbox "INBOX" of account "Local"'), "0")


class Health(DeskTest):
    options = {"settings": 'sendmail = ["no-such-program", "-t"]\n[messages]\nsend = ["/bin/true", "--send"]'}

    def test_findings_and_nothing_written(self):
        self.desk.deliver("Subject: x\n\n")
        self.desk.deliver("", "2.empty", folder=".Sub")
        before = sorted(str(path) for path in self.desk.folder.rglob("*"))
        findings = self.desk.health()
        self.assertEqual(before, sorted(str(path) for path in self.desk.folder.rglob("*")))
        self.assertTrue(findings["desk.configuration"]["ok"])
        self.assertIn("2 mailboxes, 2 messages", findings["desk.mail.Work"]["detail"])
        self.assertIn("2.empty", findings["desk.mail.Work.damaged"]["detail"])
        self.assertFalse(findings["desk.sendmail.Work"]["ok"])
        self.assertEqual(findings["desk.messages.send"]["detail"], "through /bin/true")
        for finding in findings.values():
            self.assertEqual(list(finding), ["id", "label", "ok", "detail", "remedy"])
            if finding["id"] != "desk.jobs":  # no runner is wanted here, which is no fault
                self.assertEqual(finding["ok"], not finding["remedy"], finding)

    def test_a_layout_that_sees_little_is_named(self):
        for layout, folders, said, remedy in (
                ("maildir++", ("INBOX", "Lists/C++", "Sent"), 'layout = "maildir++" does not see 3 mailboxes with 3 messages',
                 'Set layout = "nested" for the account "Work" in '),
                ("nested", ("", ".Sent", ".Lists.C"), 'layout = "nested" does not see 2 mailboxes with 2 messages',
                 'Set layout = "maildir++" for the account "Work" in '),
                ("nested", (".Sent/.Lists/.C",), 'layout = "nested" does not see 1 mailbox with 1 message, such as',
                 "SubFolders Verbatim"),
                ("nested", ("INBOX", "Sent", "Sent/.Old"), "1 mailbox with 1 message, such as", ""),
                ("maildir++", ("", ".Sent"), ": 2 mailboxes, 2 messages; drafts", ""),
                ("maildir++", (), ": 1 mailbox, 0 messages; drafts", "")):
            desk = self.new_desk(settings='layout = "%s"' % layout)
            (desk.folder / "Work").mkdir()
            for folder in folders:
                desk.deliver("Subject: x\n\n", folder=folder)
            found = desk.health()["desk.mail.Work"]
            self.assertIn(said, found["detail"], (layout, folders))
            self.assertIn(remedy, found["remedy"], (layout, folders))
            self.assertEqual(found["ok"], not remedy, (layout, folders))

    def test_a_damaged_index_and_a_bad_file(self):
        self.desk.cache.mkdir(parents=True)
        (self.desk.cache / "mail-index.sqlite").write_text("garbage" * 100)
        self.assertFalse(self.desk.health()["desk.mail-index"]["ok"])
        self.assertFalse(self.desk.health()["desk.mail.Work"]["ok"])
        self.desk.configure("x")
        self.assertIn("line 1", self.desk.health()["desk.configuration"]["detail"])


if __name__ == "__main__":
    unittest.main()
