#!/usr/bin/env python3
"""What was measured: as figures that are kept, as a table on the terminal, and in a document.

    bench/support/report.py FIGURES DOCUMENT       writes the document anew from figures that were kept

The figures of a document lie beside it as JSON; its table and its pictures are made of them."""
import json
import os
import platform
import statistics
import sys

if __name__ == "__main__":
    sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))

from bench.support import pictures
from bench.support.document import replace_between
from bench.support.measure import spread
from bench.support.processes import CLIENT_CPU, SERVER_CPU

HEADER = ["what", "where", "against", "ours", "theirs", "ratio", "target", "verdict", "notes"]
BEGIN = "<!-- table: written by bench.sh -->"
END = "<!-- end of table -->"


def _figure(values, unit):
    middle = statistics.median(values)
    digits = 0 if middle >= 1000 else 1 if middle >= 100 else 2 if middle >= 1 else 4
    return f"{middle:.{digits}f} {unit} ±{spread(values) * 50:.0f}%"


def _cells(row):
    return [row["what"], row["where"], row["against"], _figure(row["ours"], row["unit"]), _figure(row["theirs"], row["unit"]),
            f"{row['ratio']:.3f} ({min(row['ratios']):.2f} to {max(row['ratios']):.2f})",
            row["target"] or "", row["verdict"], "; ".join(row["notes"])]


def text_table(rows):
    lines = [HEADER] + [_cells(row) for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADER))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in lines)


def markdown_table(rows):
    lines = [HEADER, ["---"] * len(HEADER)] + [_cells(row) for row in rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def facts(around):
    return "; ".join(f"{name}: {value}" for name, value in around.items() if name != "command")


def _processor():
    try:
        with open("/proc/cpuinfo", encoding="ascii", errors="replace") as info:
            return next(line.split(":", 1)[1].strip() for line in info if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def circumstances(options, command, client_version, seconds):
    """What has to be known beside the figures."""
    return {
        "command": command, "processor": _processor(), "processors": os.cpu_count(), "system": platform.system(),
        "machine": platform.machine(), "client": client_version, "build": "optimised, without assertions",
        "client pinned to processor": CLIENT_CPU, "server pinned to processor": SERVER_CPU,
        "runs": options.runs, "load at the end": round(os.getloadavg()[0], 1), "seconds in all": round(seconds),
    }


def _kept(values):
    """Six digits of each, more than a clock is good for."""
    return [float(f"{value:.6g}") for value in values]


def figures(rows, around):
    """All that was measured, as it is kept."""
    return {"circumstances": around, "rows": [{
        "kind": row.kind, "what": row.what, "where": row.where, "against": row.against, "unit": row.unit,
        "ours": _kept(row.ours), "theirs": _kept(row.theirs), "ratio": row.ratio(), "ratios": _kept(row.ratios()),
        "target": row.target.text() if row.target else None, "limit": row.target.limit() if row.target else None,
        "verdict": row.verdict(), "notes": row.notes,
    } for row in rows]}


def in_document(measured):
    """What stands between the marks of the table in a document."""
    around = measured["circumstances"]
    return f"Written by `{around['command']}`. {facts(around)}.\n\n{markdown_table(measured['rows'])}"


def write_figures(name, measured):
    """Keeps figures as JSON, a row on a line."""
    rows = ",\n".join(json.dumps(row) for row in measured["rows"])
    with open(name, "w", encoding="utf-8") as file:
        file.write(f'{{"circumstances": {json.dumps(measured["circumstances"], indent=1)},\n"rows": [\n{rows}\n]}}\n')


def figures_of(document):
    """Where the figures of a document are kept."""
    return os.path.splitext(document)[0] + ".json"


def write_into(document, measured):
    """Puts the table and the pictures between their marks in a document, and the figures beside it."""
    replace_between(document, BEGIN, END, in_document(measured))
    pictures.write_into(document, measured)
    write_figures(figures_of(document), measured)


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as recorded:
        write_into(sys.argv[2], json.load(recorded))
