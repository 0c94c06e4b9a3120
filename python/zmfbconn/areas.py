"""Work areas by the operations of the language, under their names in lower case:

    from zmfbconn import areas

    connection.call("setibrdd")  # its tables from here on
    areas.dbusearea(True, None, "customers", "cust", True)
    areas.ordsetfocus("name")
    if areas.dbseek("SMITH") and areas.rlock(5):
        areas.fieldput("credit", 10.5)
        areas.dbunlock()

docs/work-areas.md has them all. Values are those of methods; what is left out at the end is NIL. What cannot be done
raises Error; only where another use of a table is in the way of dbusearea or dbappend, neterr() tells. Areas are the
process's, one of them the current one.
"""

from functools import partial

from ._library import ended, lib
from ._objects import run


def call(operation, *values):
    """Runs an operation by its name, in any case of letters: call("__dblocate", ...)."""
    return run(lambda *rest: lib.zmfb_call_area(ended(operation), *rest), values)


def __getattr__(operation):
    if operation.startswith("__"):
        raise AttributeError(operation)
    return partial(call, operation)
