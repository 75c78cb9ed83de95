"""The mail tools against a real Maildir: `agreement_test.py CONTENTS-FOLDER`.

Every criterion alone and every pair of them, through the whole program: the gate, the script host, the mail scripts and
the desk. What they find is compared with what Python's mail library finds in the same files.
"""

import datetime
import itertools
import os
import pathlib
import sys
import time
import unittest

import maildir_reader as reader
from desk import Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
os.environ["TZ"] = "Europe/Paris"  # not UTC, and with two changes of the clock a year
time.tzset()

NEWEST = 1_700_000_000
ACCOUNTS = {"Work": ("1", "1500", "12"), "Zu Hause – privat": ("2", "500", "6")}  # name: seed, messages, folders


# Values that select some of the generated messages, and a few that select all or none.
VALUES = {
    "from": ["harbour.example", "ELENE", "é", "alex.martin@mail.example.org", "Nobody At All"],
    "to": ["ALEX.MARTIN", "lists.example.org", "nobody@"],
    "before": ["2024-06-01", "2026-01-15", "1999-12-31"],
    "after": ["2024-06-01", "2026-01-15", "1999-12-31"],
    "olderThan": ["700", "0", "100000"],
    "minSize": ["0.01", "0.5", "0", "1000"],
    "maxSize": ["0.01", "0.5", "0", "0.000001"],
    "subject": ["Final report", "final REPORT", "no such subject at all"],
    "subjectContains": ["budget", "RÉUNION", "größere", "の確認", '"', "%"],
    "status": ["unread", "READ", "flagged"],
    "hasAttachment": ["true", "false"],
}


class Agreement(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desk = Desk({name: [f"me{number}@example.org"] for number, name in enumerate(ACCOUNTS)})
        cls.addClassCleanup(cls.desk.close)
        for name, (seed, messages, folders) in ACCOUNTS.items():
            cls.desk.generate("--messages", messages, "--folders", folders, "--seed", seed, "--now", "2026-01-15T09:00:00Z",
                              account=name)
        cls.mail = {name: reader.read_account(cls.desk.folder / name) for name in ACCOUNTS}
        cls.now = datetime.datetime.now().replace(microsecond=0)
        # The most frequent subject makes the exact comparison worth something.
        subjects = [one.subject for _, _, one in cls.everything()]
        VALUES["subject"].insert(0, max(set(subjects), key=subjects.count).upper())

    @classmethod
    def everything(cls, account=None, mailbox=None):
        for name, boxes in cls.mail.items():
            for box, messages in boxes.items():
                if account in (None, name) and mailbox in (None, box):
                    yield from ((name, box, one) for one in messages)

    def expect(self, call, lines):
        self.assertEqual(call["outcome"], "executed", call)
        self.assertEqual(sorted(call.lines), sorted(lines))

    def found(self, criteria, account=None, mailbox=None):
        return [hit for hit in self.everything(account, mailbox) if reader.matches(hit[2], criteria, self.now)]

    def search(self, criteria):
        call = self.desk.call("mail.search", limit=0, **criteria)
        hits = self.found(criteria)
        self.expect(call, [f"{account}/{box} || {one.date} || {one.size} || {one.sender} || {one.subject}"
                           for account, box, one in hits])
        return len(hits)

    def audit(self, criteria, account="Work", mailbox="INBOX"):
        call = self.desk.call("mail.audit", account=account, mailbox=mailbox, **criteria)
        lines = [f"{one.date} || {one.size} || {one.sender} || {one.subject}"
                 for _, _, one in self.found(criteria, account, mailbox)]
        self.expect(call, lines)
        dates = [line[:16] for line in call.lines]
        self.assertEqual(dates, sorted(dates, reverse=True), "newest first")
        return len(lines)

    def message_ids(self, criteria, account="Work", mailbox="Archive"):
        call = self.desk.call("mail.messageId", account=account, mailbox=mailbox, **criteria)
        hits = self.found(criteria, account, mailbox)
        self.expect(call, [one.message_id for _, _, one in hits])
        return len(hits)

    def test_each_criterion_alone(self):
        for key, values in VALUES.items():
            counts = []
            for value in values:
                with self.subTest(f"{key}={value}"):
                    counts.append(self.search({key: value}))
            self.assertTrue(any(0 < count < 2000 for count in counts), f"{key} selects all or nothing: {counts}")

    def test_every_pair(self):
        asked = itertools.cycle((self.audit, self.message_ids, self.search))
        hits = 0
        for one, other in itertools.combinations(VALUES, 2):
            with self.subTest(f"{one} and {other}"):
                hits += next(asked)({one: VALUES[one][0], other: VALUES[other][0]})
        self.assertGreater(hits, 100)

    def test_a_whole_mailbox(self):
        for account, boxes in self.mail.items():
            for box in boxes:
                with self.subTest(box):
                    self.audit({}, account, box)
                    call = self.desk.call("mail.headers", account=account, mailbox=box)
                    self.expect(call, [f"{one.date} || {one.sender} || {one.subject}" for one in boxes[box]])

    def test_limits(self):
        inbox = self.mail["Work"]["INBOX"]
        for limit, count in (("3", 3), ("0", len(inbox)), (str(len(inbox) + 5), len(inbox)), ("-1", len(inbox))):
            with self.subTest(limit):
                for tool in ("mail.headers", "mail.audit"):
                    lines = self.desk.call(tool, account="work", mailbox="inbox", limit=limit).lines
                    self.assertEqual(len(lines), count)
                    self.assertEqual([line[:16] for line in lines], [one.date for one in inbox[:count]])
        self.assertEqual(len(self.desk.call("mail.search", after="2000-01-01", limit=3).lines), 3)
        self.assertEqual(len(self.desk.call("mail.search", after="2000-01-01").lines), 50)
        self.assertEqual(self.desk.call("mail.search", after="2000-01-01", limit="").get("outcome"), "error")

    def test_search_goes_where_it_is_sent(self):
        for account, box in (("all", "all"), ("", ""), ("ALL", "inbox"), ("Work", "all"), ("work", "No Such Box"),
                             ("Zu Hause – privat", "Archive")):
            with self.subTest(f"{account}/{box}"):
                call = self.desk.call("mail.search", account=account, mailbox=box, status="any", limit=0)
                self.assertEqual(len(call.lines), sum(
                    len(messages) for name, boxes in self.mail.items() for other, messages in boxes.items()
                    if account.lower() in ("all", "", name.lower()) and box.lower() in ("all", "", other.lower())))

    def test_accounts_lists_what_there_is(self):
        lines = [line for name, boxes in self.mail.items()
                 for line in ("ACCOUNT: " + name, *("  " + box for box in boxes))]
        self.expect(self.desk.call("mail.accounts"), lines)

    def test_failures_are_said(self):
        inbox = {"account": "Work", "mailbox": "INBOX"}
        no_account = "execution error: Mail got an error: Can’t get account 1"
        for tool, arguments, said in (
                ("mail.audit", inbox | {"mailbox": "No Such"}, "mailbox not found: No Such"),
                ("mail.body", inbox | {"mailbox": "", "subject": "x"}, "missing required argument: mailbox"),
                ("mail.headers", inbox | {"account": 'No" & "pe'}, no_account),
                ("mail.search", {"account": "Nope", "from": "x"}, no_account),
                *(("mail.audit", inbox | {key: value}, f' - {key} wants {wanted}, not "{value}"') for key, value, wanted in (
                    ("before", "soon", "a date as YYYY-MM-DD"), ("after", "2026-1-5", "a date as YYYY-MM-DD"),
                    ("olderThan", "a week", "a whole number from 1"), ("minSize", "big", "a number above 0"),
                    ("limit", "some", "a whole number from 0")))):
            with self.subTest(f"{tool} {arguments}"):
                call = self.desk.call(tool, **arguments)
                self.assertEqual(call["outcome"], "error")
                self.assertIn(said, call["error"])

    def test_bodies(self):
        """The newest message of a subject, and its text."""
        inbox = self.mail["Work"]["INBOX"]
        subjects = sorted({one.subject for one in inbox}, key=lambda one: -sum(o.subject == one for o in inbox))
        for subject in subjects[:15] + subjects[-15:]:
            with self.subTest(subject):
                newest = next(one for one in inbox if reader.folded(one.subject) == reader.folded(subject))
                call = self.desk.call("mail.body", account="Work", mailbox="INBOX", subject=subject)
                self.assertEqual(call["output"], reader.cleaned(newest.content))
        self.assertEqual(self.desk.call("mail.body", account="Work", mailbox="INBOX", subject="no such")["output"],
                         "(no matching message)")
        sender = inbox[len(inbox) // 2].sender
        newest = next(one for one in inbox if one.sender == sender and "e" in one.subject)
        call = self.desk.call("mail.body", account="Work", mailbox="INBOX", subjectContains="e", from_=sender)
        self.assertEqual(call["output"], reader.cleaned(newest.content))

    def test_previews_count_what_would_be_touched(self):
        for criteria in ({"subjectContains": "budget"}, {"minSize": "0.2"}, {"subject": "no such"}):
            with self.subTest(criteria):
                hits = self.found(criteria, "Work", "INBOX")
                call = self.desk.call("mail.delete", account="Work", mailbox="INBOX", **criteria)
                kilobytes = round(sum(one.size for _, _, one in hits) / 1024)
                self.assertEqual(call["outcome"], "pending")
                self.assertEqual(call["preview"], f"{len(hits)} message(s), {kilobytes / 1024:.1f} MB")
        call = self.desk.call("mail.flag", account="Work", mailbox="INBOX", subject="no such", color="RED",
                              flag="False")
        self.assertEqual(call["preview"], "0 message(s), 0.0 MB → unflag red")
        call = self.desk.call("mail.move", account="Work", mailbox="Nowhere", dest="Archive", status="read")
        self.assertNotIn("preview", {key for key, value in call.items() if value is not None})


class SmallTest(DeskTest):
    """Desks with one account "A"."""

    options = {"accounts": {"A": ["me@example.org", "other@example.org"]}}

    def filled(self, messages, newest=NEWEST, apart=60):
        """A desk whose inbox holds these bytes, the first one newest, so many seconds apart."""
        desk = self.new_desk(**self.options)
        for number, data in enumerate(messages):
            desk.deliver(data, f"{number}.host", flags="S", received=newest - apart * number)
        return desk


class Odd(SmallTest):
    """Messages that a generator would not write, with what is expected written by hand."""

    MESSAGES = [  # bytes, then sender and subject as lines show them
        (b"", "", ""),
        (b"\n\nonly a body\n", "", ""),
        (b"Subject: a || b \"c\" \\d\nFrom: x@example.org\n\nt\n", "x@example.org", 'a || b "c" \\d'),
        (b"Subject: =?UTF-8?B?4oCucm90IA==?= =?UTF-8?Q?=F0=9F=98=80?=\nFrom: =?x?= <y@example.org>\n\n", None,
         "\u202erot 😀"),
        (b"Subject: folded\n\tover\n lines\nFrom: \"Last, First\" <z@example.org>\n\n", "Last, First <z@example.org>",
         "folded over lines"),
        (b"subject: lower case\nFROM: A <a@example.org>\nDate: the day before\n\n", "A <a@example.org>", "lower case"),
    ]

    def test_none_of_them_hides_the_others(self):
        desk = self.filled([data for data, _, _ in self.MESSAGES])
        lines = desk.call("mail.audit", account="A", mailbox="INBOX").lines
        self.assertEqual(len(lines), len(self.MESSAGES), lines)
        for line, (number, (data, sender, subject)) in zip(lines, enumerate(self.MESSAGES)):
            date = datetime.datetime.fromtimestamp(NEWEST - 60 * number).strftime("%Y-%m-%d %H:%M")
            fields = line.split(" || ", 3)
            self.assertEqual(fields[:2], [date, str(len(data))])
            if sender is not None:
                self.assertEqual(fields[2], sender)
            if subject:
                self.assertEqual(fields[3], subject)
        body = desk.call("mail.body", account="A", mailbox="INBOX", subjectContains="a || b")
        self.assertEqual(body["output"], "t")

    def test_a_broken_mailbox_hides_only_itself_from_a_search(self):
        desk = self.filled([b"Subject: here\n\n"])
        cur = desk.maildir(".Broken") / "cur"
        cur.rmdir()
        cur.symlink_to("cur")
        lines = desk.call("mail.search", status="any").lines
        self.assertEqual([line.split(" || ")[0] for line in lines], ["A/INBOX"])
        self.assertEqual(desk.call("mail.audit", account="A", mailbox="Broken")["outcome"], "error")

    def test_the_first_of_two_with_one_date_is_the_newest(self):
        head = b"From: x@example.org\nSubject: twice\nMessage-ID: <%s@example.org>\n\n%s\n"
        messages = [head % (word, word) for word in (b"one", b"two", b"three")]
        wanted = {"account": "A", "mailbox": "INBOX", "subject": "TWICE"}
        self.assertEqual(self.filled(messages).call("mail.body", **wanted)["output"], "one")
        desk = self.filled(messages, apart=0)
        first = desk.call("mail.messageId", **wanted).lines[0]
        self.assertEqual(desk.call("mail.body", **wanted)["output"], first.partition("@")[0])


class Boundaries(SmallTest):
    """Sizes and days to the byte and to the second."""

    def test_a_day_begins_at_local_midnight_and_belongs_to_neither_side(self):
        for day in ("2024-03-31", "2024-10-27", "2026-01-01"):  # two of them have 23 and 25 hours
            with self.subTest(day):
                midnight = int(datetime.datetime.strptime(day, "%Y-%m-%d").timestamp())
                words = (b"after", b"midnight", b"before")
                desk = self.filled([b"Subject: %s\n\n" % word for word in words], newest=midnight + 1, apart=1)
                for key in ("before", "after"):
                    call = desk.call("mail.audit", account="A", mailbox="INBOX", **{key: day})
                    self.assertEqual([line.split(" || ")[3] for line in call.lines], [key])

    def test_a_size_counts_as_both_the_least_and_the_most(self):
        sizes = [1023, 1024, 1025, 1048576]
        desk = self.filled([b"Subject: s\n\n" + b"x" * (size - 12) for size in sizes])
        for key, expected in (("minSize", [1024, 1025, 1048576]), ("maxSize", [1023, 1024])):
            call = desk.call("mail.audit", account="A", mailbox="INBOX", **{key: "0.0009765625"})
            self.assertEqual([int(line.split(" || ")[1]) for line in call.lines], expected, key)
        call = desk.call("mail.delete", account="A", mailbox="INBOX", minSize="1")
        self.assertEqual(call["preview"], "1 message(s), 1.0 MB")


if __name__ == "__main__":
    unittest.main()
