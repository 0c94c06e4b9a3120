"""A table into a DBF file."""
import hashlib
import os

from bench.support import isql
from bench.support.growth import grown
from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure, timed
from bench.support.stage import EMBEDDED
from bench.transfer import dbf

# Loops that fetch with a peer and print, and what we are held against.
EXILE_PEERS = {"DBD::Firebird": Target(times_faster=1)}
TOOL_PEERS = {"DBD::Firebird": Target(at_most=0.6), "SOCI": None, "PyQt": None}
# A record as the DBF file has it.
FORMAT = " %8s%-30s%-12s%10s%8s"
QUERY = "select ID, NAME, CITY, CREDIT, BORN from PEOPLE"


def _digest(data):
    return hashlib.sha256(data).hexdigest()


def _content(file):
    with open(file, "rb") as data:
        return data.read()


class _Export:
    """The ways to write one table out. What they write has to agree."""

    def __init__(self, stage, where, imported, source):
        self.stage, self.where = stage, where
        self.records = _digest(dbf.records_of(source))
        self.folder = stage.folder_of("export")
        self.data_file = stage.file("export.dat")
        self.source = stage.copy(imported)
        self.prepared = stage.copy(imported)
        kept_back = self._ask("export.prepare", self.prepared)["statements"]
        self.statement = next(text for text in kept_back if text.startswith("INSERT"))
        self.data = None

    def _ask(self, what, file):
        dbf_file = os.path.join(self.folder, dbf.TABLE + ".dbf")
        if os.path.exists(dbf_file):
            os.remove(dbf_file)
        with self.stage.worker() as worker:
            return worker.ask(what, database=self.stage.name(file, self.where), data_file=self.data_file,
                              folder=self.folder, table=dbf.TABLE)

    def _check(self, who, records):
        if _digest(records) != self.records:
            raise Failure(f"{who} writes other records than were brought in")

    def ours(self):
        seconds = self._ask("export.ours", self.source)["seconds"]
        self.data = _digest(_content(self.data_file))
        self._check("exiletable", dbf.records_of(os.path.join(self.folder, dbf.TABLE + ".dbf")))
        return seconds

    def isql(self):
        os.truncate(self.data_file, 0)
        seconds = isql.seconds_of(self.stage, self.stage.name(self.prepared, self.where), self.statement)
        if self.data and _digest(_content(self.data_file)) != self.data:
            raise Failure("isql writes another data file than exiletable")
        return seconds

    def peer(self, name):
        file = self.stage.file("peer.dbf")
        with self.stage.peer(name) as peer:
            peer.ask("attach", database=self.stage.name(self.source, self.where))
            seconds = peer.ask("export", sql=QUERY, file=file, format=FORMAT)["seconds"]
        self._check(name, _content(file).removesuffix(b"\x1a"))
        return seconds

    def tool(self):
        """`zmfb export` from its start to its end."""
        command = [self.stage.tool, "--db", self.stage.name(self.source, self.where), "export", dbf.TABLE, "--yes",
                   "-o", self.folder]
        user = {"ISC_USER": "SYSDBA", "ISC_PASSWORD": "masterkey"}
        seconds, self.tool_memory = timed(command, {**self.stage.environment, **user})
        self._check("zmfb export", dbf.records_of(os.path.join(self.folder, dbf.TABLE + ".dbf")))
        return seconds


def _ways(stage, records, wheres):
    """The ways to write a table of so many records out, at each of the places."""
    file = dbf.make(stage, records)
    imported = stage.copy()
    with stage.worker() as worker:
        worker.ask("import.ours", database=stage.name(imported, EMBEDDED), dbf=file,
                   data_file=stage.file("import.dat"))
    for where in wheres:
        way = _Export(stage, where, imported, file)
        way.ours()
        yield way


def _rows(way, what, ours, isql_target, peers):
    """`ours` against isql, and against the peers by name with their targets."""
    stage = way.stage
    contestants = {"isql": way.isql, "ours": ours}
    for name in stage.peers(peers):
        contestants[name] = lambda name=name: way.peer(name)
    seconds = paired(stage.options.long_runs, contestants, stage.progress)
    return [Row(what, way.where, "isql: INSERT ... SELECT alone", seconds["ours"], seconds["isql"], isql_target)] + [
        Row(what, way.where, f"{name}: fetch and print", seconds["ours"], seconds[name], peers[name])
        for name in stage.peers(peers)]


def exile(stage):
    """exiletable against isql, and against a loop that prints the records."""
    records = stage.options.records
    what = f"exiletable of {records:,} rows x 5 fields"
    return [row for way in _ways(stage, records, stage.wheres())
            for row in _rows(way, what, way.ours, Target(at_most=1.20), EXILE_PEERS)]


def write_out(stage):
    """`zmfb export` against isql, and against loops that print the records; and how its memory grows."""
    rows = []
    many_records = stage.options.records
    few_records = many_records * 3 // 10
    what = f"zmfb export of {many_records:,} rows"
    few = {}
    for way in _ways(stage, few_records, stage.wheres()):
        way.tool()
        few[way.where] = way.tool_memory
    for way in _ways(stage, many_records, stage.wheres()):
        rows += _rows(way, f"{what} x 5 fields", way.tool, Target(at_most=0.55), TOOL_PEERS)
        rows.append(Row(f"{what}, memory at its peak", way.where, f"of {few_records:,} rows", [way.tool_memory],
                        [few[way.where]], Target(at_most=1.1), unit="MB"))
    return rows


def grow(stage):
    """zmfb export of ever more rows."""
    def ways(records):
        [way] = _ways(stage, records, [EMBEDDED])
        return {"bare": way.isql, "ours": way.tool}
    return grown(stage, "zmfb export, a row: {:,} rows", stage.options.growth_records, ways)
