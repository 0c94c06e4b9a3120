"""Tests of the pictures of what was measured, drawn from a few recorded figures."""

import json
import re
import sys
import tempfile
import unittest
from pathlib import Path
from xml.etree import ElementTree

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP))

try:
    import pygal  # noqa: F401
except ModuleNotFoundError:
    print("pygal is missing: Debian's python3-pygal")
    sys.exit(77)

from bench.support import pictures, report  # noqa: E402
from bench.support.measure import Row, Target  # noqa: E402

FIGURES = json.loads((TOP / "tests/bench/figures.json").read_text(encoding="utf-8"))
SVG = "{http://www.w3.org/2000/svg}"


def rows_of(kind):
    return [row for row in FIGURES["rows"] if row["kind"] == kind]


def lines_of(svg, series):
    """The lines of one series, each as its points."""
    group = next(node for node in svg.iter(f"{SVG}g") if f"serie-{series} " in node.get("class", ""))
    return [[tuple(map(float, point)) for point in re.findall(r"(-?[\d.]+)[ ,](-?[\d.]+)", part)]
            for path in group.iter(f"{SVG}path") if "line" in path.get("class") for part in path.get("d").split("M")[1:]]


def contrast(one, other):
    """How much lighter the lighter of two colours is, as WCAG 2 counts it: 1 to 21."""
    def luminance(colour):
        parts = [int(colour[at:at + 2], 16) / 255 for at in (1, 3, 5)]
        return sum(weight * (part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4)
                   for weight, part in zip((0.2126, 0.7152, 0.0722), parts))
    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)


class Pictures(unittest.TestCase):
    def drawn(self, kind):
        return ElementTree.fromstring(pictures.draw(kind, rows_of(kind)))

    def test_bars_are_as_long_as_their_ratios(self):
        svg = self.drawn("select")
        [met], [missed] = lines_of(svg, 0), lines_of(svg, 1)
        length = [end[0] - begin[0] for begin, end in (met, missed)]
        self.assertAlmostEqual(length[1] / length[0], 1.2 / 0.6, places=3)
        self.assertLess(missed[0][1], met[0][1], "the first row is at the top")

    def test_spreads_and_targets_stand_where_the_figures_say(self):
        svg = self.drawn("select")
        [zero, end], = lines_of(svg, 0)
        place = {0.0: zero[0], 0.6: end[0]}
        scale = (place[0.6] - place[0.0]) / 0.6
        self.assertEqual([[round((x - zero[0]) / scale, 2) for x, _ in line] for line in lines_of(svg, 2)],
                         [[1.1, 1.3], [0.5, 0.7]])
        self.assertEqual([[round((x - zero[0]) / scale, 2) for x, _ in line] for line in lines_of(svg, 3)],
                         [[1.15, 1.15], [1.0, 1.0]])

    def test_a_target_that_is_no_ratio_is_not_drawn(self):
        self.assertEqual(lines_of(self.drawn("call"), 3), [])

    def test_what_is_measured_is_what_is_drawn(self):
        limits = {Target(at_most=1.1).limit(): 1.1, Target(times_faster=4).limit(): 0.25, Target(more=15).limit(): None}
        self.assertEqual(list(limits), list(limits.values()))
        rows = [Row("work", "TCP", "peer", [1.0, 2.0, 3.0], [2.0, 2.0, 2.0], Target(times_faster=1), kind="work")]
        figures = json.loads(json.dumps(report.figures(rows, {})))
        self.assertIn("work, TCP, against peer: 1.000 (0.50 to 1.50); target: faster, met.",
                      pictures.draw("work", figures["rows"]))

    def test_growth_is_a_line_for_each_work_from_its_smallest_size(self):
        svg = self.drawn("growth")
        [importing], [locking] = lines_of(svg, 0), lines_of(svg, 1)
        self.assertEqual([len(importing), len(locking)], [2, 2])
        unit = importing[0][1] - importing[1][1]
        self.assertAlmostEqual((locking[0][1] - locking[1][1]) / unit, 0.3 / 0.05, places=3)
        self.assertAlmostEqual((importing[1][0] - importing[0][0]) / (locking[1][0] - locking[0][0]), 2, places=3)
        texts = [node.text for node in svg.iter(f"{SVG}text")]
        for text in ("10", "100", "1,000", "import, a record", "lock, a record"):
            self.assertIn(text, texts)

    def test_the_figures_are_in_it_as_text(self):
        description = self.drawn("select").find(f"{SVG}desc").text
        self.assertEqual(description.splitlines(), [
            "reading of 100 rows, embedded, against bare client: 1.200 (1.10 to 1.30); target: at most 1.15 times, missed.",
            "reading of 100 rows, TCP, against a <peer>: 0.600 (0.50 to 0.70); target: faster, met."])

    def test_it_has_no_script_and_no_date(self):
        text = pictures.draw("select", rows_of("select"))
        self.assertNotIn("<script", text)
        self.assertNotIn("<!--", text)
        self.assertEqual(text, pictures.draw("select", rows_of("select")))

    def test_lines_and_texts_stand_out_on_light_and_on_dark_ground(self):
        for kind in ("select", "growth"):
            text = pictures.draw(kind, rows_of(kind))
            light, _, dark = text.partition("@media (prefers-color-scheme:dark)")
            for style, ground, texts in ((light, pictures.LIGHT, pictures.LIGHT_TEXT), (dark, pictures.DARK, pictures.DARK_TEXT)):
                self.assertIn(f".plot &gt; .background{{fill:{ground}", style)
                self.assertRegex(style, rf"\.title[^}}]*{{fill:{texts}")
                self.assertGreaterEqual(contrast(ground, texts), 4.5)
            lines = {int(number): colour for number, colour in re.findall(r"\.color-(\d+) a:visited{stroke:(#\w+)", light)}
            lines |= {"guide": re.search(r"\.major\.line{stroke:(#\w+) !important", text).group(1)}
            inverted = dict(re.findall(r"\.color-(\d+){stroke:(#\w+)", dark))
            for number, colour in lines.items():
                self.assertGreaterEqual(contrast(pictures.LIGHT, colour), 3, f"{kind}: {number}")
                self.assertGreaterEqual(contrast(pictures.DARK, inverted.get(str(number), colour)), 3, f"{kind}: {number}")

    def test_a_document_gets_a_line_for_each_kind_its_table_and_its_figures(self):
        with tempfile.TemporaryDirectory() as folder:
            document = Path(folder, "page.md")
            document.write_text(f"before\n{pictures.BEGIN}\nold\n{pictures.END}\nbetween\n{report.BEGIN}\nold\n{report.END}\n"
                                "after\n", encoding="utf-8")
            report.write_into(str(document), FIGURES)
            text = document.read_text(encoding="utf-8")
            self.assertTrue(text.startswith("before\n") and "\nbetween\n" in text and text.endswith("\nafter\n"))
            self.assertNotIn("old", text)
            self.assertIn("![select: comparisons: 2; ratios from 0.60 to 1.20; targets missed: 1; "
                          "the figures are in the table](pictures/select.svg)", text)
            self.assertIn("Written by `./bench.sh --quick`. runs: 3.", text)
            self.assertIn("| call by name |  | function pointer | 8.00 s ±12% | 1.00 s ±0% | 8.000 (7.00 to 9.00) |", text)
            self.assertEqual({path.name for path in Path(folder, "pictures").iterdir()},
                             {"select.svg", "call.svg", "growth.svg"})
            self.assertEqual(json.loads(Path(folder, "page.json").read_text(encoding="utf-8")), FIGURES)

    def test_a_document_without_marks_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            document = Path(folder, "page.md")
            document.write_text("nothing\n", encoding="utf-8")
            with self.assertRaises(SystemExit):
                report.write_into(str(document), FIGURES)


class PageOnPerformance(unittest.TestCase):
    """What it shows is what is kept beside it."""
    PAGE = TOP / "docs/performance.md"
    MEASURED = json.loads(Path(report.figures_of(PAGE)).read_text(encoding="utf-8"))

    def test_its_table_is_that_of_the_kept_figures(self):
        text = self.PAGE.read_text(encoding="utf-8")
        self.assertEqual(text.partition(report.BEGIN)[2].partition(report.END)[0].strip(), report.in_document(self.MEASURED))

    def test_its_pictures_are_those_of_the_kept_figures(self):
        text = self.PAGE.read_text(encoding="utf-8").partition(pictures.BEGIN)[2].partition(pictures.END)[0]
        kinds = pictures.by_kind(self.MEASURED)
        self.assertEqual(text.strip(), "\n\n".join(pictures.line_of(kind, rows) for kind, rows in kinds.items()))
        for kind, rows in kinds.items():
            drawn = (TOP / f"docs/pictures/{kind}.svg").read_text(encoding="utf-8")
            self.assertEqual(drawn, pictures.draw(kind, rows), kind)

    def test_no_other_table_on_it_has_ratios(self):
        text = self.PAGE.read_text(encoding="utf-8")
        before, _, rest = text.partition(report.BEGIN)
        others = before + rest.partition(report.END)[2]
        self.assertEqual([line for line in others.splitlines() if line.startswith("|") and "ratio" in line], [])


if __name__ == "__main__":
    unittest.main()
