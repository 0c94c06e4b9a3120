"""Checks the links of the documentation.

    links.py TOP

Every relative link and anchor of README.md, CONTRIBUTING.md, CHANGELOG.md, docs/ and the pages of examples/ leads
somewhere, every path under docs/ or examples/ that they name is there, and every page of docs/ can be reached from
docs/README.md.
"""

import sys
from pathlib import Path

from pages import Page


def documents(top):
    """The pages looked at."""
    singles = [top / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md")]
    folders = sorted((top / "docs").rglob("*.md")) + sorted((top / "examples").rglob("*.md"))
    return [path for path in singles if path.exists()] + folders


def is_elsewhere(target):
    return "://" in target or target.startswith("mailto:")


def target_of(page, target):
    """(file, anchor) that a link of `page` leads to."""
    name, _, anchor = target.partition("#")
    return (page.path.parent / name).resolve() if name else page.path.resolve(), anchor


def problem_of(page, target):
    """What is wrong with a link; None when nothing is."""
    path, anchor = target_of(page, target)
    if not path.exists():
        return f"there is no {target}"
    if anchor and path.suffix == ".md" and anchor not in Page(path).anchors():
        return f"{path.name} has no heading #{anchor}"
    return None


def reachable(start):
    """The pages that links lead to from `start`, itself included."""
    found, waiting = set(), [start.resolve()]
    while waiting:
        path = waiting.pop()
        if path in found or path.suffix != ".md" or not path.exists():
            continue
        found.add(path)
        page = Page(path)
        waiting += [target_of(page, target)[0] for _, target in page.links() if not is_elsewhere(target)]
    return found


def check(top):
    """(what is wrong, how many links were looked at)."""
    top = Path(top)
    problems, count = [], 0
    for path in documents(top):
        page = Page(path)
        name = path.relative_to(top)
        if page.unclosed:
            problems.append(f"{name}: a code block has no end")
        for number, target in page.links():
            if is_elsewhere(target):
                continue
            count += 1
            problem = problem_of(page, target)
            if problem:
                problems.append(f"{name}:{number}: {problem}")
        for number, mentioned in page.mentions():
            if not (top / mentioned).exists():
                problems.append(f"{name}:{number}: there is no {mentioned}")
    index = top / "docs" / "README.md"
    if not index.exists():
        return problems + ["docs/README.md is not there"], count
    linked = reachable(index)
    for path in sorted((top / "docs").rglob("*.md")):
        if path.resolve() not in linked:
            problems.append(f"{path.relative_to(top)}: no way leads here from docs/README.md")
    return problems, count


def main():
    problems, count = check(sys.argv[1])
    if count == 0:
        problems.append("no link was found at all")
    for problem in problems:
        print(problem)
    print(f"{count} links looked at, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
