"""Bulk work on mail through the whole program: `bulk_test.py CONTENTS-FOLDER`.

Which messages are touched is compared with Python's reading of the files; other programs that work on the same folders
at the same time are Dovecot, mbsync and processes that rename, remove and kill.
"""

import itertools
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest

import agreement_test as agreement  # which takes the command line
import maildir_reader as reader
from desk import Desk
from dovecot import LocalDovecot

KILLS = 60
MERVO = Desk.contents / "Helpers/mervo"


def may_mount():
    """Whether this is root with all its rights; in many containers it is not."""
    return os.geteuid() == 0 and subprocess.run(["unshare", "--mount", "mount", "-t", "tmpfs", "none", "/mnt"],
                                                capture_output=True).returncode == 0


def letters(path):
    return path.name.partition(":2,")[2]


class BulkDesk(Desk):
    """The account "A" in a home that asks nobody."""

    def __init__(self):
        super().__init__(("A",), mode="yolo")
        self.inbox = self.folder / "A"

    def operate(self, tool, mailbox="INBOX", **arguments):
        call = self.call(tool, account="A", mailbox=mailbox, **arguments)
        assert call["outcome"] == "executed", call
        return call["output"]

    def fill(self, count, box="", flags="S"):
        """Messages with their number as subject and content."""
        self.maildir(box)
        for number in range(count):
            self.deliver(b"From: a@x.example\nSubject: number %d\n\n%d\n" % (number, number),
                         f"{1_600_000_000 + number}.{number}.x", box, flags=flags)

    def numbers(self, box=""):
        return sorted(int(path.read_bytes().rpartition(b"\n\n")[2]) for path in self.files(box))


class BulkTest(unittest.TestCase):
    def new_desk(self):
        desk = BulkDesk()
        self.addCleanup(desk.close)
        desk.maildir()
        return desk

    def check(self, output, text):
        """The count of an output that reads like `text`, where N stands for the count."""
        self.assertRegex(output, "^" + re.escape(text).replace("N", "(\\d+)") + "$")
        return int(re.search(r"\d+", output).group())


class Touched(BulkTest):
    """The messages that a criterion selects, and no others, for each operation."""

    MARK = {"mail.delete": "OK deleted N message(s) -> Trash", "mail.move": "OK moved N message(s) -> Taken",
            "mail.flag": "OK flagged N message(s)", "mail.junk": "OK marked N message(s) as junk"}

    @classmethod
    def setUpClass(cls):
        cls.one = BulkDesk()
        cls.addClassCleanup(cls.one.close)
        cls.one.generate("--messages", "2000", "--folders", "1", "--now", "2026-01-15T09:00:00Z")
        cls.one.maildir(".Taken")
        cls.messages = reader.read_account(cls.one.inbox)["INBOX"]
        cls.places = {one.path.stat().st_ino: one.path for one in cls.messages}
        subjects = [one.subject for one in cls.messages]
        agreement.VALUES["subject"].insert(0, max(set(subjects), key=subjects.count).upper())

    def wanted(self, tool, criteria):
        now = agreement.datetime.datetime.now().replace(microsecond=0)
        return {one.path for one in self.messages if reader.matches(one, criteria, now)}

    def touched(self, tool):
        """The files that were touched, by the paths that they had; then each has that path again."""
        now = {path.stat().st_ino: path for box in ("", ".Trash", ".Taken") for path in self.one.files(box)}
        self.assertEqual(set(now), set(self.places), "each message is in one place")
        if tool in ("mail.delete", "mail.move"):
            box = self.one.inbox / (".Trash" if tool == "mail.delete" else ".Taken")
            touched = {self.places[inode] for inode, path in now.items() if path.parents[1] == box}
        else:
            mark = "F" if tool == "mail.flag" else letter_of(self.one.inbox, "$Junk")
            touched = {self.places[inode] for inode, path in now.items() if mark in letters(path)}
        for inode, path in now.items():
            if self.places[inode] not in touched:
                self.assertEqual(path, self.places[inode])
            path.rename(self.places[inode])
        return touched

    def compare(self, tool, criteria):
        own = {"dest": "Taken"} if tool == "mail.move" else {}
        wanted = self.wanted(tool, criteria)
        self.one.set(autonomyMode="copilote")
        held = self.one.call(tool, account="A", mailbox="INBOX", **own, **criteria)
        self.assertEqual(held["outcome"], "pending", held)
        self.assertEqual(held["preview"].split(" ")[0], str(len(wanted)))
        self.one.set(autonomyMode="yolo")
        self.assertEqual(self.check(self.one.operate(tool, **own, **criteria), self.MARK[tool]), len(wanted))
        touched = self.touched(tool)
        if tool == "mail.flag":
            wanted |= {one.path for one in self.messages if "F" in letters(one.path)}
        self.assertEqual(touched, wanted)
        return len(wanted)

    def test_each_criterion_and_pairs(self):
        cases = [{key: value} for key, values in agreement.VALUES.items() for value in values[:2]]
        cases += [{one: agreement.VALUES[one][0], other: agreement.VALUES[other][0]}
                  for one, other in itertools.combinations(agreement.VALUES, 2)]
        hits = 0
        for number, criteria in enumerate(cases):
            tool = list(self.MARK)[(number + number // 4) % 4]  # so that neighbours of every kind meet every tool
            with self.subTest(tool=tool, **criteria):
                hits += self.compare(tool, criteria)
        self.assertGreater(hits, 1000)


def letter_of(maildir, keyword):
    """The letter of a keyword, read as Dovecot documents its file."""
    file = maildir / "dovecot-keywords"
    for line in file.read_text().splitlines() if file.exists() else ():
        number, _, name = line.partition(" ")
        if name == keyword:
            return chr(ord("a") + int(number))
    return "-"


class Words(BulkTest):
    def test_what_is_said_of_nothing_and_of_what_is_missing(self):
        desk = self.new_desk()
        self.assertEqual(desk.operate("mail.delete", status="any"), "OK deleted 0 message(s) -> Trash")
        desk.fill(3)
        self.assertEqual(desk.operate("mail.move", status="any", dest="INBOX"), "OK moved 0 message(s) -> INBOX")
        for arguments, words in (({"tool": "mail.move", "dest": "Nope"}, "destination mailbox not found: Nope"),
                                 ({"tool": "mail.delete", "mailbox": "Nope"}, "mailbox not found: Nope"),
                                 ({"tool": "mail.junk", "account": "Nope"}, "whose name = \"Nope\"")):
            call = desk.call(**{"account": "A", "mailbox": "INBOX", "status": "any"} | arguments)
            self.assertEqual(call["outcome"], "error", call)
            self.assertIn(words, str(call))
        self.assertEqual(desk.numbers(), [0, 1, 2])

    def test_colours_and_junk_back_and_forth(self):
        desk = self.new_desk()
        desk.fill(2, flags="")
        steps = (("mail.flag", {"color": "PURPLE"}, "OK flagged 2 message(s)", {"$MailFlagBit0", "$MailFlagBit2"}, "F"),
                 ("mail.flag", {"color": "teal"}, "OK flagged 2 message(s)", {"$MailFlagBit0", "$MailFlagBit2"}, "F"),
                 ("mail.flag", {"color": "Grey"}, "OK flagged 2 message(s)", {"$MailFlagBit1", "$MailFlagBit2"}, "F"),
                 ("mail.junk", {"junk": "no"}, "OK marked 2 message(s) as junk",
                  {"$MailFlagBit1", "$MailFlagBit2", "$Junk"}, "F"),
                 ("mail.flag", {"flag": "False"}, "OK unflagged 2 message(s)", {"$Junk"}, ""),
                 ("mail.junk", {"junk": "FALSE"}, "OK unmarked 2 message(s)", {"$NotJunk"}, ""))
        for tool, own, output, keywords, capitals in steps:
            with self.subTest(tool, **own):
                self.assertEqual(desk.operate(tool, subjectContains="number", **own), output)
                expected = "".join(sorted(capitals + "".join(letter_of(desk.inbox, one) for one in keywords)))
                self.assertEqual({letters(path) for path in desk.files()}, {expected})

    def test_a_message_in_the_trash_is_deleted_for_good(self):
        desk = self.new_desk()
        desk.fill(5)
        self.assertEqual(desk.operate("mail.delete", status="read"), "OK deleted 5 message(s) -> Trash")
        self.assertEqual(desk.numbers(".Trash"), [0, 1, 2, 3, 4])
        self.assertEqual(desk.operate("mail.delete", "Trash", subject="number 3"), "OK deleted 1 message(s) -> Trash")
        self.assertEqual(desk.numbers(".Trash"), [0, 1, 2, 4])

    def test_names_of_strange_bytes(self):
        desk = self.new_desk()
        desk.fill(0)
        for number, name in enumerate((b"\xff\xfe", b"a b\nc", b"x:2,S:2,T", b"*?[", b"-rf", b"n" * 240)):
            path = os.fsencode(desk.inbox / "cur") + b"/" + name + b":2,S"
            with open(path, "wb") as file:
                file.write(b"Subject: number\n\n%d" % number)
        self.assertEqual(desk.operate("mail.flag", subject="number"), "OK flagged 6 message(s)")
        self.assertEqual(desk.operate("mail.delete", subject="number"), "OK deleted 6 message(s) -> Trash")
        self.assertEqual(desk.numbers(".Trash"), [0, 1, 2, 3, 4, 5])
        self.assertEqual({letters(path) for path in desk.files(".Trash")}, {"FS"})


class OtherPrograms(BulkTest):
    """Processes that work on the same folders, and a disk that does not go along."""

    def test_dovecot_reads_what_was_marked_and_the_desk_what_dovecot_marks(self):
        desk = self.new_desk()
        desk.fill(4, flags="")
        desk.fill(0, box=".Box")
        (desk.inbox / "dovecot-keywords").write_text("0 Custom\n")
        desk.operate("mail.flag", subject="number 1", color="yellow")
        desk.operate("mail.junk", subject="number 1")
        desk.operate("mail.flag", subject="number 2", color="red")
        desk.operate("mail.junk", subject="number 2", junk="false")
        server = LocalDovecot(desk.inbox)
        self.addCleanup(server.close)

        def flags_in(mailbox):
            """By the number in the subject, without the mark of new arrivals."""
            shown = server.doveadm("fetch", "hdr.subject flags", "mailbox", mailbox, "ALL")
            return {int(number): set(flags.split()) - {"\\Recent"}
                    for number, flags in re.findall(r"hdr.subject: number (\d+)\nflags:(.*)", shown)}

        flags = flags_in("INBOX")
        self.assertEqual(flags[1], {"\\Flagged", "$MailFlagBit1", "$Junk"})
        self.assertEqual(flags[2], {"\\Flagged", "$NotJunk"})
        self.assertEqual(flags[3], set())
        server.doveadm("flags", "add", "$MailFlagBit0 $MailFlagBit2 $Junk Custom \\Flagged", "mailbox", "Box", "ALL")
        server.doveadm("flags", "add", "$MailFlagBit2 \\Flagged", "mailbox", "INBOX", "SUBJECT", "number 3")
        desk.operate("mail.move", subject="number 1", dest="Box")
        desk.operate("mail.move", subject="number 3", dest="Box")
        self.assertEqual(flags_in("Box"), {1: {"\\Flagged", "$MailFlagBit1", "$Junk"},
                                               3: {"\\Flagged", "$MailFlagBit2"}})
        self.assertTrue((desk.inbox / ".Box/dovecot-keywords").exists(), "each folder has keywords of its own")
        self.assertEqual(set(flags_in("INBOX")), {0, 2})

    def test_mbsync_fetches_while_messages_are_deleted(self):
        desk, far = self.new_desk(), self.new_desk()
        far.fill(400, flags="")
        server = LocalDovecot(far.inbox)
        self.addCleanup(server.close)
        config = desk.folder / "mbsyncrc"
        config.write_text(f'IMAPStore far\nTunnel "{" ".join(server.imap())}"\n\nMaildirStore near\nInbox {desk.inbox}\n'
                          "SubFolders Maildir++\n\nChannel c\nFar :far:\nNear :near:\nPatterns INBOX\nCreate Near\n"
                          "SyncState *\n")
        sync = ["mbsync", "-q", "-c", str(config), "c"]
        environment = desk.environment | {"USER": "someone"}
        with subprocess.Popen(sync, env=environment, stderr=subprocess.DEVNULL) as fetching:
            deleted = 0
            while fetching.poll() is None:
                deleted += self.check(desk.operate("mail.delete", subjectContains="number"), "OK deleted N message(s) -> Trash")
        self.assertEqual(fetching.returncode, 0)
        deleted += self.check(desk.operate("mail.delete", subjectContains="number"), "OK deleted N message(s) -> Trash")
        self.assertEqual(deleted, 400)
        subprocess.run(sync, env=environment, check=True)
        self.assertEqual(desk.numbers() + desk.numbers(".Trash"), list(range(400)))
        self.assertFalse([path for path in desk.files(".Trash") if ",U=" in path.name])

    def test_messages_that_others_rename_and_remove(self):
        desk = self.new_desk()
        desk.fill(2000)
        desk.fill(0, box=".Box")
        stop, removed = threading.Event(), set()

        def meddle():
            luck = random.Random(5)
            while not stop.is_set():
                for path in desk.files():
                    number = int(path.name.split(".")[1])
                    try:
                        if number % 20 == 7 and luck.random() < 0.3:
                            path.unlink()
                            removed.add(number)
                        elif number % 3 == 0:
                            base, _, flags = path.name.partition(":2,")
                            path.rename(path.with_name(base + ":2," + "".join(sorted(set(flags) ^ {"S"}))))
                    except FileNotFoundError:
                        pass

        thread = threading.Thread(target=meddle)
        thread.start()
        try:
            flagged = self.check(desk.operate("mail.flag", subjectContains="number"), "OK flagged N message(s)")
            moved = self.check(desk.operate("mail.move", subjectContains="number", dest="Box"), "OK moved N message(s) -> Box")
        finally:
            stop.set()
            thread.join()
        self.assertEqual(desk.numbers() + desk.numbers(".Box"), sorted(set(range(2000)) - removed))
        self.assertEqual(len(desk.numbers(".Box")), moved)
        self.assertLess(len(desk.numbers()), 20)
        self.assertGreater(flagged, 1000, "one pass misses only what moves under its hands")

    def test_a_kill_at_any_moment_leaves_each_message_in_one_place(self):
        desk = self.new_desk()
        desk.fill(300)
        desk.fill(0, box=".Box")
        luck, midway = random.Random(3), 0
        command = [MERVO, "run", "mail.move", "account=A", "status=any"]
        for tried in range(5 * KILLS):
            if tried >= KILLS and midway >= KILLS // 6:
                break
            here = len(desk.files())
            way = ["mailbox=INBOX", "dest=Box"] if here >= 150 else ["mailbox=Box", "dest=INBOX"]
            with subprocess.Popen(command + way, env=desk.environment, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL) as call:
                watched = desk.inbox / ("cur" if here >= 150 else ".Box/cur")
                before, mark = watched.stat().st_mtime_ns, luck.random() ** 2 * 0.03
                children = pathlib.Path(f"/proc/{call.pid}/task/{call.pid}/children")
                while call.poll() is None and watched.stat().st_mtime_ns == before:
                    time.sleep(0.0002)
                time.sleep(mark)
                try:
                    for child in children.read_text().split():
                        os.kill(int(child), signal.SIGKILL)
                except (FileNotFoundError, ProcessLookupError):
                    pass  # it was quicker
            self.assertEqual(sorted(desk.numbers() + desk.numbers(".Box")), list(range(300)))
            moved = abs(len(desk.files()) - here)
            midway += 0 < moved < max(here, 300 - here)
        self.assertGreaterEqual(midway, KILLS // 6, "most kills came too early or too late")
        self.assertEqual([path for box in ("", ".Box") for path in (desk.inbox / box / "tmp").iterdir()], [])

    def in_namespace(self, desk, setup, *command):
        """Runs a command after a shell's preparations that nobody else sees."""
        return subprocess.run(["unshare", "--mount", "sh", "-ec", setup + '\n"$@" || true\ncd "$BOX"; find . -type f',
                               "sh", *command], env=desk.environment | {"BOX": str(desk.inbox / ".Box")},
                              capture_output=True, text=True, timeout=60, check=True).stdout.splitlines()

    def test_a_full_disk(self):
        desk = self.new_desk()
        desk.fill(60)
        for path in desk.files():
            with path.open("ab") as file:
                file.write(b"x" * 50_000)
        command = [MERVO, "run", "mail.move", "account=A", "mailbox=INBOX", "dest=Box", "status=any"]
        if may_mount():
            desk.fill(0, box=".Box")
            shown = self.in_namespace(desk, 'mount -t tmpfs -o size=1m none "$BOX"; mkdir "$BOX"/cur "$BOX"/new "$BOX"/tmp',
                                      *command)
            arrived = [line for line in shown if line.startswith("./cur/")]
            self.assertEqual([line for line in shown if line.startswith("./tmp/")], [])
            self.assertGreater(len(arrived), 5)
        else:
            far = pathlib.Path(tempfile.mkdtemp(prefix="mervo-bulk-", dir="/dev/shm"))
            self.addCleanup(shutil.rmtree, far)
            for part in ("cur", "new", "tmp"):
                (far / part).mkdir()
            (desk.inbox / ".Box").symlink_to(far)

            def limited():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (40_000, 40_000))

            subprocess.run(command, env=desk.environment, preexec_fn=limited, capture_output=True, check=False)
            arrived = []
            self.assertEqual(list((far / "tmp").iterdir()) + list((far / "cur").iterdir()), [])
        self.assertEqual(len(arrived) + len(desk.files()), 60)
        self.assertLess(len(arrived), 60)
        self.assertTrue(all(path.stat().st_size > 50_000 for path in desk.files()))

    def test_a_folder_that_may_not_be_written(self):
        desk = self.new_desk()
        desk.fill(20)
        desk.fill(0, box=".Box")
        box = desk.inbox / ".Box/cur"
        command = [MERVO, "run", "mail.move", "account=A", "mailbox=INBOX", "dest=Box", "status=any"]
        if os.geteuid() == 0:  # who may write everywhere
            command = ["setpriv", "--bounding-set", "-dac_override", *command]
        box.chmod(0o500)
        shown = subprocess.run(command, env=desk.environment, capture_output=True, text=True).stdout.splitlines()
        box.chmod(0o700)
        self.assertEqual(shown, ["OK moved 0 message(s) -> Box"])
        self.assertEqual(desk.numbers(), list(range(20)))


if __name__ == "__main__":
    unittest.main()
