"""Prints gcovr's JSON report as a table by folder, and the lines that were never reached.

python3 scripts/coverage_table.py REPORT
"""
import collections
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
    # A line is listed for each function of a template that has it, and for each link to its header.
    lines = collections.defaultdict(collections.Counter)
    for file in files:
        counts = lines[os.path.relpath(os.path.realpath(file["file"]))]
        for line in file["lines"]:
            if not line.get("gcovr/noncode"):
                counts[line["line_number"]] += line["count"]
    reached = collections.Counter()
    total = collections.Counter()
    missed = {}
    for file, counts in lines.items():
        folder = file.split("/")[0]
        total[folder] += len(counts)
        reached[folder] += sum(count > 0 for count in counts.values())
        never = sorted(number for number, count in counts.items() if count == 0)
        if never:
            missed[file] = never
    print(f"{'folder':<12}{'lines':>8}{'reached':>9}{'never':>7}{'percent':>9}")
    for folder in sorted(total):
        print(row(folder, total[folder], reached[folder]))
    print(row("all", sum(total.values()), sum(reached.values())))
    print("\nNever reached:")
    for file in sorted(missed):
        print(f"  {file}: {ranges(missed[file])}")


def row(name, lines, reached):
    return f"{name:<12}{lines:>8}{reached:>9}{lines - reached:>7}{100 * reached / max(lines, 1):>8.1f}%"


main(sys.argv[1])
