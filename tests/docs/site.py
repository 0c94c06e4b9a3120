"""Makes the site of the pages as they are installed, and follows every link in it.

    site.py TOP BUILD

No warning of mkdocs, every link and picture leads to a file and its anchor, and blocks of code and lists come out as such.
"""

import shutil
import sys
import tempfile
from html.parser import HTMLParser
from pathlib import Path

from links import is_elsewhere
from pages import Page, made_site

SKIPPED = 77


class Html(HTMLParser):
    """One page of the site: what it links to, what in it can be linked to, and what was read as text by mistake."""

    def __init__(self, path):
        super().__init__()
        self.targets, self.ids, self.blocks, self.mistaken, self.open = [], set(), 0, [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.targets += [values[name] for name in ("href", "src") if values.get(name)]
        self.ids.update([values["id"]] if "id" in values else [])
        self.blocks += tag == "pre"
        self.open.append(tag)

    def handle_endtag(self, tag):
        while self.open and self.open.pop() != tag:
            pass

    def handle_data(self, data):
        if "pre" not in self.open and any(line.startswith(("- ", "* ", "| ", "```")) for line in data.splitlines()):
            self.mistaken.append(data.strip())


def html_of(page):
    return page.with_name("index.html") if page.stem == "README" else page.with_suffix(".html")


def check(folder):
    """(what is wrong, how many links were followed)."""
    site, problems, count = folder / "site", [], 0
    pages = {path: Html(path) for path in site.rglob("*.html")}
    for source in (folder / "pages").rglob("*.md"):
        path = site / html_of(source.relative_to(folder / "pages"))
        if path not in pages:
            problems.append(f"{source.name} is not in the site")
        elif pages[path].blocks < len(Page(source).blocks):
            problems.append(f"{path.relative_to(site)}: {pages[path].blocks} of {len(Page(source).blocks)} blocks of code")
    for path, page in pages.items():
        name = path.relative_to(site)
        problems += [f"{name}: read as text: {text}" for text in page.mistaken]
        for target in filter(lambda target: not is_elsewhere(target), page.targets):
            count += 1
            file, _, anchor = target.partition("#")
            there = (path.parent / file).resolve() if file else path
            if not there.is_file():
                problems.append(f"{name}: there is no {target}")
            elif anchor and anchor not in pages[there].ids:
                problems.append(f"{name}: {file} has no #{anchor}")
    return problems, count


def main():
    top, build = (Path(word).resolve() for word in sys.argv[1:])
    if not shutil.which("mkdocs"):
        print("mkdocs is missing")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="zmfb-site-") as name:
        folder = Path(name).resolve()
        problems = made_site(top, build, folder)
        found, count = check(folder)
        problems += found
    for problem in problems:
        print(problem)
    print(f"{count} links followed, {len(problems)} problems")
    return 1 if problems or not count else 0


if __name__ == "__main__":
    sys.exit(main())
