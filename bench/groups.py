"""The groups of figures: what is run against what."""

import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

from archive import archive
from body import body
from bulk import bulk
from calendar_items import calendar
from contacts import contacts
from figures import MS, Figure, added
from items import items
from jobs import jobs
from notes import notes

ROOT = pathlib.Path(__file__).resolve().parent.parent
EVERYTHING = ROOT / "tests/frontends/mcp/node_modules/@modelcontextprotocol/server-everything/dist/index.js"
ACCOUNT = "Bench"


class Bench:
    """The programs of one build and a desk of their own to run on."""

    def __init__(self, build, data, rounds):
        self.helpers, self.programs = build / "Contents/Helpers", build / "Contents/Bench"
        self.data, self.rounds = data, rounds
        data.mkdir(parents=True, exist_ok=True)

    def desk(self, name):
        """The environment of a desk, and its folder. Every desk has one account; its mail may be made later."""
        folder = self.data / name
        variables = {"HOME": folder, "MERVO_HOME": folder / "mervo", "XDG_CONFIG_HOME": folder / "config",
                     "XDG_DATA_HOME": folder / "data", "XDG_CACHE_HOME": folder / "cache"}
        config = folder / "config/mervo-desk/desk.toml"
        config.parent.mkdir(parents=True, exist_ok=True)
        config.write_text(f'[[mail.account]]\nname = "{ACCOUNT}"\nemail = ["alex.martin@mail.example.org"]\n'
                          f'path = "{folder}/mail"\n', encoding="utf-8")
        if not (folder / "mail").exists():
            self.mail(folder / "mail", 200)
        shutil.rmtree(folder / "mervo", ignore_errors=True)
        return os.environ | {key: str(value) for key, value in variables.items()}, folder

    def mail(self, folder, messages):
        print(f"  making {messages} messages in {folder.relative_to(self.data.parent.parent)}", flush=True)
        subprocess.run([sys.executable, "-B", ROOT / "demo/make-maildir", "--out", folder, "--messages", str(messages),
                        "--folders", "15"], check=True, stdout=subprocess.DEVNULL)

    def pairs(self, environment, measures, rounds=None):
        """Samples of several measures, by name; see bench-pairs."""
        words = [str(rounds or self.rounds)]
        for number, (name, measure) in enumerate(measures.items()):
            words += ([":"] if number else []) + [name, *map(str, measure)]
        return self.samples(environment, self.programs / "bench-pairs", words)

    def samples(self, environment, program, words):
        ran = subprocess.run([program, *words], env=environment, stdout=subprocess.PIPE, text=True, check=False)
        if ran.returncode != 0:
            sys.exit(f"bench: {program.name} {' '.join(words)[:300]} failed")
        return json.loads(ran.stdout)


MANY = 200  # automations


def automation(home, name, **loop):
    folder = home / "automations" / name
    folder.mkdir(parents=True)
    (folder / "loop.json").write_text(json.dumps({"name": name} | loop), encoding="utf-8")
    return folder


def listing(bench):
    environment, folder = bench.desk("automations")
    schedule = {"type": "calendar", "hour": 7, "minute": 30}
    for number in range(MANY):
        made = automation(folder / "mervo", f"loop-{number:03}", schedule=schedule, client="claude")
        (made / "AGENT.md").write_text("p" * 3000, encoding="utf-8")
        state = folder / f"mervo/.runtime/state/{made.name}.json"
        state.parent.mkdir(parents=True, exist_ok=True)
        state.write_text('{"enabled":true,"lastRun":"2026-01-01T08:00:00Z","lastExit":0}', encoding="utf-8")
    got = bench.pairs(environment, {"list": ["spawn", bench.helpers / "mervo", "run", "auto.list"],
                                    "start": ["spawn", bench.programs / "floor-start"]})
    whole, start = got["list"]["wall"], got["start"]["wall"]
    return [
        Figure(f"`mervo run auto.list` with {MANY} automations, from start to end", whole, start, "start of a C++ program"),
        Figure("the same without the start", [
            all_ - bare for all_, bare in zip(whole, start, strict=True)], start, "that start", 10 * MS, absolute=True),
    ]


def command_line(bench):
    environment, folder = bench.desk("small")
    automation(folder / "mervo", "nothing", kind="script", command="true")
    got = bench.pairs(environment, {
        "auto-run": ["spawn", bench.helpers / "mervo", "auto-run", "nothing"],
        "bash": ["spawn", "/bin/bash", "-c", "true"],
        "run": ["spawn", bench.helpers / "mervo", "run", "how_it_works"],
        "version": ["spawn", bench.helpers / "mervo", "--version"],
        "start": ["spawn", bench.programs / "floor-start"],
        "insert": ["insert", folder / "floor.sqlite"],
    })
    start, insert = got["start"]["wall"], got["insert"]["wall"]
    return [
        Figure("`mervo run how_it_works`, from start to end", got["run"]["wall"], added(start, insert),
               "start of a C++ program + INSERT", 1.5),
        Figure("`mervo --version`", got["version"]["wall"], start, "start of a C++ program"),
        Figure("What `mervo auto-run` adds to a script's own time", [
            run - alone for run, alone in zip(got["auto-run"]["wall"], got["bash"]["wall"], strict=True)],
            got["bash"]["wall"], "`/bin/bash -c true`", 15 * MS, absolute=True),
        *listing(bench),
    ]


REQUESTS = {  # by name: a part of every answer, and the request
    "ping": ('"result":', '{"jsonrpc":"2.0","id":@,"method":"ping"}'),
    "list": ('"how_it_works"', '{"jsonrpc":"2.0","id":@,"method":"tools/list"}'),
    "call": ('"isError":false', '{"jsonrpc":"2.0","id":@,"method":"tools/call",'
                                '"params":{"name":"how_it_works","arguments":{}}}'),
    "refused": ('"isError":true', '{"jsonrpc":"2.0","id":@,"method":"tools/call",'
                                  '"params":{"name":"mail.body","arguments":{"account":"Bench"}}}'),
}
ECHO = '{"jsonrpc":"2.0","id":@,"method":"tools/call","params":{"name":"echo","arguments":{"message":"Hello"}}}'
HELLO = ('{"jsonrpc":"2.0","id":0,"method":"initialize","params":{"protocolVersion":"2025-06-18","capabilities":{},'
         '"clientInfo":{"name":"bench","version":"1"}}}')


def answers(environment, program, folder):
    """The server's own answers, one file for each request: what the floor program says, so that it moves as much."""
    lines = [HELLO, '{"jsonrpc":"2.0","method":"notifications/initialized"}',
             *(request.replace("@", str(number)) for number, (_, request) in enumerate(REQUESTS.values(), 1))]
    ran = subprocess.run([program], env=environment, input="\n".join(lines) + "\n", text=True, check=True,
                         stdout=subprocess.PIPE)
    files = {}
    for line in ran.stdout.splitlines():
        answer = json.loads(line)
        if "method" in answer:
            continue
        name = "initialize" if answer["id"] == 0 else list(REQUESTS)[answer["id"] - 1]
        files[name] = folder / f"answer-{name}.json"
        files[name].write_text(line + "\n", encoding="utf-8")
    return files


def server(bench):
    environment, folder = bench.desk("small")
    program, floor = bench.helpers / "mervo-mcp", bench.programs / "floor-answer"
    said = answers(environment, program, folder)
    measures = {"greet": ["greet", program], "greet-floor": ["greet", floor, said["initialize"]],
                "insert": ["insert", folder / "floor.sqlite"]}
    for name, (part, request) in REQUESTS.items():
        measures[name] = ["serve", part, request, program]
        measures[name + "-floor"] = ["serve", part, request, floor, said[name]]
    got = bench.pairs(environment, measures, rounds=4 * bench.rounds)
    pipe = "the same bytes through a pipe"

    def trip(name, title, aim=None, more=None):
        bare = got[name + "-floor"]["wall"]
        return Figure(title, got[name]["wall"], added(bare, more) if more else bare,
                      pipe + (" + INSERT" if more else ""), aim)

    notes = got["call"]["notes"]
    figures = [
        Figure("start until `initialize` is answered", got["greet"]["wall"], got["greet-floor"]["wall"],
               "start of a program that answers", 10 * MS, absolute=True),
        trip("ping", "`ping`"),
        trip("list", "`tools/list`"),
        trip("call", "`tools/call how_it_works`, audited", 1.3, got["insert"]["wall"]),
        Figure("resident memory after `initialize`", [notes["resident_kib_at_start"]],
               [got["call-floor"]["notes"]["resident_kib_at_start"]], "a program that answers", 10 * 1024, True, "memory"),
        Figure(f"resident memory after {4 * bench.rounds} calls", [notes["resident_kib"]],
               [got["call-floor"]["notes"]["resident_kib"]], "a program that answers", 10 * 1024, True, "memory"),
    ]
    return figures + (processor_time(bench, environment, measures) if EVERYTHING.is_file() else [])


def processor_time(bench, environment, measures):
    """Of all calls together: what a server does after an answer counts as well, and shows in the next sample."""
    quiet = 'exec node "$0" stdio 2>/dev/null'
    got = bench.pairs(environment, {"echo": ["serve", "Hello", ECHO, "sh", "-c", quiet, EVERYTHING],
                                    **{name: measures[name] for name in ("refused", "call", "insert")}},
                      rounds=10 * bench.rounds)
    mean = {name: [statistics.mean(series["cpu"])] for name, series in got.items()}
    echo = "`echo` of the reference server"
    return [
        Figure("processor time of a call that the argument check refuses (mean)", mean["refused"], mean["echo"], echo, 0.25),
        Figure("processor time of `how_it_works`, audited (mean)", mean["call"], added(mean["echo"], mean["insert"]),
               echo + " + INSERT"),
        Figure("of which: a bare INSERT (mean)", mean["insert"]),
    ]


QUERY = "subjectContains=payroll #12"  # a few subjects, so that the search goes through all mailboxes


def mail(bench, messages, rounds):
    environment, folder = bench.desk(f"mail-{messages}")
    marker = folder / "made"
    if not marker.exists():
        shutil.rmtree(folder / "mail", ignore_errors=True)
        bench.mail(folder / "mail", messages)
        marker.touch()
    search = ["spawn", bench.helpers / "mervo", "run", "mail.search", QUERY]
    walk = ["walk", folder / "mail"]
    first = bench.pairs(environment, {"search": ["fresh", folder / "cache/mervo-desk", *search[1:]], "walk": walk}, rounds)
    insert = ["insert", folder / "floor.sqlite"]
    warm = bench.pairs(environment, {"search": search, "walk": walk, "insert": insert}, rounds)
    inside = bench.samples(environment, bench.programs / "bench-mail", [str(bench.rounds)])
    walked = "opening every message, 4 KiB of each"
    return [
        Figure(f"`mervo run mail.search` in {messages:,} messages", warm["search"]["wall"], warm["walk"]["wall"], walked,
               0.5),
        Figure(f"the same, index made from nothing ({messages:,})", first["search"]["wall"], first["walk"]["wall"],
               walked, 2),
        Figure(f"of a warm search: the index of all mailboxes read ({messages:,})", inside["load"]["wall"]),
        Figure(f"of a warm search: the row of the audit trail, as a bare INSERT ({messages:,})", warm["insert"]["wall"]),
        Figure(f"finding that nothing changed in any mailbox ({messages:,})", inside["check"]["wall"], None, "", 10 * MS,
               absolute=True),
    ]


def mail_search(bench):
    return [*mail(bench, 20_000, max(11, bench.rounds // 2)), *mail(bench, 100_000, 11)]


RULES, ROWS = 1_000, 1_000_000


def gate(bench):
    home = bench.data / "gate"
    environment = os.environ | {"MERVO_HOME": str(home)}
    # The newest day of the rows must be today.
    shutil.rmtree(home, ignore_errors=True)
    print(f"  making {RULES:,} rules and {ROWS:,} audit rows", flush=True)
    program = bench.programs / "bench-gate"

    def measured():
        got = bench.samples(environment, program, ["measure", str(home), str(bench.rounds)])
        return {name: series["wall"] for name, series in got.items()}

    subprocess.run([program, "prepare", home, str(RULES), str(ROWS)], env=environment, check=True)
    full = measured()
    subprocess.run([program, "midnight", home], env=environment, check=True)
    begun = measured()

    def own_work(wall, when):
        return Figure(f"the gate's own work (configuration, {RULES:,} rules, today's count in {ROWS:,} rows, decision), "
                      f"{when}", wall["gate"], wall["rules_and_count"], "the two bare statements", 2 * MS, True)

    return [
        Figure(f"`ActionPolicy::decide` with {RULES:,} rules", full["decide"], None, "", 0.2 * MS, True),
        own_work(begun, "as the day begins"),
        own_work(full, "at the day's end"),
        Figure("of which: all rules read", full["rules"]),
        Figure("of which: the day's count", full["count"]),
        Figure(f"search of {ROWS:,} audit rows", full["search"], full["search_statement"], "the bare statement", 1.2),
    ]


ACTIONS, AUTOMATIONS = 500, 50


def cockpit(bench):
    home = bench.data / "cockpit"
    environment = os.environ | {"MERVO_HOME": str(home), "HOME": str(home)}
    shutil.rmtree(home, ignore_errors=True)
    print(f"  making {ROWS:,} audit rows", flush=True)
    subprocess.run([bench.programs / "bench-gate", "prepare", home, "100", str(ROWS)], env=environment, check=True)
    got, many = (bench.samples(environment, bench.programs / "bench-cockpit",
                               [str(home), str(ACTIONS), str(count), str(4 * bench.rounds)]) for count in (AUTOMATIONS, MANY))
    what = f"a tick without a change ({ROWS:,} audit rows, {ACTIONS} actions, {AUTOMATIONS} automations)"
    stat = "a stat of every file"
    return [
        Figure(what + ", processor time", got["tick"]["cpu"], got["stamps"]["wall"], stat, 5 * MS, True),
        Figure("the same by the clock", got["tick"]["wall"], got["stamps"]["wall"], stat),
        Figure(f"a tick with {MANY} automations, processor time", many["tick"]["cpu"], many["stamps"]["wall"], stat, 5 * MS,
               True),
    ]


IDLE = 600  # seconds


def application(bench):
    # The system's own Python: another one does not see the packages of the bus.
    run = subprocess.run(["/usr/bin/python3", "-B", pathlib.Path(__file__).with_name("application.py"),
                          bench.programs.parent / "MacOS/mervo-cockpit", bench.programs / "bare-tray",
                          str(max(11, bench.rounds // 2)), str(IDLE)], stdout=subprocess.PIPE, check=True)
    got = json.loads(run.stdout.splitlines()[-1])  # the window manager speaks too
    bare, ceiling = "a bare tray icon of Qt", 45e6 / 1024
    idle = f"{IDLE // 60} minutes of idleness, opened and closed again"
    figures = [
        Figure("from the start to the icon in the tray", got["cockpit icon"], got["bare icon"], bare, 300 * MS, True),
        Figure("from the first click to the popover on the screen", got["first opening"], None, "", 150 * MS, True),
        Figure("the same, opened again", got["opening"]),
        Figure("proportional memory (Pss), not opened yet", got["cockpit"], got["bare"], bare, ceiling, True, "memory"),
        Figure("the same, opened and closed again", got["closed again"], got["bare"], bare, ceiling, True, "memory"),
        Figure(f"wake-ups in {idle}", got["cockpit wake-ups"], None, "", 0.5, True, "rate"),
        Figure(f"processor time of {idle}", got["cockpit work"]),
        Figure("processor time in a second, while ten actions wait and the icon moves", got["cockpit moving"],
               got["bare moving"], "a bare icon with two pictures in turns", 3 * MS, True),
        Figure("kilobytes on the session bus of it", got["cockpit bytes"], got["bare bytes"], "the same", 60, True, "rate"),
        Figure("frames of it", got["cockpit frames"], got["bare frames"], "the same", 12.01, True, "rate"),
        Figure(f"memory grown in {IDLE // 10} seconds of it", got["cockpit growth"], unit="memory"),
    ]
    return figures + (peer(got) if "keepassxc" in got else [])


def peer(got):
    return [
        Figure("for comparison, keepassxc: to its icon", got["keepassxc icon"]),
        Figure("keepassxc: proportional memory", got["keepassxc"], unit="memory"),
        Figure("keepassxc: wake-ups", got["keepassxc wake-ups"], unit="rate"),
        Figure("keepassxc: processor time of the same idleness", got["keepassxc work"]),
    ]


GROUPS = {"command line": command_line, "server": server, "mail": mail_search, "body": body, "bulk": bulk, "archive": archive,
          "contacts": contacts, "calendar": calendar, "items": items, "notes": notes, "gate": gate, "cockpit": cockpit,
          "application": application, "jobs": jobs}
