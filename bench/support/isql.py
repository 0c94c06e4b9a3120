"""Firebird's own isql as a baseline: it runs one statement and commits."""
import os
import subprocess

from bench.support.processes import CLIENT_CPU, Failure


def seconds_of(stage, database, statement):
    """The time from just before the statement to just after its commit; isql's start and its attaching are left
    out, two starts of a shell that tells the time are in."""
    clock = stage.file("isql.clock")
    open(clock, "w", encoding="ascii").close()
    tell = f"shell date +%s%N >> {clock};\n"
    script = f"select 1 from rdb$database;\n{tell}{statement};\ncommit;\n{tell}"
    done = subprocess.run(
        ["isql-fb", "-q", "-b", "-user", "SYSDBA", "-password", "masterkey", database], input=script, text=True,
        capture_output=True, check=False, env={**os.environ, **stage.environment},
        preexec_fn=lambda: os.sched_setaffinity(0, {CLIENT_CPU}))
    with open(clock, encoding="ascii") as file:
        times = [int(line) for line in file.read().split()]
    if done.returncode != 0 or len(times) != 2:
        raise Failure(f"isql: {statement}: {done.stdout} {done.stderr}")
    return (times[1] - times[0]) / 1e9
