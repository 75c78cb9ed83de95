"""What the texts of the tree say: paths that exist, nothing unfinished, nothing of outside papers."""

import glob
import os
import pathlib
import re

TOP = ("bench", "cmake", "cockpit", "core", "debian", "demo", "docs", "frontends", "fuzz", "platform", "resources",
       "scripts", "tests")
PATH = re.compile(r"(?<![\w/.$~}-])((?:%s)/[\w./*{},<>+-]*[\w*}>/])" % "|".join(TOP))
LINK = re.compile(r"\]\((?!\w+:|#)([^)#\s]+)")

# In two pieces each, so that this file does not speak of them itself.
UNWELCOME = {
    "an outside paper": r"\bthe specifi" r"cation\b|\bspec\." r"md\b|\bPar" r"ts? [1-7]\.[0-9]+\b",
    "unfinished work": r"\bTO" r"DO\b|\bFIX" r"ME\b|\bX" r"XX\b|\bHA" r"CK\b|\bnot (?:yet )?imple" r"mented\b",
}
SKIPPED_FOLDERS = {".git", "build", "node_modules", "__pycache__"}
TEXT_LIMIT = 600  # lines of one source file
LIMITED = {".cpp", ".h", ".py", ".qml"}


def documents(root):
    root = pathlib.Path(root)
    return [path for path in [root / "README.md", *sorted((root / "docs").glob("**/*.md"))] if path.is_file()]


def alternatives(path):
    """The paths behind "a/{b,c}.h": a documentation's shorthand."""
    braces = re.search(r"\{([^{}]*)\}", path)
    if not braces:
        return [path]
    return [whole for word in braces.group(1).split(",")
            for whole in alternatives(path[:braces.start()] + word + path[braces.end():])]


def exists(root, path):
    """True when a named path is there. "*" is a pattern; from a "<name>" on it is the reader's to fill in; a class may
    be named without the ending of its file."""
    if "<" in path:
        path = path[:path.rfind("/", 0, path.index("<")) + 1]
    whole = str(pathlib.Path(root) / path)
    return bool(glob.glob(whole) or glob.glob(whole + ".h"))


def check_paths(root):
    """Every path of the tree that README.md and docs/ name is there."""
    root, complaints = pathlib.Path(root), []
    for document in documents(root):
        text, where = document.read_text(encoding="utf-8"), document.relative_to(root).as_posix()
        for named in sorted(set(PATH.findall(text))):
            for path in alternatives(named):
                if not exists(root, path):
                    complaints.append(f"{where} names {path}, which does not exist")
        for target in sorted(set(LINK.findall(text))):
            if not exists(document.parent, target):
                complaints.append(f"{where} links to {target}, which does not exist")
    return complaints


def files(root):
    """Every file of the tree, in order; what a build or a package manager made is left out."""
    for folder, below, names in os.walk(root):
        below[:] = sorted(set(below) - SKIPPED_FOLDERS)
        yield from (pathlib.Path(folder) / name for name in sorted(names))


def check_words(root):
    """No text of the tree leans on an outside paper, is unfinished, or names a folder of one machine."""
    root, complaints = pathlib.Path(root).resolve(), []
    patterns = {why: re.compile(pattern, re.I if why == "an outside paper" else 0)
                for why, pattern in UNWELCOME.items()}
    if len(root.parts) > 2:
        patterns["a path of this machine"] = re.compile(r"(?<!\w)" + re.escape(str(root) + "/"))
    for path in files(root):
        try:
            lines = path.read_text(encoding="utf-8").splitlines()
        except UnicodeDecodeError:
            continue
        for number, line in enumerate(lines, 1):
            for why, pattern in patterns.items():
                if found := pattern.search(line):
                    complaints.append(f'{path.relative_to(root)}:{number} speaks of {why}: "{found.group()}"')
    return complaints


def check_sizes(root):
    """A source file holds one thing."""
    return [f"{path.relative_to(root)} has {count} lines; {TEXT_LIMIT} is the limit"
            for path in files(root) if path.suffix in LIMITED
            and (count := len(path.read_bytes().splitlines())) > TEXT_LIMIT]
