"""Prints the values of a DBF file as a program that is not ours finds them: read_by_others.py READER FILE

READER is dbfread, gdal, dbf, dbfdump or dbview. A line for each record, a list of texts in JSON: numbers without zeros that say
nothing, 2007-03-01, 2007-03-01 10:00:00.000, T or F, bytes in hexadecimal, "" for nothing, NULL where a reader knows it, and for
memos and types that the reader does not know "-". Ends with 1 when the reader refuses the file or complains.
"""

import datetime
import decimal
import json
import subprocess
import sys


def number(text):
    value = decimal.Decimal(text).normalize()
    return "{:f}".format(value if value else abs(value))


def cell(value):
    if value is None:
        return ""
    if isinstance(value, bool):
        return "T" if value else "F"
    if isinstance(value, (int, float, decimal.Decimal)):
        return number(repr(value) if isinstance(value, float) else str(value))
    if isinstance(value, datetime.datetime):
        return value.isoformat(" ", "milliseconds")
    if isinstance(value, datetime.date):
        return value.isoformat()
    if isinstance(value, bytes):
        return value.hex()
    return value.rstrip(" ")


def with_dbfread(path):
    import dbfread

    # It takes doubles for memos when it looks for their file.
    table = dbfread.DBF(path, ignore_missing_memofile=True)
    return [[cell(value) for name, value in record.items() if name != "_NullFlags"] for record in table]


def with_gdal(path):
    from osgeo import gdal, ogr

    gdal.UseExceptions()
    # What it warns of is a complaint, too.
    complaints = []
    gdal.PushErrorHandler(lambda kind, code, text: complaints.append(text))
    table = ogr.Open(path)
    layer = table.GetLayer()
    names = [layer.GetLayerDefn().GetFieldDefn(i).GetName() for i in range(layer.GetLayerDefn().GetFieldCount())]
    types = {name: layer.GetLayerDefn().GetFieldDefn(i).GetTypeName() for i, name in enumerate(names)}

    # Fields are named after their types.
    unknown = [name for name in names if name[0] in "MPGIBYT_"]
    layer.SetIgnoredFields(unknown)

    def value(feature, name):
        if name in unknown:
            return "-"
        if not feature.IsFieldSetAndNotNull(name):
            return ""
        if types[name] == "Date":
            return cell(datetime.date(*feature.GetFieldAsDateTime(feature.GetFieldIndex(name))[:3]))
        return cell(feature.GetField(name))

    records = [[value(feature, name) for name in names if name != "_NullFlags"] for feature in layer]
    if complaints:
        sys.exit("; ".join(complaints))
    return records


def with_dbf(path):
    import dbf

    table = dbf.Table(path)
    table.open(dbf.READ_ONLY)
    names = [name for name in table.field_names if name != "_nullflags"]
    return [["NULL" if record[name] is dbf.Null else cell(record[name]) for name in names] for record in table]


def output_of(command):
    done = subprocess.run(command, capture_output=True, check=True)
    if done.stderr:
        sys.exit(done.stderr)
    return done.stdout.decode("cp1252", "replace")


def shown(kind, text):
    text = text.strip(" ")
    if kind in "MPGIBYT":
        return "-"
    if text and kind in "NF":
        return number(text)
    return "-".join((text[:4], text[4:6], text[6:])) if text and kind == "D" else text


def with_dbfdump(path):
    records = []
    for line in output_of(["dbfdump", "-m", "-r", path]).split("\n"):
        name, colon, text = line.partition(": ")
        if name == "Record":
            records.append([])
        elif colon and name != "_NullFlags":
            records[-1].append(shown(name[0], text))
    return records


def with_dbview(path):
    kinds = [line.split()[1] for line in output_of(["dbview", "-e", "-o", "-r", path]).split("\n")[1:] if line]
    lines = output_of(["dbview", "-b", "-t", "-d", "|", path]).split("\n")
    return [[shown(kind, text) for kind, text in zip(kinds, line.split("|"))] for line in lines if line]


READERS = {"dbfread": with_dbfread, "gdal": with_gdal, "dbf": with_dbf, "dbfdump": with_dbfdump, "dbview": with_dbview}
for values in READERS[sys.argv[1]](sys.argv[2]):
    print(json.dumps(values, ensure_ascii=False))
