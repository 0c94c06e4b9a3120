#!/usr/bin/env python3
"""Runs the benchmarks: each piece of work in turn with what it is measured against, answers checked before and
while they are timed. bench.sh builds what this needs and calls it."""
import argparse
import contextlib
import os
import subprocess
import sys
import time
from dataclasses import replace

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

from bench.conn import calls, starts  # noqa: E402
from bench.locks import crowd, record_locks  # noqa: E402
from bench.matrix import extraction, release  # noqa: E402
from bench.rdd import areas  # noqa: E402
from bench.sql import growth, reading, typed  # noqa: E402
from bench.support import pictures, report  # noqa: E402
from bench.support.processes import Failure  # noqa: E402
from bench.support.stage import NODE_MODULE, Stage  # noqa: E402
from bench.transfer import exporting, importing, wide  # noqa: E402

SKIPPED = 77


def grow(stage):
    """Each kind of work by its size."""
    works = [growth.select, importing.grow, exporting.grow, record_locks.grow, extraction.grow, areas.grow]
    return [row for work in works for row in work(stage)]


# Name, function, whether it needs the server.
BENCHMARKS = {
    "select": (reading.select, True),
    "memory": (reading.memory, True),
    "typed": (typed.read, True),
    "import": (importing.bring, True),
    "load": (importing.load, True),
    "wide": (wide.load, False),
    "convert": (importing.convert, False),
    "export": (exporting.exile, True),
    "export-tool": (exporting.write_out, True),
    "locks": (record_locks.lock, True),
    "crowd": (crowd.crowd, True),
    "areas": (areas.areas, True),
    "browse": (areas.browse, True),
    "call": (calls.by_name, False),
    "start": (starts.starts, True),
    "matrix": (extraction.extract, True),
    "release": (release.whole, True),
    "growth": (grow, False),
}

# How much of everything: full, quick, smoke.
SIZES = {
    "rows": (500_000, 500_000, 300),
    "runs": (7, 5, 1),
    "memory_runs": (3, 1, 1),
    "short_runs": (15, 9, 1),  # of what is over in a moment
    "long_runs": (3, 3, 1),  # of what takes minutes
    "growth_runs": (3, 3, 1),
    "release_runs": (2, 3, 1),  # of what took minutes once
    "records": (1_000_000, 300_000, 200),
    "extras": (True, False, True),  # comparisons that no target asks for
    "peer_records": (1_000_000, 200_000, 200),
    "peer_records_over_tcp": (50_000, 20_000, 200),  # record by record, each is a way there and back
    "peer_records_over_slow_tcp": (1_000, 1_000, 200),
    "lock_pairs": (500, 200, 2),
    "attachments": (5, 3, 1),  # one after the other in a run
    "crowds": ([10, 100, 400], [10, 100], [2]),  # programs at once
    "visits": (3_000, 2_000, 4),  # of all of them together
    "seeks": (10_000, 10_000, 50),
    "wide_fields": (1_015, 1_015, 20),
    "tables": (1_000, 60, 3),
    "growth": ([10_000, 100_000, 1_000_000, 5_000_000], [10_000, 100_000, 1_000_000], [50, 200]),
    "growth_records": ([10_000, 100_000, 1_000_000], [10_000, 100_000], [100, 200]),
    "growth_locks": ([100, 10_000, 1_000_000], [100, 10_000], [2, 10]),
    "growth_tables": ([10, 100, 1_000], [10, 60], [1, 3]),
}


def arguments():
    parser = argparse.ArgumentParser(prog="bench.sh", description=__doc__)
    parser.add_argument("--programs", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true", help="fewer runs, smaller sizes")
    parser.add_argument("--only", metavar="NAME", action="append", choices=BENCHMARKS,
                        help="one of " + ", ".join(BENCHMARKS) + "; may be given several times")
    parser.add_argument("--runs", type=int, help="paired runs of each (full 7, quick 5; 3 of what takes long)")
    parser.add_argument("--rows", type=int, help="rows that are read (500,000)")
    parser.add_argument("--records", type=int, help="records that are imported and exported (1,000,000)")
    parser.add_argument("--json", metavar="FILE", help="write the figures of every run there")
    parser.add_argument("--doc", metavar="FILE", help="the table and pictures between the marks in that document, the figures beside it")
    parser.add_argument("--against", metavar="COMMIT", help="build the tool of that commit, for the benchmark \"release\"")
    parser.add_argument("--earlier", metavar="TOOL", help=argparse.SUPPRESS)  # that tool, built already
    parser.add_argument("--smoke", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--peers", default="SOCI,DBD::Firebird,Qt QIBASE,PyQt,node-firebird", help="which of the peers")
    options = parser.parse_args()
    size = 2 if options.smoke else 1 if options.quick else 0
    options.long_runs = options.growth_runs = options.release_runs = options.runs
    for name, choices in SIZES.items():
        if getattr(options, name, None) is None:
            setattr(options, name, choices[size])
    options.peers = options.peers.split(",")
    return options


def asked(words):
    """The call of bench.sh that these words came from, without what does not change the figures."""
    kept, words = ["./bench.sh"], iter(words)
    for word in words:
        if word in ("--programs", "--json", "--doc"):
            next(words)
        else:
            kept.append(word)
    return " ".join(kept)


def check_build(options):
    """The programs refuse to be timed when they were built for debugging."""
    worker = os.path.join(options.programs, "zmfb_bench_worker")
    if options.smoke:
        return
    if subprocess.run([worker], stdin=subprocess.DEVNULL, check=False).returncode != 0:
        sys.exit("the benchmarks were not built to be timed")


def run(options):
    names = options.only or [name for name in BENCHMARKS if name != "release" or options.earlier]
    stage = Stage(options.programs, options, server=any(BENCHMARKS[name][1] for name in names))
    rows = []
    try:
        for name in names:
            stage.progress(name)
            start = time.monotonic()
            rows += [replace(row, kind=name) for row in BENCHMARKS[name][0](stage)]
            stage.progress(f"{name} took {time.monotonic() - start:.0f} s")
        return rows, stage.client_version
    except BaseException:
        if options.json and rows:  # most of an hour may be behind it
            report.write_figures(options.json + ".partial", report.figures(rows, {}))
        raise
    finally:
        stage.close()


def main():
    options = arguments()
    if "node-firebird" in options.peers and not os.path.isdir(NODE_MODULE):
        print("node-firebird is not installed in bench/peers/node", file=sys.stderr)
        return SKIPPED
    if options.doc and not pictures.can_draw():
        sys.exit("pygal is missing: Debian's python3-pygal")
    if "release" in (options.only or []) and not (options.against or options.earlier):
        sys.exit("release wants --against COMMIT")
    check_build(options)
    start = time.monotonic()
    try:
        with contextlib.ExitStack() as ending:
            if options.against:
                options.earlier = ending.enter_context(release.tool_of(options.against))
            rows, client = run(options)
    except Failure as failure:
        print(failure, file=sys.stderr)
        return 1
    if options.smoke:
        print(f"{len(rows)} comparisons ran and their answers agree")
        return 0
    measured = report.figures(rows, report.circumstances(options, asked(sys.argv[1:]), client, time.monotonic() - start))
    print(report.text_table(measured["rows"]))
    print(report.facts(measured["circumstances"]))
    if options.json:
        report.write_figures(options.json, measured)
    if options.doc:
        report.write_into(options.doc, measured)
    return 0


if __name__ == "__main__":
    sys.exit(main())
