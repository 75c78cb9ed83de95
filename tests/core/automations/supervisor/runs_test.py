"""One run of an automation: its order, its log, what its programs get, and how it ends, in every way of launching."""

import json
import os
import pathlib
import signal
import sys
import unittest

import desk
import desktop
from automations import AutomationTest

CONTRACT = ("\n\nWhen the task above is complete, signal it by running `mervo auto-done` (equivalent: printf 0 > "
            "\"$RONDEL_DONE\"). On partial failure, run `mervo auto-done 1`. Do NOT kill any process, do not close the window "
            "yourself, and do not sit waiting at the prompt: the rondel supervisor sees the signal and closes the session "
            "from the outside.\n")
ANY_BYTES = bytes(range(1, 256)) + "'\"$(x)` ü\n".encode()
ATTACHABLE = ("T live run attachable: tmux -S HOME/.runtime/run/rondel.sock attach -t %s  (or: Mervo cockpit → Automations "
              "→ Open live run)")


class Scripts(AutomationTest):
    def test_run(self):
        folder = self.script("pwd; echo $PATH; env | grep -c RONDEL; echo \"$KEPT\"; echo no >&2; exit $((1+2))")
        self.file(".json").parent.mkdir(parents=True)
        self.file(".json").write_text('{"enabled":true,"other":[1]}')
        self.file(".done").parent.mkdir(parents=True)
        self.file(".done").write_text("0")
        self.desk.environment |= {"RONDEL_RUN": "b", "RONDEL_DONE": "/x", "RONDEL_MORE": "1"}
        self.run_once()
        path = ":".join([str(self.desk.contents / "Helpers"), f"{self.desk.folder}/.local/bin", f"{self.desk.folder}/bin",
                         "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin", os.environ["PATH"]])
        self.assertEqual(self.log(), ["===== rondel: a @ T (script) =====", str(folder).replace(str(self.home), "HOME"), path,
                                      "0", "a b", "'c'", "no", "===== rondel: a done (exit 3) ====="])
        self.assertEqual(self.state() | {"lastRun": ""}, {"enabled": True, "lastExit": 3, "lastRun": "", "other": [1]})
        self.assertRegex(self.state()["lastRun"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertFalse(self.file(".done").exists())

    def test_decisions(self):
        """Each with the words, the status, the last line of the log and the exit code in the state."""
        self.script("exit 3")
        self.add("none", kind="script")
        self.script("kill -9 $$", "killed")
        self.script("pwd", "gone", cwd="/nowhere")
        self.script("true", "paused")
        self.file(".json").parent.mkdir(parents=True)
        self.file(".json", "paused").write_text('{"enabled":false}')
        done = "===== rondel: %s done (exit %d) ====="
        skip = ("T skip: 'paused' is paused; launchd fired a stale / login-reloaded agent. Resume it in the cockpit to run.")
        for words, status, line, code in (
                ("a", 0, done % ("a", 3), 3), ("none", 1, "T script loop 'none' has no command - nothing to run", None),
                ("killed", 0, done % ("killed", 137), 137), ("gone", 0, done % ("gone", -1), -1),
                ("paused", 0, skip, None), ("paused --force", 0, done % ("paused", 0), 0)):
            name = words.split()[0]
            with self.subTest(words):
                self.run_once(*words.split(), status=status)
                self.assertEqual((self.log(name)[-1], self.file(".lock.d", name).exists()), (line, False))
                if code is not None:
                    self.assertEqual(self.state(name)["lastExit"], code)
        self.assertIn('T not started: the working folder "/nowhere" is not there', self.log("gone"))
        self.add("damaged")
        (self.home / "automations/damaged/loop.json").write_text("[1]")
        for name in ("damaged", "b", "..", "a/../a", ""):
            self.run_once("--", name, status=1, error=f"rondel: no such loop: {name}\n")

    def test_one_at_a_time(self):
        """A second run, with --force too, changes nothing; of many that meet a stale lock one takes it."""
        self.script("echo ran >> ../../count; until [ -f ../../go ]; do sleep 0.1; done")
        go = self.home / "go"
        first = self.start()
        desktop.wait("a run", lambda: (self.home / "count").exists())
        self.run_once("--force", "a")
        self.assertEqual(self.log()[-1], f"T skip: previous run still active (pid {first.pid})")
        go.touch()
        first.communicate()
        self.assertEqual((self.ended(), (self.home / "count").read_text()), (0, "ran\n"))
        for text, shown in (("letters", "letters"), (" \n", "?"), ("2147483647", "2147483647"), ("1", "1")):
            os.remove(self.home / "count")
            self.file(".lock.d").mkdir()
            (self.file(".lock.d") / "pid").write_text(text)
            if text == "1":  # somebody else's by its age: the number was used again
                os.utime(self.file(".lock.d") / "pid", (1, 1))
            go.unlink()
            many = [self.start() for _ in range(6)]
            desktop.wait("all but one", lambda: sum(one.poll() is not None for one in many) == 5)
            go.touch()
            for process in many:
                process.communicate(timeout=60)
            taken = [line for line in self.log() if "taking over" in line][-1:]
            self.assertEqual(taken, [f"T stale lock (pid {shown}) - taking over"])
            self.assertEqual((self.home / "count").read_text(), "ran\n", text)
            self.assertEqual(self.ended(), 0)

    def test_rotation(self):
        self.script("true")
        for size, rotated in ((1_048_576, False), (1_048_577, True)):
            self.file(".log").parent.mkdir(parents=True, exist_ok=True)
            self.file(".log").write_text("x" * size)
            self.file(".log.1").write_text("older")
            self.run_once()
            self.assertEqual(len(self.file(".log.1").read_text()), size if rotated else 5)
            self.assertEqual(len(self.log()), 2)

    def test_failure_mail(self):
        """The last 40 lines of the log, as a call of the run itself, which waits for the owner here."""
        self.desk.home.mkdir()
        self.desk.set(autonomyMode="panic", notifyEmail="me@desk.example")
        self.script("seq 60; printf '\\xff\\0 €'; exit 5", notifyOnFail=True)
        self.run_once()
        tail = [*map(str, range(23, 61)), "\ufffd €===== rondel: a done (exit 5) =====", ""]
        text = "The script loop \"a\" failed (exit 5).\n\nLast lines of the log:\n\n" + "\n".join(tail) + "\n"
        self.assertEqual(self.file(".failtail.txt").read_text(), text)
        (waiting,) = (json.loads((self.home / "pending" / f"{one}.json").read_text()) for one in self.desk.waiting())
        self.assertEqual(waiting["args"], {"subject": "[rondel] a failed (exit 5)", "body": text})
        self.assertEqual([row[:3] for row in self.desk.audit()], [("auto:a", "mail.notify", "pending_approval")])


class Agents(AutomationTest):
    def mode(self):
        return "tmux"

    def lines(self, name="a", client="claude", code=0):
        """The log of a run that has ended."""
        lines = [f"===== rondel: {name} @ T (client={client}) =====", f"===== rondel: {name} done (exit {code}) ====="]
        attachable = ATTACHABLE % name.replace(".", "%2E")  # another process writes that
        self.assertIn(attachable, self.log(name))
        return [*lines[:self.log(name).index(attachable)], attachable, *lines[self.log(name).index(attachable):]]

    def test_clients(self):
        """What each client gets: arguments, standard input, environment and folder, byte for byte."""
        folder = self.desk.folder / "it's a $HOME"
        folder.mkdir()
        prompt, whole = ANY_BYTES, ANY_BYTES + CONTRACT.encode()
        self.work("exit 9")
        for client, settings, arguments in (
                ("codex", {"model": "claude-3"}, ["exec", "--dangerously-bypass-approvals-and-sandbox", "-C", str(folder), "-"]),
                ("agy", {"model": "M x", "timeoutSeconds": 5}, ["--print", "--dangerously-skip-permissions", "--print-timeout",
                                                                "5s", "--model", "M x"]),
                ("grok", {"model": ""}, [None, "--no-alt-screen", "--always-approve", "--cwd", str(folder)])):
            for file in self.record.iterdir():
                file.unlink()
            self.add("a.b", prompt, client=client, visible=False, cwd=str(folder), **settings)
            self.desk.environment["RONDEL_RUN"] = "other"
            self.run_once("a.b")
            got = self.told("arguments").split(b"\0")[:-1]
            text = got[1] + b"\n" if client == "grok" and self.mode() == "tmux" else got[1] if client == "grok" else None
            self.assertEqual(text if client == "grok" else self.told("input"), whole)
            expected = [client.encode()] + [got[1] if word is None else word.encode() for word in arguments]
            self.assertEqual((got, self.told("folder").decode()), (expected, f"{folder}\n"))
            environment = dict(one.split("=", 1) for one in self.told("environment").decode().split("\0")[:-1])
            self.assertEqual([environment.get(key) for key in ("RONDEL_RUN", "RONDEL_DONE", "KEPT", "RONDEL_MORE")],
                             ["a.b", str(self.file(".done", "a.b")), "a b\n'c'", None])
            self.assertEqual(environment["PATH"].split(":")[0], str(self.desk.contents / "Helpers"))
            self.assertEqual((self.ended("a.b"), self.log("a.b")), (9, self.lines("a.b", client, 9)))
            self.file(".log", "a.b").unlink()

    def test_long_prompts(self):
        prompt = os.urandom(5 << 20).hex().encode()
        self.add(prompt=prompt, visible=False)
        self.run_once()
        self.assertEqual((self.told("input"), self.ended()), (prompt + CONTRACT.encode(), 0))
        self.add("g", prompt, visible=False, client="grok")
        self.run_once("g")
        self.assertEqual(self.log("g")[-2:], ["T not started: grok takes the prompt as an argument, which can have 131071 "
                                              f"bytes; it has {len(prompt) + len(CONTRACT)}",
                                              "===== rondel: g done (exit -1) ====="])
        self.assertEqual(self.ended("g"), -1)
        self.add("g", prompt[:131071 - len(CONTRACT)], visible=False, client="grok")
        self.run_once("g")
        self.assertEqual(self.ended("g"), 0)

    def test_feedback(self):
        """A directive each time, in front of the instructions; without AGENT.md the stored prompt."""
        self.desk.mervo("run", "feedback.tell", "text=be brief")
        self.add(visible=False, prompt=None, model="m-haiku")
        loop = self.home / "automations/a/loop.json"
        loop.write_text(loop.read_text()[:-1] + ', "prompt": "stored"}')
        self.run_once()
        text = self.told("input").decode()
        self.assertTrue(text.startswith("=== DECISIONS") and "• [directive] be brief\n" in text)
        self.assertTrue(text.endswith("=\n\nstored" + CONTRACT), text)
        self.assertIn(b"--dangerously-skip-permissions", self.told("arguments"))

    def test_end_of_agents(self):
        """By the signal while it goes on, by its own end, and by nothing at all."""
        self.work("mervo auto-done 3; sleep 600 & sleep 600")
        self.add(visible=False)
        self.run_once()
        self.assertEqual(self.ended(), 3)
        self.assert_gone(self.told("process"))

    def test_stop(self):
        """The owner stops it, or the system ends the supervisor: the session goes, the state says 143."""
        self.work("trap '' TERM HUP; sleep 600")
        self.add(visible=False)
        for stop in ("terminate", "stop"):
            run = self.start()
            process = self.told("process")
            if stop == "terminate" or self.mode() == "direct":
                run.terminate()
            else:
                self.tmux("kill-session", "-t", "=a")
                self.file(".done").write_text("143")
            told = run.communicate(timeout=60)
            self.assertEqual((run.returncode, told), (0, ("", "")))
            self.assertEqual(self.ended(), 143)
            self.assert_gone(process)
            (self.record / "process").unlink()


class DirectAgents(Agents):
    """Where tmux makes no session: here its socket's name would be too long."""

    folder = "mervo" + "/long" * 30

    def mode(self):
        return "direct"

    def lines(self, name="a", client="claude", code=0):
        return ["T tmux session failed - falling back to direct headless",
                f"===== rondel: {name} @ T (background, client={client}) =====", f"===== rondel: {name} done (exit {code}) ====="]

    def test_end_of_agents(self):
        """By its own end only; what it leaves in its group goes."""
        self.work("mervo auto-done 3; sleep 600 & echo $! > $HOME/record/left; echo out; kill -TERM $$")
        self.add(visible=False)
        self.run_once()
        self.assertEqual((self.ended(), self.log()[-2]), (143, "out"))
        self.assert_gone(self.told("left"))
        (self.desk.folder / "bin/claude").unlink()
        self.desk.environment["PATH"] = "/usr/bin:/bin"
        self.run_once()
        self.assertEqual((self.ended(), self.log()[-2]), (127, "/usr/bin/env: ‘claude’: No such file or directory"))


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
