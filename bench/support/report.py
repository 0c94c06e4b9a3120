"""The table: on the terminal, as Markdown, as JSON."""
import os
import platform
import statistics

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
    ratios = row.ratios()
    return [row.what, row.where, row.against, _figure(row.ours, row.unit), _figure(row.theirs, row.unit),
            f"{row.ratio():.3f} ({min(ratios):.2f} to {max(ratios):.2f})",
            row.target.text() if row.target else "", row.verdict(), "; ".join(row.notes)]


def text_table(rows):
    lines = [HEADER] + [_cells(row) for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADER))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in lines)


def markdown_table(rows):
    lines = [HEADER, ["---"] * len(HEADER)] + [_cells(row) for row in rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def _processor():
    try:
        with open("/proc/cpuinfo", encoding="ascii", errors="replace") as info:
            return next(line.split(":", 1)[1].strip() for line in info if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def circumstances(options, client_version, seconds):
    """What has to be known beside the figures."""
    return {
        "processor": _processor(), "processors": os.cpu_count(), "system": platform.system(),
        "machine": platform.machine(), "client": client_version, "build": "optimised, without assertions",
        "client pinned to processor": CLIENT_CPU, "server pinned to processor": SERVER_CPU,
        "runs": options.runs, "load at the end": round(os.getloadavg()[0], 1), "seconds in all": round(seconds),
    }


def figures(rows, around):
    """All that was measured, as it is kept."""
    return {"circumstances": around, "rows": [{
        "kind": row.kind, "what": row.what, "where": row.where, "against": row.against, "unit": row.unit, "ours": row.ours,
        "theirs": row.theirs, "ratio": row.ratio(), "ratios": row.ratios(), "spread": spread(row.ratios()),
        "target": row.target.text() if row.target else None, "limit": row.target.limit() if row.target else None,
        "verdict": row.verdict(), "notes": row.notes,
    } for row in rows]}


def write_into(document, rows, around, command):
    """Puts the table between its marks in a document."""
    facts = "; ".join(f"{name}: {value}" for name, value in around.items())
    replace_between(document, BEGIN, END, f"Written by `{command}`. {facts}.\n\n{markdown_table(rows)}")
