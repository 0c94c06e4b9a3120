"""A new database for each test, in the scratch folder that the test runs in."""

import itertools
import os
import unittest

import zmfbconn

numbers = itertools.count(1)


class Fresh(unittest.TestCase):
    def setUp(self):
        self.database = f"test-{next(numbers)}.fdb"
        zmfbconn.create_database(self.database, "SYSDBA")
        self.connection = zmfbconn.connect(self.database, "SYSDBA")

    def tearDown(self):
        self.connection.close()
        os.remove(self.database)

    def create(self, sql):
        with self.connection.transaction() as work:
            work.execute(sql)

    def rows(self, sql, *values):
        """All rows of a query in a transaction of its own."""
        with self.connection.transaction(read_only=True) as work:
            return list(work.query(sql, *values))

    def failure(self, sqlstate, function, *values):
        """The error that the call raises, which must be of this SQLSTATE."""
        with self.assertRaises(zmfbconn.Error) as raised:
            function(*values)
        self.assertEqual(raised.exception.sqlstate, sqlstate, raised.exception)
        return raised.exception
