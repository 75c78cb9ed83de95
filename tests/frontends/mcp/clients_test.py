"""The protocol's own clients as real peers: the official client of both eras, and the inspector's command line."""

import json
import os
import subprocess
import sys
import tempfile
import unittest

from case import PROGRAM, TOOLS, Case

FOLDER = os.path.dirname(os.path.abspath(__file__))
MODULES = os.path.join(FOLDER, "node_modules")

sys.path.insert(0, os.path.join(FOLDER, "..", "..", "..", "demo"))
from stage.desk import Desk  # noqa: E402


class Clients(Case):
    def setUp(self):
        super().setUp()
        self.assertTrue(os.path.isdir(MODULES), "the clients are not installed: run scripts/setup --tests")

    def node(self, *arguments, folder=FOLDER, environment=None, stdin=None):
        run = subprocess.run(["node", *arguments], capture_output=True, text=True, timeout=120, cwd=folder, input=stdin,
                             env=environment or dict(os.environ, MERVO_HOME=self.home))
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        return json.loads(run.stdout)

    def check(self, seen, version):
        self.assertEqual(seen["version"], version)
        self.assertEqual(seen["server"], "mervo")
        self.assertTrue(seen["instructions"].startswith("Mervo: you propose"))
        self.assertEqual((seen["tools"], seen["first"]), (len(TOOLS), TOOLS[0]))
        self.assertIn("Mervo", seen["executed"]["content"][0]["text"])
        self.assertFalse(seen["executed"]["isError"])
        self.assertRegex(seen["pending"]["content"][0]["text"], r"^pending [0-9A-F]{8}: waits for the owner's approval")
        self.assertFalse(seen["pending"]["isError"])
        self.assertTrue(seen["error"]["isError"])
        self.assertIn("missing required argument", seen["error"]["content"][0]["text"])
        self.assertEqual(seen["unknown"], -32602)
        self.assertEqual(len(self.pending()), 1)

    def test_the_official_client_in_a_session(self):
        self.check(self.node(os.path.join(FOLDER, "session_client.mjs"), PROGRAM), "2025-11-25")

    def test_the_official_client_without_a_session(self):
        self.check(self.node(os.path.join(FOLDER, "stateless_client.mjs"), PROGRAM), "2026-07-28")

    def play(self, desk, *calls):
        return self.node(os.path.join(FOLDER, "morning_client.mjs"), PROGRAM, environment=desk.environment,
                         stdin=json.dumps(calls))

    def test_the_official_client_plays_the_demos_morning(self):
        folder = tempfile.TemporaryDirectory(prefix="mervo-mcp-test-")
        self.addCleanup(folder.cleanup)
        desk = Desk(folder.name, os.path.dirname(PROGRAM))
        desk.set_up()
        self.home = str(desk.home)
        accounts, found = self.play(desk, ("mail.accounts", {}), ("mail.search", {"subjectContains": "invoice"}))
        self.assertTrue(accounts[0].startswith("ACCOUNT: Personal\n  INBOX\n"), accounts)
        place, _, _, _, subject = found[0].split("\n")[0].split(" || ")
        self.database().execute("INSERT INTO policy_rules VALUES ('DE4Y0001', 1, NULL, 'mail.send', '{}', 'deny', 'user',"
                                " '2026-01-01T00:00:00Z')")
        message = {"account": "Personal", "mailbox": place.split("/", 1)[1]}
        body, draft, texts, held, refused = self.play(
            desk, ("mail.body", message | {"subject": subject}),
            ("mail.draft", {"to": "ann@example.org", "subject": "Minutes", "body": "Here they are."}),
            ("imessage.read", {"limit": 1}), ("mail.delete", message | {"olderThan": 30}),
            ("mail.send", {"to": "ann@example.org", "subject": "Minutes"}))
        self.assertGreater(len(body[0]), 20)
        self.assertEqual(draft, ["OK draft saved", False])
        self.assertTrue(texts[0].endswith(" || maya@lighthouse.example.com || He moved it to 15:30"), texts)
        self.assertRegex(held[0], r"^pending [0-9A-F]{8}: .*\d+ message\(s\), \d+\.\d MB")
        self.assertEqual(refused, ["blocked by deny-rule (DE4Y0001)", True])
        self.assertEqual([row[1:3] for row in self.audit()][2:],
                         [("mail.body", "executed"), ("mail.draft", "executed"), ("imessage.read", "executed"),
                          ("mail.delete", "pending_approval"), ("mail.send", "denied")])

    def inspect(self, *arguments):
        # Looks for its own version in the folder above the one that it is started in.
        folder = os.path.join(MODULES, "@modelcontextprotocol", "inspector-cli", "build")
        return self.node("index.js", PROGRAM, *arguments, folder=folder)

    def test_the_inspector(self):
        listed = [tool["name"] for tool in self.inspect("--method", "tools/list")["tools"]]
        self.assertEqual(listed, TOOLS)
        called = self.inspect("--method", "tools/call", "--tool-name", "how_it_works")
        self.assertIn("Mervo", self.text({"result": called}))
        waiting = self.inspect("--method", "tools/call", "--tool-name", "mail.send", "--tool-arg", "to=ann@example.org",
                               "subject=Minutes", "body=5")
        self.assertTrue(self.text({"result": waiting}).startswith("pending "))


if __name__ == "__main__":
    unittest.main()
