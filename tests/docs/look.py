"""Looks at the page on performance in a browser, on light and on dark ground, and keeps what it sees as pictures.

    look.py TOP BUILD PICTURES
"""

import collections
import importlib.util
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from pages import made_site

SKIPPED = 77
BROWSER = "firefox-esr"
WIDTH, HEIGHT = 1200, 3000
# What a page is told that its reader prefers.
GROUNDS = {"light": 1, "dark": 0}


def look(page, picture, preference, folder):
    profile = folder / picture.stem
    profile.mkdir()
    settings = {"layout.css.prefers-color-scheme.content-override": preference, "browser.theme.content-theme": preference,
                "ui.systemUsesDarkTheme": 1 - preference}
    (profile / "user.js").write_text("".join(f'user_pref("{name}", {value});\n' for name, value in settings.items()),
                                     encoding="ascii")
    run = subprocess.run([BROWSER, "--headless", "--no-remote", "--profile", profile, "--screenshot", picture, "--window-size",
                          f"{WIDTH},{HEIGHT}", page.as_uri()], env=os.environ | {"HOME": str(folder)}, text=True,
                         timeout=100, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return run.stdout if run.returncode or not picture.exists() else ""


def colours_of(picture):
    """How many points of each colour are in it, of every third line and column; its width and height."""
    from PyQt5.QtGui import QImage  # pylint: disable=import-outside-toplevel
    image = QImage(str(picture))
    count = collections.Counter(image.pixel(x, y) & 0xFFFFFF for y in range(0, image.height(), 3)
                                for x in range(0, image.width(), 3))
    return count, image.width(), image.height()


def brightness(colour):
    return (colour >> 16) + (colour >> 8 & 255) + (colour & 255)


def problems_of(ground, picture):
    count, width, height = colours_of(picture)
    problems = [] if (width, height) >= (WIDTH, HEIGHT) else [f"{ground}: {width} x {height} points"]
    if len(count) < 50:
        problems.append(f"{ground}: {len(count)} colours; the page is blank")
    most = brightness(count.most_common(1)[0][0])
    if (most > 3 * 128) != (ground == "light"):
        problems.append(f"{ground}: the ground is {most // 3} of 255 bright")
    # The bars of the pictures.
    if count[0x4477AA] < 500:
        problems.append(f"{ground}: the pictures are not to be seen")
    return problems


def main():
    top, build, kept = (Path(word).resolve() for word in sys.argv[1:])
    missing = [name for name in (BROWSER, "mkdocs") if not shutil.which(name)]
    if importlib.util.find_spec("PyQt5") is None:
        missing.append("python3-pyqt5")
    if missing:
        print("Debian's " + ", ".join(missing) + " is not installed")
        return SKIPPED
    kept.mkdir(parents=True, exist_ok=True)
    problems = []
    with tempfile.TemporaryDirectory(prefix="zmfb-look-") as name:
        folder = Path(name).resolve()
        problems += made_site(top, build, folder)
        for ground, preference in GROUNDS.items():
            picture = kept / f"performance-{ground}.png"
            picture.unlink(missing_ok=True)
            said = look(folder / "site/docs/performance.html", picture, preference, folder)
            problems += [f"{BROWSER}: {said}"] if said else problems_of(ground, picture)
            print(picture)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
