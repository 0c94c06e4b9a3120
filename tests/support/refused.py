"""Compiles what must not compile, and looks for the reason in what the compiler says.

    refused.py SOURCE COMPILER ARGUMENT...

SOURCE is compiled as it is, which must go well, and then once with CASE defined as each number that a line
"#if CASE == <number>  // <reason>" names, which must fail with that reason in the messages.
"""

import re
import subprocess
import sys


def messages(source, compiler, case):
    """What the compiler says, None when it compiles."""
    done = subprocess.run(compiler + ["-fsyntax-only", f"-DCASE={case}", source], text=True, capture_output=True)
    return done.stderr if done.returncode else None


def main():
    source, *compiler = sys.argv[1:]
    with open(source, encoding="utf-8") as file:
        cases = re.findall(r"^#if CASE == (\d+) +// (.+)$", file.read(), re.MULTILINE)
    problems = []
    if not cases:
        problems.append(f"{source} has no cases")
    control = messages(source, compiler, 0)
    if control is not None:
        problems.append(f"without a case it does not compile:\n{control}")
    for case, reason in cases:
        said = messages(source, compiler, case)
        if said is None:
            problems.append(f"case {case} compiles")
        elif reason not in said:
            problems.append(f'case {case} is refused, but not with "{reason}":\n{said}')
    print("\n".join(problems) or f"{len(cases)} cases are refused")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
