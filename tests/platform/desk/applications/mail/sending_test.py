"""What leaves the desk, through `mervo run`: `sending_test.py CONTENTS-FOLDER`."""

import email
import email.policy
import email.utils
import json
import os
import pathlib
import resource
import signal
import sqlite3
import sys
import time
import unittest

from desk import Desk, DeskTest
from sink import Sink

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
os.environ["TZ"] = "UTC"

QUESTION = b"""From: =?utf-8?q?Zo=C3=AB?= <zoe@friends.test>\r
Reply-To: Post <post@friends.test>\r
To: Claire <claire@desk.test>, Bob <bob@friends.test>\r
Cc: carl@friends.test, HOME@desk.test, bob@friends.test\r
Subject: =?utf-8?q?D=C3=AEner_=3F?=\r
Date: Mon, 2 Mar 2026 10:00:00 +0000\r
Message-ID: <q2@friends.test>\r
References: <q0@friends.test>\r
 <q1@friends.test>\r
MIME-Version: 1.0\r
Content-Type: multipart/mixed; boundary=b\r
\r
--b\r
Content-Type: text/plain; charset=utf-8\r
Content-Transfer-Encoding: 8bit\r
\r
On mange o\xc3\xb9 ?\r
--b\r
Content-Type: application/pdf; name=menu.pdf\r
Content-Disposition: attachment; filename=menu.pdf\r
Content-Transfer-Encoding: base64\r
\r
AAEC/w==\r
--b--\r
"""


def parsed(mail):
    return email.message_from_bytes(mail[2], policy=email.policy.default)


def plain(message):
    return message.get_body(("plain",)).get_content()


class Post(DeskTest):
    """Claire sends through msmtp, Home has no command."""

    options = {"accounts": {"Claire": ["claire@desk.test", "c.alias@desk.test"], "Home": ["home@desk.test"]}, "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.folder = self.desk.folder
        for account in self.desk.accounts:
            self.desk.maildir(account=account)
        self.desk.set(notifyEmail=" owner@friends.test\n", notifyIMessageHandle=" +33 6 1 ")
        self.sink = Sink()
        self.sink.__enter__()
        self.addCleanup(self.sink.__exit__)
        settings = self.folder / "msmtprc"
        settings.touch(mode=0o600)
        settings.write_text(f"defaults\nauth off\ntls off\naccount sink\nhost 127.0.0.1\nport {self.sink.port}\n"
                            "from claire@desk.test\ntimeout 60\naccount default : sink\n")
        self.msmtp = ["msmtp", "-C", str(settings), "-t"]
        self.sends_through(self.msmtp)

    def sends_through(self, command, messages=""):
        self.desk.configure(self.desk.account("Claire", f"sendmail = {json.dumps(command)}\n")
                            + self.desk.account("Home") + messages)

    def receive(self, message, name="1700000000.M1.test", received=1_770_000_000):
        return self.desk.deliver(message, name, received=received, flags="S")

    def sends(self, expected, tool, **arguments):
        done = self.desk.tool(tool, **arguments)
        unexpected = [line for line in done.stderr.splitlines() if not line.startswith("note: ")]
        self.assertEqual((done.stdout, unexpected), (expected + "\n", []))
        sent = self.sink.mails[-1]
        message = parsed(sent)
        self.assertEqual(message.defects, [])
        self.assertTrue(all(len(line) <= 998 for line in sent[2].splitlines()))
        self.assertLess(abs(email.utils.parsedate_to_datetime(message["Date"]).timestamp() - time.time()), 120)
        self.assertRegex(message["Message-ID"], r"^<[^<>@\s]+@desk\.test>$")
        kept = [mail for mail in self.desk.messages(".Sent") if mail["Message-ID"] == message["Message-ID"]]
        self.assertEqual(len(kept), 1, "one copy is kept")
        return sent, message

    def fails(self, pattern, tool="mail.send", **arguments):
        arguments = {"to": "bob@friends.test", "subject": "s", "body": "b"} | arguments
        before = len(self.sink.mails), len(self.desk.messages(".Sent")), len(self.desk.messages(account="Home"))
        done = self.desk.tool(tool, **arguments)
        self.assertEqual((done.returncode, done.stdout), (1, ""), arguments)
        self.assertRegex(done.stderr, pattern)
        after = len(self.sink.mails), len(self.desk.messages(".Sent")), len(self.desk.messages(account="Home"))
        self.assertEqual(before, after, "nothing was sent, nothing kept")
        self.assertEqual(list(self.folder.glob("Claire/.*/tmp/*")) + list(self.folder.glob("Home/tmp/*")), [])

    # ---- letters

    def test_a_letter_arrives_as_it_was_written(self):
        text = "Grüße, \U0001F600\n.\nFrom here\n>From there\n" + "x" * 3000 + "\n\tend"
        (self.folder / "naïve.bin").write_bytes(bytes(range(256)) * 500)
        (self.folder / "b.txt").write_text("second")
        (sender, receivers, _), message = self.sends(
            "OK sent", "mail.send", to="Bob <bob@friends.test>, ann@friends.test", subject="Très “long” " + "été " * 60,
            body=text, attachments=f"{self.folder}/naïve.bin, {self.folder}/b.txt", from_="c.alias@desk.test")
        self.assertEqual((sender, receivers), ("claire@desk.test", ["ann@friends.test", "bob@friends.test"]))
        self.assertEqual(message["From"], "c.alias@desk.test")
        self.assertEqual(message["Subject"], ("Très “long” " + "été " * 60).strip())
        self.assertEqual(plain(message).replace("\r\n", "\n").rstrip("\n"), text)
        first, second = message.iter_attachments()
        self.assertEqual((first.get_filename(), first.get_content()), ("naïve.bin", bytes(range(256)) * 500))
        self.assertEqual(second.get_filename(), "b.txt")
        self.sends("OK sent", "mail.send", to="bob@friends.test", subject="x", body="", from_="stranger@else.test")
        self.assertEqual(parsed(self.sink.mails[-1])["From"], "claire@desk.test", "an unknown sender is passed over")

    def test_a_notice_reaches_the_owner_alone(self):
        self.desk.set(autonomyMode="copilote")
        (_, receivers, _), message = self.sends("OK notify sent to owner@friends.test", "mail.notify", subject="Digest",
                                                body=" three new\n", to="bob@friends.test")
        self.assertEqual((receivers, plain(message).strip()), (["owner@friends.test"], "three new"))
        self.fails("body is empty - refusing to send a blank notification", "mail.notify", body=" \n\t")
        self.desk.set(notifyEmail=" ")
        self.fails(r"missing required argument: notify email \(set it in Settings → Notifications\)", "mail.notify")

    def test_a_reply_goes_on_in_the_thread(self):
        file = self.receive(QUESTION)
        self.receive(QUESTION.replace(b"<q2@", b"<old@"), "1600000000.M2.test", 1_600_000_000)
        place = {"account": "Claire", "mailbox": "INBOX", "subjectContains": "dîner"}
        (_, receivers, _), message = self.sends("OK replied", "mail.reply", **place, body="À midi.")
        self.assertEqual(receivers, ["post@friends.test"])
        self.assertEqual((message["Subject"], message["From"], message["To"]),
                         ("Re: Dîner ?", "claire@desk.test", "Post <post@friends.test>"))
        self.assertEqual(message["In-Reply-To"], "<q2@friends.test>")
        self.assertEqual(message["References"].split(), ["<q0@friends.test>", "<q1@friends.test>", "<q2@friends.test>"])
        self.assertRegex(plain(message).replace("\r\n", "\n"),
                         r"^À midi\.\n\nOn .*March 2, 2026 at 10:00:00.*, Zoë <zoe@friends\.test> wrote:\nOn mange où \?\n")
        self.assertEqual([name.name for name in (self.folder / "Claire/cur").glob("17*")], [file.name[:-1] + "RS"])
        (_, receivers, _), message = self.sends("OK replied", "mail.replyAll", **place, body="Oui.")
        self.assertEqual(receivers, ["bob@friends.test", "carl@friends.test", "post@friends.test"])
        self.receive(QUESTION.replace(b"Post <post@friends.test>", b"nobody:;"), "1800000000.M3.test",
                     1_780_000_000)
        (_, receivers, _), _ = self.sends("OK replied", "mail.reply", **place, body="A Reply-To that leads nowhere.")
        self.assertEqual(receivers, ["zoe@friends.test"])
        self.fails("no matching message to reply to", "mail.reply", account="Claire", mailbox="INBOX", subject="Nothing")

    def test_a_forward_takes_the_attachments_along(self):
        self.receive(QUESTION)
        place = {"account": "Claire", "mailbox": "INBOX", "subject": "Dîner ?"}
        (_, receivers, _), message = self.sends("OK forwarded to eve@friends.test", "mail.forward", **place,
                                                to="eve@friends.test", body="Look.")
        self.assertEqual((receivers, message["Subject"]), (["eve@friends.test"], "Fwd: Dîner ?"))
        self.assertEqual(plain(message).replace("\r\n", "\n").rstrip(),
                         "Look.\n\n---------- Forwarded message ----------\nFrom: Zoë <zoe@friends.test>\n"
                         "Subject: Dîner ?\n\nOn mange où ?")
        (menu,) = message.iter_attachments()
        self.assertEqual((menu.get_filename(), menu.get_content()), ("menu.pdf", b"\0\1\2\xff"))
        self.assertTrue(next((self.folder / "Claire/cur").iterdir()).name.endswith(":2,PS"))
        self.fails("no matching message to forward", "mail.forward", account="Claire", mailbox="INBOX", subject="Nothing")

    def test_a_forward_makes_what_cannot_travel_fit_to(self):
        raw = b"y" * 5000 + b"\r\n.\r\nFrom x\r\n\xff\xfe\0z\r\n"
        inner = b"Subject: inner\r\n\r\n" + b"z" * 3000 + b"\r\n"
        part = b"\r\n--b\r\nContent-Disposition: attachment; filename=f.bin\r\nContent-Type: "
        self.receive(b"From: a@friends.test\r\nSubject: raw\r\nMessage-ID: <" + b"i" * 1500 + b"@x>\r\n"
                            b"MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nhi"
                            + part + b"image/x-thing\r\nContent-Transfer-Encoding: 8bit\r\n\r\n" + raw
                            + part + b"message/rfc822\r\n\r\n" + inner
                            + part + b"text/plain; charset=latin1\r\n\r\nFrom \xe9\r\n--b--\r\n")
        place = {"account": "Claire", "mailbox": "INBOX", "subject": "raw"}
        _, message = self.sends("OK forwarded to eve@friends.test", "mail.forward", **place, to="eve@friends.test")
        thing, letter, note = message.iter_attachments()
        self.assertEqual((thing.get_content_type(), thing.get_filename(), thing.get_content()), ("image/x-thing", "f.bin", raw))
        self.assertEqual((letter.get_filename(), letter.get_content().replace(b"\r\n", b"\n")),
                         ("message.eml", inner.replace(b"\r\n", b"\n")))
        self.assertEqual(note.get_content(), "From é")
        self.sends("OK replied", "mail.reply", **place, body="an id that fits into no line is left out")

    def test_no_argument_makes_a_header(self):
        evil = "x\r\nBcc: spy@friends.test\r\n\r\nbody"
        (_, receivers, _), message = self.sends("OK sent", "mail.send", to="bob@friends.test", subject=evil, body=evil)
        self.assertEqual((receivers, message["Bcc"]), (["bob@friends.test"], None))
        self.assertEqual(message["Subject"], "x  Bcc: spy@friends.test    body")
        for bad in (f"bob@friends.test\r\nBcc: spy@friends.test", "bob@friends.test\n", "bob", "", "-oQ/tmp@x y", "a@b>"):
            self.fails(".", to=bad)
        file = self.folder / 'a"; x=1\r X-Evil: 1'
        file.write_text("x")
        _, message = self.sends("OK sent", "mail.send", to="bob@friends.test", subject="s", attachments=str(file))
        self.assertEqual(message["X-Evil"], None)
        self.receive(QUESTION.replace(b"<q1@friends.test>", b"<q1@f>\r\n <\xff\nBcc: spy@friends.test>")
                            .replace(b"post@friends.test>", b"post@friends.test>\r\n\t, \"a\nBcc: spy@x.test\" <p@x.test>"))
        _, message = self.sends("OK replied", "mail.reply", account="Claire", mailbox="INBOX", subject="Dîner ?", body="x")
        self.assertEqual((message["Bcc"], message["X-Evil"]), (None, None))

    # ---- what goes wrong

    def test_what_was_not_sent_is_not_kept(self):
        self.fails(r"not sent: msmtp ended with status 65: .*no such person here", to="bob@refused.test")
        self.fails("File .*nowhere wasn’t found", attachments="/nowhere")
        self.sends_through(["no-such-program", "-t"])
        self.fails("“no-such-program” of the account “Claire” is not there")
        self.sends_through(["sh", "-c", "cat > /dev/null; printf 'first\\nla\\033st\\n\\n' >&2; kill -9 $$"])
        self.fails("sh was ended by signal 9: first; la st")
        self.sink.__exit__()
        self.sends_through(self.msmtp)
        self.fails("msmtp ended with status 75: .*cannot connect")

    def test_a_copy_that_cannot_be_kept_sends_nothing(self):
        big = self.folder / "big.bin"
        big.write_bytes(os.urandom(3 << 20))
        done = self.desk.mervo("run", "mail.send", "to=bob@friends.test", "subject=s", f"attachments={big}",
                               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (2 << 20, 2 << 20)))
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertEqual((self.sink.mails, list(self.folder.glob("Claire/.Sent/[cn]*/*"))), ([], []))
        (self.folder / "Claire/.Sent/tmp").rename(self.folder / "Claire/.Sent/away")
        (self.folder / "Claire/.Sent/tmp").write_text("in the way")
        self.fails("cannot be written")
        (self.folder / "Claire/.Sent/tmp").unlink()
        (self.folder / "Claire/.Sent/away").rename(self.folder / "Claire/.Sent/tmp")
        _, message = self.sends("OK sent", "mail.send", to="bob@friends.test", subject="s", body="b",
                                attachments=str(big))
        self.assertEqual(next(message.iter_attachments()).get_content(), big.read_bytes())

    def test_what_is_out_is_sent_whatever_becomes_of_its_copy(self):
        sent = self.folder / "Claire/.Sent"
        self.sends_through(["sh", "-c", f"cat > {self.folder}/out && rm -r {sent}/cur && touch {sent}/cur"])
        done = self.desk.tool("mail.send", to="bob@friends.test", subject="s", body="b")
        self.assertEqual((done.stdout, done.stderr), ("OK sent\n", ""))
        self.assertIn(b"Subject: s\n", (self.folder / "out").read_bytes())

    def test_accounts_without_a_command_reach_each_other(self):
        letter = {"subject": "s", "body": "b", "from_": "home@desk.test"}
        done = self.desk.tool("mail.send", to="CLAIRE@desk.test, c.alias@desk.test, home@desk.test", **letter)
        self.assertEqual((done.stdout, done.stderr, self.sink.mails), ("OK sent\n", "", []))
        for account, folder, flags in (("Claire", "new", ""), ("Home", "new", ""), ("Home", ".Sent/cur", ":2,S")):
            (file,) = (self.folder / account / folder).iterdir()
            self.assertTrue(file.name.endswith(flags) and (":2" in file.name) == bool(flags))
        self.fails("reaches the desk’s own addresses and not bob@friends.test",
                   to="claire@desk.test, bob@friends.test", **letter)

    def test_strange_messages_are_read_answered_and_passed_on(self):
        deep = b"".join(b"Content-Type: multipart/mixed; boundary=b%d\r\n\r\n--b%d\r\n" % (i, i) for i in range(1000))
        head = b"From: a@friends.test\r\nTo: claire@desk.test\r\nMessage-ID: <s@x>\r\nMIME-Version: 1.0\r\nSubject: %s\r\n"
        strange = {
            "deep": deep + b"Content-Type: text/plain\r\n\r\nbottom\r\n",
            "nul": b"Content-Type: text/plain\r\n\r\na\0b\0c\r\n",
            "charset": b"Content-Type: text/plain; charset=no-such\r\n\r\ncaf\xc3\xa9\r\n",
            "missing": b"\r\nna\xefve\r\n",
            "lying": b"Content-Type: text/html\r\n\r\nplain < text\r\n",
            "liar": b"Content-Type: multipart/mixed\r\n\r\nno parts at all\r\n",
            "broken": b"Content-Type: text/plain\r\nContent-Transfer-Encoding: base64\r\n\r\n!!!not base64!!!\r\n",
            "huge": b"Content-Type: application/octet-stream; name=h\r\nContent-Disposition: attachment\r\n\r\n" + b"x" * 70 + b"\r\n" * (4 << 20)}
        for number, (subject, rest) in enumerate(strange.items()):
            self.receive(head % subject.encode() + rest, f"{1700000000 + number}.M{number}.test")
        for subject in strange:
            place = {"account": "Claire", "mailbox": "INBOX", "subject": subject}
            with self.subTest(subject):
                body = self.desk.tool("mail.body", **place)
                self.assertEqual(body.returncode, 0, body.stderr)
                self.sends("OK replied", "mail.reply", **place, body="x")
                self.sends("OK forwarded to eve@friends.test", "mail.forward", **place, to="eve@friends.test")
        self.assertEqual(len(list((self.folder / "Claire/cur").iterdir())), len(strange))

    # ---- through the queue, onto the screen, into a chat

    def test_the_owner_approves_a_letter_and_a_reply_to_what_is_gone(self):
        self.desk.set(autonomyMode="copilote")
        file = self.receive(QUESTION)
        held = [self.desk.tool("mail.send", to="bob@friends.test", subject="s", body="b").stdout.split()[1],
                self.desk.tool("mail.reply", account="Claire", mailbox="INBOX", subject="Dîner ?", body="b").stdout.split()[1]]
        self.assertEqual(self.sink.mails, [])
        mark = self.desk.home / ".demonstration"
        path = mark.read_text()
        for wrong in (None, "", str(self.folder)):
            mark.unlink() if wrong is None else mark.write_text(wrong)
            refused = self.desk.approve(held[0])
            self.assertEqual((refused.returncode, self.sink.mails), (2, []))
            self.assertIn("was not made by the demonstration", refused.stderr)
        mark.write_text(path)
        file.unlink()
        first, second = [self.desk.approve(one) for one in held]
        self.assertEqual((first.stdout, second.returncode, len(self.sink.mails)), ("OK sent\n", 1, 1))
        self.assertIn("no matching message to reply to", second.stderr)
        self.assertTrue((self.desk.home / f"pending/{held[1]}.json").exists(), "it can be tried again")
        self.assertEqual([row[:3] for row in self.desk.audit()],
                         [("cli", "mail.send", "pending_approval"), ("cli", "mail.reply", "pending_approval"),
                          ("cockpit", "mail.send", "executed"), ("cockpit", "mail.reply", "error")])

    def test_a_message_is_opened_by_the_desktops_own_program(self):
        opener = self.folder / "bin/xdg-open"
        opener.parent.mkdir()
        opener.write_text('#!/bin/sh\necho $$ > "$HOME/pid"\nprintf "%s" "$1" > "$HOME/opened"\nexec sleep 30\n')
        opener.chmod(0o755)
        self.desk.environment["PATH"] = f"{opener.parent}:{os.environ['PATH']}"
        self.receive(QUESTION)
        place = {"account": "Claire", "mailbox": "INBOX", "subject": "Dîner ?"}
        done = self.desk.tool("mail.open", **place)
        self.assertEqual(done.stdout, "OK opened: Dîner ?\n", done.stderr)
        copy = pathlib.Path((self.folder / "opened").read_text())
        self.assertEqual((copy.suffix, copy.read_bytes(), copy.stat().st_mode & 0o777), (".eml", QUESTION, 0o600))
        opener.write_text("#!/bin/sh\necho 'no application for message/rfc822' >&2\nexit 3\n")
        refused = self.desk.tool("mail.open", **place)
        self.assertRegex(refused.stderr, "is there a mail program .*xdg-open ended with status 3: no application for")
        self.assertEqual(self.desk.tool("mail.open", **place | {"subject": "None"}).stdout, "(no matching message)\n")
        os.kill(int((self.folder / "pid").read_text()), signal.SIGTERM)

    def test_xdg_open_finds_the_program_for_messages(self):
        (self.folder / "reader").write_text('#!/bin/sh\ncp "$1" "$HOME/read.part" && mv "$HOME/read.part" "$HOME/read"\n')
        (self.folder / "reader").chmod(0o755)
        applications = self.folder / "data/applications"
        applications.mkdir(parents=True)
        (applications / "reader.desktop").write_text(f"[Desktop Entry]\nType=Application\nName=Reader\nExec={self.folder}/reader "
                                                     "%f\nMimeType=message/rfc822;\n")
        for file in (self.folder / "config/mimeapps.list", applications / "mimeapps.list"):
            file.write_text("[Default Applications]\nmessage/rfc822=reader.desktop\n")
        self.desk.environment["DISPLAY"] = ":63000"
        self.receive(QUESTION)
        done = self.desk.tool("mail.open", account="Claire", mailbox="INBOX", subject="Dîner ?")
        self.assertEqual((done.stdout, done.stderr), ("OK opened: Dîner ?\n", ""))
        end = time.monotonic() + 30
        while not (self.folder / "read").exists() and time.monotonic() < end:
            time.sleep(0.02)
        self.assertEqual((self.folder / "read").read_bytes(), QUESTION)

    def test_a_text_that_is_out_is_sent_whatever_becomes_of_the_database(self):
        self.sends_through(["true"], f'[messages]\nsend = ["sh", "-c", "cat >> {self.folder}/said"]\n')
        database = self.folder / "Library/Messages/chat.db"
        database.parent.mkdir(parents=True)
        database.write_bytes(b"no database at all" * 100)
        for _ in range(2):
            self.assertEqual(self.desk.tool("imessage.send", to="+33", text="x").stdout, "OK imessage sent to +33\n")
        self.assertEqual((self.folder / "said").read_text(), "xx")
        self.assertEqual(database.read_bytes(), b"no database at all" * 100)

    def test_texts_go_through_the_owners_command_and_stand_in_the_database(self):
        refused = self.desk.tool("imessage.send", to="+33 6 2", text="hello")
        self.assertRegex(refused.stderr, r"no command that sends messages; name one in desk.toml \(\[messages\] send")
        recorder = self.folder / "bridge"
        recorder.write_text('#!/bin/sh\nfor word; do printf "%s\\n" "$word"; done >> "$HOME/said"\ncat >> "$HOME/said"\n'
                            'grep -q refuse "$HOME/said" && { echo "not today" >&2; exit 4; }\nexit 0\n')
        recorder.chmod(0o755)
        self.sends_through(["true"], f'[messages]\nsend = ["{recorder}", "--send"]\n')
        sent = self.desk.tool("imessage.send", to="+33 6 2", text="it's “late”\n$HOME `x` \\ ")
        self.assertEqual((sent.stdout, sent.stderr), ("OK imessage sent to +33 6 2\n", ""))
        self.assertEqual((self.folder / "said").read_text(), "--send\n+33 6 2\nit's “late”\n$HOME `x` \\ ")
        self.desk.set(autonomyMode="copilote")
        told = self.desk.tool("imessage.notify", text="done", to="+33 6 2")
        self.assertEqual(told.stdout, "OK imessage sent to +33 6 1\n")
        self.desk.set(autonomyMode="yolo")
        for bad in ("--help", "a\nb"):
            self.assertEqual(self.desk.tool("imessage.send", to=bad, text="x").returncode, 1)
        self.assertIn("ended with status 4: not today", self.desk.tool("imessage.send", to="x@y", text="refuse").stderr)
        with sqlite3.connect(self.folder / "Library/Messages/chat.db") as database:
            rows = database.execute("SELECT h.id, m.text, m.is_from_me, m.date FROM message m JOIN handle h ON "
                                    "m.handle_id = h.ROWID JOIN chat_message_join j ON j.message_id = m.ROWID "
                                    "ORDER BY m.ROWID").fetchall()
            database.execute("INSERT INTO message (guid, text, handle_id, date, is_from_me) VALUES ('g', 'ok', 1, ?, 0)",
                             [int((time.time() - 978307200) * 1e9)])
        database.close()
        self.assertEqual([row[:3] for row in rows], [("+33 6 2", "it's “late”\n$HOME `x` \\ ", 1), ("+33 6 1", "done", 1)])
        self.assertTrue(all(abs(row[3] / 1e9 + 978307200 - time.time()) < 120 for row in rows))
        self.assertRegex(self.desk.tool("imessage.read", from_="+3362").stdout, r"\|\| \+33 6 2 \|\| ok\n$")
        self.desk.set(notifyIMessageHandle=None)
        self.assertIn("notify iMessage handle (set it in Settings", self.desk.tool("imessage.notify", text="x").stderr)


if __name__ == "__main__":
    unittest.main()
