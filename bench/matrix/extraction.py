"""The structures of many tables as a matrix."""
from bench.support.measure import BARE, Row, Target, paired
from bench.support.processes import Failure
from bench.support.stage import EMBEDDED

FIELDS = 30


def extract(stage):
    """Against the bare client that sends the same queries and reads their rows."""
    rows = []
    tables = stage.options.tables
    file = stage.copy()
    with stage.worker() as worker:
        worker.ask("attach", database=stage.name(file, EMBEDDED))
        worker.ask("matrix.make", tables=tables, fields=FIELDS)
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(file), where))
            statements = worker.ask("matrix.bare")["statements"]

            def ours():
                reply = worker.ask("matrix.ours")
                if reply["fields"] != tables * FIELDS:
                    raise Failure(f"the matrix has {reply['fields']} fields")
                return reply["seconds"]

            def bare(calls):
                return lambda: worker.ask("matrix.bare", calls=calls)["seconds"]

            seconds = paired(stage.options.runs,
                             {**{against: bare(calls) for calls, against in BARE.items()}, "ours": ours},
                             stage.progress)
            rows += [Row(f"extractmatrix of {tables:,} tables x {FIELDS} fields", where, against, seconds["ours"],
                         seconds[against], Target(at_most=1.10), "s", [f"{statements:,} queries"])
                     for against in BARE.values()]
    return rows
