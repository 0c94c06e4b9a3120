"""A record locked and unlocked."""
from bench.support.measure import Row, Target, paired


def lock(stage):
    """Against the bare client that sends the same statements."""
    rows = []
    pairs = stage.options.lock_pairs
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(), where))
            statements = worker.ask("lock.bare", pairs=1)["statements"]
            seconds = paired(max(stage.options.runs, stage.options.short_runs), {
                "bare": lambda: worker.ask("lock.bare", pairs=pairs)["seconds"] / pairs * 1e3,
                "ours": lambda: worker.ask("lock.ours", pairs=pairs)["seconds"] / pairs * 1e3,
            }, stage.progress)
            rows.append(Row("lock and unlock of a record", where, "bare client, same statements", seconds["ours"],
                            seconds["bare"], Target(at_most=1.05), "ms", [f"{statements} statements a pair"]))
    return rows
