"""mail.archive, whole: the real programs, a real IMAP server, a real secret service. `archive_test.py CONTENTS-FOLDER`."""

import json
import os
import pathlib
import pty
import select
import shutil
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

import dovecot
from desk import Desk
from dovecot import PASSWORD, USER, Authority, Dovecot
from keyring import Keyring
from relay import Relay

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
SECRET = PASSWORD.encode()


def message(number, subject, identity=None):
    return (f"From: ann@example.test\r\nTo: {USER}\r\nSubject: {subject}\r\nDate: Mon, 2 Mar 2026 10:00:00 +0000\r\n"
            f"Message-ID: <{identity or f'm{number}@example.test'}>\r\n\r\nText {number}\r\n").encode()


class Person(Desk):
    """A home with one mail account, whose server is at a port."""

    def __init__(self, folder, keyring, ca):
        bus = keyring.environment if keyring else {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/no-bus"}
        super().__init__({"Claire": [USER]}, mode="yolo", folder=folder, environment={"SSL_CERT_FILE": str(ca), **bus})
        self.maildir()

    def archives_at(self, port, mode="yolo", host="localhost"):
        self.set(autonomyMode=mode,
                 imapAccounts=[{"mailAccountName": "Claire", "email": USER, "host": host, "port": port}])

    def has(self, messages):
        for number, text in enumerate(messages):
            self.deliver(text, f"{1700000000 + number}.M{number}.desk", flags="S", received=time.time())

    def archive(self, *words):
        return self.tool("mail.archive", "account=Claire", *words)


class Archive(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(tempfile.mkdtemp(prefix="mervo-"))
        cls.root.chmod(0o755)
        cls.authority = Authority(cls.root / "tls")
        cls.certificate = cls.authority.certificate("localhost")
        cls.keyring = Keyring(cls.root / "keyring")
        cls.keyring.__enter__()

    @classmethod
    def tearDownClass(cls):
        cls.keyring.__exit__()
        shutil.rmtree(cls.root)

    def setUp(self):
        self.place = pathlib.Path(tempfile.mkdtemp(dir=self.root, prefix="t"))  # sockets want short paths
        self.place.chmod(0o755)
        self.person = Person(self.place / "person", self.keyring, self.authority.ca)
        kept = self.person.mervo("secret", "set", USER, text=PASSWORD + "\n")
        self.assertEqual((kept.returncode, kept.stderr), (0, ""))

    def server(self, folders=dovecot.WITH_ALL):
        return Dovecot(self.place / "s", self.authority, folders)

    def relay(self, server, **manners):
        return Relay(self.certificate, server.port if server else None, self.authority.ca, **manners)

    def stock(self, server):
        """Five messages here and there; one is there twice, and one of ours is unknown there."""
        here = [message(i, "Weekly news" if i % 2 else "Invoice") for i in range(6)] + [message(9, "Weekly lost")]
        self.person.has(here)
        server.deliver(here[:6] + [message(91, "Weekly news", "m1@example.test")])
        return here

    # ---- the work itself

    def test_the_conversation_and_what_comes_of_it(self):
        with self.server() as server, self.relay(server) as relay:
            here = self.stock(server)
            self.person.archives_at(relay.port)
            done = self.person.archive("subjectContains=weekly")
            self.assertEqual((done.stdout, done.stderr),
                             ("OK archived 4 message(s) - moved out of INBOX over IMAP\n", ""))
            folder = '"[Gmail]/Tous les messages"'
            said = ['LOGIN "claire@example.test" "a\\"b\\\\c d"', 'LIST "" "*"', "SELECT INBOX"]
            for number, uids in ((9, []), (5, [6]), (3, [4]), (1, [2, 7])):
                said.append(f'UID SEARCH HEADER MESSAGE-ID "<m{number}@example.test>"')
                said += [f"UID MOVE {uid} {folder}" for uid in uids]
            said.append("LOGOUT")
            told = relay.lines
            self.assertEqual([line.split(" ", 1)[0] for line in told], [f"a{i + 1}" for i in range(len(told))])
            self.assertTrue(all(line.endswith("\r\n") for line in told))
            self.assertEqual(sorted(line.split(" ", 1)[1].strip() for line in told[3:-1]), sorted(said[3:-1]))
            self.assertEqual([line.split(" ", 1)[1].strip() for line in told[:3] + told[-1:]], said[:3] + said[-1:])
            self.assertEqual(server.folder_files("INBOX"), sorted(here[:6:2]))
            self.assertEqual(len(server.folder_files("[Gmail]/Tous les messages")), 4)
            self.assertEqual(len(list((self.person.maildir() / "cur").iterdir())), 7, "the desk's own copy is the server's to move")
            self.assertEqual([row[1:4] for row in self.person.audit()], [("mail.archive", "executed", "yolo_auto")])
            again = self.person.archive("subjectContains=nothing like it")
            self.assertEqual(again.stdout, "OK archived 0 message(s) - no match\n")
            self.assertEqual(len(told), len(relay.lines), "no connection for nothing")

    def test_servers_differ_in_their_folder_for_all_mail(self):
        for number, (folders, name) in enumerate(((dovecot.WITHOUT_ALL, "[Gmail]/All Mail"), (dovecot.PLAIN_ALL, "Alles"))):
            with Dovecot(self.place / f"s{number}", self.authority, folders) as server:
                server.deliver([message(1, "Weekly news")])
                self.person.has([message(1, "Weekly news")])
                self.person.archives_at(server.port)
                done = self.person.archive("subject=Weekly news")
                self.assertEqual(done.stdout, "OK archived 1 message(s) - moved out of INBOX over IMAP\n", done.stderr)
                self.assertEqual(len(server.folder_files(name)), 1)

    def test_the_owner_approves_what_was_shown(self):
        with self.server() as server:
            self.stock(server)
            self.person.archives_at(server.port, "copilote")
            held = self.person.archive("subject=Invoice")
            self.assertRegex(held.stdout, r"^pending [0-9A-F]{8}\n3 message\(s\), 0\.0 MB → archive \(IMAP \\Inbox\)\n$")
            done = self.person.approve(held.stdout.split()[1])
            self.assertEqual(done.stdout, "OK archived 3 message(s) - moved out of INBOX over IMAP\n", done.stderr)
            self.assertEqual([row[:4] for row in self.person.audit()],
                             [("cli", "mail.archive", "pending_approval", "needs_approval"),
                              ("cockpit", "mail.archive", "executed", "approved")])

    def test_a_message_id_finds_no_other_message(self):
        """A server looks for a part of the header, and a sender writes what he likes into his."""
        here = [message(i, "Weekly news") for i in range(4)]
        for number, identity in enumerate(("<", "<m", "=?utf-8?q?=3C?=", "<>", ">")):
            here.append(message(10 + number, f"Bait {number}", identity))
        with self.server() as server:
            self.person.has(here)
            server.deliver(here)
            self.person.archives_at(server.port)
            self.person.archive("subjectContains=Bait")
            self.assertEqual([text for text in server.folder_files("INBOX") if b"Weekly" in text], sorted(here[:4]))

    def test_other_accounts_move_to_a_folder(self):
        self.person.has([message(i, "Weekly news") for i in range(3)])
        for folder in ("Archive", "Old"):
            self.person.maildir(f".{folder}")
        self.person.set(autonomyMode="copilote")
        self.assertTrue(self.person.archive("subject=Weekly news").stdout.endswith("3 message(s), 0.0 MB → Archive\n"))
        self.person.set(autonomyMode="yolo")
        self.assertEqual(self.person.archive("subject=Weekly news").stdout, "OK moved 3 message(s) -> Archive\n")
        back = self.person.archive("subject=Weekly news", "mailbox=Archive", "dest=Old")
        self.assertEqual(back.stdout, "OK moved 3 message(s) -> Old\n", back.stderr)
        lost = self.person.archive("subject=x", "dest=Nowhere")
        self.assertRegex(lost.stderr, "^error: could not read the messages to archive: .*destination mailbox not found: Nowhere")

    # ---- what goes wrong

    def test_refusals_are_sentences_and_never_hold_the_password(self):
        with self.server() as server, self.relay(server) as relay:
            self.stock(server)
            self.person.archives_at(relay.port)
            self.person.mervo("secret", "set", USER, text="wrong " + PASSWORD + "\n")
            refused = self.person.archive("subject=Invoice")
            self.assertEqual(refused.returncode, 1)
            self.assertRegex(refused.stderr, r"^error: IMAP archive failed: imap server: a1 NO \[AUTHENTICATIONFAILED\]")
            self.assertEqual(self.person.mervo("secret", "test", USER).returncode, 1)
        repeating = {0: b"* OK\r\n", 1: b"a1 NO you said " + b'"wrong a\\"b\\\\c d" or wrong ' + SECRET + b"\r\n"}
        with self.relay(None, answers=repeating) as relay:
            self.person.archives_at(relay.port)
            refused = self.person.archive("subject=Invoice")
            self.assertIn("a1 NO you said *** or ***", refused.stderr)
        with sqlite3.connect(self.person.home / "mervo.sqlite") as database:
            everything = "\n".join(database.iterdump())
        self.assertIn("IMAP archive failed", everything)
        for part in (PASSWORD, 'a\\"b'):
            self.assertNotIn(part, everything)
            self.assertNotIn(part, refused.stderr + refused.stdout)

    def test_only_a_trusted_certificate_of_the_right_name_will_do(self):
        with self.server() as server:
            self.stock(server)
            self.person.archives_at(server.port, host="127.0.0.1")
            self.assertIn("is made out to another name", self.person.archive("subject=Invoice").stderr)
            self.person.archives_at(server.port)
            stranger = Person(self.place / "stranger", self.keyring, self.place / "no-such-file")
            stranger.archives_at(server.port)
            stranger.has([message(1, "Invoice")])
            self.assertIn("does not trust; add the authority", stranger.archive("subject=Invoice").stderr)
        other = Authority(self.place / "other")
        with Relay(other.certificate("localhost"), None, None) as relay:
            self.person.archives_at(relay.port)
            self.assertIn("does not trust; add the authority", self.person.archive("subject=Invoice").stderr)
            self.assertEqual(relay.lines, [], "nothing is said to a stranger")
        over = Authority(self.place / "over")
        late = Person(self.place / "late", self.keyring, over.ca)
        late.has([message(1, "Invoice")])
        with Relay(over.certificate("localhost", days=-1), None, None) as relay:
            late.archives_at(relay.port)
            self.assertIn("expired", late.archive("subject=Invoice").stderr)
            self.assertEqual(relay.lines, [], "nothing is said where the certificate has ended")
        self.person.archives_at(dovecot.free_port())
        self.assertRegex(self.person.archive("subject=Invoice").stderr, "imap connect: localhost port .*: Connection refused")

    def test_answers_in_single_bytes_and_a_connection_that_breaks(self):
        with self.server() as server:
            self.stock(server)
            with self.relay(server, single=True) as relay:
                self.person.archives_at(relay.port)
                self.assertEqual(self.person.archive("subject=Weekly lost").stdout,
                                 "OK archived 0 message(s) - moved out of INBOX over IMAP\n")
                self.assertEqual(self.person.archive("from=ann", "subject=Invoice", "mailbox=INBOX").stdout,
                                 "OK archived 3 message(s) - moved out of INBOX over IMAP\n")
            with self.relay(server, cut_at=7) as relay:  # a1..a3, then lost, search, move, search
                self.person.archives_at(relay.port)
                broken = self.person.archive("subjectContains=Weekly")
                self.assertEqual(broken.stderr, "error: IMAP archive failed: imap connect: connection closed\n")
            moved = len(server.folder_files("[Gmail]/Tous les messages"))
            self.assertEqual((moved, len(server.folder_files("INBOX"))), (4, 3), "what was moved stays moved")
            self.person.archives_at(server.port)
            self.assertEqual(self.person.archive("subjectContains=Weekly").stdout,
                             "OK archived 3 message(s) - moved out of INBOX over IMAP\n")

    def test_silence_ends_after_the_patience_at_every_step(self):
        answers = {0: b"* OK\r\n", 1: b"a1 OK\r\n", 2: b"a2 OK\r\n", 3: b"a3 OK\r\n", 4: b"* search 7 x 8\r\na4 ok\r\n",
                   5: b"a5 OK\r\n", 6: b"a6 OK\r\n", 7: b"* SEARCH\r\na7 OK\r\n", 8: b"a8 OK\r\n"}

        def probe(port, milliseconds="300"):
            return self.person.run("Tests/imap-probe", "localhost", str(port), USER, "what the probe logs in with",
                                   milliseconds, "a\r\nb", "<x@y>", "z")

        with self.relay(None, answers=answers) as relay:
            moved = probe(relay.port, "5000")
            self.assertEqual((moved.stdout, moved.stderr), ("2\n", ""))
            self.assertEqual([line.split(" ", 1)[1].strip() for line in relay.lines[3:]],
                             ['UID SEARCH HEADER MESSAGE-ID "<x@y>"', 'UID MOVE 7 "[Gmail]/All Mail"',
                              'UID MOVE 8 "[Gmail]/All Mail"', 'UID SEARCH HEADER MESSAGE-ID "<z>"', "LOGOUT"])
        for step in range(9):
            with self.relay(None, answers=answers, silent_at=step) as relay:
                silent = probe(relay.port)
                self.assertEqual((silent.stdout, silent.stderr),
                                 ("2\n", "") if step == 8 else ("", "imap timeout: read\n"), f"step {step}")
        with socket.create_server(("127.0.0.1", 0)) as mute:
            self.assertEqual(probe(mute.getsockname()[1]).stderr, "imap timeout: connect\n")
        with self.relay(None, answers=answers | {2: b"* LIST (" + b"x" * (17 << 20)}) as relay:
            self.assertEqual(probe(relay.port, "20000").stderr, "imap server: an answer of more than 16 MiB\n")
        with self.relay(None, answers=answers | {5: b"a5 BAD no MOVE here\r\n"}) as relay:
            self.assertEqual(probe(relay.port, "5000").stderr, "imap server: a5 BAD no MOVE here\n")

    # ---- secrets

    def test_secrets_are_kept_tried_and_never_shown(self):
        with self.server() as server:
            self.person.archives_at(server.port)
            tried = self.person.mervo("secret", "test", USER)
            self.assertEqual((tried.returncode, tried.stdout), (0, f"localhost accepts the app password of {USER}\n"))
        for words in (["secret"], ["secret", "set"], ["secret", "get", USER], ["secret", "set", "claire"]):
            self.assertEqual(self.person.mervo(*words, text="x\n").returncode, 2, words)
        self.assertEqual(self.person.mervo("secret", "set", USER, text="\n").returncode, 1)
        self.assertIn("no account of config.json", self.person.mervo("secret", "test", "x@elsewhere.test").stderr)

        master, terminal = pty.openpty()
        asked = subprocess.Popen([Desk.contents / "Helpers/mervo", "secret", "set", "pat@gmail.com"], stdin=terminal,
                                 stdout=terminal, stderr=terminal, env=self.person.environment)
        shown = b""
        while b": " not in shown:
            shown += os.read(master, 1000)
        time.sleep(0.2)
        os.write(master, b"hidden words\n")
        self.assertEqual(asked.wait(30), 0)
        while b"is kept" not in shown and select.select([master], [], [], 10)[0]:
            shown += os.read(master, 1000)
        self.assertNotIn(b"hidden", shown)
        self.assertIn(b"the app password of pat@gmail.com is kept", shown)
        os.close(master), os.close(terminal)
        lookup = subprocess.run(["gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path",
                                 "/org/freedesktop/secrets", "--method", "org.freedesktop.Secret.Service.SearchItems",
                                 "{'service': 'org.mervolabs.app.imap', 'account': 'pat@gmail.com'}"],
                                env=self.person.environment, capture_output=True, text=True).stdout
        self.assertRegex(lookup, r"/collection/login/\d+")

    def test_without_a_secret_service_there_is_a_remedy(self):
        alone = Person(self.place / "alone", None, self.authority.ca)
        alone.archives_at(dovecot.free_port())
        self.assertEqual(alone.archive("subject=x").stderr,
                         f"error: no app password in Keychain for {USER} - add it in Settings → Archive.\n")
        for words in (["set", USER], ["test", USER]):
            refused = alone.mervo("secret", *words, text="x\n")
            self.assertRegex(refused.stderr, "^error: keychain error -25291: No Secret Service can be reached; start one")
        with Keyring(self.place / "locked", locked=True) as locked:
            person = Person(self.place / "shut", locked, self.authority.ca)
            began = time.monotonic()
            refused = person.mervo("secret", "set", USER, text="x\n")
            self.assertEqual(refused.returncode, 1)
            self.assertRegex(refused.stderr, r"keychain error -253\d\d|keychain error -25\d\d\d")
            self.assertLess(time.monotonic() - began, 70)

    def test_the_doctor_names_the_missing_password(self):
        def check(person):
            checks = json.loads(person.mervo("doctor", "--json").stdout)
            found = next(check for check in checks if check["id"] == "archive")
            return found["state"], found["detail"], found["remedy"]
        self.assertEqual(check(self.person)[0], "works")
        alone = Person(self.place / "alone", None, self.authority.ca)
        for person in (self.person, alone):
            person.archives_at(993)
        self.assertEqual(check(self.person), ("works", f"there is an app password for {USER}", ""))
        self.assertEqual(check(alone)[0], "limited")
        self.assertIn("No Secret Service can be reached; start one", check(alone)[1])
        self.person.configure(self.person.config.read_text().replace(USER, "c@gmail.com"))
        self.assertEqual(check(self.person), (
            "limited", f"there is an app password for {USER}\n"
            "no app password for c@gmail.com: its messages cannot be archived",
            "To keep one: mervo secret set c@gmail.com"))

    def test_the_password_is_on_no_command_line(self):
        answers = {0: b"* OK\r\n"}
        with self.relay(None, answers=answers, silent_at=1) as relay:
            self.person.archives_at(relay.port)
            self.person.has([message(1, "Invoice")])
            running = subprocess.Popen([Desk.contents / "Helpers/mervo", "run", "mail.archive", "account=Claire",
                                        "subject=Invoice"], env=self.person.environment, stderr=subprocess.PIPE)
            deadline = time.monotonic() + 15
            while not relay.lines and time.monotonic() < deadline:
                for entry in pathlib.Path("/proc").glob("[0-9]*"):
                    try:
                        words = (entry / "cmdline").read_bytes() + (entry / "environ").read_bytes()
                    except OSError:
                        continue
                    if str(self.person.home).encode() in words:
                        self.assertNotIn(SECRET, words)
            self.assertTrue(relay.lines, "the client got as far as its LOGIN")
            running.kill()
            running.wait()
            running.stderr.close()


if __name__ == "__main__":
    unittest.main()
