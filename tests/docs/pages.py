"""Reading the pages of the documentation: headings, links and code blocks."""

import os
import re
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

FENCE = re.compile(r"^ {0,3}(`{3,})\s*(.*)$")
HEADING = re.compile(r"^(#{1,6}) +(.*?) *#*$")
LINK = re.compile(r"(?<!\\)!?\[(?:[^\[\]]|\[[^\[\]]*\])*\]\(\s*<?([^()\s<>]+)>?\s*\)")
CODE = re.compile(r"(`+)(.+?)\1")
MENTION = re.compile(r"(?<![\w/.*<{-])(?:docs|examples)/[\w./-]*\w")


@dataclass
class Block:
    """A fenced code block: the words behind the fence, its lines, the number of its first line."""

    words: list[str]
    line: int
    lines: list[str] = field(default_factory=list)


class Page:
    """One page; `prose` holds (line number, text) of what is outside code blocks."""

    def __init__(self, path, text=None):
        self.path = Path(path)
        self.lines = (self.path.read_text(encoding="utf-8") if text is None else text).split("\n")
        self.blocks = []
        self.prose = []
        fence = None
        for number, line in enumerate(self.lines, 1):
            found = FENCE.match(line)
            if fence is None and found:
                fence = found.group(1)
                self.blocks.append(Block(found.group(2).split(), number + 1))
            elif fence is not None and found and found.group(1).startswith(fence) and not found.group(2):
                fence = None
            elif fence is not None:
                self.blocks[-1].lines.append(line)
            else:
                self.prose.append((number, line))
        self.unclosed = fence is not None

    def headings(self):
        """(line number, level, text) of every heading."""
        for number, line in self.prose:
            found = HEADING.match(line)
            if found:
                yield number, len(found.group(1)), found.group(2)

    def anchors(self):
        """What "#..." may name: the headings as hosts of repositories make anchors of them."""
        seen = {}
        names = set()
        for _, _, text in self.headings():
            name = anchor(text)
            count = seen.get(name, 0)
            seen[name] = count + 1
            names.add(name if count == 0 else f"{name}-{count}")
        return names

    def links(self):
        """(line number, target) of every link outside code."""
        for number, line in self.prose:
            for found in LINK.finditer(CODE.sub(lambda code: " " * len(code.group()), line)):
                yield number, found.group(1)

    def mentions(self):
        """(line number, path) of files of docs/ and examples/ that the text names without linking them."""
        for number, line in self.prose:
            for found in MENTION.finditer(LINK.sub("", line)):
                yield number, found.group()


def anchor(heading):
    text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "").strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def made_site(top, build, folder):
    """Makes the site of the pages as they are installed, in folder/site of those in folder/pages. Returns what mkdocs says."""
    subprocess.run(["cmake", "--install", build, "--component", "pages", "--prefix", folder / "prefix"], check=True,
                   stdout=subprocess.DEVNULL)
    (folder / "prefix/share/doc/zmfbconn").rename(folder / "pages")
    run = subprocess.run(["mkdocs", "build", "--quiet", "--strict", "-f", top / "packaging/site/mkdocs.yml", "-d",
                          folder / "site"], env=os.environ | {"ZMFB_PAGES": str(folder / "pages")}, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return run.stdout.splitlines() + ([f"mkdocs ends with {run.returncode}"] if run.returncode else [])
