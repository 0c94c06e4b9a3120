"""A record locked and unlocked."""
from bench.support.measure import BARE, Row, Target, paired


def lock(stage):
    """Against the bare client that sends the same statements."""
    rows = []
    pairs = stage.options.lock_pairs
    for where in stage.wheres():
        with stage.worker() as worker:
            worker.ask("attach", database=stage.name(stage.copy(), where))
            statements = worker.ask("lock.bare", pairs=1)["statements"]

            def bare(calls):
                return lambda: worker.ask("lock.bare", pairs=pairs, calls=calls)["seconds"] / pairs * 1e3

            seconds = paired(max(stage.options.runs, stage.options.short_runs), {
                **{against: bare(calls) for calls, against in BARE.items()},
                "ours": lambda: worker.ask("lock.ours", pairs=pairs)["seconds"] / pairs * 1e3,
            }, stage.progress)
            rows += [Row("lock and unlock of a record", where, against, seconds["ours"], seconds[against],
                         Target(at_most=1.05), "ms", [f"{statements} statements a pair"]) for against in BARE.values()]
    return rows
