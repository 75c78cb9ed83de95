"""Figures out of samples: medians, spreads, and ratios of samples that were taken in the same round."""

import dataclasses
import statistics

MS, US = 1e6, 1e3  # ns


def quartiles(samples):
    low, middle, high = statistics.quantiles(samples, n=4, method="inclusive")
    return low, middle, high


def added(*series):
    """Round by round, the sum of several series."""
    return [sum(round_) for round_ in zip(*series, strict=True)]


@dataclasses.dataclass
class Figure:
    """One line of the table. `work` and `floor` are samples of the same rounds; `aim` speaks of their ratio, or with
    `absolute` of the figure itself."""

    name: str
    work: list
    floor: list = None
    floor_name: str = ""
    aim: float = None
    absolute: bool = False
    unit: str = "time"  # or "memory", in KiB; or "rate", a second

    @property
    def median(self):
        return statistics.median(self.work)

    @property
    def ratio(self):
        return statistics.median(work / floor for work, floor in zip(self.work, self.floor, strict=True))

    @property
    def met(self):
        if self.aim is None:
            return None
        return (self.median if self.absolute else self.ratio) < self.aim

    def show(self, value):
        if self.unit == "memory":
            return f"{value / 1024:.1f} MiB"
        if self.unit == "rate":
            return f"{value:.2f} a second"
        return f"{value / MS:.2f} ms" if value >= MS / 10 else f"{value / US:.1f} µs"

    def cells(self):
        low, middle, high = quartiles(self.work) if len(self.work) > 1 else self.work * 3
        spread = f"{self.show(low)} – {self.show(high)}" if high > low else "–"
        floor = f"{self.show(statistics.median(self.floor))}: {self.floor_name}" if self.floor else "–"
        ratio = f"{self.ratio:.2f}" if self.floor else "–"
        aim = "–" if self.aim is None else f"< {self.show(self.aim)}" if self.absolute else f"< {self.aim:g} ×"
        return [self.name, self.show(middle), spread, floor, ratio, aim, {True: "yes", False: "**no**", None: ""}[self.met]]


HEADER = ["Work", "Median", "Middle half", "Floor", "Ratio", "Aim", "Met"]


def table(figures):
    """The figures as a table of markdown."""
    rows = [HEADER, ["---"] + ["---:"] * 2 + ["---", "---:", "---:", "---"], *(figure.cells() for figure in figures)]
    return "\n".join("| " + " | ".join(row) + " |" for row in rows)
