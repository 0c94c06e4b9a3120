"""The table that is read: seven columns of the types that programs have, some of them NULL."""
import functools

COLUMNS = "ID, NAME, CITY, CREDIT, RATE, CHANGED, KIND"
KINDS = ["decimal", "text", "text", "decimal", "double", "timestamp", "decimal"]

_TABLE = """create table PEOPLE (ID integer not null, NAME varchar(30), CITY char(12), CREDIT numeric(9,2),
    RATE double precision, CHANGED timestamp, KIND smallint)"""

_FILL = """execute block as declare I integer = 0; begin while (I < {rows}) do begin
    I = I + 1;
    insert into PEOPLE values (:I, 'Name ' || mod(:I * 7919, 100003) || ' of ' || (:I * 31),
        decode(mod(:I, 4), 0, 'Lisboa', 1, 'Porto', 2, 'Santarem', 'Vila Nova'),
        iif(mod(:I, 50) = 0, null, mod(:I * 37, 1000000) / 100.00), mod(:I, 1000) / 8e0 + mod(:I, 7) * 1000,
        dateadd(:I * 61 second to timestamp '2001-01-01 00:00:00.1234'), mod(:I, 7));
end end"""


@functools.cache
def make(stage, rows):
    """A database file with that many people in it, to be copied."""
    file = stage.copy()
    stage.host.ask("execute", database=file, statements=[_TABLE, _FILL.format(rows=rows)])
    return file


def query(rows=None):
    first = "" if rows is None else f"first {rows} "
    return f"select {first}{COLUMNS} from PEOPLE"


def texts_query(rows):
    """The same with the engine's own texts of the timestamps."""
    return query(rows).replace("CHANGED", "cast(CHANGED as varchar(30))")
