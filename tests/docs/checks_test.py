"""Tests of the checks themselves: that each finds what it is there to find."""

import tempfile
import unittest
from pathlib import Path

import commands
import headers
import links
import methods
import output
from pages import Block, Page, anchor


def tree(files):
    """A temporary folder with the files; the caller cleans it up."""
    folder = tempfile.TemporaryDirectory()
    for name, text in files.items():
        path = Path(folder.name) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
    return folder


class Pages(unittest.TestCase):
    def test_anchor_is_lower_case_without_punctuation(self):
        self.assertEqual(anchor("A server, `embedded` & more"), "a-server-embedded--more")

    def test_repeated_heading_gets_a_number(self):
        self.assertEqual(Page("x.md", "# A\n# A\n").anchors(), {"a", "a-1"})

    def test_code_has_no_links_and_no_headings(self):
        page = Page("x.md", "```\n# no\n[no](no.md)\n```\n`[no](no.md)` [yes](yes.md)\n")
        self.assertEqual(list(page.links()), [(5, "yes.md")])
        self.assertEqual(page.anchors(), set())

    def test_link_over_a_link_text_with_brackets(self):
        self.assertEqual(list(Page("x.md", "[a [b] c](d.md#e)").links()), [(1, "d.md#e")])


class Links(unittest.TestCase):
    def problems(self, files):
        with tree(files) as folder:
            return links.check(folder)[0]

    def test_good_pages(self):
        self.assertEqual(self.problems({"README.md": "[i](docs/README.md#index)", "docs/a.md": "# A",
                                        "docs/README.md": "# Index\n[a](a.md#a) [w](https://example.org)"}), [])

    def test_missing_file(self):
        self.assertEqual(self.problems({"docs/README.md": "[a](a.md)"}), ["docs/README.md:1: there is no a.md"])

    def test_missing_anchor(self):
        self.assertEqual(self.problems({"docs/README.md": "# A\n[a](#b)"}),
                         ["docs/README.md:2: README.md has no heading #b"])

    def test_page_that_nothing_leads_to(self):
        self.assertEqual(self.problems({"docs/README.md": "# A", "docs/b/c.md": "# C"}),
                         ["docs/b/c.md: no way leads here from docs/README.md"])

    def test_named_path_that_is_not_there(self):
        self.assertEqual(self.problems({"docs/README.md": "# A\nSee docs/b.md and examples/c/."}),
                         ["docs/README.md:2: there is no docs/b.md", "docs/README.md:2: there is no examples/c"])

    def test_open_code_block(self):
        self.assertEqual(self.problems({"docs/README.md": "# A\n```\n"}),
                         ["docs/README.md: a code block has no end"])


class Headers(unittest.TestCase):
    def problems(self, files):
        with tree(files) as folder:
            return headers.check(folder)[0]

    def test_function_that_is_there(self):
        self.assertEqual(self.problems({"host/a.h": "/// see b()\nint c();  // as a()\n", "host/a.cpp": "int a() { b(); }"}), [])

    def test_function_that_is_not_there(self):
        self.assertEqual(self.problems({"host/a.h": "int a();\n/// FERROR(), and b() as a() has it\n",
                                        "host/a.cpp": "// b()", "build/x/b.cpp": "int b();"}),
                         ["host/a.h:2: there is no b()"])


class Output(unittest.TestCase):
    def test_same_lines(self):
        self.assertTrue(output.matches(["a  b"], ["a b"]))
        self.assertFalse(output.matches(["a"], ["b"]))
        self.assertFalse(output.matches(["a"], ["a", "b"]))
        self.assertFalse(output.matches(["a", "b"], ["a"]))

    def test_dots_stand_for_text_and_for_lines(self):
        self.assertTrue(output.matches(["took ... s"], ["took 0.31 s"]))
        self.assertFalse(output.matches(["took ... s"], ["took 0.31"]))
        self.assertTrue(output.matches(["a", "...", "d"], ["a", "b", "c", "d"]))
        self.assertTrue(output.matches(["a", "..."], ["a"]))
        self.assertFalse(output.matches(["a", "...", "d"], ["a", "b"]))

    def test_varying_word_is_the_same_everywhere(self):
        bound = {}
        self.assertTrue(output.matches(["x:4242:y", "4242"], ["x:7:y", "7"], ["4242"], bound))
        self.assertEqual(bound, {"4242": "7"})
        self.assertFalse(output.matches(["4242"], ["8"], ["4242"], bound))

    def test_columns_may_follow_a_varying_word(self):
        self.assertTrue(output.matches(["area  process", "----  -------", "A1       4242"],
                                       ["area   process", "-----  --------", "A1     12345678"], ["4242"]))


class Commands(unittest.TestCase):
    def walk(self, text):
        walk = commands.Walk(Page("x.md", text), ".", ".", "zmfb")
        return walk.run()

    def test_good_page(self):
        self.assertEqual(self.walk("```console\n$ echo a; cd /; x=3\na\n$ pwd; echo $x\n/\n3\n```"), [])

    def test_other_output(self):
        self.assertEqual(len(self.walk("```console\n$ echo a\nb\n```")), 1)

    def test_unshown_output(self):
        self.assertEqual(len(self.walk("```console\n$ echo a\n```")), 1)

    def test_failure_that_is_not_shown(self):
        self.assertEqual(len(self.walk("```console\n$ false\n```")), 1)
        self.assertEqual(self.walk("```console\n$ echo 'error: no'; false\nerror: no\n$ echo $?\n1\n```"), [])

    def test_terminals_are_apart(self):
        self.assertEqual(self.walk("```console a\n$ x=1\n```\n```console b\n$ echo \"<$x>\"\n<>\n```"), [])

    def test_command_in_a_block_that_is_not_run(self):
        self.assertEqual(len(self.walk("```sh\nzmfb tables\n```")), 1)

    def test_command_of_several_lines(self):
        block = Block(["console"], 1, ["$ cat <<END", "> a", "> END", "a"])
        self.assertEqual([(step.command, step.shown) for step in commands.steps_of(block)],
                         [("cat <<END\na\nEND", ["a"])])


class Methods(unittest.TestCase):
    ROW = {"name": "istable", "kind": "exported", "signature": "istable(tbl: table): logical",
           "help": "Whether it is there"}
    TEXT = """# Page
## Family
### istable

`istable(tbl: table): logical` · exported

Whether it is there. More.

- **Parameters:** `tbl`: the
  table.
- **Result:** logical.
- **Logs:** `[A] Text: ...`.
- **Raises:** nothing.
"""

    def entries(self, *changes):
        text = self.TEXT
        for old, new in changes:
            self.assertIn(old, text)
            text = text.replace(old, new)
        return methods.entries_of(Page("catalog.md", text), "catalog")

    def table(self, *changes):
        return methods.check_table(self.entries(*changes), [self.ROW])

    def test_good_entry(self):
        self.assertEqual(self.table(), [])

    def test_row_without_entry_and_entry_without_row(self):
        self.assertEqual(len(self.table(("### istable", "### isother"))), 2)

    def test_entry_twice(self):
        entries = self.entries() + self.entries()
        self.assertEqual(len(methods.check_table(entries, [self.ROW])), 1)

    def test_what_does_not_agree_with_the_row(self):
        for old, new in (("(tbl: table)", "(tbl: table, more: text)"), (": table", ": text"), ("): logical", "): text"), ("exported", "protected"), ("it is there", "it is here"),
                         ("`istable(", "`isother("), ("`tbl`: ", "`name`: ")):
            self.assertNotEqual(self.table((old, new)), [], new)

    def test_fields_that_are_empty_unknown_twice_or_in_another_order(self):
        for old, new in (("logical.", ""), ("**Logs", "**Says"), ("**Logs", "**Result"), ("**Logs", "**SQL")):
            self.assertNotEqual(self.table((old, new)), [], new)

    def test_fields_may_be_left_out_but_for_parameters_that_there_are(self):
        self.assertEqual(self.table(("- **Logs:** `[A] Text: ...`.\n", ""), ("- **Raises:** nothing.\n", "")), [])
        self.assertNotEqual(self.table(("- **Parameters:** `tbl`: the\n  table.\n", "")), [])

    def messages(self, source, *changes):
        sources = {page: {} for page in methods.FOLDERS}
        sources["catalog"] = {"a.cpp": source}
        return methods.check_messages(self.entries(*changes), sources)

    def test_quoted_messages_are_in_the_sources_and_the_other_way_round(self):
        good = 'call(self, "writelog", "[A] Text: " + x, 5);'
        self.assertEqual(self.messages(good), [])
        self.assertEqual(len(self.messages(good, ("Text:", "Test:"))), 2)
        self.assertEqual(len(self.messages(good + 'raiseerror("No; way: " + x);')), 1)
        self.assertEqual(len(self.messages(good + 'constexpr auto a = "Não"_l1;')), 1)

    SQL = ("## What becomes SQL\n\n| methods | as SQL | in quotes |\n|---|---|---|\n| `istable`, `isother` |  | `tbl` |\n"
           "\n## Next\n\n| `istable` | `x` |  |\n")

    def test_what_becomes_sql_is_the_same_in_the_table(self):
        table = methods.sql_table(Page("security.md", self.SQL))
        self.assertEqual(table, {"istable": ([], ["tbl"]), "isother": ([], ["tbl"])})
        line = "- **Result:** logical.\n", "- **SQL:** in quotes: `tbl`.\n- **Result:** logical.\n"
        del table["isother"]
        self.assertEqual(methods.check_sql(self.entries(line), table), [])
        self.assertEqual(self.table(line), [])
        self.assertEqual(len(methods.check_sql(self.entries(), table)), 2)
        self.assertEqual(len(methods.check_sql(self.entries(line), {})), 1)
        self.assertEqual(len(methods.check_sql(self.entries((line[0], line[1].replace("in quotes: ", ""))), table)), 1)

    def test_every_parameter_is_told_of(self):
        row = self.ROW | {"signature": "istable(tbl: table, [more: text]): logical"}
        entries = self.entries(("istable(tbl: table): logical", row["signature"]))
        self.assertEqual(methods.check_table(entries, [row]), ["catalog.md:3: istable: does not tell of the parameter more"])

    def test_parameter_may_be_told_of_before_the_entries_of_its_page(self):
        change = ("- **Parameters:** `tbl`: the\n  table.\n", "")
        self.assertNotEqual(self.table(change), [])
        told = methods.entries_of(Page("catalog.md", "# Page\n\n- `tbl`: the table.\n\n" + self.TEXT.replace(*change)), "catalog")
        self.assertEqual(methods.check_table(told, [self.ROW]), [])

    def test_declaration_of_another_page_or_name(self):
        headers = {page: "" for page in methods.FOLDERS}
        self.assertEqual(len(methods.check_declarations(self.entries(), headers)), 1)
        headers["catalog"] = 'inline constexpr Method<bool(TableName)> istabel{\n    "istable", {"tbl"}, "Whether"};'
        self.assertEqual(methods.check_declarations(self.entries(), headers), ["catalog.h: istabel declares istable"])
        headers["catalog"] = headers["catalog"].replace("istabel", "istable")
        self.assertEqual(methods.check_declarations(self.entries(), headers), [])


if __name__ == "__main__":
    unittest.main()
