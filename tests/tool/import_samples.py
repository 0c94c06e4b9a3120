"""Compares the rows that an import made with the values that a reader which is not ours finds in the file:

    import_samples.py dbfread|gdal FILE ROWS REJECTS

ROWS is the table as "zmfb query --mode json" prints it: the fields' columns, DELETED_, RDD_AREAID, RECNO, with bytes as hex digits;
REJECTS the list that "zmfb import --rejects" wrote. Prints how many numbers were rounded, or the first difference and ends with 1,
or why the reader refuses the file and ends with 2.
"""

import codecs
import csv
import datetime
import decimal
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "dbf"))
from dbf_values import with_dbfread, with_gdal  # noqa: E402

TEXTS = ("C", "V", "M", "String")
NUMBERS = ("N", "F", "I", "B", "O", "+", "Y", "Integer", "Integer64", "Real")
BYTES_COMPARED = 10000


class Difference(Exception):
    pass


def encoding_of(path):
    """What a .cpg file beside it names, else what the language byte means; Latin-1, which is bytes, else."""
    from dbfread.codepages import guess_encoding
    stem = os.path.splitext(path)[0]
    for name in (stem + ".cpg", stem + ".CPG"):
        if os.path.exists(name):
            words = open(name, encoding="latin1").read().strip()
            for word in (words, "cp" + words.split()[-1]):
                try:
                    return codecs.lookup(word).name
                except LookupError:
                    pass
    language = open(path, "rb").read(30)[29]
    if language in (0x57, 0x58, 0x59):
        return "cp1252"
    try:
        return guess_encoding(language) if language else "latin1"
    except LookupError:
        return "latin1"


def text_of(value, encoding):
    """The text; None when it is not one of the encoding, or has letters that a database in ISO-8859-1 has not."""
    data = value.encode("latin1") if isinstance(value, str) else bytes(value)
    try:
        text = data.decode(encoding)
        text.encode("latin1")
    except UnicodeError:
        return None
    return text


class Comparison:
    def __init__(self, path, rows, rejected):
        self.rows, self.rejected, self.encoding = rows, rejected, encoding_of(path)
        self.rounded = 0

    def number(self, ours, theirs):
        theirs = 0 if theirs is None and ours is not None else theirs
        if theirs is None or ours is None or "%.15g" % ours == "%.15g" % theirs:
            return (ours is None) == (theirs is None)
        last_place = decimal.Decimal(1).scaleb(ours.as_tuple().exponent) if isinstance(ours, decimal.Decimal) else 0
        self.rounded += 1
        return abs(ours - decimal.Decimal(theirs)) <= last_place / 2

    def same(self, ours, theirs, kind):
        if isinstance(theirs, bytes):
            return ours == theirs[:BYTES_COMPARED].hex().upper()
        if kind in NUMBERS:
            return self.number(ours, theirs)
        if kind in ("D", "Date"):
            return (ours and ours[:10]) == (theirs and theirs.isoformat())
        if kind == "T":
            if ours is None or theirs is None:
                return ours == theirs
            distance = datetime.datetime.strptime(ours[:26], "%Y-%m-%d %H:%M:%S.%f") - theirs
            return abs(distance) < datetime.timedelta(milliseconds=1)
        if kind == "L":
            return (ours or "").strip() == {True: "T", False: "F", None: ""}[theirs]
        theirs = theirs or ""
        as_bytes = theirs.encode("latin1")[:BYTES_COMPARED].hex().upper()
        as_text = text_of(theirs, self.encoding) or ""
        return ours == as_bytes or (ours or "").rstrip(" \0") == as_text.rstrip(" \0")

    def cell(self, record, name, ours, theirs, kind):
        if theirs == "-":
            return
        where = "record %d, field %s: %r, not %r" % (record, name, ours, theirs)
        reason = self.rejected.pop((record, name), None)
        if reason is None and theirs == "?":
            if kind not in "DTL" or (ours or "").strip():
                raise Difference(where)
            return
        if reason is not None:
            told = (theirs == "?" or (theirs is None and reason == "there is no memo file")
                    or (kind in TEXTS and text_of(theirs or "", self.encoding) is None))
            if not told or (ours or "0").strip(" 0."):
                raise Difference("%s, which is rejected: %s" % (where, reason))
            return
        if not self.same(ours, theirs, kind):
            raise Difference(where)

    def run(self, names, kinds, records):
        if len(records) != len(self.rows):
            raise Difference("%d records, not %d" % (len(self.rows), len(records)))
        in_file = [i for i, row in enumerate(self.rows) if row[-3] != "T"] + \
                  [i for i, row in enumerate(self.rows) if row[-3] == "T"]
        for at, theirs in zip(in_file, records):
            ours = self.rows[at][:-3]
            known = [i for i, kind in enumerate(kinds) if kind != "0"]
            if len(ours) != len(known):
                raise Difference("%d fields, not %d" % (len(ours), len(known)))
            for value, i in zip(ours, known):
                self.cell(at + 1, names[i], value, theirs[i], kinds[i])
        if self.rejected:
            raise Difference("rejected, and no value of the file: %r" % self.rejected)


def main():
    reader, path, rows_path, rejects_path = sys.argv[1:]
    with open(rows_path, encoding="utf-8") as file:
        rows = json.load(file, parse_float=decimal.Decimal, object_pairs_hook=lambda row: [value for _, value in row])
    rejected = {}
    if os.path.exists(rejects_path):
        with open(rejects_path, encoding="utf-8", newline="") as file:
            rejected = {(int(row["record"]), row["field"]): row["reason"] for row in csv.DictReader(file)}
    try:
        kinds, records, names = {"dbfread": with_dbfread, "gdal": with_gdal}[reader](path)
    except Exception as reason:  # whatever the reader refuses a file with
        print("%s refuses it: %s" % (reader, reason))
        return 2
    comparison = Comparison(path, rows, rejected)
    try:
        comparison.run(names, kinds, records)
    except Difference as difference:
        print("%s differs: %s" % (reader, difference))
        return 1
    print(comparison.rounded)
    return 0


sys.exit(main())
