"""Who may include whom: the layers against every #include.

A folder is a library when its CMakeLists.txt calls one of the mervo_ functions (mervo_module, mervo_program,
mervo_test...); folders below it that have no such file of their own belong to it. Its EXPOSES lines name what its headers
may include, its MAY_USE lines what only its sources may.
"""

import dataclasses
import os
import pathlib
import re

# The layers, from the lowest up. An include leads to a lower one, or to a neighbour as long as no circle comes of it.
# Launching, supervising and the registration of clients have their floor before they have a library.
# "/*" stands for the libraries below a folder that have no entry of their own.
FLOORS = [
    {"platform", "platform/sqlite", "platform/schedule", "platform/propertylist"},
    {"core/foundation", "platform/jobs", "platform/applescript/values", "platform/desk/settings", "platform/desk/health",
     "platform/desk/session",
     "platform/linux/desktop", "platform/linux/desktop/*", "platform/linux/keychain", "platform/linux/screens",
     "platform/linux/tls"},
    {"core/scripting", "core/imap", "core/secrets", "core/permissions", "core/automations/model", "platform/desk/*",
     "platform/applescript/syntax"},
    {"core/policy", "core/automations/engine", "platform/desk/mime", "platform/desk/applications",
     "platform/desk/applications/*", "platform/applescript/evaluator"},
    {"core/tools", "platform/applescript", "platform/desk", "platform/desk/automation", "platform/launchctl", "platform/launchd",
     "platform/linux/eventkit"},
    {"core/automations/tools", "core/automations/launch", "core/clients", "core/feedback"},
    {"core/catalogue", "core/automations/supervisor"},
    {"core/approval", "core/doctor"},
    {"cockpit/model/icon", "cockpit/model/shown"},
    {"cockpit/model/operations"},
    {"cockpit/model/automations", "cockpit/model/questions", "cockpit/model/queue", "cockpit/model/rules",
     "cockpit/model/settings"},
    {"cockpit/model/archive"},
    {"cockpit/model", "frontends/cli", "frontends/mcp"},
    {"cockpit/icon", "cockpit/views"},
    {"cockpit/shell"},
]
# These know no system and no application: the core may use them like a facility.
PORTABLE = {"platform/sqlite", "platform/schedule", "platform/propertylist"}
ROOMS = ("core", "platform", "frontends", "cockpit")  # what is layered
ANNEXES = ("tests", "bench", "fuzz", "demo")  # may look at everything that they name
SOURCES = {".h", ".cpp"}

DRAWING = "docs/architecture.md"
DRAWN = re.compile(r"^    ((?:%s)(?:/[\w/]+)?) {2,}\S.+$" % "|".join(ROOMS), re.M)

INCLUDE = re.compile(r'^\s*#\s*include\s+"((?:%s)/[^"]+)"' % "|".join(ROOMS + ANNEXES), re.M)
QT_INCLUDE = re.compile(r"^\s*#\s*include\s+<(Q[A-Z]\w*(?:/\w+)?)>", re.M)
CALL = re.compile(r"\bmervo_\w+\s*\(([^)]*)\)")
LIBRARY = re.compile(r"\bmervo_(?!script_test)\w+\s*\(|\badd_library\s*\(mervo-")
LINKED = re.compile(r"\bmervo_(?:qt_)?module\s*\(")
KEYWORDS = {"SOURCES", "EXPOSES", "MAY_USE", "LIBRARIES", "AT", "ON_PATH"}


@dataclasses.dataclass
class Folder:
    name: str  # "core/policy"
    may_use: set  # EXPOSES as well
    exposes: set
    is_linked: bool  # others link it: no program, and no module that is loaded
    borrowed: set  # headers of sources of another folder that this one compiles itself
    files: list


def named_by(keywords, cmake_text):
    """The folders named by these keywords in all calls of one CMakeLists.txt."""
    named, keyword = set(), None
    for call in CALL.findall(re.sub(r"#.*", "", cmake_text)):
        for word in call.split():
            if word in KEYWORDS:
                keyword = word
            elif keyword in keywords and "$" not in word and "::" not in word:
                named.add(word)
        keyword = None
    return named


def borrowed(cmake_text, folder):
    """The headers of the sources that stand in SOURCES with a way out of the folder."""
    named = re.findall(r"\.\./[\w./]+\.cpp", cmake_text)
    return {pathlib.PurePosixPath(os.path.normpath(f"{folder}/{name}")).with_suffix(".h").as_posix() for name in named}


def read(root):
    """The libraries of the tree, by name."""
    root = pathlib.Path(root)
    found = {}
    for top in ROOMS + ANNEXES:
        for cmake in sorted((root / top).rglob("CMakeLists.txt")):
            text = cmake.read_text(encoding="utf-8")
            if LIBRARY.search(text):
                name = cmake.parent.relative_to(root).as_posix()
                used = named_by({"EXPOSES", "MAY_USE"}, text) - {name}
                found[name] = Folder(name, used, named_by({"EXPOSES"}, text), bool(LINKED.search(text)),
                                     borrowed(text, name), [])
    for top in ROOMS + ANNEXES:
        for path in sorted((root / top).rglob("*")):
            if path.suffix in SOURCES and path.is_file():
                home = owner(path.relative_to(root).as_posix(), found)
                if home is not None:
                    found[home].files.append(path)
    return found


def owner(path, folders):
    """The library that a path belongs to: the nearest folder above it that is one."""
    for parent in pathlib.PurePosixPath(path).parents:
        if parent.as_posix() in folders:
            return parent.as_posix()
    return None


def floor(name):
    parent = name.rpartition("/")[0] + "/*"
    return next((number for entry in (name, parent) for number, names in enumerate(FLOORS) if entry in names), None)


def reach(name, folders):
    """Everything that a library can include through others."""
    seen, waiting = set(), list(folders[name].may_use)
    while waiting:
        used = waiting.pop()
        if used not in seen:
            seen.add(used)
            waiting.extend(folders[used].may_use if used in folders else ())
    return seen


def check_includes(root):
    """Every #include of ours is allowed by the MAY_USE of its folder."""
    root, complaints = pathlib.Path(root), []
    folders = read(root)
    for folder in folders.values():
        for path in folder.files:
            where = path.relative_to(root).as_posix()
            for target in INCLUDE.findall(path.read_text(encoding="utf-8")):
                used = owner(target, folders)
                if not (root / target).is_file():
                    complaints.append(f'{where} includes "{target}", which does not exist')
                elif used != folder.name and used not in folder.may_use and target not in folder.borrowed:
                    complaints.append(f'{where} includes "{target}", and {folder.name} may not use {used}')
    return complaints


def check_headers(root):
    """What the headers of a library include is what it EXPOSES: whoever links the library needs that too."""
    root, complaints = pathlib.Path(root), []
    folders = read(root)
    for folder in folders.values():
        if folder.name.startswith(ANNEXES) or not folder.is_linked:
            continue
        shown = {owner(target, folders) for path in folder.files if path.suffix == ".h"
                 for target in INCLUDE.findall(path.read_text(encoding="utf-8"))} - {folder.name, None}
        complaints += [f"{folder.name} includes {used} in a header and does not name it in EXPOSES"
                       for used in sorted(shown - folder.exposes)]
        complaints += [f"{folder.name} names {used} in EXPOSES, and no header of it includes that"
                       for used in sorted(folder.exposes - shown)]
    return complaints


def check_floors(root):
    """MAY_USE lists point down, in no circle, and the agents' side cannot reach what approves."""
    complaints = []
    folders = read(root)
    for name, folder in folders.items():
        for used in sorted(folder.may_use - set(folders)):
            complaints.append(f"{name} may use {used}, which is no library of the tree")
        if name.startswith(ANNEXES):
            continue
        if floor(name) is None:
            complaints.append(f"{name} has no floor; give it one in {pathlib.Path(__file__).name}")
            continue
        for used in sorted(folder.may_use & set(folders)):
            if floor(used) is None or floor(used) > floor(name):
                complaints.append(f"{name} may use {used}, which is not below it")
            if name.startswith("core/") and used.startswith("platform/") and used not in PORTABLE:
                complaints.append(f"{name} may use {used}; the core knows only the facilities of platform/")
        if name in reach(name, folders):
            complaints.append(f"{name} includes itself in a circle")
        if name.startswith("frontends/") and "core/approval" in reach(name, folders):
            complaints.append(f"{name} can reach core/approval; what an agent runs must not be able to approve")
    return complaints


def check_drawing(root):
    """Every library has its line in the drawing of the layers: its name, two blanks or more, what it is for."""
    root = pathlib.Path(root)
    drawn = DRAWN.findall((root / DRAWING).read_text(encoding="utf-8"))
    there = {name for name in read(root) if not name.startswith(ANNEXES)}
    return ([f"{DRAWING} has no line for {name}" for name in sorted(there - set(drawn))]
            + [f"{DRAWING} draws {name}, which is no library" for name in sorted(set(drawn) - there)]
            + [f"{DRAWING} draws {name} twice" for name in sorted(set(drawn)) if drawn.count(name) > 1])


def check_systems(root):
    """The core and the front ends do not know which system they run on, and Qt stays where it belongs."""
    root, complaints = pathlib.Path(root), []
    for top in ROOMS:
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in SOURCES:
                continue
            where, text = path.relative_to(root).as_posix(), path.read_text(encoding="utf-8")
            if not where.startswith("platform/"):
                for target in INCLUDE.findall(text):
                    if target.startswith("platform/linux/"):
                        complaints.append(f'{where} includes "{target}"; ask for the facility instead')
            if not where.startswith(("cockpit/", "platform/linux/desktop/")):
                for header in QT_INCLUDE.findall(text):
                    complaints.append(f"{where} includes <{header}>; Qt belongs to cockpit/ and platform/linux/desktop/")
    return complaints
