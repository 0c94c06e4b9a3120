"""Many programs at once on one server: each locks a record of its own, changes and unlocks it, over and over."""
import contextlib
import os
import time

from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure, memory_of
from bench.support.stage import TCP

AGAINST = "bare client, same statements, calls of its own"
TICK = os.sysconf("SC_CLK_TCK")


def crowd(stage):
    """Against as many bare clients that send the same statements: milliseconds of the clock a visit, of all together."""
    rows = []
    for programs in stage.options.crowds:
        rows.append(_visits(stage, programs, max(2, stage.options.visits // programs)))
    return rows


def _visits(stage, programs, each):
    database = stage.name(stage.copy(), TCP)
    before_all = memory_of(stage.server_process)[0]
    with contextlib.ExitStack() as ending:
        workers = [ending.enter_context(stage.worker()) for _ in range(programs)]
        for number, worker in enumerate(workers, 1):
            worker.ask("attach", database=database)
            if number == 1:
                worker.ask("crowd.make", records=programs)
            statements = worker.ask("crowd.learn", record=str(number))["statements"]
        # Each worker has two attachments, ours and that of the bare client.
        attachment = (memory_of(stage.server_process)[0] - before_all) / programs / 2e6
        server = {"ours": [], AGAINST: []}

        def visit(who, what):
            before, start = _processor_seconds(stage.server_process), time.monotonic()
            for number, worker in enumerate(workers, 1):
                worker.send(what, visits=each, record=str(number))
            for worker in workers:
                worker.receive(what)
            seconds = time.monotonic() - start
            server[who].append((_processor_seconds(stage.server_process) - before) / programs / each * 1e3)
            return seconds / programs / each * 1e3

        times = paired(stage.options.long_runs, {AGAINST: lambda: visit(AGAINST, "crowd.bare"),
                                            "ours": lambda: visit("ours", "crowd.ours")}, stage.progress)
        visited = workers[0].ask("rows", database=database, sql="select sum(VISITS) from CUSTOMERS")["rows"][0][0]
        if int(visited) != programs * (1 + 2 * stage.options.long_runs * each):
            raise Failure(f"{visited} visits are in the table")
    least = {who: max(min(spent), 0.01) for who, spent in server.items()}  # a few visits are no tick of its clock
    return Row(f"a record locked, changed, unlocked by each of {programs}", TCP, AGAINST, times["ours"], times[AGAINST],
               Target(at_most=1.1), "ms",
               [f"{statements} statements", f"of the server's processor {least['ours']:.2f} ms, {least[AGAINST]:.2f} ms",
                f"of its memory {attachment:.1f} MB an attachment",
                f"on paper {1e3 / least['ours']:,.0f} visits a second for each processor of a server"])


def _processor_seconds(process):
    with open(f"/proc/{process}/stat", encoding="ascii") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICK
