"""The own runner: the real program with real jobs, killed, doubled and crowded."""

import concurrent.futures
import os
import pathlib
import signal
import subprocess
import sys
import time
import unittest

import jobs
from desktop import wait
from jobs import DOMAIN, JobCase

# Says when two of one label overlap. The lock goes with the shell, which may be killed as well.
ALONE = 'exec 9> busy; flock -n 9 || echo two >> overlap; echo $$ >> out; sleep 0.4 9>&-'
LABEL = "org.example.job"


class Runs(JobCase):
    def test_a_run_gets_the_session_its_own_group_and_its_files_whatever_started_the_runner(self):
        (self.home / "out").write_text("before\n")
        self.job("job", 'env; echo group $(ps -o pgid= -p $$) process $$; pwd; ls -l /proc/self/fd; cat; echo bad >&2',
                 RunAtLoad=True, StartInterval=3600, EnvironmentVariables={"OWN": "a b"})
        subprocess.run(["/bin/sh", "-c", f"trap '' CHLD; exec {self.program('launchd')} --login <&- >&- 2>&-"],
                       env=self.environment, check=True, timeout=60)
        out = wait("the end", lambda: "bad" in self.lines() and self.lines())
        self.assertEqual(out[0], "before")
        self.assertTrue({"OWN=a b", f"HOME={self.home}", str(self.home)} <= set(out), out)
        self.assertFalse([line for line in out if line.startswith(("RONDEL_", "SECRET")) or "LaunchAgents" in line])
        group = next(line for line in out if line.startswith("group")).split()
        self.assertEqual(group[1], group[3])
        self.assertNotEqual(int(group[1]), os.getpgid(self.runner()))
        standard = {os.readlink(f"/proc/{self.runner()}/fd/{number}") for number in range(3)}
        self.assertEqual(standard, {"/dev/null"})
        self.wait_listed("-\t0")

    def wait_listed(self, how):
        wait(how, lambda: f"{how}\town\t{LABEL}\n" in self.ctl("list"))

    def test_a_run_that_forks_and_ignores_signals_is_never_doubled_and_outlives_bootout_and_the_runner(self):
        file = self.load("job", "trap '' TERM HUP INT; sleep 60 & echo $$; until [ -f go ]; do sleep 0.1; done",
                         StartInterval=1)
        process = int(self.wait_lines(1)[0])
        runner = self.runner()
        time.sleep(1.5)
        self.wait_listed(f"{process}\t-")
        self.ctl("bootout", DOMAIN, file)
        self.assertEqual(self.runner(), runner, "the run in progress is waited for")
        self.ctl("bootstrap", DOMAIN, file)
        self.kill(runner)
        self.start()
        time.sleep(1.5)
        self.assertEqual(self.lines(), [str(process)])
        os.kill(process, 0)
        (self.home / "go").touch()
        self.wait_lines(2)

    def test_output_is_the_file_s_which_may_be_rotated_and_the_runner_does_not_grow(self):
        self.load("job", "head -c 100000000 /dev/zero; echo >> done", StartInterval=1)
        runner = self.runner()
        before = jobs.own_memory(runner)
        self.wait_lines(1, "done")
        self.assertLess(jobs.own_memory(runner), before + 200)
        (self.home / "out").rename(self.home / "out.1")
        self.wait_lines(3, "done")
        self.assertGreaterEqual((self.home / "out").stat().st_size, 100_000_000)

    def test_what_cannot_be_started_is_said_and_tried_again(self):
        absent = self.home / "absent"
        os.mkfifo(self.home / "pipe")
        for name, keys in {"folder": {"WorkingDirectory": str(absent)}, "output": {"StandardOutPath": f"{absent}/out"},
                           "program": {"ProgramArguments": [str(absent)]},
                           "pipe": {"StandardErrorPath": str(self.home / "pipe")}}.items():
            self.job(name, "", StartInterval=1, **keys)
        self.job("fine", "echo fine", StartInterval=1)
        said = self.home / "said"
        with said.open("wb") as stream:
            runner = subprocess.Popen([self.program("launchd"), "--login", "--foreground"], env=self.environment,
                                      stderr=stream)
            self.addCleanup(runner.wait)
            self.wait_lines(2)
            absent.mkdir()
            wait("the output", (absent / "out").exists)
            runner.terminate()
        text = said.read_text()
        for part in (f"folder: its folder {absent}: No such", f"output: its standard output {absent}/out: No such",
                     f"program: its program {absent}: No such", "pipe: its standard error"):
            self.assertIn("launchd: could not start org.example." + part, text)
        self.assertRegex(text, r"started org.example.fine as process \d+\n")
        self.assertIn("org.example.fine ended with status 0\n", text)

    def test_how_a_run_ended_is_listed_while_its_job_is_there(self):
        records = self.agents / ".launchd/runs"
        self.load("other", StartInterval=3600)
        (records / "org.example.gone").write_text("exited 0\n")
        for script, status in {"exit 3": "3", "kill -9 $$": "-9"}.items():
            with self.subTest(script):
                file = self.load("job", script, RunAtLoad=True)
                self.wait_listed(f"-\t{status}")
                self.ctl("bootout", DOMAIN, file)
                wait("no record", lambda: not (records / LABEL).exists())
                self.kill(self.runner())
                self.start()
                self.assertEqual(os.listdir(records), ["org.example.other"])


class Lives(JobCase):
    def test_of_many_started_at_once_one_stays_and_goes_with_the_last_job(self):
        self.load("job", ALONE, StartInterval=1)
        self.kill(self.runner())
        many = [subprocess.Popen([self.program("launchd")], env=self.environment) for _ in range(20)]
        self.assertEqual({one.wait(60) for one in many}, {0})
        self.runner()
        self.wait_lines(2)
        self.assertFalse((self.home / "overlap").exists())
        self.ctl("bootout", DOMAIN, LABEL)
        wait("the end of the last", lambda: not self.runners())
        self.assertFalse(list(self.home.rglob("*.desktop")))

    def test_a_log_in_takes_over_and_loads_what_lies_there_and_systemd_has_not(self):
        gone = self.load("gone", "echo gone", StartInterval=3600)
        self.job("job", "echo job", RunAtLoad=True)
        self.job("quiet", "echo quiet", StartInterval=3600)
        gone.unlink()
        (self.agents / "broken.plist").write_text("<plist>")
        unit = self.home / "config/systemd/user/org.example.unit.service"
        unit.parent.mkdir(parents=True)
        unit.write_text(f"# Made by launchctl from {self.job('unit', 'echo unit', RunAtLoad=True)}\n")
        before = self.runner()
        entry = next(self.home.rglob("*.desktop")).read_text()
        self.assertIn(f'Exec="{self.program("launchd")}" --login\n', entry)
        self.start("--login")
        self.assertNotEqual(self.runner(), before)
        self.assertEqual(self.wait_lines(1), ["job"])
        self.assertEqual(sorted(os.listdir(self.agents / ".launchd/loaded")), [LABEL, "org.example.quiet"])

    def test_two_hundred_jobs_run_at_once_and_cost_nothing_while_none_is_due(self):
        for number in range(200):  # one after the other they would take minutes
            self.job(f"job{number}", f"sleep 1; echo {number}", RunAtLoad=True, StartInterval=3600,
                     StartCalendarInterval=[{"Hour": hour, "Minute": 0} for hour in (3, 4)])
        self.start("--login")
        self.assertEqual(set(self.wait_lines(200)), {str(number) for number in range(200)})
        runner = self.runner()
        before = jobs.settled(runner)
        time.sleep(5)
        self.assertEqual(jobs.wake_ups(runner), before)
        self.assertLess(jobs.own_memory(runner), 4096)

    def test_a_thousand_runs_leave_nothing_behind(self):
        self.load("job", StartInterval=3600, ProgramArguments=["/bin/true"])
        state, runner = self.agents / ".launchd", self.runner()
        record = state / "runs" / LABEL
        self.ctl("kickstart", DOMAIN, LABEL)
        wait("a run", lambda: "exited" in record.read_text())
        held = lambda: (len(os.listdir(f"/proc/{runner}/fd")),  # its open files, and its children, ended ones too
                        pathlib.Path(f"/proc/{runner}/task/{runner}/children").read_text())
        before = held(), jobs.own_memory(runner)
        end = time.monotonic() + 200
        for _ in range(1000):
            record.write_text("")
            (state / "requests" / LABEL).touch()
            while not record.read_text().startswith("exited"):
                self.assertLess(time.monotonic(), end)
                time.sleep(0.0005)
        self.assertEqual(held(), before[0])
        self.assertLess(jobs.own_memory(runner), before[1] + 100)

    def test_a_runner_whose_folders_were_moved_away_starts_nothing_any_more(self):
        self.load("job", "echo old", StartInterval=1)
        self.wait_lines(1)
        (self.home / "Library").rename(self.home / "Moved")
        self.agents.mkdir(parents=True)
        self.load("job", "echo new", StartInterval=1)
        wait("the new one alone", lambda: len(self.runners()) == 1)
        count = self.lines().count("old")
        wait("new runs", lambda: self.lines().count("new") > 2)
        self.assertEqual(self.lines().count("old"), count)

    def test_an_unwritable_home_is_said(self):
        (self.agents / ".launchd").write_text("")
        self.assertIn(".launchd/loaded: Not a directory", self.ctl("bootstrap", DOMAIN, self.job("job"), status=1))


class Killed(JobCase):
    # What the runner asks of the system between two runs; it is killed as it asks for the nth time.
    STEPS = [(call, nth) for call, most in {
        "flock": 4, "inotify_add_watch": 3, "openat": 30, "timerfd_settime": 3, "poll": 4, "unlink": 3, "clone": 3,
        "pipe2": 3, "pidfd_open": 3, "waitid": 3, "pwrite64": 3, "ftruncate": 1, "setsid": 2, "dup2": 6, "execve": 3,
    }.items() for nth in range(1, most + 1)]

    def test_a_runner_killed_at_any_step_is_followed_by_one_that_goes_on(self):
        """Nothing runs twice at once, what was asked for runs once at most, and the times go on."""
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            outcomes = list(pool.map(lambda step: self.killed(*step), self.STEPS))
        self.assertGreater(sum(outcomes), len(self.STEPS) // 3)

    def test_it_goes_on_when_the_system_refuses(self):
        """No room for a record or the lock's number; a clock that is set while the next time is worked out."""
        for fault in ("pwrite64,ftruncate:error=ENOSPC", "timerfd_settime:error=ECANCELED:when=1..3"):
            with self.subTest(fault):
                self.load("job", ALONE, StartInterval=1)
                self.kill(self.runner())
                words = ["strace", "-o", "/dev/null", "-e", f"inject={fault}", self.program("launchd"), "--foreground"]
                runner = subprocess.Popen(words, env=self.environment, stderr=subprocess.DEVNULL)
                self.addCleanup(runner.wait)
                self.wait_lines(len(self.lines()) + 2)
                self.ctl("bootout", DOMAIN, LABEL)
                wait("its end", lambda: not self.runners())
        self.assertFalse((self.home / "overlap").exists())

    @staticmethod
    def killed(call, nth):
        """Whether the runner got as far as to be killed, in a home of its own."""
        case = JobCase()
        case.setUp()
        try:
            file, state = case.job("job", ALONE, StartInterval=1), case.agents / ".launchd"
            for folder in ("loaded", "requests", "runs"):
                (state / folder).mkdir(parents=True, exist_ok=True)
            (state / "loaded" / LABEL).symlink_to(file)
            (state / "requests" / LABEL).touch()
            words = ["strace", "-f", "-o", "/dev/null", "-e", f"trace={call}",
                     "-e", f"inject={call}:signal=SIGKILL:when={nth}", case.program("launchd"), "--foreground"]
            runner = subprocess.Popen(words, env=case.environment, stderr=subprocess.DEVNULL, start_new_session=True)
            end = time.monotonic() + 5  # some calls are the job's, which is then killed again and again
            while runner.poll() is None and len(case.lines()) < 3 and time.monotonic() < end:
                time.sleep(0.05)
            killed = runner.poll() is not None
            if not killed:
                os.killpg(runner.pid, signal.SIGKILL)
            runner.wait()
            for process in case.runners():  # those that strace has let go
                case.kill(process)
            case.start()
            case.wait_lines(len(case.lines()) + 2)
            case.ctl("bootout", DOMAIN, LABEL)
            wait("the end", lambda: not case.runners())
            case.assertFalse((case.home / "overlap").exists(), (call, nth))
            return killed
        finally:
            case.doCleanups()


if __name__ == "__main__":
    jobs.BUNDLE = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
