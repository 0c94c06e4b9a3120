"""Connections, their methods, and values in and out of them."""

import math
import os
import pathlib
import unittest
from datetime import date, datetime
from decimal import Decimal

import zmfbconn
from fresh import Fresh


class Connections(Fresh):
    def test_close_at_the_end_of_with(self):
        with zmfbconn.connect(pathlib.Path(self.database), "SYSDBA") as other:
            self.assertEqual(other.get("sdbname"), self.database)
        with self.assertRaisesRegex(zmfbconn.Error, "closed"):
            other.call("isconnected")
        with self.assertRaisesRegex(zmfbconn.Error, "closed"):
            other.transaction()
        other.close()

    def test_to_what_is_not_there_are_refused_with_what_the_engine_says(self):
        with self.assertRaises(zmfbconn.Error) as raised:
            zmfbconn.connect("/nowhere/none.fdb", "SYSDBA")
        self.assertIn("/nowhere/none.fdb", str(raised.exception))

    def test_are_no_way_to_replace_a_file(self):
        with self.assertRaisesRegex(zmfbconn.Error, self.database):
            zmfbconn.create_database(self.database, "SYSDBA")

    def test_have_the_functions_that_are_put_into_their_database(self):
        query = "select count(*) from rdb$functions where rdb$module_name = 'zmrddudfs'"
        for functions, declared in [("module", 11), ("stored", 0), (None, 0)]:
            zmfbconn.install_functions(self.database, "SYSDBA", functions=functions)
            with self.connection.transaction(read_only=True) as work:
                self.assertEqual(list(work.query(query)), [(declared,)])
        with self.assertRaisesRegex(ValueError, "both"):
            zmfbconn.install_functions(self.database, "SYSDBA", functions="both")

    def test_take_no_text_with_a_zero_byte_where_it_would_end(self):
        for call in [lambda: zmfbconn.connect("a\0b"), lambda: self.connection.call("is\0table"),
                     lambda: self.connection.transaction().execute("delete from T\0 where A = 1")]:
            with self.assertRaises(ValueError):
                call()


class Methods(Fresh):
    STRUCTURE = [["name", "C", 10, 0], ["born", "D", 8, 0], ["credit", "N", 12, 2], ["paid", "L", 1, 0]]

    def test_make_tables_that_statements_fill(self):
        self.assertIs(self.connection.call("createtable", "people", self.STRUCTURE), True)
        self.assertIs(self.connection.call("istable", "nobody"), False)
        with self.connection.transaction() as work:
            work.execute("insert into people (name, born, credit, paid) values (?, ?, ?, ?)",
                         "Anné", date(2007, 3, 1), Decimal("-12.50"), True)
        self.assertEqual(self.rows("select name, born, credit, paid from people"),
                         [("Anné", datetime(2007, 3, 1), Decimal("-12.50"), "T")])
        self.assertEqual(self.connection.call("gettablereccount", "people"), 1)

    def test_that_are_none_raise(self):
        with self.assertRaisesRegex(zmfbconn.Error, "nosuch") as raised:
            self.connection.call("nosuch")
        self.assertEqual((raised.exception.status, raised.exception.sqlcode, raised.exception.sqlstate), (6, 0, ""))

    def test_go_on_with_what_the_error_block_returns(self):
        heard = []
        zmfbconn.set_error_block(lambda error: heard.append(error.get("description")) or "went on")
        try:
            self.connection.call("nosuch")
        finally:
            zmfbconn.set_error_block(None)
        self.assertEqual(len(heard), 1)
        self.assertIn("nosuch", heard[0])
        with self.assertRaises(zmfbconn.Error):
            self.connection.call("nosuch")

    def test_are_ended_by_what_the_error_block_raises(self):
        def block(error):
            raise LookupError("from the block")

        zmfbconn.set_error_block(block)
        try:
            with self.assertRaisesRegex(LookupError, "from the block"):
                self.connection.call("nosuch")
        finally:
            zmfbconn.set_error_block(None)


class Blocks(unittest.TestCase):
    """They give back what they get, as the library has it."""

    same = staticmethod(zmfbconn.Block(lambda *values: list(values)))

    def test_keep_values(self):
        values = [None, True, False, 0, -7, 2**53, 0.5, "Anné", "a\0b", "", date(2007, 3, 1), [], [1, ["two", [None]]]]
        got = self.same(*values)
        self.assertEqual(got, values)
        self.assertEqual([type(value) for value in got], [type(value) for value in values])

    def test_change_values_that_have_no_kind_of_their_own(self):
        self.assertEqual(self.same(b"\xe9", (1, 2), Decimal("1.50")), ["é", [1, 2], 1.5])

    def test_refuse_values_that_there_are_none_for(self):
        for value, error in [("€", UnicodeEncodeError), (2**53 + 1, OverflowError),
                             (Decimal("12345678901234567.89"), OverflowError), (math.inf, zmfbconn.Error),
                             (datetime(2007, 3, 1), TypeError), ({}, TypeError)]:
            with self.subTest(value=value), self.assertRaises(error):
                self.same(value)

    def test_are_passed_on(self):
        twice = zmfbconn.Block(lambda number: 2 * number)
        self.assertEqual(zmfbconn.Block(lambda block: block(21))(twice), 42)
        self.assertEqual(zmfbconn.Block(lambda block: block(4))(lambda number: number + 1), 5)

    def test_raise_what_their_function_raises(self):
        with self.assertRaises(ZeroDivisionError):
            zmfbconn.Block(lambda: 1 // 0)()
        with self.assertRaises(TypeError):
            zmfbconn.Block(lambda: None)(1)
        self.assertEqual(self.same(), [])

    def test_let_go_of_functions_that_nothing_names(self):
        from zmfbconn import _objects

        before = len(_objects._functions)
        blocks = [zmfbconn.Block(print) for _ in range(10)]
        self.assertEqual(len(_objects._functions), before + 10)
        blocks.clear()
        self.assertEqual(len(_objects._functions), before)


class Library(unittest.TestCase):
    def test_tells_its_version(self):
        self.assertRegex(zmfbconn.__version__, r"^\d+\.\d+\.\d+$")

    def test_that_is_missing_is_named(self):
        import subprocess
        import sys

        run = subprocess.run([sys.executable, "-B", "-c", "import zmfbconn"], text=True, capture_output=True,
                             env={**os.environ, "ZMFB_LIBRARY": "libnothing.so", "LD_PRELOAD": ""})
        self.assertEqual(run.returncode, 1)
        self.assertIn("ImportError: libnothing.so: cannot open", run.stderr)
        self.assertIn("ZMFB_LIBRARY", run.stderr)


if __name__ == "__main__":
    unittest.main()
