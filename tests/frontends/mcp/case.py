"""The tests of the stdio server: a home of each test's own, and clients that speak in raw lines."""

import json
import os
import shutil
import sqlite3
import sys
import tempfile
import unittest

from peer import Peer, initialize

PROGRAM = sys.argv.pop(1) if __name__ != "__main__" and len(sys.argv) > 1 else ""
with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../core/catalogue/catalogue.txt"),
          encoding="utf-8") as catalogue:
    TOOLS = [line.split()[0] for line in catalogue]  # every id, in the order of publication


class Case(unittest.TestCase):
    """A test with a home and any number of servers, all gone at its end."""

    maxDiff = None

    def setUp(self):
        self.home = tempfile.mkdtemp(prefix="mervo-mcp-test-")
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)

    def peer(self, *options, **more):
        peer = Peer(PROGRAM, *options, environment=dict(os.environ, MERVO_HOME=self.home), **more)
        self.addCleanup(peer.kill)
        return peer

    def session(self, *options, client="test-client"):
        peer = self.peer(*options)
        self.assertIn("result", peer.ask(initialize(client=client)))
        peer.send({"jsonrpc": "2.0", "method": "notifications/initialized"})
        return peer

    def text(self, answer, error=False):
        self.assertIn("result", answer)
        self.assertEqual(answer["result"]["isError"], error, answer)
        (content,) = answer["result"]["content"]
        self.assertEqual(content["type"], "text")
        return content["text"]

    def database(self):
        connection = sqlite3.connect(os.path.join(self.home, "mervo.sqlite"), isolation_level=None)
        self.addCleanup(connection.close)
        return connection

    def audit(self):
        rows = self.database().execute("SELECT actor, action, outcome, details FROM audit ORDER BY id").fetchall()
        return [(actor, action, outcome, json.loads(details)) for actor, action, outcome, details in rows]

    def pending(self):
        folder = os.path.join(self.home, "pending")
        return sorted(os.listdir(folder)) if os.path.isdir(folder) else []
