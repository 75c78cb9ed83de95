"""The notes tools, from the command line to the files that other programs see."""

import json
import os
import pathlib
import resource
import subprocess
import sys
import unittest

from desk import Desk, DeskTest

FRONT = "---\ntags: [a, b]\n---\n"
AMBIGUOUS = "(ambiguous: 2 notes match; make name= more specific)"
NONE = "(no matching note)"


class NotesTest(DeskTest):
    options = {"accounts": (), "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.root = self.desk.folder / "Vault"
        self.root.mkdir()
        self.settings()

    def settings(self, more=""):
        self.desk.configure(f'[notes]\npath = "{self.root}"\n{more}')

    def write(self, name, text, modified=None):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(text.encode() if isinstance(text, str) else text)
        if modified:
            os.utime(file, (modified, modified))
        return file

    def out(self, tool, **arguments):
        call = self.desk.call(tool, **arguments)
        self.assertEqual(call["outcome"], "executed", call)
        return call["output"]

    def failure(self, tool, **arguments):
        call = self.desk.call(tool, **arguments)
        self.assertEqual(call["outcome"], "error", call)
        return call["error"]

    def files(self):
        return sorted(str(file.relative_to(self.root)) for file in self.root.rglob("*") if file.is_file())


class Html(NotesTest):
    def test_a_note_from_its_making_to_the_trash(self):
        self.assertEqual(self.out("note.list"), "Notes (0)")
        self.assertEqual(self.out("note.add", title="R&D: <i>plan</i>/2026", body="one\ntwo <b>é</b>"), "OK note: R&D: plan/2026")
        file = self.root / "Notes/R&D plan 2026.html"
        head = '<!DOCTYPE html>\n<meta charset="utf-8">\n'
        self.assertEqual(file.read_text(), f"{head}<div><b>R&D: <i>plan</i>/2026</b></div><div>one<br>two <b>é</b></div>\n")
        self.assertEqual(self.out("note.read", name="r&d"), "R&D: plan/2026\n----\nR&D: plan/2026\none\ntwo é")
        file.write_text(f"<html><head><style>p</style></head><body class='x'>\n<p>A &lt; B &amp; C</p><ul><li>i</ul></body></html>")
        self.assertEqual(self.out("note.update", name="a < b", append="x\ny"), "OK updated: A < B & C")
        self.assertEqual(self.out("note.read", name="a <"), "A < B & C\n----\nA < B & C\n• i\nx\ny")
        self.assertEqual(self.out("note.update", name="b & c", body="new", append="more"), "OK updated: A < B & C")
        self.assertEqual(file.read_text(), "<html><head><style>p</style></head><body class='x'><div><b>A &lt; B &amp; C</b>"
                                           "</div><div>new</div><div>more</div></body></html>")
        self.assertEqual(self.out("note.delete", name="A < B"), "OK deleted 1 note(s)")
        self.assertEqual(self.files(), ["Recently Deleted/R&D plan 2026.html"])
        self.assertEqual(self.out("note.list"), "Notes (0)\nRecently Deleted (1)")
        for tool in ("note.read", "note.open"):
            self.assertEqual(self.out(tool, name="A < B"), NONE)
        self.assertEqual(self.out("note.update", name="A < B", append="x"), NONE)

    def test_every_account_and_folder_is_walked_but_no_trash(self):
        self.write("Work/Plans/Deep/a.html", "<div>Alpha one</div>", 1_700_000_000)
        self.write("Work/Recently Deleted/b.html", "<div>Alpha gone</div>")
        self.write("Work/supprimées RÉCEMMENT/c.html", "<div>Alpha gone</div>")
        self.write("Zuletzt gelöscht/d.html", "<div>Alpha gone</div>")
        self.write("Zuletzt gelöscht/Folder/d.html", "<div>Alpha gone</div>")
        self.write("Home/e.html", "<div>beta</div><div>text of ALPHA &amp; co</div>", 1_600_000_000)
        self.write("Alpha two.txt", "\n", 1_650_000_000)
        self.write("Home/.hidden/f.html", "Alpha")
        self.write("Home/g.html~", "Alpha")
        self.write("Home/e.html.x0Y1z2", "Alpha, the temporary file of a program that was killed")
        self.assertEqual(self.out("note.list").split("\n"), [
            "Vault (1)", "Home (1)", "Zuletzt gelöscht (1)", "Plans (0)", "Deep (1)", "Recently Deleted (1)",
            "supprimées RÉCEMMENT (1)"])
        found = ["Vault || Alpha two || 2022-04-15 05:20", "Home || beta || 2020-09-13 12:26",
                 "Deep || Alpha one || 2023-11-14 22:13"]
        self.assertEqual(self.out("note.find").split("\n"), found)
        self.assertEqual(self.out("note.find", name="aLPHA").split("\n"), [found[0], found[2]])
        self.assertEqual(self.out("note.find", body="alpha & CO"), found[1])
        self.assertEqual(self.out("note.find", name="alpha", body="one"), found[2])
        self.assertEqual(self.out("note.find", limit="2").split("\n"), found[:2])
        self.assertEqual(self.out("note.find", limit="0").split("\n"), found)
        self.assertEqual(self.out("note.read", name="alpha"), AMBIGUOUS)
        self.assertEqual(self.out("note.update", name="alpha", append="x"), AMBIGUOUS)

    def test_a_waiting_delete_names_what_it_would_delete(self):
        self.desk.set(autonomyMode="copilote")
        for number in range(7):
            self.write(f"Folder/{number}.html", f"<div>Note {number}</div>", 1_700_000_000 - number)
        self.desk.call("note.delete", name="note 1")
        self.desk.call("note.delete", name="note")
        self.desk.call("note.delete", name="nothing")
        previews = sorted(json.loads((self.desk.home / f"pending/{id}.json").read_text())["preview"]
                          for id in self.desk.waiting())
        self.assertEqual(previews, ["0 note(s)", "1 note(s): Note 1",
                                    "7 note(s): Note 0, Note 1, Note 2, Note 3, Note 4..."])
        self.write("Recently Deleted/1.html", "an older one")
        for id in self.desk.waiting():
            self.assertEqual(self.desk.approve(id).returncode, 0)
        self.assertEqual(len([name for name in self.files() if name.startswith("Recently Deleted/")]), 8)
        self.assertEqual((self.root / "Recently Deleted/1.html").read_text(), "an older one")

    def test_opening_shows_the_first(self):
        tools = self.desk.folder / "bin"
        tools.mkdir()
        (tools / "xdg-open").write_text(f'#!/bin/sh\necho "$1" > {self.desk.folder}/opened\n')
        (tools / "xdg-open").chmod(0o755)
        self.desk.environment["PATH"] = f"{tools}:{self.desk.environment['PATH']}"
        self.write("Folder/old.html", "Plan old", 1_600_000_000)
        new = self.write("Folder/new.html", "Plan new")
        self.assertEqual(self.out("note.open", name="plan"), "OK opened: Plan new")
        self.assertEqual((self.desk.folder / "opened").read_text(), f"{new}\n")
        (tools / "xdg-open").write_text("#!/bin/sh\necho no program >&2; exit 3\n")
        self.assertIn("no program", self.failure("note.open", name="plan"))


class Vault(NotesTest):
    def test_a_vault_keeps_what_its_own_program_put_there(self):
        self.settings('format = "markdown"')
        self.write(".obsidian/app.json", "{}")
        self.write("assets/picture.png", b"\x89PNG")
        log = self.write("Daily/2026-01-01.md", FRONT + "\n## Today **[[page|and]] tomorrow** ##\n\n- [ ] one\n\\- two")
        dos = self.write("Daily/dos.md", "\ufeff" + FRONT.replace("\n", "\r\n") + "Line *one*\r\n")
        self.write("Daily/Named after its file.md", FRONT + "![[picture.png]]\n")
        text = self.write("plain.txt", "Shopping\nmilk")
        self.assertEqual(self.out("note.list"), "Vault (1)\nDaily (3)")
        self.assertEqual(sorted(line.split(" || ")[1] for line in self.out("note.find").split("\n")),
                         ["Line one", "Named after its file", "Shopping", "Today and tomorrow"])
        self.assertEqual(self.out("note.read", name="today"), "Today and tomorrow\n----\n## Today **[[page|and]] tomorrow** ##"
                                                              "\n\n- [ ] one\n\\- two")
        before = log.read_text()
        self.out("note.update", name="today and", append='<ul><li>three <b>bold</b></li></ul><a href="http://x.example/">x</a>')
        self.assertEqual(log.read_text(), before + "\n\n- three **bold**\n\n[x](http://x.example/)\n".replace("\n\n[", "\n["))
        self.out("note.update", name="line", body="<h2>Part</h2>a\nb")
        self.assertEqual(dos.read_bytes().decode(), "\ufeff" + (FRONT + "# Line one\n\n## Part\n\na\nb\n").replace("\n", "\r\n"))
        self.out("note.update", name="shop", append="eggs &amp; ham")
        self.assertEqual(text.read_text(), "Shopping\nmilk\neggs & ham\n")
        self.assertEqual(self.out("note.add", title="New: one?", body="x<br><i>y</i>"), "OK note: New: one?")
        self.assertEqual((self.root / "New one.md").read_text(), "# New: one?\n\nx\n*y*\n")
        self.assertEqual(self.out("note.delete", name="new: one"), "OK deleted 1 note(s)")
        self.assertTrue((self.root / "Recently Deleted/New one.md").exists())

    def test_names_of_files_are_safe_readable_and_never_taken(self):
        self.settings('format = "markdown"')
        for title in ("../../etc/passwd", "." * 5, "…" * 200, "Todo", "todo", "a\u202eb\u0007"):
            self.out("note.add", title=title)
        names = self.files()
        self.assertEqual([name for name in names if "…" not in name],
                         ["Notes/Note.md", "Notes/Todo.md", "Notes/a b.md", "Notes/etc passwd.md", "Notes/todo 2.md"])
        self.assertTrue(all(len(os.fsencode(name)) < 140 for name in names))

    def test_links_are_followed_out_of_the_vault_and_never_in_a_circle(self):
        self.write("Notes/a.md", "Alpha")
        elsewhere = self.desk.folder / "Elsewhere"
        elsewhere.mkdir()
        (elsewhere / "b.md").write_text("Beta")
        (elsewhere / "back").symlink_to(self.root)
        (elsewhere / "self").symlink_to(elsewhere)
        for name, target in {"loop": self.root, "up": "/", "again": self.root / "Notes", "out": elsewhere,
                             "out2": elsewhere, "dead": "/nowhere"}.items():
            (self.root / name).symlink_to(target)
        self.assertEqual(self.out("note.list"), "Notes (1)\nout (1)")

    def test_hostile_notes_cost_bounded_time_and_hide_none(self):
        self.write("N/deep.html", "<div>" * 100_000 + "Deep" + "</div>" * 100_000)
        self.write("N/long.html", '<p title="' + "x" * 5_000_000 + '">Long</p>')
        self.write("N/many.html", "<p " + " ".join(f"a{n}=1" for n in range(100_000)) + ">Many</p>")
        self.write("N/unclosed.html", "Open" + "<table><b a=1><p>" * 3000)
        self.write("N/nul.html", b"<p>N\0ul \xff\xc3</p>")
        self.write("N/brackets.md", "x " + "[" * 1_000_000 + "\n")
        self.write("N/good.md", "Good")
        (self.root / "N/folder.md").mkdir()
        os.mkfifo(self.root / "N/pipe.md")
        names = {line.split(" || ")[1][:8] for line in self.out("note.find", limit="0").split("\n")}
        self.assertEqual(names, {"Deep", "Long", "Many", "Open", "Nul \ufffd\ufffd", "x [[[[[[", "Good"})


class Faults(NotesTest):
    def test_two_programs_that_append_at_once_lose_nothing(self):
        for name in ("log.html", "log.md"):
            file = self.write(f"F/{name}", f"<div>{name}</div>" if "html" in name else "# log.md\n")
            words = [f"word-{number}" for number in range(12)]
            running = [subprocess.Popen([Desk.contents / "Helpers/mervo", "run", "note.update", f"name={name}",
                                         f"append={word}"], env=self.desk.environment, stdout=subprocess.DEVNULL)
                       for word in words]
            self.assertEqual([process.wait(120) for process in running], [0] * len(words))
            text = file.read_text()
            self.assertEqual([text.count(word + ("<" if "html" in name else "\n")) for word in words], [1] * len(words))

    def test_what_another_program_wrote_in_between_is_not_replaced(self):
        file = self.write("F/a.md", "Title\nold")
        script = ('tell application "Notes"\nset n to first note of folder "F"\nset b to body of n\n%s\n'
                  f'delay 1\nset body of n to %s\nend tell')
        for new, expected in (('"<div><b>Title</b></div>new"', None), ('b & "<div>more</div>"', "Title\nother\n\nmore\n")):
            file.write_text("Title\nold")
            running = subprocess.Popen([Desk.contents / "Helpers/platform/osascript", "-"], env=self.desk.environment,
                                       stdin=subprocess.PIPE, stderr=subprocess.PIPE)
            running.stdin.write((script % (f'log "read"', new)).encode())
            running.stdin.close()
            self.assertEqual(running.stderr.readline(), b"read\n")
            file.write_text("Title\nother")
            said = running.stderr.read().decode()
            running.stderr.close()
            self.assertEqual(running.wait(20), 0 if expected else 1, said)
            self.assertEqual(file.read_text(), expected or "Title\nother")
            if not expected:
                self.assertIn("was changed by another program while this ran; nothing was written, so call again.", said)

    def test_a_full_disk_and_a_read_only_folder_change_nothing(self):
        file = self.write("F/a.html", "<div>Title</div>")
        script = 'tell application "Notes"\nset n to first note of folder "F"\nset body of n to (body of n) & "%s"\nend tell'
        full = self.desk.run("Helpers/platform/osascript", "-", text=script % ("x" * 100_000), restore_signals=False,
                             preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536)))
        self.assertIn("The note “a” cannot be written: File too large. Nothing was changed.", full.stderr)
        unable = ["setpriv", "--bounding-set", "-dac_override"] if os.geteuid() == 0 else []
        file.parent.chmod(0o500)
        for tool, said in (("note.update", "The note “a” cannot be written: Permission denied. Nothing was changed."),
                           ("note.delete", "OK deleted 0 note(s)")):
            done = subprocess.run([*unable, Desk.contents / "Helpers/mervo", "run", tool, "name=title", "append=x"],
                                  env=self.desk.environment, capture_output=True, text=True)
            self.assertIn(said, done.stdout + done.stderr)
        file.parent.chmod(0o700)
        self.assertEqual(self.files(), ["F/a.html"])
        self.assertEqual(file.read_text(), "<div>Title</div>")

    def test_the_settings_and_the_doctor(self):
        self.write("F/long.txt", "x" * (16 * 1024 * 1024 + 1))
        finding = self.desk.health()["desk.notes"]
        self.assertFalse(finding["ok"])
        self.assertIn("long.txt", finding["detail"])
        self.assertEqual(self.out("note.find"), "F || long || " + self.out("note.find")[-16:])
        self.assertIn("cannot be read: File too large", self.failure("note.read", name="long"))
        for nowhere in (self.root / "link", self.desk.folder / "data/mervo-desk/notes"):
            nowhere.parent.mkdir(parents=True, exist_ok=True)
            nowhere.symlink_to(self.root / "gone")
        for settings, sentence in ((f'[notes]\npath = "{self.root}/gone"', "is not there"),
                                   (f'[notes]\npath = "{self.root}/link"', "is not there"),
                                   ("", "is not there"),
                                   ('[notes]\nformat = "rtf"', '"html" or "markdown", not "rtf"'),
                                   ('[notes]\npath = "Vault"', 'must start with "/" or "~/"'),
                                   ('[notes]\nfolder = "x"', '"folder" is not a known key')):
            self.desk.configure(settings)
            self.assertIn(sentence, self.failure("note.find"))


if __name__ == "__main__":
    Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
