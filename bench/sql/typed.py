"""Every value of all rows of a query as a C++ type, against the bare client and the plainest loop over the object
interface: its time, and that memory stays flat."""
from bench.sql import people
from bench.sql.reading import MEGABYTE, SAMPLE, Checked, check_sample, sums
from bench.support.measure import Row, Target, paired
from bench.support.stage import EMBEDDED


def read(stage):
    """Rows as tuples of types."""
    rows = []
    file = people.make(stage, stage.options.rows)
    for where in stage.wheres():
        database = stage.name(stage.copy(file), where)
        with stage.worker() as worker:
            worker.ask("attach", database=database)
            rows += _against_bare_client(stage, worker, where, database)
    return rows


def _against_bare_client(stage, worker, where, database):
    sql = people.query()
    check_sample(stage, database, "rows of types", lambda text: worker.ask("sample.typed", sql=text))
    expected = sums(worker.ask("select.bare", sql=sql))
    worker.ask("select.typed", sql=people.query(SAMPLE))
    before, _ = worker.memory()
    runs = {name: Checked(name, expected, lambda what=what: worker.ask(what, sql=sql))
            for name, what in [("bare client", "select.bare"), ("object loop", "select.object"), ("ours", "select.typed")]}
    seconds = paired(stage.options.runs, runs, stage.progress)
    _, peak = worker.memory()
    what = f"{stage.options.rows:,} rows x 7 columns as types"
    row = Row(what, where, "bare client, touching", seconds["ours"], seconds["bare client"],
              Target(at_most=0.92 if where == EMBEDDED else 1.03))
    row.notes.append(f"peak grows by {(peak - before) / MEGABYTE:.1f} MB")
    yield row
    yield Row(what, where, "object interface, touching", seconds["ours"], seconds["object loop"],
              Target(at_most=1.10 if where == EMBEDDED else 1.03))
