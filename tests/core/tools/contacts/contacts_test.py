"""contact.find and contact.add over a folder that khard reads and writes too."""

import concurrent.futures
import pathlib
import re
import subprocess
import sys
import unittest

import desk

KEPT = 'X-ODD;p="a:b":1\\,2\n  folded here\nitem7.X-ABDATE;type=pref:2001-02-03\nPHOTO;ENCODING=b:AAAA\n'


def card(name, more=""):
    first, _, last = name.partition(" ")
    return f"BEGIN:VCARD\nVERSION:3.0\nUID:{name.replace(' ', '')}\nFN:{name}\nN:{last};{first};;;\n{more}END:VCARD\n"


class Contacts(desk.DeskTest):
    options = {"accounts": (), "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.folder = self.desk.folder / "cards"
        self.folder.mkdir()
        self.desk.configure(f'[contacts]\npath = "{self.folder}"\n')

    def files(self):
        return sorted(self.folder.rglob("*.vcf"))

    def put(self, file, text):
        path = self.folder / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def find(self, **words):
        call = self.desk.call("contact.find", **words)
        self.assertEqual(call["outcome"], "executed", call)
        return call.lines

    def add(self, **words):
        call = self.desk.call("contact.add", **words)
        self.assertEqual(call["outcome"], "executed", call)
        return call["output"]

    def khard(self, *words, text=""):
        config = self.desk.folder / "khard.conf"
        config.write_text(f"[addressbooks]\n[[all]]\npath = {self.folder}\n[general]\ndefault_action = list\n"
                          "[vcard]\npreferred_version = 3.0\n")
        done = subprocess.run(["/usr/bin/khard", "-c", config, *words], input=text.encode(), capture_output=True,
                              env=self.desk.environment, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout.decode()

    def test_khard_reads_what_was_added(self):
        self.assertEqual(self.add(first="Jörg", last="O'Neill; Jr, x", email="joerg@x.example", phone="+49 170 1",
                                  org="Acme, Inc."), "OK contact created: Jörg O'Neill; Jr, x")
        shown = self.khard("show", "--format", "yaml", "Neill")
        for text in ("Jörg", "O'Neill; Jr, x", "joerg@x.example", "+49 170 1", "Acme, Inc."):
            self.assertIn(text, shown)
        self.assertRegex(shown, r"(?s)Phone:\s+cell: \+49 170 1")
        self.assertRegex(shown, r"(?s)Email:\s+work: joerg@x")
        self.assertNotIn(b"\n\n", self.files()[0].read_bytes().replace(b"\r\n", b"\n"))

    def test_a_name_is_kept_as_it_is(self):
        self.assertEqual(self.add(name="Jane van Doe", org="Acme"), "OK contact created: Jane van Doe")
        self.assertIn("\r\nN:;Jane van Doe;;;\r\n", self.files()[0].read_bytes().decode())
        self.assertEqual(self.add(first="Only", name="ignored"), "OK contact created: Only")
        self.assertEqual(self.find(query="ignored"), [])
        self.assertEqual(self.add(last="Last"), "OK contact created: Last")

    def test_finds_what_khard_wrote(self):
        self.khard("new", text="First name: Ann\nLast name: Öst\nOrganisation: Firm\nEmail:\n    work: ann@y.example\n"
                               "    home: [a2@z.example]\nPhone:\n    cell: '0170'\n    home: '030 1'\n")
        self.assertEqual(self.find(query="öST"), ["Ann Öst || Firm || ann@y.example a2@z.example  || 0170 030 1"])

    def test_filters(self):
        for number in range(30):
            self.put(f"{number:02}.vcf", card(f"Name {number:02}", f"EMAIL:m{number}@x.example\n"))
        self.put("group.vcf", "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:Name of a list\nEND:VCARD\n")
        self.put("old.vcf", b"BEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller;"
                            b"J=\r\n=FCrgen\r\nTEL;CELL:tel:5\r\nORG:A;B\r\nEND:VCARD\r\n")
        self.assertEqual(len(self.find(query="name")), 20)
        self.assertEqual(len(self.find(query="name", limit="0")), 30)
        self.assertEqual(self.find(query="name 0", limit="2"), ["Name 00 ||  || m0@x.example  || ",
                                                                   "Name 01 ||  || m1@x.example  ||"])
        self.assertEqual(self.find(email="M7@"), ["Name 07 ||  || m7@x.example  ||"])
        self.assertEqual(self.find(query="01", email="m7@"), [])
        self.assertEqual(self.find(query="müller"), ["Jürgen Müller || A ||  || 5"])
        refused = self.desk.call("contact.find")
        self.assertEqual((refused["outcome"], refused["error"]), ("error", "missing required argument: query or email"))

    def test_rewriting_keeps_every_other_byte(self):
        before, after = card("Ann Other", KEPT), card("Zoe Third", KEPT)
        file = self.put("many.vcf", before + card("Bob Meant", KEPT + "EMAIL:b@x\n") + after)
        self.desk.script('tell application "Contacts"\nset p to person "Bob Meant"\nset last name of p to "Changed"\n'
                         'set value of email 1 of p to "new@x"\nset note of p to "two" & linefeed & "lines"\nsave\nend tell')
        text = file.read_text()
        self.assertTrue(text.startswith(before) and text.endswith(after), text)
        meant = text[len(before):-len(after)]
        self.assertEqual(re.sub(r"REV:\d{8}T\d{6}Z", "REV:now", meant),
                         "BEGIN:VCARD\nVERSION:3.0\nUID:BobMeant\nFN:Bob Changed\nN:Changed;Bob;;;\n" + KEPT
                         + "EMAIL:new@x\nNOTE:two\\nlines\nREV:now\nEND:VCARD\n")

    def test_scripts(self):
        self.put("a.vcf", card("Ann One", "BDAY:1985-04-12\nEMAIL;TYPE=HOME:a@x\nTEL;TYPE=CELL:1\n"))
        self.put("g.vcf", "BEGIN:VCARD\nVERSION:3.0\nUID:g\nFN:Club\nN:Club;;;;\nX-ADDRESSBOOKSERVER-KIND:group\nEND:VCARD\n")
        ask = lambda text: self.desk.script(f'tell application "Contacts"\n{text}\nend tell')
        self.assertEqual(ask("tell person 1 to get {name, id, organization, label of email 1, value of every phone}"),
                         "Ann One, AnnOne, missing value, home, 1")
        self.assertEqual(ask("get {count of people, name of group 1, year of (get birth date of person 1)}"), "1, Club, 1985")
        self.assertEqual(ask('make new person with properties {last name:"Not kept"}\ncount people'), "2")
        self.assertEqual(ask("count people"), "1")
        self.assertEqual(ask('add person "Ann One" to group "Club"\nsave\nname of every person of group "Club"'), "Ann One")
        self.assertEqual(ask('delete email 1 of person 1\nsave\ncount emails of person 1'), "0")
        self.assertEqual(ask('delete person "Ann One"\nsave\ncount people'), "0")
        self.assertEqual([file.name for file in self.files()], ["g.vcf"])

    def test_two_processes_at_once_lose_nothing(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            list(pool.map(lambda number: self.add(first=f"P{number}", email=f"p{number}@x"), range(24)))
        self.assertEqual(len(self.find(query="P", limit="0")), 24)
        self.assertFalse([path for path in (self.folder / ".mervo").rglob("*") if path.name != "lock" and path.is_file()])

    def test_the_doctor_names_what_is_damaged(self):
        self.assertTrue(self.desk.health()["desk.contacts"]["ok"])
        self.put("good.vcf", card("Good One"))
        self.put("bad.vcf", b"\0\1\2")
        finding = self.desk.health()["desk.contacts"]
        self.assertFalse(finding["ok"])
        self.assertIn(str(self.folder / "bad.vcf"), finding["detail"])
        self.assertEqual(len(self.find(query="good")), 1)
        self.desk.configure('[contacts]\npath = "relative"\n')
        self.assertIn('line 2: "path" must start with', self.desk.health()["desk.configuration"]["detail"])

    def test_a_file_in_place_of_the_folder_is_said(self):
        self.put("a/x.vcf", card("Old One"))
        self.desk.configure(f'[contacts]\npath = "{self.folder}/a/x.vcf"\n')
        call = self.desk.call("contact.add", first="New")
        self.assertEqual(call["outcome"], "error")
        self.assertIn(f"Contacts got an error: The folder “{self.folder}/a/x.vcf” cannot be read", call["error"])


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv.pop(1))
    unittest.main()
