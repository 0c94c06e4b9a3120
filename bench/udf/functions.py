#!/usr/bin/env python3
"""What a call of a stored function takes, held against the module's, in one database of the embedded engine.

    functions.py MODULE_FOLDER [--firebird FOLDER] [--rows 200000] [--runs 7]

MODULE_FOLDER has zmrddudfs.so; --firebird names the folder of an unpacked Firebird, else it is that of the machine (Debian's
3.0). Each function is called for every row of a table, in turn the stored and the module's, by one isql; the plain reading of
the rows is taken off both. Answers are compared before they are timed."""
import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
CALLS = {
    "ZMTRIM": "T", "ZMLOWER": "T", "ZMUPPER": "T", "ZMSUBSTR": "T, 3, 5", "ZMDTOS": "D", "SKIPPAD": "T", "ZMSTR": "N, 12, 2",
    "ZMSTRZERO": "N, 12, 2", "ZMPADR": "T, 30", "ZMPADL": "T, 30", "ZMBLOBSUBSTR": "B, 1, 10",
}
MACHINES = Path("/usr/lib/x86_64-linux-gnu/firebird/3.0")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("module_folder", type=lambda text: Path(text).resolve())
    parser.add_argument("--firebird", type=lambda text: Path(text).resolve())
    parser.add_argument("--rows", type=int, default=200_000)
    parser.add_argument("--runs", type=int, default=7)
    return parser.parse_args()


def environment(folder, options):
    """An installation of its own, whose engine loads the module."""
    origin = options.firebird or MACHINES
    for entry in origin.iterdir():
        if entry.name == "intl":  # which is taken from no link
            shutil.copytree(entry, folder / entry.name)
        elif entry.name != "firebird.conf":
            (folder / entry.name).symlink_to(entry)
    (folder / "firebird.conf").write_text(f"UdfAccess = Restrict {options.module_folder}\n")
    (folder / "lock").mkdir()
    around = {**os.environ, "FIREBIRD": str(folder), "FIREBIRD_LOCK": str(folder / "lock")}
    if options.firebird:
        around["LD_LIBRARY_PATH"] = str(options.firebird / "lib")
    return around


def isql(options, around, script):
    program = options.firebird / "bin" / "isql" if options.firebird else "isql-fb"
    done = subprocess.run([str(program), "-q", "-b", "-user", "SYSDBA"], input=script, text=True, capture_output=True, env=around,
                          check=False)
    if done.returncode != 0:
        sys.exit(f"isql: {done.stdout}{done.stderr}")
    return done.stdout


def preparation(folder, options):
    """The stored functions under their names, the module's with M_ in front, and the rows."""
    module = re.sub(r"(?<=DECLARE EXTERNAL FUNCTION )(\w+)", r"M_\1", (TOP / "udf/zmrddudfs.sql").read_text())
    stored = (TOP / "udf/stored_functions.sql").read_text()
    return f"""create database '{folder}/functions.fdb';
{stored}
{module}
create table T (T varchar(40) character set none, N double precision, D timestamp, B blob sub_type text character set none);
commit;
set term ^ ;
execute block as declare I integer = 0; begin
  while (I < {options.rows}) do begin
    insert into T values ('  Name ' || :I || ' of a person  ', :I / 7e0, dateadd(mod(:I, 30000) day to date '1950-01-01'),
      'memo of ' || :I);
    I = I + 1;
  end
end^
set term ; ^
commit;
"""


def measuring(name, words, runs):
    """Prints DIFFERENT and how many answers differ, then a line "TIME stored module plain" of milliseconds for each run."""
    stored, module, plain = f"{name}({words})", f"M_{name}({words})", words.split(",")[0]
    tell = "\n".join(
        f"    STARTED = cast('now' as timestamp); select count({call}) from T into :N; "
        f"{into} = datediff(millisecond from STARTED to cast('now' as timestamp));"
        for into, call in (("A", stored), ("B", module), ("C", plain)))
    return f"""set heading off;
select 'DIFFERENT', count(*) from T where {stored} is distinct from {module};
set term ^ ;
execute block returns (WORD char(4), A bigint, B bigint, C bigint) as
  declare STARTED timestamp; declare N bigint; declare RUN integer = 0;
begin
  WORD = 'TIME';
  while (RUN < {runs}) do begin
{tell}
    suspend;
    RUN = RUN + 1;
  end
end^
set term ; ^
"""


def main():
    options = arguments()
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as name:
        folder = Path(name)
        around = environment(folder, options)
        isql(options, around, preparation(folder, options))
        print(f"{'':14}stored us  module us  ratio (smallest to largest of {options.runs} runs)")
        for function, words in CALLS.items():
            said = isql(options, around, f"connect '{folder}/functions.fdb';\n" + measuring(function, words, options.runs))
            if re.search(r"DIFFERENT\s+(\d+)", said).group(1) != "0":
                sys.exit(f"{function}: the answers differ: {said}")
            runs = [tuple(map(int, found)) for found in re.findall(r"TIME\s+(\d+)\s+(\d+)\s+(\d+)", said)]
            calls = [(max(a - c, 0) * 1000 / options.rows, max(b - c, 0) * 1000 / options.rows) for a, b, c in runs]
            ratios = [a / b for a, b in calls if b > 0] or [float("nan")]
            stored, module = (statistics.median(column) for column in zip(*calls))
            print(f"{function:14}{stored:9.2f}  {module:9.2f}  {statistics.median(ratios):.2f} ({min(ratios):.2f} to {max(ratios):.2f})")


main()
