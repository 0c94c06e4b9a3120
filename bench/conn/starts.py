"""What it takes before any work is done: the start of the tool, an attachment."""
import os
import subprocess
import time

from bench.support.measure import Row, Target, paired
from bench.support.processes import CLIENT_CPU, Failure

QUERY = "select 1 from rdb$database"
USER = {"ISC_USER": "SYSDBA", "ISC_PASSWORD": "masterkey"}


def _process(stage, command, shown, script=""):
    """The function that runs a command from its start to its end and returns the milliseconds."""
    def run():
        start = time.monotonic()
        done = subprocess.run(command, input=script, capture_output=True, text=True, check=False,
                              env={**os.environ, **stage.environment, **USER},
                              preexec_fn=lambda: os.sched_setaffinity(0, {CLIENT_CPU}))
        taken = (time.monotonic() - start) * 1e3
        if done.returncode != 0 or shown not in done.stdout:
            raise Failure(f"{' '.join(command)}: {done.stdout} {done.stderr}")
        return taken
    return run


def _row(stage, what, where, against, ways, target=None):
    taken = paired(max(stage.options.runs, stage.options.short_runs), ways)
    return Row(what, where, against, taken["ours"], taken["theirs"], target, "ms")


def _attach(stage, worker, where, name):
    times = stage.options.attachments
    return _row(stage, "an object attached and gone", where, "bare client, attach and detach", {
        way: lambda command=command: worker.ask(command, database=name, times=times)["seconds"] / times * 1e3
        for way, command in (("theirs", "attach.bare"), ("ours", "attach.ours"))})


def starts(stage):
    """Processes against isql, which does the same; the object against the bare client."""
    rows = [_row(stage, "zmfb --version", "", "isql -z", {
        "theirs": _process(stage, ["isql-fb", "-q", "-z"], "ISQL Version"),
        "ours": _process(stage, [stage.tool, "--version"], "zmfb"),
    }, Target(at_most=1.25))]
    for where in stage.wheres():
        name = stage.name(stage.copy(), where)
        rows.append(_row(stage, f"zmfb query \"{QUERY}\"", where, "isql", {
            "theirs": _process(stage, ["isql-fb", "-q", name], "1", QUERY + ";\n"),
            "ours": _process(stage, [stage.tool, "--db", name, "query", QUERY], "1"),
        }, Target(at_most=1.25)))
        with stage.worker() as worker:
            rows.append(_attach(stage, worker, where, name))
    return rows
