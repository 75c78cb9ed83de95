"""What scripts change of messages, read by Python: `change_test.py CONTENTS-FOLDER`."""

import os
import pathlib
import sys
import tempfile
import unittest

from desk import Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
INBOX = 'mailbox "INBOX" of account "Work"'
FIRST = "message 1 of " + INBOX


class ChangeTest(DeskTest):
    def setUp(self):
        super().setUp()
        self.inbox = self.desk.maildir()

    def names(self, folder="", part="cur"):
        path = self.inbox / folder / part
        return sorted(os.fsdecode(name) for name in os.listdir(os.fsencode(path)))

    def keywords(self, folder=""):
        return (self.inbox / folder / "dovecot-keywords").read_text()


class Flags(ChangeTest):
    def test_letters_in_the_name(self):
        steps = (  # statement, the name then
            ("read status of m to true", "1,U=7:2,S"), ("deleted status of m to true", "1,U=7:2,ST"),
            ("read status of m to false", "1,U=7:2,T"), ("flagged status of m to true", "1,U=7:2,FT"),
            ("flag index of m to 6", "1,U=7:2,FTab"), ("flag index of m to 1", "1,U=7:2,FTc"),
            ("flagged status of m to true", "1,U=7:2,FTc"), ("flag index of m to 0", "1,U=7:2,FT"),
            ("flag index of m to 5", "1,U=7:2,FTbc"), ("flagged status of m to false", "1,U=7:2,T"),
            ("flag index of m to 4", "1,U=7:2,FTb"), ("flag index of m to -1", "1,U=7:2,T"),
            ("junk mail status of m to true", "1,U=7:2,Td"), ("junk mail status of m to false", "1,U=7:2,Te"))
        self.desk.deliver("Subject: x\n\n", "1,U=7")
        for statement, name in steps:
            self.desk.mail("set m to %s\nset %s" % (FIRST, statement))
            self.assertEqual(self.names(), [name], statement)
        self.assertEqual(self.keywords(), "0 $MailFlagBit1\n1 $MailFlagBit2\n2 $MailFlagBit0\n3 $Junk\n4 $NotJunk\n")

    def test_what_is_set_is_read_at_once_by_every_handle(self):
        self.desk.deliver("Subject: x\n\n", "1")
        self.assertEqual(self.desk.mail("""
            set box to %s
            set m to message 1 of box
            set other to message 1 of box
            set msgs to every message of box
            set flag index of m to 3
            set junk mail status of other to true
            return {flag index of other, flagged status of (item 1 of msgs), junk mail status of m, ¬
                flag index of every message of box, junk mail status of every message of box}""" % INBOX),
                         "3, true, true, 3, true")

    def test_unknown_letters_and_fields_stay(self):
        (self.inbox / "cur/1:2,DPZqx,k=v").write_text("Subject: x\n\n")
        self.desk.mail("set m to %s\nset read status of m to true\nset flag index of m to 1" % FIRST)
        self.assertEqual(self.names(), ["1:2,DFPSZaqx,k=v"])

    def test_a_full_table_of_keywords(self):
        (self.inbox / "dovecot-keywords").write_text("".join("%d k%d\n" % (n, n) for n in range(26)))
        self.desk.deliver("Subject: x\n\n", "1", flags="S")
        line = self.desk.failure("set flag index of %s to 2" % FIRST)
        self.assertRegex(line, "has 26 keywords already, and no room for .MailFlagBit1.* [(]-10000[)]")
        self.desk.mail("set flag index of %s to 0" % FIRST)  # needs no keyword
        self.assertEqual(self.names(), ["1:2,FS"])
        self.assertFalse((self.inbox / "dovecot-keywords.lock").exists())

    def test_a_lock_of_another_program_is_respected(self):
        self.desk.deliver("Subject: x\n\n", "1", flags="")
        lock = self.inbox / "dovecot-keywords.lock"
        lock.touch()
        self.assertIn("another program holds the lock", self.desk.failure("set flag index of %s to 2" % FIRST))
        self.assertEqual(self.names(), ["1:2,"])
        os.utime(lock, (1_700_000_000, 1_700_000_000))  # left behind long ago
        self.desk.mail("set flag index of %s to 2" % FIRST)
        self.assertEqual(self.names(), ["1:2,Fa"])


class Moves(ChangeTest):
    def test_a_move_keeps_bytes_flags_and_time(self):
        self.desk.maildir(".Box")
        (self.inbox / "dovecot-keywords").write_text("0 $Junk\n3 Custom\n")
        (self.inbox / ".Box/dovecot-keywords").write_text("0 Other\n")
        self.desk.deliver(b"Subject: \xff\r\n\r\nx", "1,U=5", received=1_600_000_001, flags="FSadq")
        self.desk.mail('move %s to mailbox "Box" of account "Work"' % FIRST)
        self.assertEqual(self.names(), [])
        (name,) = self.names(".Box")
        self.assertRegex(name, "^[^,]*:2,FSbcq$")
        moved = self.inbox / ".Box/cur" / name
        self.assertEqual((moved.read_bytes(), moved.stat().st_mtime), (b"Subject: \xff\r\n\r\nx", 1_600_000_001))
        self.assertEqual(self.keywords(".Box"), "0 Other\n1 $Junk\n2 Custom\n")

    def test_new_mail_lands_in_cur_and_setting_the_mailbox_moves(self):
        self.desk.maildir(".Box")
        self.desk.deliver("Subject: x\n\n", "1")
        self.desk.mail('set mailbox of %s to mailbox "Box" of account "Work"' % FIRST)
        self.assertTrue(self.names(".Box")[0].endswith(":2,"))
        self.assertEqual(self.names(".Box", "new") + self.names(part="new"), [])

    def test_into_the_same_mailbox_is_an_error(self):
        self.desk.deliver("Subject: x\n\n", "1")
        self.assertIn("is in the mailbox “INBOX” already. (-10000)", self.desk.failure("move %s to %s" % (FIRST, INBOX)))
        self.assertEqual(self.names(part="new"), ["1"])

    def test_handles_stay_good_and_bulk_looks_are_fresh(self):
        for number in range(6):
            self.desk.deliver("Subject: %d\n\n" % number, str(number), received=1_700_000_000 + number)
        self.assertEqual(self.desk.mail("""
            set box to %s
            set msgs to every message of box
            delete item 1 of msgs
            set oneSubject to subject of item 2 of msgs
            delete item 3 of msgs
            return {oneSubject, count of messages of box, subject of every message of box, exists item 1 of msgs, ¬
                exists item 2 of msgs}""" % INBOX), "4, 4, 4, 2, 1, 0, false, true")

    def test_another_file_system(self):
        shm = tempfile.TemporaryDirectory(prefix="mervo-desk-", dir="/dev/shm")
        self.addCleanup(shm.cleanup)
        folder = pathlib.Path(shm.name)
        self.assertNotEqual(folder.stat().st_dev, self.inbox.stat().st_dev)
        for part in ("cur", "new", "tmp"):
            (folder / part).mkdir(parents=True)
        (self.inbox / ".Far").symlink_to(folder)
        self.desk.deliver(b"Subject: x\n\n" + bytes(200_000), "1", received=1_600_000_001, flags="F")
        self.desk.mail('move %s to mailbox "Far" of account "Work"' % FIRST)
        (moved,) = (folder / "cur").iterdir()
        self.assertTrue(moved.name.endswith(":2,F"))
        self.assertEqual((moved.stat().st_size, moved.stat().st_mtime), (200_012, 1_600_000_001))
        self.assertEqual(self.names() + os.listdir(folder / "tmp"), [])

    def test_a_folder_that_takes_no_message(self):
        self.desk.deliver("Subject: x\n\n", "1", flags="S")
        self.desk.maildir(".Box")
        (self.inbox / ".Box/cur").rmdir()
        move = 'move %s to mailbox "Box" of account "Work"' % FIRST
        (self.inbox / ".Box/cur").write_text("a file where a folder should be")
        self.assertIn("The message cannot be moved to %s: Not a directory. (-10000)" % (self.inbox / ".Box"),
                      self.desk.failure(move))
        self.assertEqual(self.names(), ["1:2,S"])
        (self.inbox / ".Box/cur").unlink()
        self.desk.mail(move)  # a Maildir without its cur is mended
        self.assertEqual(len(self.names(".Box")), 1)


if __name__ == "__main__":
    unittest.main()
