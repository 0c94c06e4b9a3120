"""A DBF file of many fields and few records, whose structure is most of the work."""
import os

from bench.support import isql
from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure
from bench.support.stage import EMBEDDED
from bench.transfer import importing

RECORDS = 68
SUMS = "select count(*), sum(N1), sum(char_length(trim(C2))), max(RECNO) from WIDE"


def _fields(count):
    return [(f"{'CN'[i % 2]}{i}", "CN"[i % 2]) for i in range(count)]


def _values(fields, record):
    return [f"{record * 10 + i % 10}" if kind == "N" else f"text {i % 10}" for i, (_, kind) in enumerate(fields)]


def _write(file, fields):
    width = 8
    header = bytes([3, 110, 1, 1]) + RECORDS.to_bytes(4, "little") + (33 + 32 * len(fields)).to_bytes(2, "little")
    header += (1 + width * len(fields)).to_bytes(2, "little") + bytes(20)
    for name, kind in fields:
        header += name.encode().ljust(11, b"\0") + kind.encode() + bytes(4) + bytes([width]) + bytes(15)
    with open(file, "wb") as dbf:
        dbf.write(header + b"\r")
        for record in range(RECORDS):
            texts = zip(fields, _values(fields, record))
            dbf.write(b" " + b"".join((text.rjust(width) if kind == "N" else text.ljust(width)).encode()
                                      for (_, kind), text in texts))
        dbf.write(b"\x1a")


def _script(fields):
    """The same table in SQL: made and described in one transaction, then filled."""
    types = {"C": "char(8) default '' not null", "N": "numeric(8,0) default 0 not null"}
    columns = ", ".join(f"{name} {types[kind]}" for name, kind in fields)
    statements = ["set autoddl off", f"create table WIDE ({columns}, RDD_AREAID varchar(50), RECNO double precision "
                                     "not null primary key)"]
    statements += [f"comment on column WIDE.{name} is 'NUMERIC(8,0)'" for name, kind in fields if kind == "N"]
    statements.append("commit")
    for record in range(RECORDS):
        values = ", ".join(f"'{text}'" for text in _values(fields, record))
        statements.append(f"insert into WIDE ({', '.join(name for name, _ in fields)}, RECNO) values ({values}, "
                          f"{record + 1})")
    return ";\n".join(statements)


def load(stage):
    """zmfb import, all of it."""
    fields = _fields(stage.options.wide_fields)
    file = stage.file("wide.dbf")
    _write(file, fields)
    script = _script(fields)
    sums = set()

    def timed(work):
        copy = stage.copy()
        seconds = work(stage.name(copy, EMBEDDED))
        sums.add(str(stage.host.ask("rows", database=copy, sql=SUMS)["rows"]))
        os.remove(copy)
        if len(sums) > 1:
            raise Failure(f"the tables differ: {sums}")
        return seconds

    seconds = paired(stage.options.long_runs, {
        "isql": lambda: timed(lambda database: isql.seconds_of(stage, database, script)),
        "ours": lambda: timed(lambda database: importing.seconds_of_tool(stage, database, file)),
    }, stage.progress)
    return [Row(f"zmfb import of {RECORDS} records x {len(fields):,} fields", EMBEDDED,
                "isql: CREATE TABLE, descriptions, an INSERT a record", seconds["ours"], seconds["isql"],
                Target(at_most=4.0))]
