"""Prints which tests of a run were skipped, by reason, and how many single tests the programs of GoogleTest ran.

python3 scripts/skipped_tests.py RESULTS, what `ctest --output-junit RESULTS` wrote
"""
import collections
import re
import sys
import xml.etree.ElementTree

# What GoogleTest writes about a single test of a program.
SINGLE = re.compile(r": Skipped\n(?P<reason>.*?)\n*\[  SKIPPED \] (?P<name>\S+)", re.DOTALL)

# How a single test came out.
OUTCOME = re.compile(r"^\[ +(OK|FAILED|SKIPPED) +\] .* \(\d+ ms\)$", re.MULTILINE)


def skips(case):
    """(name, reason) of each test that was skipped in one test of ctest, or of that one."""
    output = case.findtext("system-out", "")
    single = [(match["name"], " ".join(match["reason"].split())) for match in SINGLE.finditer(output)]
    if single:
        yield from ((f"{case.get('name')}: {name}", reason) for name, reason in single)
    elif (skipped := case.find("skipped")) is not None and skipped.get("message").startswith("SKIP_"):
        yield case.get("name"), (output.strip().splitlines() or ["it gave no reason"])[-1]
    elif case.get("status") == "disabled":
        yield case.get("name"), "disabled in this build"


def main(path):
    names, outcomes = collections.defaultdict(list), collections.Counter()
    for case in xml.etree.ElementTree.parse(path).iter("testcase"):
        outcomes.update(OUTCOME.findall(case.findtext("system-out", "")))
        for name, reason in skips(case):
            names[reason].append(name)
    if names:
        print(f"{sum(map(len, names.values()))} skipped:")
    for reason in sorted(names):
        print(f"  {reason}")
        for name in sorted(names[reason]):
            print(f"      {name}")
    if names:
        print()
    if ran := outcomes.total():
        print(f"{ran} single tests ran: {outcomes['OK']} passed, {outcomes['FAILED']} failed, "
              f"{outcomes['SKIPPED']} skipped\n")


main(sys.argv[1])
