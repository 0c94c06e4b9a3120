#!/usr/bin/env python3
"""Pictures of what was measured, one for each kind of work, and their lines in a document.

    bench/support/pictures.py FIGURES DOCUMENT     FIGURES is what bench.sh --json wrote

The pictures lie in the folder pictures/ beside the document. Each carries its figures as text, too."""
import importlib.util
import json
import math
import os
import re
import sys
from xml.etree import ElementTree

if __name__ == "__main__":
    sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))

from bench.support.document import replace_between

BEGIN = "<!-- pictures: written by bench.sh -->"
END = "<!-- end of pictures -->"
MET, MISSED, SPREAD, TARGET = "#4477aa", "#ee7733", "#222222", "#cc3311"
# On dark ground, what is drawn in black there is white.
DARK = """inline:@media (prefers-color-scheme: dark) {
.title, .legends .legend text, .axis text, .axis text.major { fill: #dddddd !important }
.axis .line, .axis .guide.line { stroke: #999999 !important }
.color-SPREAD { stroke: #eeeeee; fill: #eeeeee } }"""
GAP = (None, None)


def can_draw():
    return importlib.util.find_spec("pygal") is not None


def _chart(title, height, colours, **settings):
    import pygal  # pylint: disable=import-outside-toplevel
    style = pygal.style.Style(background="transparent", plot_background="transparent", colors=colours, opacity="1",
                              stroke_opacity="1", label_font_size=11, major_label_font_size=11, title_font_size=15)
    dark = DARK.replace("SPREAD", str(colours.index(SPREAD)))
    return pygal.XY(title=title, width=1000, height=height, style=style, js=[], no_prefix=True, show_dots=False,
                    allow_interruptions=True, legend_at_bottom=True, legend_at_bottom_columns=len(colours),
                    truncate_legend=-1, margin_right=40, css=["file://style.css", "file://graph.css", dark], **settings)


def _add(chart, name, width, lines):
    """Separate lines, each given by its two ends."""
    chart.add(name, [point for line in lines for point in (*line, GAP)], stroke_style={"width": width})


def _bars(title, rows):
    """A bar for each row from 0 to its ratio, under a heading for each piece of work; the first is at the top."""
    labels, headings, bars = [], [], []
    for row in rows:
        if not bars or row["what"] != bars[-1][1]["what"]:
            headings.append(-len(labels))
            labels.append({"value": -len(labels), "label": row["what"]})
        bars.append((-len(labels), row))
        labels.append({"value": -len(labels), "label": ", ".join(filter(None, (row["against"], row["where"])))})
    chart = _chart(title, 110 + 26 * len(labels), (MET, MISSED, SPREAD, TARGET), range=(0.4 - len(labels), 0.6),
                   y_labels=labels, y_labels_major=headings, show_y_guides=False)
    for name, missed in (("ours / theirs", False), ("target missed", True)):
        _add(chart, name, 14, [((0, place), (row["ratio"], place)) for place, row in bars
                               if (row["verdict"] == "missed") == missed])
    _add(chart, "spread", 3, [((min(row["ratios"]), place), (max(row["ratios"]), place)) for place, row in bars])
    _add(chart, "target", 3, [((row["limit"], place - 0.4), (row["limit"], place + 0.4)) for place, row in bars if row["limit"]])
    return chart


def _size(text):
    return int(re.search(r"\d[\d,]*", text).group().replace(",", ""))


def _growth(title, rows):
    """A line from the smallest size, which is 1, to the largest."""
    sizes = [_size(rows[0]["against"])] + [_size(row["what"]) for row in rows]
    at = [math.log10(size) for size in sizes]
    medians = [1] + [row["ratio"] for row in rows]
    chart = _chart(title, 360, (MET, SPREAD, TARGET), range=(0, max(max(row["ratios"]) for row in rows) * 1.1),
                   x_labels=[{"value": place, "label": f"{size:,} rows"} for place, size in zip(at, sizes)])
    _add(chart, "a row / a row of the smallest", 4, [list(zip(at, medians))])
    _add(chart, "spread", 3, [((place, min(row["ratios"])), (place, max(row["ratios"])))
                                           for place, row in zip(at[1:], rows)])
    _add(chart, "target", 3, [((before, row["limit"]), (place, row["limit"]))
                              for before, place, row in zip(at, at[1:], rows) if row["limit"]])
    return chart


def _text(row):
    where = f", {row['where']}" if row["where"] else ""
    target = f"; target: {row['target']}, {row['verdict']}" if row["target"] else ""
    return (f"{row['what']}{where}, against {row['against']}: {row['ratio']:.3f} "
            f"({min(row['ratios']):.2f} to {max(row['ratios']):.2f}){target}.")


def draw(kind, rows):
    """An SVG of one kind of work: no script in it, no date, and its figures as its description."""
    root = (_growth if kind == "growth" else _bars)(f"{kind}: the smaller, the better", rows).render_tree()
    for parent in list(root.iter()):
        for child in list(parent):
            if child.tag == "script" or not isinstance(child.tag, str):
                parent.remove(child)
    root.set("role", "img")
    root.attrib.pop("id", None)
    description = ElementTree.Element("desc")
    description.text = "\n".join(map(_text, rows))
    root.insert(0, description)
    return ElementTree.tostring(root, encoding="unicode") + "\n"


def _alt(kind, rows):
    missed = sum(row["verdict"] == "missed" for row in rows)
    ratios = [row["ratio"] for row in rows]
    return (f"{kind}: comparisons: {len(rows)}; ratios from {min(ratios):.2f} to {max(ratios):.2f}; targets missed: {missed}; "
            "the figures are in the table")


def write_into(document, figures):
    """Draws the kinds of work in `figures`, as --json writes them, beside a document, and names them between its marks."""
    kinds = {}
    for row in figures["rows"]:
        kinds.setdefault(row["kind"], []).append(row)
    folder = os.path.join(os.path.dirname(document), "pictures")
    os.makedirs(folder, exist_ok=True)
    lines = []
    for kind, rows in kinds.items():
        with open(os.path.join(folder, f"{kind}.svg"), "w", encoding="utf-8") as file:
            file.write(draw(kind, rows))
        lines.append(f"![{_alt(kind, rows)}](pictures/{kind}.svg)\n")
    replace_between(document, BEGIN, END, "\n".join(lines))


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as recorded:
        write_into(sys.argv[2], json.load(recorded))
