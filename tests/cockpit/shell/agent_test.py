"""An agent and a person: what the agent's client asks of the server stands in the running cockpit, and the person decides.

`agent_test.py <mervo-cockpit> <mervo-mcp>`
"""

import os
import sys
import time
import unittest

from desk import Desk
from desktop import DesktopTest, find, focused, press, type_text, wait
from doubles import Notifications, Watcher, pump, wait_pumping
from peer import Peer, call, initialize

COCKPIT, SERVER = "", ""  # from the command line
MESSAGE = "From: %s\r\nTo: work@desk.example\r\nSubject: %s\r\nDate: Thu, 01 Jan 2026 10:00:00 +0000\r\n\r\nHello\r\n"
TICK = 3  # seconds, and some time for a loaded machine


class AnAgentAndAPerson(DesktopTest):
    def setUp(self):
        self.desk = Desk(settings='trash = "Trash"')
        self.addCleanup(self.desk.close)
        self.desk.maildir(folder=".Trash")
        for number, sender in enumerate(("news@shop.example",) * 3 + ("anna@home.example",)):
            self.desk.deliver(MESSAGE % (sender, "Number %d" % number), name="%d.host" % number, flags="S")
        os.environ.update(self.desk.environment)
        self.agent = Peer(SERVER)
        self.addCleanup(self.agent.kill)
        self.agent.ask(initialize(client="agent"))

    def call(self, tool, **arguments):
        return self.agent.ask(call(1, tool, arguments))["result"]["content"][0]["text"]

    def senders(self, folder=""):
        return sorted(path.read_text().split("\n")[0][6:].strip()
                      for path in (self.desk.maildir(folder=folder) / "cur").iterdir())

    def card(self, start):
        return find(self.view, "list item", lambda name: name.startswith(start))

    def test_what_an_agent_asks_for_waits_for_the_person(self):
        tray, notices = self.play(Watcher()), self.play(Notifications("actions"))
        process = self.start(COCKPIT)
        wait_pumping("the icon", lambda: tray.items)
        wait_pumping("its picture", lambda: tray.look()["IconPixmap"])
        tray.activate()
        self.view = self.desktop.application(process, "mervo-cockpit")
        find(self.view, "label", "All clear")

        held = self.call("mail.delete", account="Work", mailbox="INBOX", **{"from": "news@shop.example"})
        begun = time.monotonic()
        self.assertIn("3 message(s)", held)
        deletion = self.card("mail.delete")
        self.assertLess(time.monotonic() - begun, TICK + 1, "a card within a tick")
        find(deletion, "label", "from news@shop.example · INBOX")
        wait_pumping("the notice", lambda: notices.shown)
        (number, notice), = notices.shown.items()
        self.assertEqual(notice["title"], "Approve mail.delete?")
        self.assertEqual(len(self.senders()), 4, "nothing has happened yet")

        self.call("mail.send", account="Work", to="anna@home.example", subject="Hi", body="Hello")
        letter = self.card("mail.send")
        press(find(letter, "push button", "Reject"))
        wait("the keyboard in the field", lambda: pump() or focused(self.view) == ("text", "Reason (optional)"))
        type_text("not to her")
        # A tick and a new action in the meantime take neither the text nor the keyboard.
        self.call("mail.delete", account="Work", mailbox="INBOX", **{"from": "nobody@home.example"})
        find(self.view, "page tab", "Approvals, 3")
        type_text(", thanks")
        press(find(self.card("mail.send"), "push button", "Confirm"))
        find(self.view, "label", "🚫 rejected mail.send")

        notices.act(number, "APPROVE")
        notices.act(number, "REJECT")  # too late
        find(self.view, "label", lambda name: name.startswith("✅ mail.delete - "))
        find(self.view, "page tab", "Approvals, 1")
        self.assertEqual((self.senders(), self.senders(".Trash")), (["anna@home.example"], ["news@shop.example"] * 3))
        self.assertEqual(len(self.desk.waiting()), 1)
        wait("all rows", lambda: len(self.desk.audit()) == 5)
        self.assertEqual([row[:4] for row in self.desk.audit()],
                         [("mcp:agent", "mail.delete", "pending_approval", "needs_approval"),
                          ("mcp:agent", "mail.send", "pending_approval", "needs_approval"),
                          ("mcp:agent", "mail.delete", "pending_approval", "needs_approval"),
                          ("cockpit", "mail.send", "rejected", "not to her, thanks"),
                          ("cockpit", "mail.delete", "executed", "approved")])
        self.assertEqual(self.desk.rows("SELECT kind, text, source, automation FROM feedback"),
                         [("verdict", "refus de mail.send (Work) : not to her, thanks", "cockpit", None)])


if __name__ == "__main__":
    SERVER, COCKPIT = sys.argv.pop(), sys.argv.pop()
    unittest.main()
