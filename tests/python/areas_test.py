"""Work areas by the operations of the language."""

import unittest
from datetime import date

import zmfbconn
from fresh import Fresh
from zmfbconn import areas


class Areas(Fresh):
    def setUp(self):
        super().setUp()
        self.connection.call("createtable", "people", [["name", "C", 10, 0], ["born", "D", 8, 0], ["credit", "N", 12, 2],
                                                       ["visits", "N", 6, 0], ["paid", "L", 1, 0]])
        self.connection.call("setibrdd")
        self.use("people")

    def use(self, alias, shared=True):
        areas.dbusearea(True, None, "people", alias, shared)

    def add(self, *values):
        """Appends a record, and keeps its lock."""
        areas.dbappend(False)
        for field, value in enumerate(values, 1):
            areas.fieldput(field, value)

    def test_have_the_operations_as_functions(self):
        self.add("Anné", date(2007, 3, 1), -12.5, 3, True)
        areas.dbunlock()
        self.assertEqual([areas.fieldget(name) for name in ("NAME", "born", "credit", "visits", "paid")],
                         ["Anné      ", date(2007, 3, 1), -12.5, 3, True])
        self.assertEqual((areas.recno(), areas.eof(), areas.AliaS(), areas.dbskip()), (1, False, "PEOPLE", None))
        self.assertEqual((areas.eof(), areas.fieldget("born")), (True, None))
        self.assertEqual(self.rows("select name, credit from people"), [("Anné", -12.5)])

    def test_take_functions_as_blocks(self):
        for name in ("Anna", "Bo", "Cy"):
            self.add(name)
        names = []
        areas.dbeval(lambda: names.append(areas.fieldget("name").strip()), lambda: areas.recno() != 2)
        self.assertEqual(names, ["Anna", "Cy"])
        self.assertTrue(areas.call("__DBLOCATE", lambda: areas.fieldget("name").startswith("B")))
        self.assertEqual(areas.recno(), 2)
        with self.assertRaises(ZeroDivisionError):
            areas.dbeval(lambda: 1 / 0)

    def test_raise_what_cannot_be_done(self):
        self.add("Anna")
        areas.dbunlock()
        with self.assertRaises(zmfbconn.Error) as raised:
            areas.fieldput("name", "Bo")
        self.assertEqual(raised.exception.status, 6)
        with self.assertRaisesRegex(zmfbconn.Error, "no operation of work areas named dbfly"):
            areas.dbfly()
        with self.assertRaisesRegex(zmfbconn.Error, "DBSKIP takes 1"):
            areas.dbskip(1, 2)
        self.assertFalse(hasattr(areas, "__path__"))

    def test_tell_who_is_in_the_way(self):
        self.use("mine", shared=False)
        self.assertEqual((areas.used(), areas.neterr()), (False, True))
        self.assertIn("PEOPLE", areas.neterrholder())
        areas.dbcloseall()
        self.use("mine", shared=False)
        self.assertEqual((areas.used(), areas.neterr()), (True, False))

    def test_are_closed_with_their_connection(self):
        self.add("Anna")
        self.connection.close()
        self.assertFalse(areas.used())
        with zmfbconn.connect(self.database, "SYSDBA") as other, other.transaction(read_only=True) as work:
            self.assertEqual(list(work.query("select name from people")), [("Anna",)])
            self.assertEqual(list(work.query("select count(*) from rddsys_opn")), [(0,)])


if __name__ == "__main__":
    unittest.main()
