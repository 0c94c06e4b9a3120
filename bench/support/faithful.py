"""Whether values that a program was handed are those that the engine holds, and what was lost on the way."""
from decimal import Decimal

from bench.support.processes import Failure


def _decimal(value):
    return format(Decimal(str(value)).normalize(), "f")


def _plain(kind, value):
    """A value in the one form that all who deliver it whole come to."""
    if value is None or value == "NULL":
        return None
    if kind == "text":
        return str(value).rstrip()
    if kind == "timestamp":
        date, _, fraction = str(value).partition(".")
        return date + "." + fraction.ljust(4, "0")
    return _decimal(value) if kind == "decimal" else _decimal(f"{float(value):.6f}")


def _cut(timestamp, digits):
    if timestamp is None:
        return None
    return (timestamp[:-4] + timestamp[-4:][:digits]).ljust(len(timestamp), "0")


def losses(who, kinds, expected, got):
    """What was lost, as a set of short texts; raises when a value is not the engine's, loss aside."""
    if len(expected) != len(got):
        raise Failure(f"{who} delivers {len(got)} rows instead of {len(expected)}")
    found = set()
    for wanted_row, row in zip(expected, got):
        if len(row) != len(kinds):
            raise Failure(f"{who} delivers {len(row)} columns instead of {len(kinds)}")
        for kind, wanted, value in zip(kinds, wanted_row, row):
            if kind == "decimal" and isinstance(value, float):
                found.add("decimals through double")
            wanted, value = _plain(kind, wanted), _plain(kind, value)
            if wanted == value:
                continue
            if kind == "timestamp" and value == _cut(wanted, 3):
                found.add("timestamps cut to ms")
            elif kind == "decimal" and value is not None and wanted == _decimal(round(float(value), 2)):
                found.add("decimals through double")
            elif kind == "timestamp" and value == _cut(wanted, 0):
                found.add("timestamps cut to s")
            else:
                raise Failure(f"{who} delivers {value!r} for {wanted!r}")
    return found
