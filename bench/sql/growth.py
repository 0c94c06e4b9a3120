"""Whether the time that our own part takes for a row stays the same, however many rows there are."""
import statistics

from bench.sql import people
from bench.support.measure import Row, Target, paired
from bench.support.stage import EMBEDDED


def _repeats(rows, largest):
    """Small results are read more often: their differences drown in the noise of one reading."""
    return max(1, min(30, largest // rows // 2))


def _own_part(stage, worker, rows, largest):
    """Microseconds of processor time a row beyond the bare client's, of each paired run. Embedded, all the work is in
    one process; and the difference of two clock times would be lost in what else the machine does."""
    sql = people.query(rows)
    repeats = _repeats(rows, largest)

    def times(what):
        taken = [worker.ask(what, sql=sql)["processor"] for _ in range(repeats)]
        return statistics.median(taken) / rows * 1e6

    seconds = paired(stage.options.growth_runs, {"bare": lambda: times("select.bare"), "ours": lambda: times("select.ours")})
    own = [ours - bare for ours, bare in zip(seconds["ours"], seconds["bare"])]
    stage.progress(f"{rows} rows: {statistics.median(own):.3f} us a row of our own")
    return own


def select(stage):
    """Each size against the smallest."""
    sizes = stage.options.growth
    database = stage.name(stage.copy(people.make(stage, max(sizes))), EMBEDDED)
    with stage.worker() as worker:
        worker.ask("attach", database=database)
        worker.ask("select.ours", sql=people.query(max(sizes)))
        own = {rows: _own_part(stage, worker, rows, max(sizes)) for rows in sizes}
    base = own[sizes[0]]
    what = "internalselect, own part of a row: {:,} rows"
    return [Row(what.format(rows), EMBEDDED, what.format(sizes[0]), own[rows], base, Target(at_most=1.10), "us")
            for rows in sizes[1:]]
