"""docs/python.md: its programs run one after another, and print what the page says.

    page_test.py PAGE
"""

import contextlib
import io
import re
import sys
import unittest
from pathlib import Path

PAGE = sys.argv.pop()


class Page(unittest.TestCase):
    def test_shows_what_its_programs_print(self):
        blocks = re.findall(r"^```(\w*)\n(.*?)^```$", Path(PAGE).read_text(encoding="utf-8"), re.M | re.S)
        programs = [text for language, text in blocks if language == "python"]
        shown = [text for language, text in blocks if language == ""]
        self.assertEqual((len(programs), len(shown)), (3, 3))
        names = {}
        for program, expected in zip(programs, shown):
            with contextlib.redirect_stdout(io.StringIO()) as printed:
                exec(program, names)
            self.assertEqual(printed.getvalue(), expected)


if __name__ == "__main__":
    unittest.main()
