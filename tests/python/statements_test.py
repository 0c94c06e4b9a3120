"""Values into statements and out of rows again; what is kept and what is rolled back."""

import decimal
import gc
import unittest
from datetime import date, datetime, time, timezone
from decimal import Decimal

import zmfbconn
from fresh import Fresh

# A column of each kind, and values that come back as they went in.
KINDS = [
    ("smallint", [0, -32768, 32767]),
    ("bigint", [-2**63, 2**63 - 1]),
    ("numeric(18, 2)", [Decimal("-0.05"), Decimal("92233720368547758.07")]),
    ("double precision", [0.1, -1e300]),
    ("boolean", [True, False]),
    ("varchar(20)", ["Anné", "", "a\0b"]),
    ("varchar(8) character set utf8", ["€ 5"]),
    ("varchar(8) character set octets", [b"a\0\xff", b""]),
    ("date", [date(2007, 3, 1), date(1, 1, 1), date(9999, 12, 31)]),
    ("time", [time(0), time(23, 59, 59, 999900)]),
    ("timestamp", [datetime(2007, 3, 1, 14, 5, 9, 123400), datetime(1500, 1, 1)]),
    ("blob sub_type text", ["été" * 30000, ""]),
    ("blob", [bytes(range(256)) * 300, b""]),
]


class Values(Fresh):
    def test_of_each_kind_come_back_as_they_went_in(self):
        for number, (kind, values) in enumerate(KINDS):
            self.create(f"create table T{number} (I integer, V {kind})")
            with self.connection.transaction() as work:
                insert = work.prepare(f"insert into T{number} values (?, ?)")
                for index, value in enumerate([None, *values]):
                    self.assertEqual(insert.execute(index, value), 1)
            read = [value for (value,) in self.rows(f"select V from T{number} order by I")]
            with self.subTest(kind):
                self.assertEqual(read, [None, *values])
                self.assertEqual([type(value) for value in read[1:]], [type(value) for value in values])

    def test_keep_all_digits_whatever_the_context_is(self):
        with decimal.localcontext() as context:
            context.prec = 3
            self.create("create table T (V numeric(18, 4))")
            with self.connection.transaction() as work:
                work.execute("insert into T values (?)", Decimal("12345678901234.5678"))
            self.assertEqual(str(self.rows("select V from T")[0][0]), "12345678901234.5678")

    def test_that_need_no_more_decimals_than_the_column_has_fit(self):
        self.create("create table T (V numeric(18, 2))")
        with self.connection.transaction() as work:
            insert = work.prepare("insert into T values (?)")
            for text in ["1.500000000000000000000", "1E+3", "0E-40", "-0", "7"]:
                insert.execute(Decimal(text))
        self.assertEqual(self.rows("select V from T"), [(Decimal(n),) for n in ["1.50", "1000", "0", "0", "7"]])

    def test_that_a_column_does_not_hold_are_refused(self):
        self.create("create table T (N numeric(9, 2), S varchar(3), M timestamp, C time, R double precision)")
        zone = datetime(2007, 3, 1, tzinfo=timezone.utc)
        refused = [
            ("N", Decimal("0.005"), "22003"), ("N", 2**63, "22003"), ("N", Decimal("1E+900000"), "22003"),
            ("N", Decimal("NaN"), "22003"), ("N", Decimal("-Infinity"), "22003"), ("N", 99999999, "22003"),
            ("N", 0.5, "07006"), ("N", "1", "07006"), ("S", "four", "22001"), ("S", "€", "22021"), ("S", b"a", "07006"),
            ("M", datetime(2007, 3, 1, 0, 0, 0, 1), "22007"), ("M", zone, "22007"), ("C", time(0, 0, 0, 50), "22007"),
            ("R", Decimal("0.1"), "07006"),
        ]
        with self.connection.transaction() as work:
            for column, value, state in refused:
                with self.subTest(value=value):
                    self.failure(state, work.execute, f"update T set {column} = ?", value)
            with self.assertRaises(TypeError):
                work.execute("update T set S = ?", {})

    def test_of_the_wrong_number_are_refused(self):
        with self.connection.transaction() as work:
            statement = work.prepare("select 1 from rdb$database where 1 = ? and 2 = ?")
            self.assertEqual(list(statement.query(1, 2)), [(1,)])
            for values in [(), (1,), (1, 2, 3)]:
                self.failure("07001", statement.query, *values)

    def test_of_types_that_are_not_read_can_still_be_null(self):
        self.create("create table T (V integer [3])")
        with self.connection.transaction() as work:
            work.execute("insert into T values (null)")
            self.assertEqual(list(work.query("select V from T")), [(None,)])

    def test_null_where_none_can_be_fails(self):
        self.create("create table T (V integer not null)")
        with self.connection.transaction() as work:
            error = self.failure("23000", work.execute, "insert into T values (?)", None)
        self.assertEqual(error.sqlcode, -625)
        self.assertIn('"T"."V"', error.text)
        self.assertIn("insert into T values (?)", str(error))

    def test_are_in_the_encoding_that_is_named(self):
        self.connection.set_database_encoding("CP1252")
        self.create("create table T (V varchar(3))")
        with self.connection.transaction() as work:
            work.execute("insert into T values (?)", "€")
        self.assertEqual(self.rows("select V, octet_length(V) from T"), [("€", 1)])
        with self.assertRaises(zmfbconn.Error):
            self.connection.set_database_encoding("no such set")


class Rows(Fresh):
    COUNT = "select N from (select 1 as N from rdb$database union all select 2 from rdb$database)"

    def test_have_the_names_of_their_columns(self):
        with self.connection.transaction() as work:
            self.assertEqual(work.query("select 1 as \"one\", 2 as TWO from rdb$database").columns, ("one", "TWO"))

    def test_that_break_off_half_way_raise(self):
        with self.connection.transaction() as work:
            rows = work.query(f"select 10 / (2 - N) from ({self.COUNT})")
            self.assertEqual(next(rows), (10,))
            self.assertEqual(self.failure("22012", next, rows).sqlcode, -802)
            self.failure("24000", next, rows)

    def test_of_an_earlier_run_are_given_up(self):
        with self.connection.transaction() as work:
            query = work.prepare(self.COUNT)
            earlier = query.query()
            self.assertEqual(list(query.query()), [(1,), (2,)])
            self.failure("24000", next, earlier)

    def test_end_with_their_transaction(self):
        with self.connection.transaction() as work:
            rows = work.query(self.COUNT)
            next(rows)
        self.failure("24000", next, rows)

    def test_keep_their_statement_and_transaction(self):
        rows = self.connection.transaction().query(self.COUNT)
        gc.collect()
        self.assertEqual(list(rows), [(1,), (2,)])

    def test_come_of_returning(self):
        self.create("create table T (V integer)")
        with self.connection.transaction() as work:
            self.assertEqual(list(work.query("insert into T values (?) returning V + 1", 41)), [(42,)])
            self.failure("07005", work.query, "insert into T values (1)")


class Transactions(Fresh):
    def setUp(self):
        super().setUp()
        self.create("create table T (V integer)")

    def count(self):
        return self.rows("select count(*) from T")[0][0]

    def test_commit_at_the_end_of_with(self):
        with self.connection.transaction() as work:
            self.assertEqual(work.execute("insert into T values (1)"), 1)
            self.assertEqual(work.execute("update T set V = V + 1"), 1)
            self.assertEqual(work.execute("delete from T where V = 9"), 0)
        self.assertEqual(self.rows("select V from T"), [(2,)])

    def test_roll_back_by_an_exception_which_goes_on(self):
        with self.assertRaises(KeyError):
            with self.connection.transaction() as work:
                work.execute("insert into T values (1)")
                raise KeyError
        self.failure("25000", work.commit)
        self.assertEqual(self.count(), 0)

    def test_may_end_before_with_does(self):
        with self.connection.transaction() as work:
            work.execute("insert into T values (1)")
            work.commit()
        with self.connection.transaction() as work:
            work.execute("insert into T values (2)")
            work.roll_back()
        self.assertEqual(self.rows("select V from T"), [(1,)])

    def test_roll_back_when_they_go(self):
        work = self.connection.transaction()
        work.execute("insert into T values (1)")
        del work
        self.assertEqual(self.count(), 0)

    def test_that_only_read_change_nothing(self):
        with self.connection.transaction(read_only=True) as work:
            self.failure("42000", work.execute, "insert into T values (1)")

    def test_end_with_their_connection(self):
        other = zmfbconn.connect(self.database, "SYSDBA")
        work = other.transaction()
        insert = work.prepare("insert into T values (?)")
        insert.execute(1)
        other.close()
        self.failure("25000", insert.execute, 2)
        self.failure("25000", work.commit)
        self.assertEqual(self.count(), 0)

    def test_are_refused_on_what_is_not_attached(self):
        self.connection.call("disconnect")
        self.failure("08003", self.connection.transaction)


if __name__ == "__main__":
    unittest.main()
