#!/usr/bin/env python3
"""What people.c does, in Python, with the module zmfbconn.

    people.py people.fdb
"""

import sys
from datetime import date
from decimal import Decimal

import zmfbconn
from zmfbconn import areas

STRUCTURE = [["name", "C", 10, 0], ["born", "D", 8, 0], ["credit", "N", 12, 2]]


def add_people(connection):
    """Both or none: an exception would roll back."""
    with connection.transaction() as work:
        insert = work.prepare("insert into people (name, born, credit) values (?, ?, ?)")
        print(insert.execute("Anna", date(2007, 3, 1), Decimal("-12.50")), "added")
        print(insert.execute("Bo", None, 0), "added")


def print_people(connection, largest_credit):
    with connection.transaction(read_only=True) as work:
        for row in work.query("select name, cast(born as date), credit from people where credit <= ? order by name",
                              largest_credit):
            print(" | ".join("NULL" if value is None else str(value) for value in row))


def work_in_an_area(connection):
    """Finds Bo in any case of letters, changes him under a lock, and goes through all."""
    connection.call("setibrdd")  # areas are on its tables
    areas.dbusearea(True, None, "people", None, True)
    areas.ordcreate("name", "UPPER(NAME)")
    if areas.dbseek("BO") and areas.rlock():
        areas.fieldput("credit", 7.5)
        areas.dbunlock()
    areas.dbgotop()
    while not areas.eof():
        print(f"record {areas.recno()} has {areas.fieldget('credit'):.2f}")
        areas.dbskip()
    areas.dbclosearea()


def status_of(function, *values):
    try:
        function(*values)
    except zmfbconn.Error as error:
        return error.status, str(error)
    return 0, ""


def twice(number):
    if not isinstance(number, (int, float)):
        raise TypeError("no number")
    return 2 * number


def lend_a_block():
    block = zmfbconn.Block(twice)
    print("twice 21 is", block(21))
    try:
        print("twice a text is", block("no number"))
    except TypeError:
        print("twice a text: refused")
    text = zmfbconn.Block(lambda given: given)("a\0b")
    print("bytes:", text.encode("latin-1").hex(" "))


def tell(error):
    print("told:", error.get("description"))


def hear_of_errors(connection):
    print("without an error block: status {}, {}".format(*status_of(connection.call, "nosuch")))
    zmfbconn.set_error_block(tell)
    print("with one: status", status_of(connection.call, "nosuch")[0])
    zmfbconn.set_error_block(None)


def main():
    database = sys.argv[1]
    zmfbconn.create_database(database, "SYSDBA")
    with zmfbconn.connect(database, "SYSDBA") as connection:
        connection.call("createtable", "people", STRUCTURE)
        add_people(connection)
        print_people(connection, 0)
        work_in_an_area(connection)
        lend_a_block()
        hear_of_errors(connection)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: people.py DATABASE")
    main()
