"""launchctl: its words, and both ways to load a job. systemctl is a recorder; no manager is ever spoken to."""

import json
import os
import pathlib
import socket
import subprocess
import sys
import time
import unittest

import jobs
from jobs import DOMAIN, JobCase

LABEL = "org.example.job"


class Words(JobCase):
    def test_what_it_understands_and_how_it_says_no(self):
        file = self.job("job", ProcessType="Interactive", KeepAlive=True, StartInterval=60)
        (self.agents / "xml.plist").write_text("<plist><dict><key>Label</key>")
        other = f"gui/{os.getuid() + 1}"
        rows = [  # the words, the exit status, what is said
            (["help"], 0, "usage: launchctl COMMAND"),
            ([], 2, "usage: launchctl COMMAND"),
            (["load", "x"], 2, 'launchctl: there is no command "load"; see launchctl help.\n'),
            (["bootstrap", other, file], 2, f"{other} is not the domain of this user, {DOMAIN}."),
            (["bootstrap", DOMAIN], 2, "usage: launchctl bootstrap gui/UID PROPERTY-LIST"),
            (["bootstrap", DOMAIN, self.agents / "none.plist"], 1, "none.plist: No such file or directory."),
            (["bootstrap", DOMAIN, self.agents / "xml.plist"], 1, "it is no property list with a dictionary."),
            (["bootout", DOMAIN, LABEL], 3, f"launchctl: {LABEL} is not loaded.\n"),
            (["bootout", DOMAIN, "../x"], 3, "launchctl: x is not loaded.\n"),
            (["kickstart", DOMAIN, LABEL], 3, "is not loaded."),
            (["bootstrap", DOMAIN, file], 0, f"{LABEL}: the key KeepAlive means nothing here and is left out.\n"),
            (["bootstrap", DOMAIN, file], 4, f'{LABEL} is loaded already; "launchctl bootout" unloads it.'),
            (["print", f"{DOMAIN}/{LABEL}"], 0, f"property list: {file}\nrunner: own\nlast run: none known\n"),
            (["list"], 0, f"PID\tSTATUS\tRUNNER\tLABEL\n-\t-\town\t{LABEL}\n"),
            (["kickstart", DOMAIN, LABEL], 0, ""),
            (["bootout", DOMAIN, file], 0, ""),
            (["list"], 0, "LABEL\n"),
        ]
        for words, status, said in rows:
            with self.subTest(words):
                self.assertIn(said, self.ctl(*words, status=status))

    def test_bad_and_hostile_property_lists_are_refused_at_once(self):
        for name, said, keys in [
                ("empty", "ProgramArguments must name a program.", {"ProgramArguments": []}),
                ("word", "the program a/b must be an absolute path or a bare name.", {"ProgramArguments": ["a/b"]}),
                ("path", "StandardOutPath must be an absolute path.", {"StandardOutPath": "out"}),
                ("hour", "Hour of StartCalendarInterval must be a number", {"StartCalendarInterval": {"Hour": 24}}),
                ("part", '"Year" is no part of StartCalendarInterval.', {"StartCalendarInterval": [{"Year": 1}]}),
                ("variable", '"A=B" is no name of a variable.', {"EnvironmentVariables": {"A=B": "c"}}),
                ("text", "RunAtLoad must be true or false.", {"RunAtLoad": "yes"}),
                ("huge", "File too large", {"X": "y" * 2_000_000}), ("slash", "Label must", {"Label": "a/b"}),
                ("dots", "Label must be of letters", {"Label": ".."}), ("long", "Label must", {"Label": "l" * 10_240}),
                ("line", "Label must", {"Label": "a\nb"}), ("negative", "StartInterval", {"StartInterval": -1}),
                ("zero", "StartInterval must be from 1 to", {"StartInterval": 0}),
                ("overflow", "StartInterval", {"StartInterval": 2**63 - 1}),
                ("above", "StartInterval", {"StartInterval": 2**63}),
                ("many", "has more than 1000 times", {"StartCalendarInterval": [{}] * 1001}),
                # A day that never comes, looked for a thousand times.
                ("never", "", {"StartCalendarInterval": [{"Month": 2, "Day": 30}] * 1000}),
                ("fits", "", {"Label": "l" * 230, "StartInterval": 3600})]:
            with self.subTest(name):
                file, begun = self.job(name, **keys), time.monotonic()
                self.assertIn(said, self.ctl("bootstrap", DOMAIN, file, status=1 if said else 0))
                if not said:
                    self.ctl("bootout", DOMAIN, file)
                self.assertLess(time.monotonic() - begun, 20)

    def told(self):
        ran = subprocess.run([self.program("desk-health")], env=self.environment, capture_output=True, check=True)
        return next(found for found in json.loads(ran.stdout) if found["id"] == "desk.jobs")

    def test_with_no_runner_wanted_nothing_is_loaded_and_none_is_started(self):
        before = self.load("before", StartInterval=3600)
        self.configure('[jobs]\nrunner = "none"\n')
        wanted = "desk.toml wants no runner of jobs"
        self.assertIn(wanted, self.ctl("bootstrap", DOMAIN, self.job("job", StartInterval=60)))
        self.assertNotIn(LABEL, self.ctl("list"))
        never = wanted + ": automations are not run on their schedule"
        self.assertEqual(self.told()["detail"], never + ", except those that were loaded before (1)")
        self.kill(self.runner())
        self.ctl("resume")
        self.assertEqual((self.runners(), self.told()["detail"]), ([], never))
        self.ctl("bootout", DOMAIN, before)
        self.assertIn('runner = "auto"', self.told()["remedy"])

    def test_the_doctor_tells_who_starts_jobs_and_when_nobody_does(self):
        told = self.told
        self.assertEqual(told()["detail"], "none is loaded")
        self.load("job", StartInterval=3600)
        self.assertIn("launchd --login", told()["remedy"])
        self.environment["DISPLAY"] = ":99"
        self.assertEqual((told()["ok"], told()["remedy"]), (True, ""))
        self.kill(self.runner())
        found = told()
        self.assertEqual((found["ok"], found["remedy"]), (False, f"{self.program('launchctl')} resume"))
        self.ctl("resume")
        self.assertTrue(told()["ok"])
        self.ctl("bootout", DOMAIN, LABEL)
        self.configure('[jobs]\nrunner = "systemd"\n')
        self.assertIn("no manager of it answers", told()["detail"])
        manager = self.home / "run/systemd/private"
        manager.parent.mkdir()
        with socket.socket(socket.AF_UNIX) as listening:
            listening.bind(str(manager))
            listening.listen()
            self.assertEqual(told()["detail"], "none is loaded")
            unit = self.home / "config/systemd/user/org.example.job.service"
            unit.parent.mkdir(parents=True)
            unit.write_text("# Made by launchctl from /a.plist\n")
            self.assertIn("loginctl enable-linger", told()["remedy"])
        manager.unlink()
        self.assertIn("no manager of systemd answers", told()["detail"])

    def test_a_run_is_asked_for_by_hand_and_its_job_unloaded_by_the_path_of_its_property_list_that_is_gone(self):
        file = self.load("job", "echo $$; sleep 60")
        self.ctl("kickstart", DOMAIN, LABEL)
        process = self.wait_lines(1)[0]
        self.assertIn(f"{LABEL} runs already, as process {process}.", self.ctl("kickstart", DOMAIN, LABEL))
        file.unlink()
        self.ctl("bootout", DOMAIN, file)


class Systemd(JobCase):
    def setUp(self):
        super().setUp()
        stand_in = self.home / "bin/systemctl"
        stand_in.parent.mkdir()
        stand_in.write_text('#!/bin/sh\necho "$* $XDG_RUNTIME_DIR" >> "$HOME/asked"\n'
                            'case "$*" in *$(cat "$HOME/refuse" 2>/dev/null || echo none)*) echo "Failed: no." >&2; '
                            'exit 1;; esac\n')
        stand_in.chmod(0o755)
        self.environment["PATH"] = f"{stand_in.parent}:{self.environment['PATH']}"
        self.units = self.home / "config/systemd/user"

    def asked(self):
        asked = [line.removesuffix(" " + self.environment["XDG_RUNTIME_DIR"]) for line in self.lines("asked")]
        (self.home / "asked").unlink(missing_ok=True)
        return asked

    def files(self):
        return {str(file.relative_to(self.units)) for file in self.units.rglob("*") if not file.is_dir()}

    def test_a_job_becomes_units_and_goes_without_a_trace(self):
        self.configure('[jobs]\nrunner = "systemd"\n')
        file = self.load("job", 'echo "100%"', StartInterval=60, RunAtLoad=True)
        self.assertEqual(self.asked(), ["--user daemon-reload", f"--user start {LABEL}.timer",
                                        f"--user start --no-block {LABEL}.service"])
        self.assertEqual(self.files(), {f"{LABEL}.service", f"{LABEL}.timer", f"timers.target.wants/{LABEL}.timer",
                                        f"default.target.wants/{LABEL}.service"})
        self.assertEqual(os.readlink(self.units / f"timers.target.wants/{LABEL}.timer"), f"{self.units}/{LABEL}.timer")
        self.assertEqual((self.units / f"{LABEL}.timer").read_text(), f"""# Made by launchctl from {file}
[Unit]
Description=Times of job {LABEL}

[Timer]
OnActiveSec=60s
OnUnitActiveSec=60s
AccuracySec=1s
Persistent=false

[Install]
WantedBy=timers.target
""")
        self.assertNotIn("SECRET", (self.units / f"{LABEL}.service").read_text())
        self.assertFalse(self.runners())
        self.ctl("bootstrap", DOMAIN, file, status=4)
        self.assertIn(f"systemd\t{LABEL}", self.ctl("list"))
        self.assertIn("runner: systemd\n", self.ctl("print", LABEL))
        self.ctl("kickstart", DOMAIN, LABEL)
        self.assertEqual(self.asked(), [f"--user start --no-block {LABEL}.service"])
        self.ctl("bootout", DOMAIN, file)
        self.assertEqual(self.asked(), [f"--user stop {LABEL}.timer", "--user daemon-reload"])
        self.assertFalse(self.files())

    def test_a_job_that_systemd_does_not_take_leaves_nothing(self):
        self.configure('[jobs]\nrunner = "systemd"\n')
        for refused in ("daemon-reload", "start"):
            (self.home / "refuse").write_text(refused)
            said = self.ctl("bootstrap", DOMAIN, self.job("job", StartInterval=60), status=1)
            self.assertRegex(said, f"systemctl --user {refused}.* ended with status 1: Failed: no.")
            self.assertFalse(self.files())

    def test_units_of_somebody_else_stay(self):
        self.configure('[jobs]\nrunner = "systemd"\n')
        self.units.mkdir(parents=True)
        for kind in ("service", "timer"):
            unit = self.units / f"{LABEL}.{kind}"
            unit.write_text("[Unit]\nDescription=mine\n")
            said = self.ctl("bootstrap", DOMAIN, self.job("job", StartInterval=60), status=1)
            self.assertIn(f"{unit} is there and was not made by launchctl.", said)
            self.ctl("bootout", DOMAIN, LABEL, status=3)
            self.assertIn("mine", unit.read_text())
            unit.unlink()

    def test_who_starts_jobs(self):
        private = self.home / "run/systemd/private"
        private.parent.mkdir()
        for text, listens, systemd in [("", False, False), ("", True, True), ('[jobs]\nrunner = "own"', True, False),
                                       ('[jobs]\nrunner = "systemd"', False, True), ("[jobs]\nrunner = 1", True, True),
                                       ('[jobs]\nrunner = "cron"', False, False), ("[jobs]\nx = 1", False, False)]:
            with self.subTest(text, listens=listens):
                self.configure(text)
                with socket.socket(socket.AF_UNIX) as manager:
                    manager.bind(str(private))  # without listen: as a manager leaves its socket
                    if listens:
                        manager.listen()
                    said = self.ctl("bootstrap", DOMAIN, self.job("job", StartInterval=60))
                private.unlink()
                self.assertEqual("desk.toml" in said, "= 1" in text or "cron" in text)
                self.assertEqual(bool(self.asked()), systemd)
                self.ctl("bootout", DOMAIN, LABEL)
                self.asked()


if __name__ == "__main__":
    jobs.BUNDLE = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
