#!/usr/bin/env python3
"""The C interface from Python: what people.c does, with the standard library's ctypes.

    people.py people.fdb

The library is libzmfbconn.so.1, or the file that ZMFB_LIBRARY names.
"""

import ctypes
import os
import sys
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_size_t, c_void_p

lib = ctypes.CDLL(os.environ.get("ZMFB_LIBRARY", "libzmfbconn.so.1"))
NIL, TEXT, NUMBER, LOGICAL, DATE, ARRAY, OBJECT, BLOCK = range(8)
OK, RAISED = 0, 6
BODY = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(c_void_p), c_size_t, c_void_p)

for name, result, *arguments in [
    ("message", c_char_p), ("new", c_void_p), ("free", None, c_void_p), ("kind_of", c_int, c_void_p),
    ("prepare", c_int, c_char_p), ("create_database", c_int, c_char_p, c_char_p, c_char_p),
    ("connect", c_int, c_void_p, c_char_p, c_char_p, c_char_p, c_char_p), ("exact_queries", c_int, c_int),
    ("call", c_int, c_void_p, c_char_p, POINTER(c_void_p), c_size_t, c_void_p),
    ("eval", c_int, c_void_p, POINTER(c_void_p), c_size_t, c_void_p),
    ("get_member", c_int, c_void_p, c_char_p, c_void_p), ("set_error_block", c_int, c_void_p),
    ("set_text", c_int, c_void_p, c_char_p, c_size_t), ("set_array", c_int, c_void_p, c_size_t),
    ("set_number", c_int, c_void_p, c_double, c_int, c_int),
    ("set_block", c_int, c_void_p, BODY, c_void_p, c_void_p), ("append", c_int, c_void_p, c_void_p),
    ("get_text", c_int, c_void_p, POINTER(c_void_p), POINTER(c_size_t)),
    ("get_number", c_int, c_void_p, POINTER(c_double), c_void_p, c_void_p),
    ("get_logical", c_int, c_void_p, POINTER(c_int)), ("get_size", c_int, c_void_p, POINTER(c_size_t)),
    ("get_element", c_int, c_void_p, c_size_t, c_void_p),
]:
    function = getattr(lib, "zmfb_" + name)
    function.restype, function.argtypes = result, arguments
    globals()["zmfb_" + name] = function


class Failure(Exception):
    def __init__(self, status):
        super().__init__(zmfb_message().decode("latin-1"))
        self.status = status


def must(status):
    if status != OK:
        raise Failure(status)


class Place:
    """A place for one value; freed with the Python object."""

    def __init__(self, value=None):
        self.at = zmfb_new()
        if isinstance(value, str):
            value = value.encode("latin-1")
        if isinstance(value, bytes):
            must(zmfb_set_text(self.at, value, len(value)))
        elif isinstance(value, (int, float)):
            must(zmfb_set_number(self.at, value, 0, 0))
        elif isinstance(value, list):
            must(zmfb_set_array(self.at, 0))
            for element in map(Place, value):
                must(zmfb_append(self.at, element.at))
        elif callable(value):
            self.body = BODY(value)  # as long as the library may call it
            must(zmfb_set_block(self.at, self.body, None, None))

    def __del__(self):
        zmfb_free(self.at)

    def value(self):
        return read(self.at)

    def call(self, method, *values):
        return self.run(lambda *rest: zmfb_call(self.at, method.encode(), *rest), values)

    def eval(self, *values):
        return self.run(lambda *rest: zmfb_eval(self.at, *rest), values)

    @staticmethod
    def run(function, values):
        places, result = list(map(Place, values)), Place()
        must(function((c_void_p * len(places))(*(place.at for place in places)), len(places), result.at))
        return result.value()


def read(at):
    """The value in a place, as Python has it; texts are bytes."""
    kind, number, logical, size, start = zmfb_kind_of(at), c_double(), c_int(), c_size_t(), c_void_p()
    if kind == NUMBER:
        must(zmfb_get_number(at, byref(number), None, None))
        return number.value
    if kind == LOGICAL:
        must(zmfb_get_logical(at, byref(logical)))
        return logical.value == 1
    if kind == TEXT:
        must(zmfb_get_text(at, byref(start), byref(size)))
        return ctypes.string_at(start, size.value)
    if kind == ARRAY:
        must(zmfb_get_size(at, byref(size)))
        element, elements = Place(), []
        for index in range(1, size.value + 1):
            must(zmfb_get_element(at, index, element.at))
            elements.append(element.value())
        return elements
    return None


def status_of(function, *arguments):
    try:
        function(*arguments)
    except Failure as failure:
        return failure.status
    return OK


def twice(_context, arguments, count, result):
    value = read(arguments[0]) if count else None
    if not isinstance(value, float):
        return 2  # ZMFB_WRONG_KIND
    return zmfb_set_number(result, 2 * value, 0, 0)


def tell(_context, arguments, _count, _result):
    description = Place()
    must(zmfb_get_member(arguments[0], b"description", description.at))
    print("told:", description.value().decode("latin-1"))
    return OK


def main():
    database = os.fsencode(sys.argv[1])
    must(zmfb_prepare(database))
    must(zmfb_create_database(database, b"SYSDBA", None))
    connection = Place()
    must(zmfb_connect(connection.at, database, b"SYSDBA", None, None))
    connection.call("createtable", "people", [["name", "C", 10, 0], ["born", "D", 8, 0], ["credit", "N", 12, 2]])
    connection.call("executeupdate",
                    "insert into people (name, born, credit) values ('Anna', '2007-03-01', -12.5)")
    connection.call("executeupdate", "insert into people (name) values ('Bo')")
    must(zmfb_exact_queries(1))
    rows = connection.call("executequery", "select name, cast(born as date), credit from people order by name")
    for row in rows[1:]:
        print(" | ".join("NULL" if cell is None else cell.decode("latin-1") for cell in row))

    block = Place(twice)
    print(f"twice 21 is {block.eval(21):.0f}")
    print("twice a text: status", status_of(block.eval, "no number"))
    print("bytes:", Place([b"a\0b"]).value()[0].hex(" "))

    status = status_of(connection.call, "nosuch")
    print(f"without an error block: status {status}, {zmfb_message().decode('latin-1')}")
    error_block = Place(tell)
    must(zmfb_set_error_block(error_block.at))
    print("with one: status", status_of(connection.call, "nosuch"))
    must(zmfb_set_error_block(None))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: people.py DATABASE")
    main()
