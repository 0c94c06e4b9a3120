"""All rows of a query as values in the program: against the bare client, and against what a user would pick
instead. And the memory that they take."""
import statistics

from bench.sql import people
from bench.support.faithful import losses
from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure
from bench.support.stage import EMBEDDED, TCP

SAMPLE = 200
PEERS = ["SOCI", "DBD::Firebird", "Qt QIBASE", "node-firebird"]
# A program that is written for these columns and keeps a C++ struct a row, no texts: not what an interpreter's
# result can be, but good to know.
STRUCTS = "SOCI into structs"
# The plainest C++ program that keeps texts.
STRINGS = "vectors of std::string"
MEGABYTE = 1e6


def _peers(stage, where):
    """node-firebird has no embedded engine; it is left out where its module is not installed, and then said so."""
    return [name for name in stage.peers(PEERS) if where == TCP or name != "node-firebird"]


def _wanted(name):
    return {"into": "structs"} if name == STRUCTS else {}


def check_sample(stage, database, who, ask):
    expected = stage.host.ask("rows", database=database, sql=people.texts_query(SAMPLE))["rows"]
    return losses(who, people.KINDS, expected, ask(people.query(SAMPLE))["rows"])


def sums(reply):
    return reply["rows"], reply["id"], reply["credit"]


class Checked:
    """Times one contestant; each run has to bring the rows that the bare client saw."""

    def __init__(self, who, expected, ask):
        self.who, self.expected, self.ask = who, expected, ask

    def __call__(self):
        reply = self.ask()
        if self.expected and sums(reply) != self.expected:
            raise Failure(f"{self.who} brings {sums(reply)} instead of {self.expected}")
        return reply["seconds"]


def _contestants(stage, worker, where, database, sql):
    """Functions that return seconds, by name; the peers' processes; what each peer loses."""
    lost = {}
    check_sample(stage, database, "internalselect", lambda text: worker.ask("sample.ours", sql=text))
    expected = sums(worker.ask("select.bare", sql=sql))
    runs = {name: Checked(name, expected, lambda what=what: worker.ask(what, sql=sql))
            for name, what in [("bare client", "select.bare"), ("ours", "select.ours"), (STRINGS, "select.strings")]
            if name != STRINGS or stage.options.extras}
    processes = []
    names = _peers(stage, where)
    for name in names + [STRUCTS] * (stage.options.extras and "SOCI" in names):
        peer = stage.peer(name)
        processes.append(peer)
        peer.ask("attach", database=database)
        lost[name] = check_sample(stage, database, name, lambda text, peer=peer: peer.ask("sample", sql=text))
        runs[name] = Checked(name, expected, lambda name=name, peer=peer: peer.ask("select", sql=sql, **_wanted(name)))
    return runs, processes, lost


def _rows(stage, where, seconds, lost):
    what = f"internalselect of {stage.options.rows:,} rows x 7 columns"
    ours = seconds["ours"]
    yield Row(what, where, "bare client, touching", ours, seconds["bare client"],
              Target(at_most=1.10 if where == EMBEDDED else 1.05))
    if STRINGS in seconds:
        yield Row(what, where, STRINGS, ours, seconds[STRINGS])
    for name in lost:
        row = Row(what, where, name, ours, seconds[name], None if name == STRUCTS else Target(times_faster=1))
        row.notes += sorted(lost[name])
        yield row
    names = [name for name in lost if name != STRUCTS]
    if not names:
        return
    middle = [statistics.median(seconds[name][run] for name in names) for run in range(len(ours))]
    yield Row(what, where, "median of the peers", ours, middle, Target(times_faster=1.5))


def select(stage):
    """internalselect of many rows."""
    rows = []
    file = people.make(stage, stage.options.rows)
    for where in stage.wheres():
        database = stage.name(stage.copy(file), where)
        with stage.worker() as worker:
            worker.ask("attach", database=database)
            runs, processes, lost = _contestants(stage, worker, where, database, people.query())
            seconds = paired(stage.options.runs, runs, stage.progress)
            rows += _rows(stage, where, seconds, lost)
            for peer in processes:
                peer.close()
    return rows


def _growth(process, attach, warm_up, hold):
    """What holding the result adds to a process of its own: resident memory, and its peak; the reply."""
    attach()
    warm_up()
    before, _ = process.memory()
    reply = hold()
    now, peak = process.memory()
    return now - before, peak - before, reply


def _held(stage, database, name):
    sql, few = people.query(), people.query(SAMPLE)
    of_ours = {"ours": "ours", STRINGS: "strings"}
    with stage.worker() if name in of_ours else stage.peer(name) as process:
        suffix = "." + of_ours[name] if name in of_ours else ""
        return _growth(process, lambda: process.ask("attach", database=database),
                       lambda: process.ask("select" + suffix, sql=few, **_wanted(name)),
                       lambda: process.ask("hold" + suffix, sql=sql, **_wanted(name)))


def memory(stage):
    """Memory that the held rows take."""
    database = stage.name(stage.copy(people.make(stage, stage.options.rows)), TCP)
    values = stage.options.rows * len(people.KINDS)
    names = ["ours", STRINGS] + _peers(stage, TCP)
    names += [STRUCTS] * ("SOCI" in names)
    held = {name: [] for name in names}
    notes = {}
    for _ in range(stage.options.memory_runs):
        for name in names:
            resident, peak, reply = _held(stage, database, name)
            if reply["rows"] != stage.options.rows:
                raise Failure(f"{name} holds {reply['rows']} rows")
            held[name].append(resident / MEGABYTE)
            notes[name] = [f"{resident / values:.1f} bytes a value", f"peak {peak / MEGABYTE:.0f} MB"]
            if "heap" in reply:
                notes[name].append(f"heap {reply['heap'] / MEGABYTE:.0f} MB")
    what = f"memory of {stage.options.rows:,} rows x 7 values"
    ours = held["ours"]
    rows = [Row(what, TCP, "110 MB", ours, [110.0] * len(ours), Target(at_most=1), "MB", notes["ours"])]
    for name in names[1:]:
        target = None if name == STRUCTS else Target(at_most=1)
        rows.append(Row(what, TCP, name, ours, held[name], target, "MB", notes[name]))
    return rows
