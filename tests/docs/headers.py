"""Checks that the functions which the comments of headers name are there.

    headers.py TOP

A comment names one as "name()" in lower case; some code of the repository must have that name.
"""

import re
import sys
from pathlib import Path

# Of the C library, and used by nobody here.
ELSEWHERE = {"longjmp"}
COMMENT = re.compile(r"//.*|^\s*/?\*.*$")


def sources(top):
    """Headers and program files, but for what was built."""
    for folder in sorted(path for path in top.iterdir() if path.is_dir()):
        if folder.name.startswith(("build", ".")):
            continue
        yield from sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp", ".c"))


def check(top):
    """(what is wrong, how many names were looked at)."""
    top = Path(top)
    known, named = set(ELSEWHERE), []
    for path in sources(top):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            comment = COMMENT.search(line)
            known.update(re.findall(r"\w+", line[:comment.start()] if comment else line))
            if path.suffix == ".h" and comment:
                named += [(f"{path.relative_to(top)}:{number}", name)
                          for name in re.findall(r"\b([a-z_]\w*)\(\)", comment[0])]
    return [f"{place}: there is no {name}()" for place, name in named if name not in known], len(named)


def main():
    problems, count = check(sys.argv[1])
    if count == 0:
        problems.append("no comment names a function")
    for problem in problems:
        print(problem)
    print(f"{count} names, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
