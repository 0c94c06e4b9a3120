"""Prints a DBF file as an independent reader sees it: dbf_rows.py dbfread|dbf FILE

The first line names the fields as NAME:TYPE:LENGTH:DECIMALS, the second is the number of deleted records. Then a line for each
record, deleted ones included (dbfread: behind the others). Cells are parted by tabs and written as bytes of ISO-8859-1: texts
without blanks at the end, numbers in at most 15 digits, dates as YYYY-MM-DD, logicals as T or F, and NULL for nothing.
"""

import datetime
import os
import shutil
import sys
import tempfile


def cell(value):
    if value is None:
        return "NULL"
    if isinstance(value, bool):
        return "T" if value else "F"
    if isinstance(value, (int, float)):
        return "%.15g" % value
    if isinstance(value, datetime.date):
        return "%04d-%02d-%02d" % (value.year, value.month, value.day)
    return value.rstrip(" ")


def read_with_dbfread(path):
    import dbfread

    class Parser(dbfread.FieldParser):
        def parseN(self, field, data):
            return super().parseN(field, data.rstrip(b"\0"))

    table = dbfread.DBF(path, encoding="latin1", parserclass=Parser)
    fields = [(f.name, f.type, f.length, f.decimal_count) for f in table.fields]
    records = [list(record.values()) for record in table]
    deleted = [list(record.values()) for record in table.deleted]
    return fields, len(deleted), records + deleted


def read_with_dbf(path):
    import dbf

    # It opens a file for writing even to look at its header.
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, os.path.basename(path))
        shutil.copyfile(path, copy)
        return read_copy_with_dbf(dbf, copy)


def read_copy_with_dbf(dbf, path):
    table = dbf.Table(path, codepage="cp1252")
    table.open(dbf.READ_ONLY)
    fields = []
    for name in table.field_names:
        kind, length, decimals, _ = table.field_info(name)
        fields.append((name.upper(), chr(kind), length, decimals))
    records = [[value if value is not dbf.Unknown else None for value in record] for record in table]
    records = [[value if value or not isinstance(value, dbf.Date) else None for value in record] for record in records]
    return fields, sum(dbf.is_deleted(record) for record in table), records


def main():
    readers = {"dbfread": read_with_dbfread, "dbf": read_with_dbf}
    fields, deleted, records = readers[sys.argv[1]](sys.argv[2])
    lines = ["\t".join("%s:%s:%d:%d" % field for field in fields), str(deleted)]
    lines += ["\t".join(cell(value) for value in record) for record in records]
    sys.stdout.buffer.write("".join(line + "\n" for line in lines).encode("latin1"))


main()
