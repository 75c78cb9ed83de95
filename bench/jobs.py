"""The own runner of jobs: how late it starts them, what it holds, how often it wakes up."""

import os
import pathlib
import plistlib
import shutil
import subprocess
import time

from figures import MS, Figure

JOBS, IDLE = 50, 180  # seconds
DATE = ["/bin/date", "+%s.%N"]


def memory(process, kind):
    text = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text(encoding="ascii")
    return next(int(line.split()[1]) for line in text.splitlines() if line.startswith(kind + ":"))


def sleeps(process):
    text = pathlib.Path(f"/proc/{process}/status").read_text(encoding="ascii")
    return next(int(line.split()[1]) for line in text.splitlines() if line.startswith("voluntary"))


def times(file, count):
    """What `date` has written, in nanoseconds."""
    while len(lines := file.read_text(encoding="ascii").splitlines() if file.exists() else []) < count:
        time.sleep(0.1)
    return [int(second) * 10**9 + int(rest) for second, rest in (line.split(".") for line in lines[:count])]


def jobs(bench):
    _, home = bench.desk("jobs")
    agents = home / "Library/LaunchAgents"
    shutil.rmtree(home / "Library", ignore_errors=True)
    agents.mkdir(parents=True)
    environment = {"HOME": str(home), "PATH": os.environ["PATH"]}
    launchctl = [bench.helpers / "platform/launchctl"]
    (home / "config/mervo-desk/desk.toml").write_text('[jobs]\nrunner = "own"\n', encoding="utf-8")
    environment["XDG_CONFIG_HOME"] = str(home / "config")

    def load(label, **keys):
        (agents / f"{label}.plist").write_bytes(plistlib.dumps({"Label": label, "ProgramArguments": DATE} | keys))
        subprocess.run([*launchctl, "bootstrap", f"gui/{os.getuid()}", agents / f"{label}.plist"], env=environment, check=True)

    late, bare = home / "late", home / "bare"
    for file in (late, bare):
        file.unlink(missing_ok=True)
    for number in range(JOBS):
        load(f"idle{number}", StartCalendarInterval=[{"Hour": hour, "Minute": 0} for hour in (3, 15)], StartInterval=86400)
    runner = int((agents / ".launchd/lock").read_text(encoding="ascii"))
    try:
        load("often", StartInterval=1, StandardOutPath=str(late))
        since = os.lstat(agents / ".launchd/loaded/often").st_mtime_ns
        with bare.open("wb") as stream:
            floor = subprocess.Popen([bench.programs / "bare-timer", str(bench.rounds + 2), *DATE], stdout=stream)
        latencies = [(moment - since) % 10**9 for moment in times(late, bench.rounds)]
        floors = [moment % 10**9 for moment in times(bare, bench.rounds)]
        floor_memory = memory(floor.pid, "Pss")
        floor.wait()
        subprocess.run([*launchctl, "bootout", "often"], env=environment, check=True)
        time.sleep(2)
        before = sleeps(runner)
        time.sleep(IDLE)
        rate = (sleeps(runner) - before) / IDLE
        held = {kind: memory(runner, kind) for kind in ("Pss", "Private_Dirty")}
    finally:
        os.kill(runner, 15)
    bare_name = "a program that only starts the same one"
    return [
        Figure(f"from the time that is due to the job's own clock, {JOBS} other jobs waiting", latencies, floors, bare_name,
               100 * MS, True),
        Figure(f"proportional memory (Pss), {JOBS} jobs", [held["Pss"]], [floor_memory], bare_name, 4096, True, "memory"),
        Figure("of which nobody else's and changed", [held["Private_Dirty"]], unit="memory"),
        Figure(f"wake-ups in {IDLE // 60} minutes in which none is due", [rate], None, "", 0.05, True, "rate"),
    ]
