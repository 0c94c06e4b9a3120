"""A DBF file into a table: the whole way, and the conversion of the file alone."""
import json
import os
import subprocess

from bench.support import isql
from bench.support.growth import grown
from bench.support.measure import Row, Target, paired
from bench.support.processes import CLIENT_CPU, Failure
from bench.support.stage import EMBEDDED, SLOW, TCP
from bench.transfer import dbf

PEERS = ["SOCI", "DBD::Firebird"]
PEER_TARGETS = {EMBEDDED: Target(times_faster=1.4), TCP: Target(times_faster=5), SLOW: Target(times_faster=5)}


def seconds_of_tool(stage, database, file):
    """What zmfb import tells that it took."""
    words = [stage.tool, "--json", "--db", database, "--user", "SYSDBA", "import", file]
    environment = {**os.environ, **stage.environment, "ISC_PASSWORD": "masterkey"}
    done = subprocess.run(words, capture_output=True, text=True, check=False, env=environment,
                          preexec_fn=lambda: os.sched_setaffinity(0, {CLIENT_CPU}))
    if done.returncode != 0:
        raise Failure(f"zmfb import: {done.stderr}")
    return json.loads(done.stdout)["seconds"]


class _Import:
    """The ways to bring one DBF file in. Each works on a new database, and its sums have to agree."""

    def __init__(self, stage, where, file):
        self.stage, self.where, self.file = stage, where, file
        self.data_file = stage.file(f"import{next(stage.numbers)}.dat")
        self.prepared, self.statement = self._prepare()
        self.sums = None

    def _prepare(self):
        """A database as bringdbf has it just before it copies the rows, and the statement that copies them."""
        database = self.stage.copy()
        with self.stage.worker() as worker:
            kept_back = worker.ask("import.prepare", database=self.stage.name(database, self.where), dbf=self.file,
                                   data_file=self.data_file)["statements"]
        return database, next(text for text in kept_back if text.startswith("INSERT"))

    def _check(self, who, database):
        sums = self.stage.host.ask("rows", database=database, sql=dbf.SUMS)["rows"]
        self.sums = self.sums or sums
        if sums != self.sums:
            raise Failure(f"{who} brings in {sums} instead of {self.sums}")

    def _timed(self, who, source, work):
        copy = self.stage.copy(source)
        database = self.stage.name(copy, self.where)
        seconds = work(database)
        self._check(who, database)
        os.remove(copy)
        return seconds

    def ours(self):
        def work(database):
            with self.stage.worker() as worker:
                return worker.ask("import.ours", database=database, dbf=self.file, data_file=self.data_file)["seconds"]
        return self._timed("bringdbf", None, work)

    def tool(self):
        return self._timed("zmfb import", None, lambda database: seconds_of_tool(self.stage, database, self.file))

    def isql(self):
        return self._timed("isql", self.prepared,
                           lambda database: isql.seconds_of(self.stage, database, self.statement))

    def peer(self, name):
        def work(database):
            self.stage.host.ask("execute", database=database, statements=["drop trigger T_PEOPLE_NULLDATES"])
            with self.stage.peer(name) as peer:
                peer.ask("attach", database=database)
                return peer.ask("insert", dbf=self.file, start=dbf.header_size(self.file), sql=dbf.INSERT,
                                fields=list(dbf.FIELDS.values()))["seconds"]
        return self._timed(name, self.prepared, work)


def _rows(stage, where, what, ours, at_most):
    """`ours`, a function of _Import, against isql, and against the insertion of record by record."""
    rows = []
    options = stage.options
    if where != SLOW:
        way = _Import(stage, where, dbf.make(stage, options.records))
        seconds = paired(options.long_runs, {"isql": way.isql, "ours": lambda: ours(way)}, stage.progress)
        rows.append(Row(f"{what} of {options.records:,} records x 5 fields", where, "isql: INSERT ... SELECT alone",
                        seconds["ours"], seconds["isql"], Target(at_most=at_most)))
    records = {EMBEDDED: options.peer_records, TCP: options.peer_records_over_tcp,
               SLOW: options.peer_records_over_slow_tcp}[where]
    way = _Import(stage, where, dbf.make(stage, records))
    contestants = {"ours": lambda: ours(way)}
    for name in stage.peers(PEERS):
        contestants[name] = lambda name=name, way=way: way.peer(name)
    seconds = paired(options.long_runs, contestants, stage.progress)
    for name in stage.peers(PEERS):
        rows.append(Row(f"{what} of {records:,} records x 5 fields", where, f"{name}: prepared INSERT a record",
                        seconds["ours"], seconds[name], PEER_TARGETS[where]))
    return rows


def bring(stage):
    """bringdbf, on a server that shares its disk."""
    return [row for where in stage.wheres() for row in _rows(stage, where, "bringdbf", _Import.ours, 1.10)]


def load(stage):
    """zmfb import, which sends the records over the client."""
    return [row for where in [*stage.wheres(), SLOW]
            for row in _rows(stage, where, "zmfb import", _Import.tool, 1.25)]


def grow(stage):
    """zmfb import of ever more records."""
    def ways(records):
        way = _Import(stage, EMBEDDED, dbf.make(stage, records))
        return {"bare": way.isql, "ours": way.tool}
    return grown(stage, "zmfb import, a record: {:,} records", stage.options.growth_records, ways)


def convert(stage):
    """The conversion of a DBF file to its data file, against cp of the same file."""
    file = dbf.make(stage, stage.options.records)
    with stage.worker() as worker:
        def run(what, to):
            return worker.ask(what, dbf=file, to=stage.file(to))["seconds"]
        for what in ["convert.ours", "convert.cp"]:  # warms the cache
            run(what, "warm")
        seconds = paired(max(stage.options.runs, stage.options.short_runs),
                         {"cp": lambda: run("convert.cp", "copy.dbf"),
                          "ours": lambda: run("convert.ours", "convert.dat")}, stage.progress)
    expected = stage.options.records * (sum(dbf.FIELDS.values()) + 2)
    if os.path.getsize(stage.file("convert.dat")) != expected:
        raise Failure("the data file has another size than its records")
    return [Row(f"DBF to data file, {stage.options.records:,} records", "", "cp", seconds["ours"], seconds["cp"],
                Target(at_most=2.0))]
