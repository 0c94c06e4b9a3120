"""A trivial method called by its name, against a call through a function pointer with the same arguments."""
import json
import os
import subprocess

from bench.support.measure import Row, Target
from bench.support.processes import CLIENT_CPU, Failure

ALLOWED = 15  # ns more


def _times(stage):
    """Nanoseconds of each repetition, by name. The repetitions of all are interleaved at random."""
    repetitions = max(stage.options.runs, stage.options.short_runs)
    smoke = ["--smoke"] if stage.options.smoke else []
    command = [os.path.join(stage.programs, "zmfb_bench_call")] + smoke + [
        "--benchmark_format=json", "--benchmark_enable_random_interleaving=true",
        f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={0.001 if stage.options.smoke else 0.1}"]
    done = subprocess.run(command, text=True, capture_output=True, check=False,
                          preexec_fn=lambda: os.sched_setaffinity(0, {CLIENT_CPU}))
    if done.returncode != 0:
        raise Failure(f"zmfb_bench_call: {done.stderr}")
    times = {}
    for one in json.loads(done.stdout)["benchmarks"]:
        if one["run_type"] == "iteration":
            times.setdefault(one["name"], []).append(one["cpu_time"])
    return times


def by_name(stage):
    """What finding the method takes beyond the direct call."""
    times = _times(stage)
    direct = times["direct"]
    rows = []
    for what, name in [("call by name, name at run time", "by_name"),
                       ("call by name, checked when compiled", "by_checked_name")]:
        rows.append(Row(what, "", "call through a function pointer", times[name], direct,
                        Target(more=ALLOWED, unit="ns"), "ns"))
    return rows
