"""The desk's Mail through scripts, with Python's own mail library as the other program.

`mail_test.py <folder of the platform programs> <the maker of test mail>`
"""

import calendar
import email
import email.policy
import mailbox
import os
import pathlib
import resource
import subprocess
import sys
import time
import unittest

from desk import APOSTROPHE, Desk

PROGRAMS, MAKER = "", ""  # from the command line

COLUMNS = """
set mb to mailbox (item 1 of argv) of account "Work"
set AppleScript's text item delimiters to linefeed
set columns to {subject of every message of mb as text, sender of every message of mb as text, ¬
    message id of every message of mb as text, message size of every message of mb as text, ¬
    read status of every message of mb as text, flagged status of every message of mb as text}
return columns as text
"""


class DeskTest(unittest.TestCase):
    accounts = ("Work",)
    settings = ""

    def setUp(self):
        self.desk = Desk(PROGRAMS, self.accounts, self.settings)
        self.addCleanup(self.desk.close)


class AgainstPython(unittest.TestCase):
    """Whatever Python's library finds in a generated account, scripts find as well."""

    @classmethod
    def setUpClass(cls):
        cls.desk = Desk(PROGRAMS)
        cls.addClassCleanup(cls.desk.close)
        subprocess.run([MAKER, "--messages", "400", "--folders", "15", "--seed", "3", "--out", cls.desk.root / "Work"],
                       check=True, stdout=subprocess.DEVNULL, timeout=60)
        cls.account = mailbox.Maildir(cls.desk.root / "Work", create=False)
        cls.folders = {"INBOX": cls.account}
        cls.folders |= {name.replace(".", "/"): cls.account.get_folder(name) for name in cls.account.list_folders()}

    def messages(self, name):
        """(received, parsed message, Maildir flags, bytes), newest first."""
        folder = self.folders[name]
        found = []
        for key in folder.keys():
            raw = folder.get_bytes(key)
            entry = folder.get_message(key)
            found.append((entry.get_date(), email.message_from_bytes(raw, policy=email.policy.default),
                          entry.get_flags(), raw))
        return sorted(found, key=lambda one: -one[0])

    def test_mailboxes(self):
        lines = self.desk.mail('set AppleScript\'s text item delimiters to linefeed\n'
                               'return (name of every mailbox of account "Work") as text').split("\n")
        self.assertEqual(lines[0], "INBOX")
        self.assertEqual(set(lines), set(self.folders))
        self.assertLess(lines.index("Projects"), lines.index("Projects/Harbour"))

    def test_columns(self):
        for name in self.folders:
            expected = [[], [], [], [], [], []]
            for _, message, flags, raw in self.messages(name):
                sender = message["from"].addresses[0]
                for column, value in zip(expected, (
                        message["subject"], "%s <%s>" % (sender.display_name, sender.addr_spec),
                        message["message-id"].strip("<>"), str(len(raw)), str("S" in flags).lower(),
                        str("F" in flags).lower())):
                    column.append(value)
            with self.subTest(name):
                self.assertEqual(self.desk.mail(COLUMNS, name).split("\n"), sum(expected, []))

    def test_dates(self):
        got = self.desk.script(
            'on run\ntell application "Mail" to set arrivals to date received of every message of mailbox "Sent" of account '
            '"Work"\nset out to ""\nrepeat with d in arrivals\nset out to out & (d - (item -1 of arrivals)) & " "\nend repeat\n'
            "return out\nend run\n")
        moments = [calendar.timegm(time.localtime(received)) for received, *_ in self.messages("Sent")]  # clocks on walls
        self.assertEqual([float(one) for one in got.split()], [moment - moments[-1] for moment in moments])

    def test_contents(self):
        script = ('repeat with m in (every message of mailbox (item 1 of argv) of account "Work")\n'
                  'set out to out & content of m & mark\nend repeat\nreturn out\n')
        for name in ("INBOX", "Archive", "Lists/Compilers"):
            got = self.desk.mail('set out to ""\nset mark to "\n<<<end>>>"\n' + script, name).split("\n<<<end>>>")[:-1]
            expected = [one.get_body(("plain", "html")).get_content() for _, one, _, _ in self.messages(name)]
            self.assertEqual([text.strip() for text in got], [text.strip() for text in expected], name)

    def test_recipients_and_attachments(self):
        script = ('set out to ""\nrepeat with m in (every message of mailbox (item 1 of argv) of account "Work")\n'
                  'repeat with a in (get address of every to recipient of m)\nset out to out & a & ","\nend repeat\n'
                  'repeat with a in (get address of every cc recipient of m)\nset out to out & a & ","\nend repeat\n'
                  'set out to out & (count of mail attachments of m)\n'
                  'repeat with a in (get name of every mail attachment of m)\nset out to out & "," & a\nend repeat\n'
                  'set out to out & linefeed\nend repeat\nreturn out\n')
        for name in ("INBOX", "Sent"):
            expected = ""
            for _, message, _, _ in self.messages(name):
                people = [one.addr_spec for field in ("to", "cc") for one in (message[field].addresses if message[field] else ())]
                files = [part.get_filename() for part in message.iter_attachments()]
                expected += "".join(one + "," for one in people) + ",".join([str(len(files)), *files]) + "\n"
            for _ in range(2):  # from the files, then from what the index has learned
                self.assertEqual(self.desk.mail(script, name), expected.removesuffix("\n") + "\n" if expected else "")


class Reading(DeskTest):
    def test_what_other_programs_do_is_seen_at_the_next_call(self):
        subjects = 'return subject of every message of mailbox "INBOX" of account "Work"'
        unread = 'return unread count of mailbox "INBOX" of account "Work"'
        self.desk.deliver("Subject: one\n\n", "1", received=1_700_000_000)
        self.assertEqual(self.desk.mail(subjects), "one")
        self.desk.deliver("Subject: two\n\n", "2", received=1_700_000_001)
        self.assertEqual(self.desk.mail(subjects), "two, one")
        self.assertEqual(self.desk.mail(unread), "2")
        inbox = self.desk.maildir()
        (inbox / "new/1").rename(inbox / "cur/1:2,S")
        self.assertEqual(self.desk.mail(unread), "1")
        (inbox / "cur/1:2,S").unlink()
        self.assertEqual(self.desk.mail(subjects), "two")

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
                "address of every cc recipient": "d@x.example", "name of mailbox": "INBOX",
                "name of account of mailbox": "Work", "content of header 1": "=?utf-8?Q?Andr=C3=A9?= <a@x.example>",
        }.items():
            self.assertEqual(self.desk.mail(get % what), expected, what)
        self.assertIn("Cc: d@x.example", self.desk.mail(get % "all headers"))
        number = self.desk.mail(get % "id")
        self.assertEqual(self.desk.mail('return subject of message id %s of mailbox "INBOX" of account "Work"' % number),
                         "raw café")
        self.assertIn("-1728", self.desk.failure('return subject of message id 999999999 of mailbox "INBOX" of account "Work"'))

    def test_one_broken_mailbox_does_not_hide_the_others(self):
        self.desk.deliver("Subject: fine\n\n")
        broken = self.desk.root / "Work/.Broken"
        broken.mkdir()
        (broken / "cur").write_text("a file where a folder should be")
        self.assertEqual(self.desk.mail('return name of every mailbox of account "Work"'), "INBOX, Broken")
        line = self.desk.failure('return subject of every message of mailbox "Broken" of account "Work"')
        self.assertIn("Mail got an error: The mail folder %s cannot be read: Not a directory" % (broken / "cur"), line)
        self.assertIn("(-10000)", line)

    def test_words_for_what_is_not_there(self):
        self.desk.maildir()
        self.assertEqual(self.desk.failure('return name of mailbox "X" of account "Work"'),
                         "Mail got an error: Can%st get mailbox \"X\" of account \"Work\". (-1728)" % APOSTROPHE)
        self.assertIn("(-1719)", self.desk.failure('return first account whose name is "Nope"'))
        self.assertIn("(-1719)", self.desk.failure('return message 1 of mailbox "INBOX" of account "Work"'))

    def test_a_missing_account_folder_says_so(self):
        self.assertEqual(self.desk.mail("return name of every account"), "Work")
        missing = "The folder %s of the mail account \u201cWork\u201d is not there. Synchronise" % (self.desk.root / "Work")
        for statement in ('return name of every mailbox of account "Work"', "return count of messages of inbox",
                          'return exists mailbox "X" of account "Work"',
                          'save (make new outgoing message with properties {subject:"x"})'):
            self.assertIn(missing, self.desk.failure(statement), statement)
        self.assertFalse((self.desk.root / "Work").exists(), "a draft makes no mistyped tree")
        (self.desk.root / "Work").touch()
        self.assertIn("is a file.", self.desk.failure('return name of every mailbox of account "Work"'))

    def test_runs_of_marks_do_not_hold_up_a_search(self):
        def seconds(pairs):
            for number in range(8):
                text = "Subject: q" + "\u0300\u0323" * pairs + "\n\n"
                self.desk.deliver(text, "%d.%d" % (pairs, number), folder=".%d" % pairs)
            search = 'return count of (messages of mailbox "%d" of account "Work" whose subject contains "z\u0301")'
            before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
            for _ in range(3):
                self.assertEqual(self.desk.mail(search % pairs), "0")
            return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before

        self.assertLess(seconds(16_000), 8 * max(seconds(4_000), 0.05))

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
    accounts = ()

    def test_there_is_a_local_account_at_once(self):
        self.assertEqual(self.desk.mail("return name of every account"), "Local")
        self.assertEqual(self.desk.mail('return name of every mailbox of account "Local"'),
                         "INBOX, Drafts, Junk, Sent, Trash")
        self.assertEqual(self.desk.mail('return count of messages of inbox'), "0")

    def test_an_unwritable_home_is_no_reason_to_fail(self):
        (self.desk.root / "data").write_text("a file where the data folder should be")
        (self.desk.root / "cache").write_text("and here the cache")
        self.assertEqual(self.desk.mail('return count of messages of mailbox "INBOX" of account "Local"'), "0")


class Health(DeskTest):
    settings = 'sendmail = ["no-such-program", "-t"]\n[messages]\nsend = ["/bin/true", "--send"]'

    def test_findings_and_nothing_written(self):
        self.desk.deliver("Subject: x\n\n")
        self.desk.deliver("", "2.empty", folder=".Sub")
        before = sorted(str(path) for path in self.desk.root.rglob("*"))
        findings = self.desk.health()
        self.assertEqual(before, sorted(str(path) for path in self.desk.root.rglob("*")))
        self.assertTrue(findings["desk.configuration"]["ok"])
        self.assertIn("2 mailboxes, 2 messages", findings["desk.mail.Work"]["detail"])
        self.assertIn("2.empty", findings["desk.mail.Work.damaged"]["detail"])
        self.assertFalse(findings["desk.sendmail.Work"]["ok"])
        self.assertEqual(findings["desk.messages.send"]["detail"], "through /bin/true")
        for finding in findings.values():
            self.assertEqual(list(finding), ["id", "label", "ok", "detail", "remedy"])
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
            desk = Desk(PROGRAMS, settings='layout = "%s"' % layout)
            (desk.root / "Work").mkdir()
            for folder in folders:
                desk.deliver("Subject: x\n\n", folder=folder)
            found = desk.health()["desk.mail.Work"]
            self.assertIn(said, found["detail"], (layout, folders))
            self.assertIn(remedy, found["remedy"], (layout, folders))
            self.assertEqual(found["ok"], not remedy, (layout, folders))
            desk.close()

    def test_a_damaged_index_and_a_bad_file(self):
        self.desk.cache.mkdir(parents=True)
        (self.desk.cache / "mail-index.sqlite").write_text("garbage" * 100)
        self.assertFalse(self.desk.health()["desk.mail-index"]["ok"])
        self.assertFalse(self.desk.health()["desk.mail.Work"]["ok"])
        self.desk.configure("x")
        self.assertIn("line 1", self.desk.health()["desk.configuration"]["detail"])


if __name__ == "__main__":
    PROGRAMS, MAKER = (str(pathlib.Path(word).resolve()) for word in sys.argv[1:3])
    os.environ["TZ"] = "Europe/Paris"
    time.tzset()
    unittest.main(argv=sys.argv[:1])
