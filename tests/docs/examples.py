"""Runs the C++ examples, and compares what they print with examples/expected/.

    examples.py TOP FOLDER TOOL

FOLDER has the programs, TOOL is zmfb. Each runs in an empty folder of its own with the arguments below; "..." in the expected output
stands as in pages. Programs that pages show whole are examples as they are, and so is all code
of docs/from-dbf.md and docs/recipes.md.
"""

import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import output
from links import documents
from pages import Page
from terminal import environment, memory_folder

ARGUMENTS = {
    "hello": ["shop.fdb"],
    "import_and_query": ["customers.fdb", "{data}/customers.dbf"],
    "two_processes": ["shop.fdb"],
    "two_clerks": ["shop.fdb"],
    "matrix": ["shop.fdb"],
    "recipes": ["customers.fdb", "{data}/customers.dbf"],
}
# The database that hello attaches to is there already.
BEFORE = {"hello": ["{tool}", "--db", "shop.fdb", "create"]}


def run(command, folder):
    made = subprocess.run(command, cwd=folder, env=environment(folder), stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
    return made.stdout.decode("utf-8", "replace").splitlines(), made.returncode


def problems_of(name, expected, programs, words):
    """What is wrong with one example."""
    with tempfile.TemporaryDirectory(prefix="zmfb-example-", dir=memory_folder()) as folder:
        if name in BEFORE:
            run([word.format(**words) for word in BEFORE[name]], folder)
        command = [str(programs / name)] + [word.format(**words) for word in ARGUMENTS[name]]
        written, status = run(command, folder)
    if status != 0:
        return [f"{name}: exit status {status}"] + written
    if not output.matches(expected.read_text(encoding="utf-8").splitlines(), written):
        return [f"{name}: other output than {expected.name}"] + written
    return []


def shown_programs(top):
    """(page, line, text) of the programs that pages show, and of the parts of programs on one page."""
    for path in documents(top):
        for block in Page(path).blocks:
            is_part = path.name in ("from-dbf.md", "recipes.md") and block.words[:1] in (["cpp"], ["python"])
            if is_part or block.words[:1] == ["cpp"] and any("int main(" in line for line in block.lines):
                yield path.name, block.line, "\n".join(block.lines) + "\n"


def sources_in(examples):
    """The texts of the examples, each also with all lines four columns further to the left."""
    for path in [*examples.glob("*.cpp"), *examples.glob("*.py")]:
        text = path.read_text(encoding="utf-8")
        yield from (text, re.sub("^    ", "", text, flags=re.M))


def main():
    top, programs, tool = (Path(word).resolve() for word in sys.argv[1:])
    examples = top / "examples"
    names = sorted(path.stem for path in examples.glob("*.cpp"))
    words = {"data": str(examples / "data"), "tool": str(tool)}
    told = (examples / "README.md").read_text(encoding="utf-8")
    problems = [f"{name}: has no arguments here" for name in names if name not in ARGUMENTS]
    problems += [f"{name}: examples/README.md does not tell of it" for name in names if f"{name}.cpp" not in told]
    sources = list(sources_in(examples))
    problems += [f"{page}:{line}: this program is none of the examples" for page, line, text in shown_programs(top)
                 if not any(text in source for source in sources)]
    with ThreadPoolExecutor(max_workers=2) as pool:
        found = pool.map(lambda name: problems_of(name, examples / "expected" / f"{name}.out", programs, words),
                         [name for name in names if name in ARGUMENTS])
        problems += [problem for some in found for problem in some]
    for problem in problems:
        print(problem)
    print(f"{len(names)} examples, {len(problems)} problems")
    return 1 if problems or not names else 0


if __name__ == "__main__":
    sys.exit(main())
