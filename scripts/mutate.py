#!/usr/bin/env python3
"""Breaks the product in many small ways, one at a time, and says which of them the tests notice.

    scripts/mutate.py FOLDER [--places 200] [--seed 1] [--tests REGEX] [--seconds 60] [--only NUMBER...]

FOLDER gets a copy of the last commit in which every place that was picked has a switch: it is broken while the environment
variable ZMFB_MUTANT has the place's number. So there is one build for all of them. Then every test runs once with nothing
broken, which tells what it reaches; then, for each place, those that reach it, those of its own folder first and the quick
ones before the slow, until one fails. FOLDER/results.txt says what came of each. What was begun goes on where it was cut off.
"""
import argparse
import collections
import ctypes
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

from mutate_places import broken, pick

FOLDERS = "conn sql schema catalog locks matrix transfer dbf rdd host tool udf c".split()
TESTS = f"^({'|'.join(FOLDERS)})_"
LEFT_OUT = "_on_server|_on_given|_on_bare|_with_module|_refused"
HEADER = r"""#pragma once
#include <errno.h>
#include <fcntl.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#pragma GCC diagnostic ignored "-Wparentheses"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
/* Whether the place is to be broken. While ZMFB_REACHED names a folder, the place leaves a file "number@case" there. */
static inline bool zmfb_mutant(int place) {
    static int broken = -1;
    static const char* folder;
    if (broken < 0) {
        const char* number = getenv("ZMFB_MUTANT");
        folder = getenv("ZMFB_REACHED");
        broken = number ? atoi(number) : 0;
    }
    if (folder) {
        static char seen_in[PLACES + 1][100];
        const char* name = getenv("ZMFB_TEST_CASE");
        if (!name) name = "*";
        if (strncmp(seen_in[place], name, sizeof seen_in[place] - 1) != 0) {
            const int error = errno;
            char file[600];
            strncpy(seen_in[place], name, sizeof seen_in[place] - 1);
            snprintf(file, sizeof file, "%s/%d@%s", folder, place, name);
            const int made = open(file, O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
            if (made >= 0) close(made);
            errno = error;
        }
    }
    return broken == place;
}
"""
# Goes into main() of the tests in the copy: what a test starts knows for which case it works.
LISTENER = """struct Names : ::testing::EmptyTestEventListener {
        void OnTestStart(const ::testing::TestInfo& test) override {
            std::string name = std::string(test.test_suite_name()) + "." + test.name();
            std::replace(name.begin(), name.end(), '/', '!');
            setenv("ZMFB_TEST_CASE", name.c_str(), 1);
        }
    };
    ::testing::UnitTest::GetInstance()->listeners().Append(new Names);
    """

# ---- Building

def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def write(path, text):
    """Writes a file, if it is to have another text than it has."""
    if not os.path.exists(path) or read(path) != text:
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)


def build(top, folder, count, seed):
    """Makes the copy and builds it; answers the places that compile, `count` of them where there are so many."""
    original, tree = f"{folder}/original", f"{folder}/tree"
    if not os.path.exists(tree):
        os.makedirs(original)
        archive = subprocess.Popen(["git", "-C", top, "archive", "HEAD"], stdout=subprocess.PIPE)
        subprocess.run(["tar", "-x", "-C", original], stdin=archive.stdout, check=True)
        shutil.copytree(original, tree)
    names = [os.path.relpath(os.path.join(where, name), original)
             for top_folder in FOLDERS for where, _, inside in os.walk(f"{original}/{top_folder}") for name in inside]
    files = {name: read(f"{original}/{name}") for name in names if name.endswith((".cpp", ".c"))}
    chosen = pick(files, count + count // 4, seed)
    header, main = f"{folder}/zmfb_mutant.h", "tests/support/main.cpp"
    write(header, HEADER.replace("PLACES", str(len(chosen))))
    start = "::testing::InitGoogleTest"
    write(f"{tree}/{main}", "#include <algorithm>\n#include <cstdlib>\n#include <string>\n"
          + read(f"{original}/{main}").replace(start, LISTENER + start, 1))
    subprocess.run(["cmake", "--preset", "dev", "-DZMFB_BUILD_BENCH=OFF"], cwd=tree, check=True, stdout=subprocess.DEVNULL)
    # The product first: what does not compile shows before the tests are made.
    stages = [["zmfb_core", "zmrddudfs", "zmfb_under_test"], [f"tests/{name}/all" for name in FOLDERS]]
    while stages:
        for name, text in files.items():
            write(f"{tree}/{name}", broken(text, [place for place in chosen if place["file"] == name], header))
        made = subprocess.run(["cmake", "--build", "--preset", "dev", "--target", *stages[0], "--", "-k", "0"], cwd=tree,
                              text=True, capture_output=True)
        if made.returncode == 0:
            stages.pop(0)
            continue
        wrong = {(os.path.relpath(os.path.join(f"{tree}/build/dev", file), tree), int(line))
                 for file, line in re.findall(r"^(\S+?):(\d+):\d+: error:", made.stdout, re.M)}
        bad = [place for place in chosen if any(file == place["file"] and 0 <= line - place["line"] <= place["new"].count("\n")
                                                for file, line in wrong)]
        if not bad:
            sys.exit(made.stdout[-5000:])
        print(f"{len(bad)} places do not compile", flush=True)
        chosen = [place for place in chosen if place not in bad]
    return chosen[:count]


# ---- Running

TOO_LONG = "which took too long"

def children():
    """The processes that this one is the parent of."""
    with open(f"/proc/self/task/{os.getpid()}/children", encoding="ascii") as list_of_them:
        return [int(process) for process in list_of_them.read().split()]


def limits():
    """What a test may take; and signals end it, as they do outside nohup."""
    signal.signal(signal.SIGHUP, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_CPU, (300, 300))
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(test, seconds, **environment):
    """Runs a test of ctest's list: whether it passed, what it wrote, how long it took. Nothing of it is left running."""
    properties = {one["name"]: one["value"] for one in test.get("properties", [])}
    own = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
    begun = time.monotonic()
    with subprocess.Popen(test["command"], cwd=properties["WORKING_DIRECTORY"], env={**os.environ, **own, **environment},
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", start_new_session=True, preexec_fn=limits) as process:
        try:
            output = process.communicate(timeout=seconds)[0]
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output = TOO_LONG
    # What it left behind has become a child of ours, as main() asked.
    while children():
        for child in children():
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
    for kept_by_a_failure in re.findall(r"^kept: (/\S+)$", output, re.M):
        shutil.rmtree(kept_by_a_failure, ignore_errors=True)
    return process.returncode in (0, properties.get("SKIP_RETURN_CODE", 0)), output, time.monotonic() - begun


def reach(folder, pattern, known):
    """Runs every test that is not in `known` with nothing broken, and adds it: whether it passes, its seconds and those of its
    cases, and which of them reach a place. Answers those that are of use for the pattern."""
    shown = subprocess.check_output(["ctest", "--test-dir", f"{folder}/tree/build/dev", "-LE", "slow", "-R", TESTS, "-E", LEFT_OUT,
                                     "--show-only=json-v1"])
    tests = [test for test in json.loads(shown)["tests"] if re.search(pattern, test["name"])]
    for test in tests:
        if test["name"] in known:
            continue
        reached = f"{folder}/reached/{test['name']}"
        os.makedirs(reached, exist_ok=True)
        os.chmod(reached, 0o777)
        passed, output, seconds = run(test, 900, ZMFB_REACHED=reached)
        write(f"{folder}/reached/{test['name']}.log", output)
        print(f"{test['name']}: {seconds:.1f} s" + ("" if passed else ", fails, so it is left out"), flush=True)
        cases = {name: int(ms) / 1000 for name, ms in re.findall(r"^\[       OK \] (\S+) \((\d+) ms\)", output, re.M)}
        hits = collections.defaultdict(list)
        for hit in os.listdir(reached):
            number, case = hit.split("@", 1)
            hits[number].append(case.replace("!", "/"))
        known[test["name"]] = {"test": test, "passed": passed, "seconds": seconds, "cases": cases, "hits": hits}
        write(f"{folder}/reached.json", json.dumps(known, indent=1))
    return {test["name"]: known[test["name"]] for test in tests if known[test["name"]]["passed"]}


def plan(place, known, limit):
    """The tests that reach a place: (seconds, entry of the test, cases), those of its own folder first, then the quick ones."""
    found = []
    for name, entry in known.items():
        hits = entry["hits"].get(str(place["number"]), [])
        reaching = sorted((case for case in hits if case in entry["cases"]), key=entry["cases"].get)
        seconds = entry["seconds"] - sum(entry["cases"].values())
        cases = []
        for case in reaching:
            if not cases or seconds + entry["cases"][case] < limit:
                seconds += entry["cases"][case]
                cases.append(case)
        if hits:
            # Without a case of its own the program is run whole.
            is_of_others = not name.startswith(place["file"].split("/")[0] + "_")
            found.append((is_of_others, seconds if cases else entry["seconds"], name, cases))
    return [(seconds, known[name], cases) for _, seconds, name, cases in sorted(found)]


def judge(place, known, limit):
    """What comes of breaking a place."""
    steps = plan(place, known, limit)
    if not steps:
        return "never reached"
    spent = 0
    for seconds, entry, cases in steps:
        if spent and spent + seconds > limit:
            return f"survived what {limit} s have room for"
        spent += seconds
        name = entry["test"]["name"]
        chosen = {"GTEST_FILTER": ":".join(cases)} if cases else {}
        passed, output, _ = run(entry["test"], 30 + 5 * seconds, ZMFB_MUTANT=str(place["number"]), GTEST_FAIL_FAST="1", **chosen)
        if not passed:
            failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", output, re.M)
            by = f"{name}, {failed[1] if failed else output if output == TOO_LONG else 'which ended half-way'}"
            # What took too long counts when the same passes with nothing broken.
            if output != TOO_LONG or run(entry["test"], 30 + 5 * seconds, **chosen)[0]:
                return f"caught by {by}"
            print(f"{by} with nothing broken, too", flush=True)
    return "survived"


def kept(path, otherwise):
    """What the file has; if there is none, what `otherwise` answers."""
    if not os.path.exists(path):
        write(path, json.dumps(otherwise(), indent=1))
    return json.loads(read(path))


def report(folder, chosen, results):
    """Writes results.txt and prints a table by folder."""
    lines, counts = [], collections.Counter()
    for place in sorted(chosen, key=lambda place: (place["file"], place["line"])):
        outcome = results.get(str(place["number"]), "not tried")
        lines.append(f"{place['file']}:{place['line']} #{place['number']} {place['kind']}: {outcome}\n"
                     f"    {' '.join(place['new'].split())}\n")
        for row in (place["file"].split("/")[0], "all"):
            counts[row, outcome.split()[0]] += 1
    write(f"{folder}/results.txt", "".join(lines))
    print(f"{'folder':<12}{'places':>8}{'caught':>8}{'survived':>10}{'never reached':>15}")
    for row in [*(folder for folder in FOLDERS if any(row == folder for row, _ in counts)), "all"]:
        caught, survived, never = (counts[row, outcome] for outcome in ("caught", "survived", "never"))
        print(f"{row:<12}{caught + survived + never:>8}{caught:>8}{survived:>10}{never:>15}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", help="where the copy is made and built: a gigabyte or two")
    parser.add_argument("--places", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--tests", default="", metavar="REGEX", help="of the tests that are not slow, only these")
    parser.add_argument("--seconds", type=int, default=60, help="how long the tests of one place may take together")
    parser.add_argument("--only", type=int, nargs="+", metavar="NUMBER", help="these places, once more")
    options = parser.parse_args()
    folder = os.path.abspath(options.folder)
    os.makedirs(folder, exist_ok=True)
    # Who loses its parent becomes a child of this process, and ends with the test that started it.
    subreaper = 36
    ctypes.CDLL(None).prctl(subreaper, 1, 0, 0, 0)
    top = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    chosen = kept(f"{folder}/places.json", lambda: build(top, folder, options.places, options.seed))
    known = reach(folder, options.tests, kept(f"{folder}/reached.json", dict))
    results = kept(f"{folder}/results.json", dict)
    for place in chosen:
        number = str(place["number"])
        if place["number"] in (options.only or []) or not options.only and number not in results:
            results[number] = judge(place, known, options.seconds)
            print(f"{number} {place['file']}:{place['line']} {place['kind']}: {results[number]}", flush=True)
            write(f"{folder}/results.json", json.dumps(results, indent=1))
    report(folder, chosen, results)


if __name__ == "__main__":
    main()
