"""Looking somebody up in an address book of 5,000 cards, each a file of its own."""

import random

from figures import Figure

CARDS = 5_000


def make(folder):
    folder.mkdir(parents=True)
    chance = random.Random(4)
    for number in range(CARDS):
        first, last = f"Given{chance.randrange(900)}", f"Family{number}"
        lines = ["BEGIN:VCARD", "VERSION:3.0", f"UID:card-{number}", f"FN:{first} {last}", f"N:{last};{first};;;",
                 f"ORG:Company {number % 50};Office", f"EMAIL;TYPE=WORK:{first.lower()}.{number}@work.example",
                 f"EMAIL;TYPE=HOME:h{number}@home.example", f"TEL;TYPE=CELL:+49 170 {number:07}",
                 f"ADR;TYPE=HOME:;;Street {number};Town;;12345;Country", "REV:20240101T000000Z", "END:VCARD", ""]
        (folder / f"{number:05}.vcf").write_bytes("\r\n".join(lines).encode())


def contacts(bench):
    environment, folder = bench.desk("contacts")
    cards = folder / "cards"
    if not cards.exists():
        make(cards)
    with open(folder / "config/mervo-desk/desk.toml", "a", encoding="utf-8") as settings:
        settings.write(f'[contacts]\npath = "{cards}"\n')
    find = ["spawn", bench.helpers / "mervo", "run", "contact.find"]
    got = bench.pairs(environment, {"name": [*find, f"query=Family{CARDS - 1}"], "email": [*find, f"email=h{CARDS - 2}@"],
                                    "walk": ["walk", cards]})
    return [Figure(title, got[name]["wall"], got["walk"]["wall"], "opening every card and reading it", 2)
            for name, title in (("name", "`contact.find` by name in 5,000 cards"), ("email", "`contact.find` by address"))]
