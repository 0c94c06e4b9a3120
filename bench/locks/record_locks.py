"""A record locked and unlocked."""
import contextlib

from bench.support.growth import LOOKED_UP, grown
from bench.support.measure import BARE, Row, Target, paired
from bench.support.stage import EMBEDDED

# Of other work areas, in the table that the record is locked in.
_OTHERS = """execute block as declare I integer = 0; begin while (I < {locks}) do begin I = I + 1;
    insert into RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) values ('CUSTOMERS', 100 + :I, 'CUSTOMERS:B' || mod(:I, 50));
end end"""


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


def grow(stage):
    """Beside ever more locks of others."""
    pairs = stage.options.lock_pairs
    with contextlib.ExitStack() as ending:
        def ways(locks):
            file = stage.copy()
            worker = ending.enter_context(stage.worker())
            worker.ask("attach", database=stage.name(file, EMBEDDED))
            worker.ask("lock.ours", pairs=1)
            worker.ask("execute", database=file, statements=[_OTHERS.format(locks=locks)])
            return {name: lambda what=what: worker.ask(what, pairs=pairs)["seconds"]
                    for name, what in (("bare", "lock.bare"), ("ours", "lock.ours"))}
        return grown(stage, "lock and unlock of a record: {:,} locks of others", stage.options.growth_locks, ways, count=pairs,
                     at_most=LOOKED_UP)
