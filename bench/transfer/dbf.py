"""The DBF file that is brought in."""

TABLE = "PEOPLE"
FIELDS = {"ID": 8, "NAME": 30, "CITY": 12, "CREDIT": 10, "BORN": 8}
INSERT = "insert into PEOPLE (ID, NAME, CITY, CREDIT, BORN) values (:id, :name, :city, :credit, :born)"
SUMS = """select count(*), sum(ID), cast(sum(CREDIT) as numeric(18,2)), min(BORN), max(BORN), min(RECNO), max(RECNO),
    sum(char_length(trim(NAME))) from PEOPLE"""


def make(stage, records):
    """The file of that many records."""
    folder = stage.folder_of(f"dbf{records}")
    file = f"{folder}/people.dbf"
    stage.host.ask("make_dbf", file=file, records=records)
    return file


def header_size(file):
    with open(file, "rb") as dbf:
        return int.from_bytes(dbf.read(10)[8:10], "little")


def records_of(file):
    """The bytes of the records, without the header and the mark at the end."""
    with open(file, "rb") as dbf:
        dbf.seek(header_size(file))
        return dbf.read().removesuffix(b"\x1a")
