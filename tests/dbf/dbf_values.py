"""Prints the values of a DBF file as a reader that is not ours finds them: dbf_values.py dbfread|gdal FILE

A line for each record, those in use first, then the deleted ones (gdal: only those in use). Cells are parted by tabs, with bytes
outside printable ASCII and the backslash as \\xNN: texts without blanks and zero bytes at the end, numbers in at most 15 digits,
2007-03-01, 2007-03-01 10:00:00.000, T or F, NULL for nothing, ? for what is no value of its type, - for what the reader cannot
read. Ends with 1 when the reader refuses the file.

Three things that dbfread is known to read wrongly are set right here: it takes eight bytes too many of a memo of dBASE IV, whose
length counts them; it goes on behind a deleted record by the length that the header says, also where the fields are longer; and
stars and blanks in numbers.
"""

import datetime
import struct
import sys


def shown(data):
    return "".join(chr(b) if 0x20 <= b < 0x7F and b != 0x5C else "\\x%02X" % b for b in data)


def cell(value):
    if value is None:
        return "NULL"
    if isinstance(value, bool):
        return "T" if value else "F"
    if isinstance(value, (int, float)) or type(value).__name__ == "Decimal":
        return "%.15g" % value
    if isinstance(value, datetime.datetime):
        value += datetime.timedelta(microseconds=500)
        return value.strftime("%Y-%m-%d %H:%M:%S.") + "%03d" % (value.microsecond // 1000)
    if isinstance(value, datetime.date):
        return "%04d-%02d-%02d" % (value.year, value.month, value.day)
    if isinstance(value, str):
        value = value.encode("latin1")
    return shown(value)


def with_dbfread(path):
    import dbfread
    import dbfread.memo

    # What it refuses in a value is shown as such, and what it does not know is left out.
    class Parser(dbfread.FieldParser):
        def field_type_supported(self, field_type):
            return True

        def parse(self, field, data):
            if field.type in "VQW0O@+" or (field.type == "I" and self.dbversion in (4, 0x8C)):
                return "-"
            if field.type in "NF" and data.rstrip(b"\0").strip() and not data.rstrip(b"\0").strip(b" *"):
                return "?"
            if not data.strip(b" \0") and field.type in "NFDLT":
                return None
            try:
                return super().parse(field, data.rstrip(b"\0") if field.type in "NFL" else data)
            except (ValueError, struct.error, OverflowError):
                return "?"

    class Memo4(dbfread.memo.StructParser):
        def read(self, file):
            header = super().read(file)
            header.length -= 8
            return header

    dbfread.memo.DB4MemoHeader.__class__ = Memo4
    table = dbfread.DBF(path, encoding="latin1", parserclass=Parser, ignore_missing_memofile=True,
                        recfactory=lambda items: [value for _, value in items])
    table.header.recordlen = max(table.header.recordlen, 1 + sum(field.length for field in table.fields))
    fields = table.fields
    return [field.type for field in fields], list(table) + list(table.deleted), [field.name for field in fields]


def with_gdal(path):
    from osgeo import gdal, ogr

    gdal.UseExceptions()
    gdal.SetConfigOption("SHAPE_ENCODING", "")
    layer = ogr.Open(path).GetLayer()
    definition = layer.GetLayerDefn()
    fields = [definition.GetFieldDefn(i) for i in range(definition.GetFieldCount())]
    kinds = [field.GetTypeName() for field in fields]

    def value(feature, i):
        if not feature.IsFieldSetAndNotNull(i):
            return "" if kinds[i] == "String" else None
        if kinds[i] == "Date":
            return datetime.date(*feature.GetFieldAsDateTime(i)[:3])
        if kinds[i] == "String":
            return feature.GetFieldAsString(i).encode("utf-8", "surrogateescape").rstrip(b" \0")
        return feature.GetField(i)

    records = [[value(feature, i) for i in range(len(kinds))] for feature in layer]
    return kinds, records, [field.GetName() for field in fields]


def main():
    kinds, records, _ = {"dbfread": with_dbfread, "gdal": with_gdal}[sys.argv[1]](sys.argv[2])
    for record in records:
        print("\t".join(cell(value) for value, kind in zip(record, kinds) if kind != "0"))


if __name__ == "__main__":
    main()
