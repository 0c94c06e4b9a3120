"""The tests that cannot run as 32-bit programs are those of the table in docs/32-bit.md, each with its reason.

    not_on_32_bits.py PAGE LIST, a list of lines "name | reason", as the build makes it
"""

import sys
from pathlib import Path


def told(page):
    """The rows of the page's table of tests: "| `name` | reason |"."""
    for line in page.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if line.startswith("| `") and len(cells) == 2:
            yield f"{cells[0].strip('`')} | {cells[1]}"


def main(page, made):
    in_page, in_build = (set(lines) for lines in (told(Path(page).read_text()), Path(made).read_text().splitlines()))
    for line in sorted(in_build - in_page):
        print(f"{page} does not have: {line}")
    for line in sorted(in_page - in_build):
        print(f"{page} has, and the build has not: {line}")
    return in_page != in_build or not in_build


sys.exit(main(*sys.argv[1:]))
