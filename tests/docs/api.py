"""Makes the pages of the public headers, and finds in them what a reader looks for.

    api.py DOXYGEN DOXYFILE

Doxygen ends with an error for what it does not understand and for what has no comment. That it does is tried on a
header that lacks one.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

WANTED = {
    "index.html": "The C++ interface",
    "classzmfb_1_1zmFBConn.html": "Calls a method by its declaration",
    "classzmfb_1_1host_1_1Value.html": "The bytes of a character value",
    "classzmfb_1_1Transaction.html": "Ends it and undoes what it changed",
    "zmfbconn_8h.html": "zmfb_call",
}


def run(doxygen, settings):
    return subprocess.run([doxygen, "-"], input=settings, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def main():
    doxygen, doxyfile = sys.argv[1:]
    settings = Path(doxyfile).read_text(encoding="utf-8")
    problems = []
    with tempfile.TemporaryDirectory(prefix="zmfb-api-") as folder:
        made = run(doxygen, f'{settings}\nOUTPUT_DIRECTORY = "{folder}"\n')
        problems += [line for line in made.stdout.splitlines() if line.strip()]
        if made.returncode != 0:
            problems.append(f"doxygen ends with {made.returncode}")
        for page, text in WANTED.items():
            path = Path(folder) / "html" / page
            if not path.exists() or text not in path.read_text(encoding="utf-8"):
                problems.append(f"{page} does not say \"{text}\"")
        bare = Path(folder) / "bare.h"
        bare.write_text("/// \\file\n/// One function.\nvoid nobody_described_this();\n", encoding="utf-8")
        refused = run(doxygen, f'{settings}\nOUTPUT_DIRECTORY = "{folder}/bare"\nINPUT = "{bare}"\n')
        if refused.returncode == 0 or "nobody_described_this" not in refused.stdout:
            problems.append("a function without a comment is not refused")
    for problem in problems:
        print(problem)
    print(f"{len(WANTED)} pages looked at, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
