"""`zmfb matrix` on all tables of a database that stay as they are, against the same of an earlier commit."""
import contextlib
import os
import subprocess
import tempfile

from bench.matrix import extraction
from bench.support.measure import Row, Target, paired
from bench.support.processes import Failure, timed
from bench.support.stage import HERE

USER = {"ISC_USER": "SYSDBA", "ISC_PASSWORD": "masterkey"}
AT_MOST = 0.4


@contextlib.contextmanager
def tool_of(commit):
    """The tool as that commit has it, built for this."""
    with tempfile.TemporaryDirectory(prefix="zmfb-bench-") as folder:
        source, build = os.path.join(folder, "source"), os.path.join(folder, "build")
        git = ["git", "-C", os.path.dirname(HERE), "worktree"]
        subprocess.run([*git, "add", "--quiet", "--detach", source, commit], check=True)
        try:
            subprocess.run(["cmake", "--preset", "bench", "-B", build], cwd=source, check=True, stdout=subprocess.DEVNULL)
            subprocess.run(["cmake", "--build", build, "--target", "zmfb"], check=True, stdout=subprocess.DEVNULL)
            yield os.path.join(build, "bin", "zmfb")
        finally:
            subprocess.run([*git, "remove", "--force", source], check=True)


def _content(file):
    """A matrix but for the times in it."""
    with open(file, encoding="latin-1") as matrix:
        return [line for line in matrix if not line.startswith("   Data: ")]


def whole(stage):
    """extract, check and apply of a matrix that changes nothing."""
    rows = []
    tables = stage.options.tables
    earlier = subprocess.run([stage.options.earlier, "--version"], check=True, stdout=subprocess.PIPE, text=True).stdout
    # What the earlier one makes both can use.
    empty = stage.file("earlier.fdb")
    timed([stage.options.earlier, "--db", empty, "create"], {**stage.environment, **USER})
    file = extraction.make(stage, tables, empty)
    for where in stage.wheres():
        name = stage.name(stage.copy(file), where)
        written = {who: stage.file(f"{who}{next(stage.numbers)}.tf") for who in ("ours", "theirs")}

        def run(who, *words):
            tool = stage.tool if who == "ours" else stage.options.earlier
            return timed([tool, "--db", name, "matrix", *words], {**stage.environment, **USER})[0]
        ways = {"extract": lambda who: ("extract", "-o", written[who], "--yes"),
                "check": lambda who: ("check", written[who]), "apply": lambda who: ("apply", written[who], "--yes")}
        for verb, words in ways.items():
            seconds = paired(stage.options.release_runs, {who: lambda who=who: run(who, *words(who)) for who in written},
                             stage.progress)
            if _content(written["ours"]) != _content(written["theirs"]):
                raise Failure("the matrices differ")
            rows.append(Row(f"zmfb matrix {verb} of {tables:,} tables x {extraction.FIELDS} fields", where,
                            "zmfb " + earlier.split()[1], seconds["ours"], seconds["theirs"], Target(at_most=AT_MOST)))
    return rows
