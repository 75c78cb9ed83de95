"""Calls beside each other, their cancellation, and every way in which a server comes to its end."""

import os
import pty
import signal
import subprocess
import time
import unittest

from case import PROGRAM, TOOLS, Case
from peer import PATIENCE, call, cancelled, initialize, request


class LockedHome(Case):
    """A home whose database another process holds: each call that reads the rules waits until `release`."""

    def lock(self, peer):
        self.text(peer.ask(call("first", "how_it_works")))  # the database is there
        self.connection = self.database()
        self.connection.execute("BEGIN EXCLUSIVE")

    def hang(self, peer, message):
        """Sends a call and comes back when it runs and waits for the lock, which it asks for again and again."""
        def switches():
            total = 0
            for thread in os.listdir(f"/proc/{peer.process.pid}/task"):
                if int(thread) != peer.process.pid:
                    with open(f"/proc/{peer.process.pid}/task/{thread}/status", encoding="ascii") as status:
                        total += next(int(line.split()[1]) for line in status if line.startswith("voluntary"))
            return total
        before, deadline = switches(), time.monotonic() + PATIENCE
        peer.send(message)
        while switches() < before + 30:
            self.assertLess(time.monotonic(), deadline, "the call does not wait for the lock")
            time.sleep(0.005)

    def release(self):
        self.connection.execute("COMMIT")


class Beside(LockedHome):
    def test_a_slow_call_holds_up_nothing(self):
        peer = self.session()
        self.lock(peer)
        peer.send(*[call(i, "how_it_works") for i in range(5)])
        began = time.monotonic()
        for id_ in ("a", "b"):
            self.assertEqual(peer.ask(request(id_, "ping"))["id"], id_)
        self.assertEqual(len(peer.ask(request("l", "tools/list"))["result"]["tools"]), len(TOOLS))
        self.assertIn("missing required", self.text(peer.ask(call("m", "mail.send")), error=True))
        self.assertEqual(peer.ask(call(3, "how_it_works"))["error"]["code"], -32600, "an id that is under way")
        self.assertLess(time.monotonic() - began, 5)
        peer.send(call("3", "how_it_works"))  # a text is another id than a number
        self.release()
        self.assertEqual({peer.answer()["id"] for _ in range(6)}, {*range(5), "3"})
        self.text(peer.ask(call(3, "how_it_works")))  # an id that is done is free again
        self.assertEqual(peer.end(), ([], 0))

    def test_a_cancelled_call_that_waits_never_runs_and_a_running_one_is_not_answered(self):
        peer = self.session()
        self.lock(peer)
        self.hang(peer, call(0, "how_it_works", {"n": 0}))
        running = [call(i, "how_it_works", {"n": i}) for i in range(1, 32)]
        peer.send(*running, call("late", "how_it_works", {"n": "late"}), call("kept", "how_it_works", {"n": "kept"}))
        self.assertEqual(peer.ask(request("p", "ping"))["id"], "p")
        peer.send(cancelled("late"), cancelled(0), cancelled("0"), cancelled("late"))
        peer.send(call(0, "how_it_works", {"n": "again"}))  # and so is one that was cancelled
        self.assertEqual(peer.ask(request("q", "ping"))["id"], "q")
        self.release()
        answers, status = peer.end()
        self.assertEqual(status, 0)
        self.assertEqual(sorted(map(str, (a["id"] for a in answers))), sorted([*map(str, range(32)), "kept"]))
        ran = [details["n"] for _, _, _, details in self.audit()[1:]]
        self.assertLessEqual({"0", "again"}, set(ran), "what ran finished its work")
        self.assertNotIn("late", ran)


class Ends(LockedHome):
    def test_the_end_of_input_waits_for_the_calls_received(self):
        peer = self.session()
        self.lock(peer)
        peer.send(*[call(i, "how_it_works") for i in range(40)])
        peer.process.stdin.write(b'{"jsonrpc":"2.0","id":"last","method":"ping"}')  # without its line's end
        peer.process.stdin.close()
        with self.assertRaises(subprocess.TimeoutExpired):
            peer.process.wait(0.5)
        self.release()
        ids = []
        while (answer := peer.answer()) is not None:
            ids.append(answer["id"])
        self.assertEqual(sorted(map(str, ids)), sorted([*map(str, range(40)), "last"]))
        self.assertEqual(peer.process.wait(PATIENCE), 0)

    def test_half_a_message_at_the_end_is_answered_as_one(self):
        peer = self.session()
        peer.process.stdin.write(b'{"jsonrpc":"2.0","id":1,"method":"tools/ca')
        answers, status = peer.end()
        self.assertEqual(([a["error"]["code"] for a in answers], status), ([-32700], 0))

    def test_signals_end_it_soon(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            peer = self.session()
            peer.process.send_signal(number)
            self.assertEqual(peer.process.wait(PATIENCE), 0)

    def test_a_signal_does_not_wait_for_a_call_that_hangs(self):
        peer = self.session()
        self.lock(peer)
        self.hang(peer, call(1, "how_it_works"))
        began = time.monotonic()
        peer.process.send_signal(signal.SIGTERM)
        self.assertEqual(peer.process.wait(PATIENCE), 128 + signal.SIGTERM)
        self.assertLess(time.monotonic() - began, 5)
        self.release()

    def test_a_signal_lets_a_running_call_finish(self):
        peer = self.session()
        self.lock(peer)
        self.hang(peer, call(1, "how_it_works"))
        peer.process.send_signal(signal.SIGTERM)
        time.sleep(0.2)
        self.release()
        self.assertTrue(self.text(peer.answer()))
        self.assertEqual(peer.process.wait(PATIENCE), 0)

    def test_a_closed_output_ends_it(self):
        for wakes in (False, True):  # noticed while idle, and on writing
            ours, theirs = os.pipe()
            peer = self.peer(stdout=theirs)
            os.close(theirs)
            peer.send(initialize())
            self.assertTrue(os.read(ours, 1 << 16))
            os.close(ours)
            if wakes:
                try:
                    peer.send(*[request(i, "tools/list") for i in range(50)])
                except BrokenPipeError:
                    pass
            self.assertEqual(peer.process.wait(PATIENCE), 0)

    def test_a_client_that_reads_nothing_loses_nothing(self):
        ours, theirs = os.pipe()
        peer = self.peer(stdout=theirs)
        os.close(theirs)
        peer.send(initialize(), *[request(i, "tools/list") for i in range(100)], request("end", "ping"))
        peer.process.stdin.close()
        with self.assertRaises(subprocess.TimeoutExpired):
            peer.process.wait(0.3)
        with os.fdopen(ours, "rb") as stream:
            lines = stream.read().splitlines()
        self.assertEqual(len(lines), 102)
        self.assertTrue(lines[-1].startswith(b'{"jsonrpc":"2.0","id":"end"'))
        self.assertEqual(peer.process.wait(PATIENCE), 0)

    def test_a_signal_ends_it_while_the_client_reads_nothing(self):
        ours, theirs = os.pipe()
        peer = self.peer(stdout=theirs)
        os.close(theirs)
        peer.send(initialize(), *[request(i, "tools/list") for i in range(100)])
        time.sleep(0.3)
        peer.process.send_signal(signal.SIGTERM)
        self.assertEqual(peer.process.wait(PATIENCE), 128 + signal.SIGTERM)
        os.close(ours)


class CommandLine(Case):
    def test_options(self):
        for arguments, status, stream in [(["--help"], 0, "stdout"), (["--version"], 0, "stdout"), (["extra"], 2, "stderr"),
                                          (["--tool-names=camel"], 2, "stderr"), (["--nothing"], 2, "stderr"),
                                          (["--tool-names"], 2, "stderr")]:
            run = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                                 env=dict(os.environ, MERVO_HOME=self.home), timeout=PATIENCE)
            self.assertEqual(run.returncode, status, arguments)
            self.assertTrue(getattr(run, stream))
            self.assertFalse(run.stdout if stream == "stderr" else run.stderr)
        self.assertEqual(os.listdir(self.home), [])

    def test_a_person_at_a_terminal_is_told_what_it_waits_for(self):
        ours, theirs = pty.openpty()
        os.write(ours, b"\x04")  # Ctrl-D: the end of input
        run = subprocess.run([PROGRAM], stdin=theirs, capture_output=True, timeout=PATIENCE,
                             env=dict(os.environ, MERVO_HOME=self.home))
        os.close(ours)
        os.close(theirs)
        self.assertEqual((run.returncode, run.stdout), (0, b""))
        self.assertIn(b"waits for the client's messages", run.stderr)
        piped = subprocess.run([PROGRAM], input=b"", capture_output=True, timeout=PATIENCE,
                               env=dict(os.environ, MERVO_HOME=self.home))
        self.assertEqual(piped.stderr, b"")

    def test_a_server_that_is_asked_nothing_writes_nothing(self):
        peer = self.session()
        peer.ask(request(1, "tools/list"))
        self.assertEqual(peer.end(), ([], 0))
        self.assertEqual((os.listdir(self.home), peer.error_text), ([], b""))


if __name__ == "__main__":
    unittest.main()
