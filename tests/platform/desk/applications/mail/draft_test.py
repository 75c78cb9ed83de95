"""Drafts, composed by mail.draft and read again by Python's own mail library: `draft_test.py CONTENTS-FOLDER`."""

import email
import email.policy
import mailbox
import os
import pathlib
import sys
import unittest

from desk import Desk, DeskTest

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()


class Drafts(DeskTest):
    options = {"accounts": ("Work", "Home"), "mode": "copilote"}

    def setUp(self):
        super().setUp()
        for account in ("Work", "Home"):
            self.desk.maildir(account=account)

    def compose(self, to="b@x.example", subject="hello", body="text", file="", sender=""):
        call = self.desk.call("mail.draft", to=to, subject=subject, body=body, attachments=file, from_=sender)
        self.assertEqual((call["outcome"], call.get("output")), ("executed", "OK draft saved"), call)

    def refusal(self, **change):
        call = self.desk.call("mail.draft", **{"to": "b@x.example", "subject": "s", "body": "b"} | change)
        self.assertEqual(call["outcome"], "error", call)
        return call["error"]

    def drafts(self, account="Work"):
        return self.desk.files(".Drafts", account)

    def only_draft(self, account="Work"):
        (file,) = self.drafts(account)
        self.assertTrue(file.name.endswith(":2,DS"), file)
        self.assertEqual(list((file.parent.parent / "tmp").iterdir()), [])
        raw = file.read_bytes()
        self.assertNotIn(b"\r", raw)
        self.assertTrue(raw.isascii() and max(map(len, raw.split(b"\n"))) < 998, "any transport carries it")
        self.assertFalse([line for line in raw.split(b"\n") if line == b"." or line.startswith(b"From ")])
        message = email.message_from_bytes(raw, policy=email.policy.default)
        self.assertEqual([part.defects for part in message.walk()], [[] for _ in message.walk()])
        return message

    def test_a_plain_draft(self):
        self.compose(body="line\n\nFrom here\n.\n")
        message = self.only_draft()
        self.assertEqual(message["from"], "work@desk.example")
        self.assertEqual((message["to"], message["subject"]), ("b@x.example", "hello"))
        self.assertEqual(message.get_content_type(), "text/plain")
        self.assertEqual(message.get_content_charset(), "utf-8")
        self.assertEqual(message.get_content(), "line\n\nFrom here\n.\n")
        self.assertLess(abs(message["date"].datetime.timestamp() - self.drafts()[0].stat().st_mtime), 5)
        self.assertRegex(message["message-id"], r"^<[^@<>\s]+@desk\.example>$")
        self.assertEqual(mailbox.Maildir(self.desk.folder / "Work", create=False).list_folders(), ["Drafts"])

    def test_a_text_whose_lines_are_broken_before_a_postmark(self):
        for word in ("From here", "."):
            body = "".join("é%s%s\n" % ("x" * length, word) for length in range(55, 80))
            self.compose(body=body)
            self.assertEqual(self.only_draft().get_content(), body)
            self.drafts()[0].unlink()

    def test_every_script_and_length_of_text(self):
        subject = '" & (do shell script "id") & "\\ ¬ Réunion 日本語 Привет 😀 ' + "long " * 60
        body = f"Größe\t日本\n{subject}\n" + "x" * 5000 + "\n\rold line end\n\x00 and a control"
        self.compose(subject=subject, body=body.replace("\x00", ""))
        message = self.only_draft()
        self.assertEqual(message["subject"].rstrip(), subject.rstrip())
        self.assertEqual(message.get_content(), body.replace("\x00", "").replace("\r", "\n") + "\n")

    def test_attachments_byte_for_byte(self):
        files = {name: os.urandom(70_000) + b"\r\n.\r\n"
                 for name in ("plain.pdf", "naïve 日本 'file' \"x\".csv", "a" * 120 + ".bin", "no-ending")}
        for name, data in files.items():
            (self.desk.folder / name).write_bytes(data)
        for body, shown in (("text", "text\n"), ("", "")):
            self.compose(body=body, file=", ".join(str(self.desk.folder / name) for name in files) + ", ,")
            message = self.only_draft()
            self.assertEqual(message.get_content_type(), "multipart/mixed")
            self.assertEqual(message.get_body(("plain",)).get_content() if body else "", shown)
            parts = list(message.iter_attachments())
            self.assertEqual({part.get_filename(): part.get_payload(decode=True) for part in parts}, files)
            self.assertEqual({part["content-transfer-encoding"] for part in parts}, {"base64"})
            self.drafts()[0].unlink()

    def test_the_sender_decides_the_account(self):
        self.compose(sender="HOME@desk.example")
        self.assertEqual(self.only_draft("Home")["from"].lower(), "home@desk.example")
        self.compose(sender="stranger@x.example")
        self.assertEqual(self.only_draft("Work")["from"], "work@desk.example")
        self.assertIn("(-10006)", self.desk.failure(
            'set msg to make new outgoing message with properties {subject:"x"}\nset sender of msg to "stranger@x.example"'))

    def test_a_missing_file_leaves_nothing(self):
        for file in ("/nowhere/a.pdf", str(self.desk.folder), "/dev/null"):
            self.assertIn("File %s wasn\u2019t found. (-43)" % file, self.refusal(attachments=file))
        self.assertEqual(self.drafts(), [])

    def test_saving_twice_keeps_one(self):
        self.desk.mail('set msg to make new outgoing message with properties {subject:"one", content:"a"}\n'
                       'save msg\nset subject of msg to "two"\nset content of msg to "b"\nsave msg')
        message = self.only_draft()
        self.assertEqual((message["subject"], message.get_content()), ("two", "b\n"))

    def test_a_full_drafts_folder_is_said(self):
        (self.desk.folder / "Work/.Drafts").write_text("a file in the way")
        self.assertRegex(self.refusal(), "Mail got an error: .*cannot be written.*-10000")


if __name__ == "__main__":
    unittest.main()
