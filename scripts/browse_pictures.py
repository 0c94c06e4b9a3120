#!/usr/bin/env python3
"""Draws the pictures of docs/browse.md from the program itself.

    scripts/browse_pictures.py ZMFB [FOLDER]    FOLDER is docs/pictures

zmfb runs in a window of tmux, on a database with the customers of examples/data; what is on its screen becomes an SVG.
Needs tmux and Debian's python3-rich."""
import os
import subprocess
import sys
import tempfile
import time

from rich.console import Console
from rich.terminal_theme import TerminalTheme
from rich.text import Text

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
COLUMNS, ROWS = 80, 20
THEME = TerminalTheme((255, 255, 255), (30, 30, 30), [
    (0, 0, 0), (176, 0, 0), (0, 110, 0), (160, 110, 0), (30, 60, 140), (130, 0, 130), (0, 120, 130), (230, 230, 230)])
# As rich draws it, without a frame and with a font of the reader's own.
FORMAT = """<svg viewBox="0 0 {terminal_width} {terminal_height}" xmlns="http://www.w3.org/2000/svg">
<style>.{unique_id}-matrix {{ font-family: monospace; font-size: {char_height}px; line-height: {line_height}px;
font-variant-east-asian: full-width }}
{styles}</style>
<defs><clipPath id="{unique_id}-clip-terminal"><rect x="0" y="0" width="{terminal_width}" height="{terminal_height}"/></clipPath>
{lines}</defs>
<rect width="{terminal_width}" height="{terminal_height}" fill="#ffffff" stroke="#999999"/>
{backgrounds}<g class="{unique_id}-matrix" xml:space="preserve">
{matrix}
</g></svg>
"""


class Terminal:
    def __init__(self, folder, command):
        self.socket = os.path.join(folder, "tmux")
        settings = os.path.join(folder, "tmux.conf")
        with open(settings, "w", encoding="utf-8") as file:
            file.write("set -g status off\nset -s escape-time 0\nset -g default-terminal tmux-256color\n")
        self._tmux("-f", settings, "-u", "new-session", "-d", "-x", str(COLUMNS), "-y", str(ROWS), command)

    def _tmux(self, *words):
        return subprocess.run(["tmux", "-S", self.socket, *words], check=True, capture_output=True, text=True).stdout

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._tmux("kill-server")

    def press(self, *keys):
        self._tmux("send-keys", *keys)

    def type(self, text):
        self._tmux("send-keys", "-l", text)

    def expect(self, text):
        until = time.monotonic() + 60
        while text not in self._tmux("capture-pane", "-p"):
            if time.monotonic() > until:
                raise SystemExit(f"{text!r} did not come; there is\n{self._tmux('capture-pane', '-p')}")
            time.sleep(0.02)

    def draw(self, path, title):
        console = Console(width=COLUMNS, record=True, file=open(os.devnull, "w", encoding="utf-8"), force_terminal=True,
                          color_system="truecolor", legacy_windows=False)
        for line in self._tmux("capture-pane", "-p", "-e", "-N").rstrip("\n").split("\n"):
            console.print(Text.from_ansi(line), no_wrap=True, crop=True)
        drawn = console.export_svg(title=title, theme=THEME, code_format=FORMAT, unique_id="screen")
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(line.rstrip() for line in drawn.split("\n")))


def main():
    tool = os.path.abspath(sys.argv[1])
    pictures = os.path.abspath(sys.argv[2]) if len(sys.argv) > 2 else os.path.join(TOP, "docs", "pictures")
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for words in (["create"], ["import", os.path.join(TOP, "examples", "data", "customers.dbf")]):
            subprocess.run([tool, "--db", "shop.fdb", *words], check=True, capture_output=True)
        with Terminal(folder, f"'{tool}' --db shop.fdb browse") as shown:
            shown.expect("row 1 of 4")
            shown.draw(os.path.join(pictures, "browse-tables.svg"), "zmfb browse")
            shown.press("Enter")
            shown.expect("row 1 of 10")
            shown.press("Down", "Down", "Right", "Right")
            shown.expect("CITY CHAR(16)")
            shown.draw(os.path.join(pictures, "browse-table.svg"), "zmfb browse customers")
            shown.press("f")
            shown.type("credit > 100 and active = 'T'")
            shown.press("Enter")
            shown.expect("row 1 of 3")
            shown.draw(os.path.join(pictures, "browse-filter.svg"), "a condition")
            shown.press("F1")
            shown.expect("lines 1 to")
            shown.draw(os.path.join(pictures, "browse-keys.svg"), "the keys")


if __name__ == "__main__":
    main()
