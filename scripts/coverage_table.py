"""Prints gcovr's JSON report as a table by folder, the lines that were never reached, and those of which a branch was not.

python3 scripts/coverage_table.py REPORT
"""
import collections
import itertools
import json
import os
import sys


def ranges(lines):
    """[1, 2, 3, 7] as "1-3, 7"."""
    found = []
    for line in lines:
        if found and line == found[-1][1] + 1:
            found[-1][1] = line
        else:
            found.append([line, line])
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in found)


def main(path):
    with open(path, encoding="utf-8") as report:
        files = json.load(report)["files"]
    # A line is listed for each function of a template that has it, and for each link to its header: its first number is how
    # often it was reached, the others how often each branch was taken.
    counts = collections.defaultdict(lambda: collections.defaultdict(list))
    for file in files:
        lines = counts[os.path.relpath(os.path.realpath(file["file"]))]
        for line in file["lines"]:
            if not line.get("gcovr/noncode"):
                seen = [line["count"], *(branch["count"] for branch in line.get("branches", []))]
                lines[line["line_number"]] = list(map(sum, itertools.zip_longest(lines[line["line_number"]], seen, fillvalue=0)))
    sums = collections.defaultdict(collections.Counter)
    for file, lines in counts.items():
        for row in (file.split("/")[0], "all"):
            for reached, *branches in lines.values():
                sums[row].update(lines=1, reached=reached > 0, branches=len(branches), taken=sum(map(bool, branches)))
    print(f"{'folder':<12}{'lines':>8}{'reached':>9}{'never':>7}{'percent':>9}{'branches':>10}{'taken':>8}{'never':>7}{'percent':>9}")
    for row in [*sorted(set(sums) - {"all"}), "all"]:
        print(f"{row:<12}{part(sums[row]['lines'], sums[row]['reached'], 8, 9)}"
              f"{part(sums[row]['branches'], sums[row]['taken'], 10, 8)}")
    show("Never reached", counts, lambda reached, branches: not reached)
    show("Reached, with a branch that was never taken", counts, lambda reached, branches: reached and not all(branches))


def part(total, done, first, second):
    return f"{total:>{first}}{done:>{second}}{total - done:>7}{100 * done / max(total, 1):>8.1f}%"


def show(title, counts, wanted):
    print(f"\n{title}:")
    for file, lines in sorted(counts.items()):
        found = sorted(number for number, (reached, *branches) in lines.items() if wanted(reached, branches))
        if found:
            print(f"  {file}: {ranges(found)}")


main(sys.argv[1])
