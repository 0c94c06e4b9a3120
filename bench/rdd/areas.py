"""Work areas: a table walked through, sought in, changed and appended to by the operations of the language, and looked
through page by page."""
import contextlib
import functools

from bench.support.growth import LOOKED_UP, grown
from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure
from bench.support.stage import EMBEDDED

MEGABYTE = 1e6


@functools.cache
def _make(stage, records):
    """A database file with that many records in its table, to be copied."""
    file = stage.copy()
    with stage.worker() as worker:
        worker.ask("attach", database=stage.name(file, EMBEDDED))
        worker.ask("areas.make", records=records)
    return file


def _pages_of(records):
    return min(200, records // 47 - 1)


def _checked(worker, what, expected, **fields):
    """Times one contestant; it has to see the rows that the others see."""
    def ask():
        reply = worker.ask(what, **fields)
        seen = reply["rows"], reply["credit"]
        if expected.setdefault("seen", seen) != seen:
            raise Failure(f"{what} sees {seen} instead of {expected['seen']}")
        return reply["seconds"]
    return ask


def _walk(stage, worker, where):
    before, _ = worker.memory()
    worker.ask("areas.walk")
    _, peak = worker.memory()
    worker.ask("areas.dbf", file=stage.file(f"{next(stage.numbers)}.dbf"))
    expected = {}
    seconds = paired(stage.options.runs, {
        "internalselect": _checked(worker, "areas.select", expected),
        "DBFIDX": _checked(worker, "areas.walk", expected, area="BENCHDBF"),
        "ours": _checked(worker, "areas.walk", expected),
    }, stage.progress)
    what = f"{stage.options.rows:,} records by DBSKIP, 7 fields each"
    yield Row(what, where, "internalselect of the rows", seconds["ours"], seconds["internalselect"],
              Target(at_most=1.5))
    yield Row(what, where, "the same on a DBF file (DBFIDX)", seconds["ours"], seconds["DBFIDX"])
    grown = (peak - before) / MEGABYTE
    yield Row("memory of that", where, "25 MB", [grown], [25.0], Target(at_most=1), "MB")


def _seek(stage, worker, where):
    expected = {}
    fields = {"seed": 7, "seeks": stage.options.seeks, "records": stage.options.rows}
    seconds = paired(stage.options.runs, {
        "bare": _checked(worker, "areas.seek.bare", expected, **fields),
        "ours": _checked(worker, "areas.seek", expected, **fields),
    }, stage.progress)
    yield Row(f"DBSEEK of {stage.options.seeks:,} keys", where, "bare client, prepared select", seconds["ours"],
              seconds["bare"], Target(at_most=1.3))


def _write(stage, worker, where, what, command):
    times = stage.options.lock_pairs
    statements = worker.ask(command + ".bare", times=1)["statements"]
    seconds = paired(max(stage.options.runs, stage.options.short_runs), {
        "bare": lambda: worker.ask(command + ".bare", times=times)["seconds"] / times * 1e3,
        "ours": lambda: worker.ask(command, times=times)["seconds"] / times * 1e3,
    }, stage.progress)
    yield Row(what, where, "bare client, same statements", seconds["ours"], seconds["bare"], Target(at_most=1.1),
              "ms", [f"{statements} statements"])


def areas(stage):
    """Against internalselect and the bare client."""
    rows = []
    file = _make(stage, stage.options.rows)
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(file), where))
            worker.ask("areas.open")
            rows += _walk(stage, worker, where)
            rows += _seek(stage, worker, where)
            rows += _write(stage, worker, where, "a record locked, changed, committed, unlocked", "areas.change")
            rows += _write(stage, worker, where, "a record appended", "areas.append")
            worker.ask("areas.close")
    return rows


def _pages(stage, worker, where, what, command, shown, **fields):
    seen = {}

    def ask(name):
        reply = worker.ask(name, **fields)
        if seen.setdefault("rows", reply["rows"]) != reply["rows"]:
            raise Failure(f"{name} sees {reply['rows']} rows instead of {seen['rows']}")
        seen[name] = reply["codes"]
        return reply["seconds"] / shown * 1e3
    seconds = paired(max(stage.options.runs, stage.options.short_runs), {
        "bare": lambda: ask(command + ".bare"),
        "ours": lambda: ask(command),
    }, stage.progress)
    if command == "browse.further" and seen[command] != seen[command + ".bare"]:
        raise Failure(f"{command} sees other rows than the bare client")
    yield Row(what, where, "bare client, prepared select", seconds["ours"], seconds["bare"], Target(at_most=2.0), "ms")


def browse(stage):
    """Pages of a screen against the bare query of each."""
    rows = []
    records = stage.options.records
    file = _make(stage, records)
    pages = _pages_of(records)
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(file), where))
            worker.ask("browse.open")
            rows += _pages(stage, worker, where, f"a page further in an order of {records:,} records", "browse.further",
                           pages, pages=pages, records=records)
            rows += _pages(stage, worker, where, "to the end and back, each a page", "browse.ends", 40, times=20)
            worker.ask("browse.close")
    return rows


def grow(stage):
    """In ever larger tables."""
    sizes = stage.options.growth_records
    seeks, pages = stage.options.seeks, _pages_of(sizes[0])
    workers = {}

    def two(size, what, bare, **fields):
        def seconds(name):
            return lambda: workers[size].ask(name, **fields)["seconds"]
        return {"bare": seconds(bare), "ours": seconds(what)}
    with contextlib.ExitStack() as ending:
        for records in sizes:
            workers[records] = ending.enter_context(stage.worker())
            workers[records].ask("attach", database=stage.name(stage.copy(_make(stage, records)), EMBEDDED))
            workers[records].ask("areas.open")
        rows = grown(stage, "DBSKIP, a record: {:,} records", sizes,
                     lambda size: two(size, "areas.walk", "areas.select"))
        rows += grown(stage, "DBSEEK, a key: {:,} records", sizes, lambda size: two(
            size, "areas.seek", "areas.seek.bare", seed=7, seeks=seeks, records=size), count=seeks, at_most=LOOKED_UP)
        for worker in workers.values():
            worker.ask("areas.close")
            worker.ask("browse.open")
        rows += grown(stage, "a page further in an order: {:,} records", sizes, lambda size: two(
            size, "browse.further", "browse.further.bare", pages=pages, records=size), count=pages, at_most=LOOKED_UP)
        for worker in workers.values():
            worker.ask("browse.close")
    return rows
