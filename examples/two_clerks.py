#!/usr/bin/env python3
"""Two clerks take orders at once, each in a process of its own, until the stock is sold: work areas in Python.

    two_clerks.py shop.fdb

The database is made, with customers, stock and orders. In the end the orders are held against what is left.
"""

import subprocess
import sys

import zmfbconn
from zmfbconn import areas

TABLES = {
    "customers": [["name", "C", 20, 0]],
    "stock": [["item", "C", 10, 0], ["onhand", "N", 6, 0]],
    "orders": [["customer", "N", 10, 0], ["item", "C", 10, 0], ["pieces", "N", 6, 0], ["clerk", "C", 10, 0]],
}
CLERKS, NAMES, ITEMS, PIECES = ("Ann", "Bob"), ("Smith", "O'Hara", "Brown"), ("bolts", "nails", "screws"), 50


def open_tables():
    """Opens the three tables shared, each in an area and an order of its own."""
    for table in TABLES:
        areas.dbusearea(True, None, table, table, True)
        if areas.neterr():
            sys.exit(f"{table} is in use by {areas.neterrholder()}")
    for table, order in (("customers", "name"), ("stock", "item")):
        areas.dbselectarea(table)
        areas.ordsetfocus(order)


def find(table, key):
    """Goes to the record of that key; its number."""
    areas.dbselectarea(table)
    if not areas.dbseek(key):
        raise LookupError(f"{key} is not in {table}")
    return areas.recno()


def take_order(name, item, pieces, clerk):
    """The number of the new order; None when there is not enough of the item."""
    customer = find("customers", f"{name.upper():20}")
    find("stock", f"{item:10}")
    if not areas.rlock(60):  # from here on the record is as it was read with the lock
        raise TimeoutError(areas.neterrholder())
    number, onhand = None, areas.fieldget("onhand")
    if onhand >= pieces:
        areas.fieldput("onhand", onhand - pieces)
        areas.dbselectarea("orders")
        areas.dbappend()
        number = areas.recno()
        for field, value in (("customer", customer), ("item", item), ("pieces", pieces), ("clerk", clerk)):
            areas.fieldput(field, value)
        areas.dbunlock()
        areas.dbselectarea("stock")
    areas.dbunlock()
    return number


def work(clerk):
    """Sells by threes as long as there is enough of anything, and looks whether the orders are there."""
    open_tables()
    numbers, sold = [], [0]
    while sold:
        tried = [take_order(NAMES[k].swapcase(), item, 3, clerk) for k, item in enumerate(ITEMS)]
        sold = [number for number in tried if number is not None]
        numbers += sold
    areas.dbselectarea("orders")
    for number in numbers:
        areas.dbgoto(number)
        if areas.fieldget("clerk").strip() != clerk:
            sys.exit(f"{clerk}: order {number} is another's")


def make_tables(connection):
    for table, structure in TABLES.items():
        connection.call("createtable", table, structure)
        areas.dbusearea(True, None, table, table, True)
    for table, order, key, records in (("customers", "name", "UPPER(NAME)", [[name] for name in NAMES]),
                                       ("stock", "item", "ITEM", [[item, PIECES] for item in ITEMS])):
        areas.dbselectarea(table)
        areas.ordcreate(order, key)
        for record in records:
            areas.dbappend()
            for field, value in enumerate(record, 1):
                areas.fieldput(field, value)
    areas.dbcloseall()


def total(table, field):
    """How many records a table has, and the sum of a field."""
    areas.dbselectarea(table)
    values = []
    areas.dbeval(lambda: values.append(areas.fieldget(field)))
    return len(values), sum(values)


def check():
    """Holds the orders against what is left."""
    open_tables()
    orders, sold = total("orders", "pieces")
    items, left = total("stock", "onhand")
    print(f"{orders} orders of {sold} pieces; {left} pieces are left of {PIECES * items}")
    print("the sums", "agree" if sold + left == PIECES * items else "differ")


def main(database, clerk=None):
    if clerk is None:
        zmfbconn.create_database(database, "SYSDBA")
    with zmfbconn.connect(database, "SYSDBA") as connection:
        connection.call("setibrdd")  # areas are on its tables
        if clerk is not None:
            return work(clerk)
        make_tables(connection)
        clerks = [subprocess.Popen([sys.executable, __file__, database, clerk]) for clerk in CLERKS]
        if any([process.wait() for process in clerks]):
            sys.exit("a clerk failed")
        check()


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit("usage: two_clerks.py DATABASE")
    main(*sys.argv[1:])
