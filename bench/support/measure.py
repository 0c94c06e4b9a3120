"""Paired runs, and what is made of them."""
import statistics
from dataclasses import dataclass, field

# How the bare client sends the product's statements, and what that is called in the table.
BARE = {
    "as ours": "bare client, same statements, same calls",
    "plain": "bare client, same statements, calls of its own",
}


@dataclass
class Target:
    """What ours is held against: a ratio to the other's, how many times faster it has to be, or how much more it may
    take."""
    at_most: float = None
    times_faster: float = None
    more: float = None
    unit: str = ""

    def text(self):
        if self.at_most is not None:
            return f"at most {self.at_most:g} times"
        if self.more is not None:
            return f"at most {self.more:g} {self.unit} more"
        return "faster" if self.times_faster == 1 else f"{self.times_faster:g} times faster"

    def limit(self):
        """The largest ratio that meets it; None when it is no ratio."""
        if self.at_most is not None:
            return self.at_most
        return 1 / self.times_faster if self.times_faster else None

    def met(self, row):
        if self.at_most is not None:
            return row.ratio() <= self.at_most
        if self.more is not None:
            return statistics.median(a - b for a, b in zip(row.ours, row.theirs)) <= self.more
        return 1 / row.ratio() >= self.times_faster


@dataclass
class Row:
    """One line of the table."""
    what: str
    where: str
    against: str
    ours: list
    theirs: list
    target: Target = None
    unit: str = "s"
    notes: list = field(default_factory=list)
    kind: str = ""  # the benchmark it is from

    def ratios(self):
        return [a / b for a, b in zip(self.ours, self.theirs)]

    def ratio(self):
        return statistics.median(self.ratios())

    def verdict(self):
        if self.target is None:
            return ""
        return "met" if self.target.met(self) else "missed"


def spread(values):
    """The distance from the smallest to the largest, as a part of the median."""
    middle = statistics.median(values)
    return (max(values) - min(values)) / middle if middle else 0.0


def paired(runs, contestants, progress=lambda text: None):
    """Runs each contestant once per round, in turn, every other round in the opposite order, so that neither what
    else the machine does nor the order favours one. `contestants` are functions by name that return seconds."""
    seconds = {name: [] for name in contestants}
    for number in range(runs):
        order = list(contestants)
        for name in order if number % 2 == 0 else reversed(order):
            seconds[name].append(contestants[name]())
            progress(f"run {number + 1} of {runs}: {name} {seconds[name][-1]:.3f} s")
    return seconds
