"""Pictures of what was measured, one for each kind of work, and their lines in a document.

The pictures lie in the folder pictures/ beside the document. Each carries its figures as text, too."""
import importlib.util
import math
import os
import re
from xml.etree import ElementTree

from bench.support.document import replace_between

BEGIN = "<!-- pictures: written by bench.sh -->"
END = "<!-- end of pictures -->"
# Ground and texts, on light and on dark; what has a colour is to be seen on both.
LIGHT, LIGHT_TEXT = "#ffffff", "#222222"
DARK, DARK_TEXT = "#0d1117", "#dddddd"
MET, MISSED, TARGET, GUIDE = "#4477aa", "#d55e00", "#cc3311", "#7f7f7f"
LINES = ["#4477aa", "#d55e00", "#228833", "#aa3377", "#008f80", "#8c564b", "#7f7f7f", "#7a5fd0"]
DASHES = ["none", "8,3", "2,3", "12,3,2,3"]
CSS = f"""inline:.axis .line, .axis .guide.line, .axis .major.line {{ stroke: {GUIDE} !important }}
@media (prefers-color-scheme: dark) {{
.graph > .background, .plot > .background {{ fill: {DARK} !important }}
.title, .legends .legend text, .axis text, .axis text.major {{ fill: {DARK_TEXT} !important }}
.color-SPREAD {{ stroke: {DARK_TEXT} !important; fill: {DARK_TEXT} !important }} }}"""
GAP = (None, None)
SVG = "http://www.w3.org/2000/svg"


def can_draw():
    return importlib.util.find_spec("pygal") is not None


def _chart(title, height, colours, columns=4, **settings):
    import pygal  # pylint: disable=import-outside-toplevel
    style = pygal.style.Style(background=LIGHT, plot_background=LIGHT, foreground=LIGHT_TEXT, foreground_strong=LIGHT_TEXT,
                              foreground_subtle=LIGHT_TEXT, colors=colours, opacity="1", stroke_opacity="1",
                              label_font_size=11, major_label_font_size=11, title_font_size=15)
    css = CSS.replace("SPREAD", str(colours.index(LIGHT_TEXT)))
    return pygal.XY(title=title, width=1000, height=height, style=style, js=[], no_prefix=True, show_dots=False,
                    allow_interruptions=True, legend_at_bottom=True, legend_at_bottom_columns=columns,
                    truncate_legend=-1, margin_right=40, css=["file://style.css", "file://graph.css", css], **settings)


def _add(chart, name, width, lines, dashes="none"):
    """Separate lines, each given by its points."""
    chart.add(name, [point for line in lines for point in (*line, GAP)],
              stroke_style={"width": width, "dasharray": dashes})


def _bars(title, rows):
    """A bar for each row from 0 to its ratio, under a heading for each piece of work; the first is at the top."""
    labels, headings, bars = [], [], []
    for row in rows:
        if not bars or row["what"] != bars[-1][1]["what"]:
            headings.append(-len(labels))
            labels.append({"value": -len(labels), "label": row["what"]})
        bars.append((-len(labels), row))
        labels.append({"value": -len(labels), "label": ", ".join(filter(None, (row["against"], row["where"])))})
    chart = _chart(title, 110 + 26 * len(labels), (MET, MISSED, LIGHT_TEXT, TARGET), range=(0.4 - len(labels), 0.6),
                   y_labels=labels, y_labels_major=headings, show_y_guides=False)
    for name, missed in (("ours / theirs", False), ("target missed", True)):
        _add(chart, name, 14, [((0, place), (row["ratio"], place)) for place, row in bars
                               if (row["verdict"] == "missed") == missed])
    _add(chart, "spread", 3, [((min(row["ratios"]), place), (max(row["ratios"]), place)) for place, row in bars])
    _add(chart, "target", 3, [((row["limit"], place - 0.4), (row["limit"], place + 0.4)) for place, row in bars if row["limit"]])
    return chart


def _named_size(text):
    """What stands before the size in "zmfb import, a record: 10,000 records", and the size."""
    name, _, size = text.rpartition(": ")
    return name, int(re.search(r"\d[\d,]*", size).group().replace(",", ""))


def _growth(title, rows):
    """A line for each work, from its smallest size, which is 1, to the largest. Works stand a little beside each other."""
    lines, sizes = {}, {}
    for row in rows:
        name, smallest = _named_size(row["against"])
        _, size = _named_size(row["what"])
        line = lines.setdefault(name, [(math.log10(smallest) + 0.02 * len(lines), 1, 1, 1)])
        beside = line[0][0] - math.log10(smallest)
        line.append((math.log10(size) + beside, row["ratio"], min(row["ratios"]), max(row["ratios"])))
        sizes |= {number: f"{number:,}" for number in (smallest, size)}
    ends = [math.log10(min(sizes)), math.log10(max(sizes))]
    limits = sorted({row["limit"] for row in rows} - {None})
    chart = _chart(title, 500, (*LINES[:len(lines)], LIGHT_TEXT, TARGET), columns=3,
                   range=(0, max(*limits, *(max(row["ratios"]) for row in rows)) * 1.1),
                   x_labels=[{"value": math.log10(size), "label": label} for size, label in sorted(sizes.items())])
    for number, (name, line) in enumerate(lines.items()):
        _add(chart, name, 3, [[point[:2] for point in line]], DASHES[number % len(DASHES)])
    _add(chart, "spread", 2, [((place, least), (place, most)) for line in lines.values()
                              for place, _, least, most in line[1:]])
    _add(chart, "target", 2, [[(end, limit) for end in ends] for limit in limits])
    return chart


def _text(row):
    where = f", {row['where']}" if row["where"] else ""
    target = f"; target: {row['target']}, {row['verdict']}" if row["target"] else ""
    return (f"{row['what']}{where}, against {row['against']}: {row['ratio']:.3f} "
            f"({min(row['ratios']):.2f} to {max(row['ratios']):.2f}){target}.")


def draw(kind, rows):
    """An SVG of one kind of work: no script in it, no date, and its figures as its description."""
    # What parses the picture again is the same everywhere; pygal builds it with what happens to be installed.
    ElementTree.register_namespace("", SVG)
    root = ElementTree.fromstring((_growth if kind == "growth" else _bars)(f"{kind}: the smaller, the better", rows).render())
    for parent in list(root.iter()):
        for script in parent.findall(f"{{{SVG}}}script"):
            parent.remove(script)
    root.set("role", "img")
    root.attrib.pop("id", None)
    description = ElementTree.Element(f"{{{SVG}}}desc")
    description.text = "\n".join(map(_text, rows))
    root.insert(0, description)
    return ElementTree.tostring(root, encoding="unicode") + "\n"


def _alt(kind, rows):
    missed = sum(row["verdict"] == "missed" for row in rows)
    ratios = [row["ratio"] for row in rows]
    return (f"{kind}: comparisons: {len(rows)}; ratios from {min(ratios):.2f} to {max(ratios):.2f}; targets missed: {missed}; "
            "the figures are in the table")


def line_of(kind, rows):
    """The picture of a kind as a document shows it."""
    return f"![{_alt(kind, rows)}](pictures/{kind}.svg)"


def by_kind(measured):
    kinds = {}
    for row in measured["rows"]:
        kinds.setdefault(row["kind"], []).append(row)
    return kinds


def write_into(document, measured):
    """Draws the kinds of work beside a document, and names them between its marks."""
    folder = os.path.join(os.path.dirname(document), "pictures")
    os.makedirs(folder, exist_ok=True)
    kinds = by_kind(measured)
    for kind, rows in kinds.items():
        with open(os.path.join(folder, f"{kind}.svg"), "w", encoding="utf-8") as file:
            file.write(draw(kind, rows))
    replace_between(document, BEGIN, END, "\n\n".join(line_of(kind, rows) for kind, rows in kinds.items()))
