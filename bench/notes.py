"""A search in the texts of 2,000 notes: none has changed since the last search, or nothing is known."""

import shutil

from figures import Figure

NOTES, FOLDERS = 2000, 20
WORDS = ("budget", "garden", "letter to the school", "train &amp; hotel", "recipe", "meeting", "invoice", "holiday", "café")


def lines(number):
    return [f"{WORDS[(number * 7 + line) % len(WORDS)]} {number * line} and what is left of it until the end" for line in range(14)]


def as_written(number):
    items = "".join(f"<li>{word} {number}</li>" for word in WORDS[:4])
    return ('<!DOCTYPE html>\n<meta charset="utf-8">\n'
            f"<div><b>Note {number}</b></div><div>{'<br>'.join(lines(number))}<ul>{items}</ul></div>\n")


def as_page(number):
    rows = "".join(f"<tr><td>{line}<td>{number}" for line in lines(number))
    return f"<html><head><title>{number}</title></head><body><h1>Note {number}</h1><table>{rows}</table></body></html>\n"


def as_markdown(number):
    return f"---\ntags: [a, b]\n---\n# Note {number}\n\n" + "\n".join("- " + line.replace("&amp;", "&") for line in lines(number)) + "\n"


KINDS = {"html": ("as this system writes them", as_written, 3), "md": ("of Markdown", as_markdown, 3),
         "page": ("of HTML that needs the parser", as_page, None)}


def make(folder, kind):
    suffix = "md" if kind == "md" else "html"
    for number in range(NOTES):
        file = folder / f"Folder {number % FOLDERS}" / f"Note {number}.{suffix}"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(KINDS[kind][1](number), encoding="utf-8")


def notes(bench):
    figures = []
    for kind, (title, _, aim) in KINDS.items():
        environment, folder = bench.desk(f"notes-{kind}")
        root = folder / "notes"
        if not (folder / "made").exists():
            shutil.rmtree(root, ignore_errors=True)
            make(root, kind)
            (folder / "made").touch()
        config = folder / "config/mervo-desk/desk.toml"
        config.write_text(f'{config.read_text(encoding="utf-8")}[notes]\npath = "{root}"\n', encoding="utf-8")
        got = bench.pairs(environment, {
            "find": ["spawn", bench.helpers / "mervo", "run", "note.find", "body=invoice 77 and"],
            "walk": ["walk", root]})
        cold = bench.pairs(environment, {
            "find": ["fresh", folder / "cache/mervo-desk", bench.helpers / "mervo", "run", "note.find", "body=invoice 77 and"],
            "walk": ["walk", root]}, max(11, bench.rounds // 2))
        search, floor = f"`mervo run note.find body=` in {NOTES:,} notes {title}", "opening and reading every note"
        figures.append(Figure(search, got["find"]["wall"], got["walk"]["wall"], floor, aim))
        figures.append(Figure(f"{search}, for the first time", cold["find"]["wall"], cold["walk"]["wall"], floor))
    listed = bench.pairs(environment, {"list": ["spawn", bench.helpers / "mervo", "run", "note.list"]})
    figures.append(Figure(f"for comparison: `mervo run note.list` over {NOTES:,} notes", listed["list"]["wall"]))
    return figures
