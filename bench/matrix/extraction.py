"""The structures of many tables as a matrix."""
import functools

from bench.support.growth import grown
from bench.support.measure import BARE, Row, Target, paired
from bench.support.processes import Failure
from bench.support.stage import EMBEDDED

FIELDS = 30
AT_MOST = {"as ours": 1.10, "plain": 1.08}


@functools.cache
def make(stage, tables, empty=None):
    """A database file with that many tables, to be copied, made in a copy of `empty`."""
    file = stage.copy(empty)
    with stage.worker() as worker:
        worker.ask("attach", database=stage.name(file, EMBEDDED))
        worker.ask("matrix.make", tables=tables, fields=FIELDS)
    return file


def _ours(worker, tables):
    def seconds():
        reply = worker.ask("matrix.ours", tables=tables)
        if reply["fields"] != tables * FIELDS:
            raise Failure(f"the matrix has {reply['fields']} fields")
        return reply["seconds"]
    return seconds


def _bare(worker, tables, calls):
    return lambda: worker.ask("matrix.bare", tables=tables, calls=calls)["seconds"]


def extract(stage):
    """Against the bare client that sends the same queries and reads their rows."""
    rows = []
    tables = stage.options.tables
    file = make(stage, tables)
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(file), where))
            statements = worker.ask("matrix.bare", tables=tables)["statements"]
            seconds = paired(stage.options.long_runs, {
                **{against: _bare(worker, tables, calls) for calls, against in BARE.items()},
                "ours": _ours(worker, tables)}, stage.progress)
            rows += [Row(f"extractmatrix of {tables:,} tables x {FIELDS} fields", where, against, seconds["ours"],
                         seconds[against], Target(at_most=AT_MOST[calls]), "s", [f"{statements:,} queries"])
                     for calls, against in BARE.items()]
    return rows


def grow(stage):
    """Of ever more tables."""
    sizes = stage.options.growth_tables
    with stage.worker() as worker:
        worker.ask("attach", database=stage.name(stage.copy(make(stage, sizes[-1])), EMBEDDED))
        return grown(stage, "extractmatrix, a table: {:,} tables", sizes,
                     lambda tables: {"bare": _bare(worker, tables, "plain"), "ours": _ours(worker, tables)})
