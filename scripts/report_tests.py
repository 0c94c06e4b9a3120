"""Prints which tests of a run were skipped, by reason, how many single tests the programs of GoogleTest ran, and
what those that failed wrote.

python3 scripts/report_tests.py RESULTS, what `ctest --output-junit RESULTS` wrote
"""
import collections
import re
import sys
import xml.etree.ElementTree

# What GoogleTest writes about a single test of a program.
SINGLE = re.compile(r": Skipped\n(?P<reason>.*?)\n*\[  SKIPPED \] (?P<name>\S+)", re.DOTALL)

# What it writes about one that failed.
FAILED = re.compile(r"^\[ RUN      \] (\S+)\n(?:(?!\[ RUN ).*\n)*?\[  FAILED  \] \1[ ,].*\n", re.MULTILINE)

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


def failures(case):
    """What is worth reading of one test of ctest that failed."""
    output = case.findtext("system-out", "")
    single = [match[0] for match in FAILED.finditer(output)]
    return [text if len(text) < 4000 else f"{text[:2000]}[...]\n{text[-2000:]}"
            for text in single or [output or "it wrote nothing\n"]]


def main(path):
    names, outcomes, failed = collections.defaultdict(list), collections.Counter(), []
    for case in xml.etree.ElementTree.parse(path).iter("testcase"):
        outcomes.update(OUTCOME.findall(case.findtext("system-out", "")))
        if case.get("status") == "fail":
            failed += (f"{case.get('name')}:\n{text}" for text in failures(case))
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
    for text in failed:
        print(text)


main(sys.argv[1])
