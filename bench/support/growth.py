"""Whether one of many takes what one of few takes."""
import statistics

from bench.support.measure import Row, Target, paired
from bench.support.stage import EMBEDDED

REPEATS = 10
LOOKED_UP = 2.0  # the target of what an index finds, whose levels grow with it


def grown(stage, what, sizes, ways, count=None, at_most=1.10):
    """A row for each size beyond the smallest: what one takes there, against what it takes at the smallest. `what` names
    the work and its sizes, as in "zmfb import, a record: {:,} records". `ways` gives the functions for a size that return
    seconds: "ours", and "bare", whose growth is noted; what they do is `size` things, or `count`."""
    def microseconds(size, way):
        repeats = 1 if count else max(1, min(REPEATS, sizes[-1] // size // 2))  # few are over soon
        return lambda: statistics.median(way() for _ in range(repeats)) / (count or size) * 1e6

    taken = paired(stage.options.growth_runs, {f"{name} {size}": microseconds(size, way) for size in sizes
                                               for name, way in ways(size).items()})

    def row(size):
        few, many = (taken[f"ours {number}"] for number in (sizes[0], size))
        bare = statistics.median(b / a for a, b in zip(taken[f"bare {sizes[0]}"], taken[f"bare {size}"]))
        stage.progress(f"{what.format(size)}: {statistics.median(many):.3f} us")
        return Row(what.format(size), EMBEDDED, what.format(sizes[0]), many, few, Target(at_most=at_most), "us",
                   [f"the other side: {bare:.2f}"])
    return [row(size) for size in sizes[1:]]
