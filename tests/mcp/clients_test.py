"""The protocol's own clients as real peers: the official client of both eras, and the inspector's command line."""

import json
import os
import subprocess
import unittest

import peer as peers
from peer import Case

FOLDER = os.path.dirname(os.path.abspath(__file__))
MODULES = os.path.join(FOLDER, "node_modules")


class Clients(Case):
    def setUp(self):
        super().setUp()
        self.assertTrue(os.path.isdir(MODULES), "the clients are not installed: run scripts/setup --tests")

    def node(self, *arguments, folder=FOLDER):
        run = subprocess.run(["node", *arguments], capture_output=True, text=True, timeout=120, cwd=folder,
                             env=dict(os.environ, MERVO_HOME=self.home))
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        return json.loads(run.stdout)

    def check(self, seen, version):
        self.assertEqual(seen["version"], version)
        self.assertEqual(seen["server"], "mervo")
        self.assertTrue(seen["instructions"].startswith("Mervo: you propose"))
        self.assertEqual((seen["tools"], seen["first"]), (61, "mail.accounts"))
        self.assertIn("Mervo", seen["executed"]["content"][0]["text"])
        self.assertFalse(seen["executed"]["isError"])
        self.assertRegex(seen["pending"]["content"][0]["text"], r"^pending [0-9A-F]{8}: waits for the owner's approval")
        self.assertFalse(seen["pending"]["isError"])
        self.assertTrue(seen["error"]["isError"])
        self.assertIn("missing required argument", seen["error"]["content"][0]["text"])
        self.assertEqual(seen["unknown"], -32602)
        self.assertEqual(len(self.pending()), 1)

    def test_the_official_client_in_a_session(self):
        self.check(self.node(os.path.join(FOLDER, "session_client.mjs"), peers.PROGRAM), "2025-11-25")

    def test_the_official_client_without_a_session(self):
        self.check(self.node(os.path.join(FOLDER, "stateless_client.mjs"), peers.PROGRAM), "2026-07-28")

    def inspect(self, *arguments):
        # Looks for its own version in the folder above the one that it is started in.
        folder = os.path.join(MODULES, "@modelcontextprotocol", "inspector-cli", "build")
        return self.node("index.js", peers.PROGRAM, *arguments, folder=folder)

    def test_the_inspector(self):
        self.assertEqual(len(self.inspect("--method", "tools/list")["tools"]), 61)
        called = self.inspect("--method", "tools/call", "--tool-name", "how_it_works")
        self.assertIn("Mervo", self.text({"result": called}))
        waiting = self.inspect("--method", "tools/call", "--tool-name", "mail.send", "--tool-arg", "to=ann@example.org",
                               "subject=Minutes", "body=5")
        self.assertTrue(self.text({"result": waiting}).startswith("pending "))


if __name__ == "__main__":
    unittest.main()
