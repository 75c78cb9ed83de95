"""A CalDAV and CardDAV server behind vdirsyncer, set up as docs/desk.md says: `server_test.py CONTENTS-FOLDER`."""

import base64
import pathlib
import re
import socket
import subprocess
import sys
import unittest
import urllib.request

from calendars import soon
from desk import Desk, DeskTest
from desktop import wait
from dovecot import free_port

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
PAGE = pathlib.Path(__file__).parents[4] / "docs/desk.md"
MADE = """<mkcol xmlns="DAV:" xmlns:C="urn:ietf:params:xml:ns:%s"><set><prop><resourcetype><collection/><C:%s/>
</resourcetype><displayname>%s</displayname></prop></set></mkcol>"""
ITEM = ("BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:x\nBEGIN:{0}\nUID:{1}\nDTSTAMP:20260101T000000Z\nSUMMARY:{1}\n{2}"
        "X-KEPT:1\nEND:{0}\nEND:VCALENDAR\n")
CARD = "BEGIN:VCARD\nVERSION:3.0\nUID:ann\nFN:Ann Server\nN:Server;Ann;;;\nX-KEPT:1\nEND:VCARD\n"


class ServerTest(DeskTest):
    options = {"accounts": (), "mode": "yolo"}

    def setUp(self):
        super().setUp()
        self.folder, self.address = self.desk.folder, f"http://127.0.0.1:{(port := free_port())}/"
        (self.folder / "users").write_text("me:secret\n")
        words = {"server-hosts": f"127.0.0.1:{port}", "auth-type": "htpasswd", "auth-htpasswd-encryption": "plain",
                 "auth-htpasswd-filename": self.folder / "users", "storage-filesystem-folder": self.folder / "server"}
        server = subprocess.Popen(["radicale", *(f"--{key}={value}" for key, value in words.items())],
                                  stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        wait("the server", lambda: self.answers(port))
        setup = re.search(r"# ~/.config/vdirsyncer/config\n(.*?)```", PAGE.read_text(), re.S)[1]
        setup = setup.replace("https://cloud.example/remote.php/dav/", self.address)
        self.config = self.folder / "vdirsyncer"
        self.config.write_text(setup.replace('"secret-tool", "lookup", "vdirsyncer", "me"', '"echo", "secret"'))
        self.desk.configure('[calendars]\npath = "~/.calendars"\n[reminders]\npath = "~/.calendars"\n'
                            'default = "Tasks"\n[contacts]\npath = "~/.contacts"\n')

    @staticmethod
    def answers(port):
        with socket.socket() as client:
            return client.connect_ex(("127.0.0.1", port)) == 0

    def server(self, method, path, text=""):
        login = base64.b64encode(b"me:secret").decode()
        request = urllib.request.Request(self.address + "me/" + path, text.replace("\n", "\r\n").encode(),
                                         {"Authorization": "Basic " + login}, method=method)
        return urllib.request.urlopen(request, timeout=20).read().decode()

    def vdirsyncer(self, *words, status=0):
        done = subprocess.run(["vdirsyncer", "-c", self.config, *words], env=self.desk.environment, input="y\n" * 9,
                              capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stderr

    def test_changes_go_both_ways_and_a_conflict_loses_nothing(self):
        for name, kind, title in (("work", "caldav calendar", "Work"), ("tasks", "caldav calendar", "Tasks"),
                                  ("people", "carddav addressbook", "People")):
            self.server("MKCOL", name + "/", MADE % (*kind.split(), title))
        self.server("PUT", "work/tea.ics", ITEM.format("VEVENT", "Tea", f"DTSTART:{soon():%Y%m%dT%H%M%S}\n"))
        self.server("PUT", "tasks/do.ics", ITEM.format("VTODO", "Do", ""))
        self.server("PUT", "people/ann.vcf", CARD)
        for words in ("discover", "sync", "metasync"):
            self.vdirsyncer(words)
        for tool, words, text in (("cal.find", {}, "|| Work || Tea"), ("reminder.find", {}, "Tasks || todo ||  || Do"),
                                  ("contact.find", {"query": "ann"}, "Ann Server ||")):
            self.assertIn(text, self.desk.call(tool, **words)["output"])
        for tool, words in (("cal.update", {"contains": "tea", "location": "Kew"}), ("contact.add", {"first": "Our"}),
                            ("cal.add", {"calendar": "Work", "summary": "Ours"}), ("reminder.complete", {"name": "d"})):
            self.assertEqual(self.desk.call(tool, **words)["outcome"], "executed", tool)
        self.vdirsyncer("sync")
        for path, text in (("work/tea.ics", "LOCATION:Kew"), ("work/tea.ics", "X-KEPT:1"), ("work/", "SUMMARY:Ours"),
                           ("tasks/do.ics", "STATUS:COMPLETED"), ("tasks/do.ics", "X-KEPT:1"), ("people/", "FN:Our")):
            self.assertIn(text, self.server("GET", path))
        theirs = self.server("GET", "work/tea.ics").replace("\r", "").replace("SUMMARY:Tea", "SUMMARY:Theirs")
        self.server("PUT", "work/tea.ics", theirs)
        self.desk.call("cal.update", contains="tea", title="Ours too")
        self.desk.call("reminder.add", name="meanwhile")
        self.assertIn("changed on both sides", self.vdirsyncer("sync", status=1))
        self.assertIn("Ours too", self.desk.call("cal.find")["output"])
        self.assertIn("SUMMARY:Theirs", self.server("GET", "work/tea.ics"))
        wait("the other list's turn",  # a conflict may end vdirsyncer before that
             lambda: "SUMMARY:meanwhile" in self.server("GET", "tasks/") or not self.vdirsyncer("sync", status=1))


if __name__ == "__main__":
    unittest.main()
