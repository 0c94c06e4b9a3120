#!/usr/bin/env python3
"""How heavy the product is: sizes without debugging information, what is linked, how long the tool takes to start.

    bench/weight.py FOLDER                       of what was built there; build/release is what users get
    bench/weight.py FOLDER --doc DOCUMENT        the table between its marks in that document
    bench/weight.py FOLDER --tests               and how long ./test.sh takes in a fresh clone, with its build"""
import argparse
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, TOP)

from bench.support.document import replace_between  # noqa: E402

BEGIN = "<!-- weight: written by bench/weight.py -->"
END = "<!-- end of weight -->"


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def found(folder, name):
    """The one file of that name below a folder that is no link."""
    [path] = [os.path.join(place, name) for place, _, files in os.walk(folder) if name in files
              and not os.path.islink(os.path.join(place, name))]
    return path


def stripped(path):
    with tempfile.NamedTemporaryFile() as copy:
        subprocess.run(["strip", "--strip-unneeded", "-o", copy.name, path], check=True)
        return os.path.getsize(copy.name)


def linked(path):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-d", path))


def start_in_ms(tool, runs):
    """The fastest and the median run of `zmfb --version`, the process's start and end included."""
    taken = []
    for _ in range(runs):
        begin = time.perf_counter()
        output(tool, "--version")
        taken.append((time.perf_counter() - begin) * 1000)
    return min(taken), statistics.median(taken)


def tests_in_minutes():
    """What the run writes goes to standard error: it takes long, and may fail."""
    with tempfile.TemporaryDirectory(prefix="zmfb-weight-") as folder:
        clone = os.path.join(folder, "zmfbconn")
        subprocess.run(["git", "clone", "--quiet", TOP, clone], check=True)
        begin = time.monotonic()
        subprocess.run(["./test.sh"], cwd=clone, check=True, stdout=sys.stderr)
        return (time.monotonic() - begin) / 60


def weigh(options):
    """(what, how much) of everything."""
    tool = found(os.path.join(options.folder, "bin"), "zmfb")
    version = output(tool, "--version").split()[1]
    libraries = os.path.join(options.folder, "lib")
    rows = [(f"`{os.path.basename(path)}`, stripped", f"{stripped(path):,} bytes") for path in
            (tool, found(libraries, f"libzmfbconn.so.{version}"), found(libraries, "zmrddudfs.so"))]
    rows.append(("`zmfb` links", ", ".join(linked(tool))))
    fastest, median = start_in_ms(tool, options.runs)
    rows.append(("start of `zmfb --version`", f"{fastest:.1f} ms at the fastest, {median:.1f} ms in the middle of {options.runs} runs"))
    if options.tests:
        rows.append(("`./test.sh` in a fresh clone", f"{tests_in_minutes():.0f} minutes on {os.cpu_count()} processors"))
    return rows


def number_in(text):
    """The first number of a text: bytes, milliseconds, minutes."""
    found = re.match(r"[\d,.]*\d", text)
    return float(found.group().replace(",", "")) if found else 0.0


def grown(document, rows):
    """Those of the rows that are larger than the document has them, with what it has."""
    with open(document, encoding="utf-8") as file:
        table = file.read().partition(BEGIN)[2].partition(END)[0]
    before = dict(re.findall(r"^\| (.*?) \| (.*) \|$", table, re.MULTILINE))
    return [f"{what}: {much}, was {before[what]}" for what, much in rows
            if what in before and number_in(much) > number_in(before[what])]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--doc", metavar="DOCUMENT")
    parser.add_argument("--tests", action="store_true")
    parser.add_argument("--runs", type=int, default=51)
    options = parser.parse_args()
    rows = weigh(options)
    table = "\n".join(f"| {what} | {much} |" for what, much in [("what", "how much"), ("---", "---")] + rows)
    print(table)
    if options.doc:
        for line in grown(options.doc, rows):
            print(f"larger than before, which wants a reason there: {line}")
        replace_between(options.doc, BEGIN, END, table)


if __name__ == "__main__":
    main()
