"""zmfbconn in Python: connections with their methods by name; transactions, statements and rows; work areas.

    from decimal import Decimal
    import zmfbconn

    with zmfbconn.connect("shop.fdb", "SYSDBA") as connection:
        if connection.call("istable", "customers"):
            with connection.transaction() as work:  # committed at its end, rolled back by an exception
                work.execute("update customers set credit = ? where code = ?", Decimal("10.50"), 3)
                for name, credit in work.query("select name, credit from customers where credit > ?", 5):
                    print(name, credit)

What fails raises Error. Use it from one thread at a time. The library is libzmfbconn.so.2, or the file that the
environment variable ZMFB_LIBRARY names.
"""

from . import areas
from ._library import Error, lib, told
from ._objects import Block, Connection, Object, connect, create_database, install_functions, set_error_block
from ._statements import Rows, Statement, Transaction

__all__ = ["Block", "Connection", "Error", "Object", "Rows", "Statement", "Transaction", "areas", "connect",
           "create_database", "install_functions", "set_error_block"]
__version__ = told(lib.zmfb_version())
