"""Values of the runtime, and objects with their methods by name."""

import ctypes
import datetime
import decimal
import itertools
import os
from ctypes import byref, c_double, c_int, c_size_t, c_void_p

from ._library import BODY, GONE, OK, RAISED, WRONG_ARGUMENT, Error, Handle, check, ended, lib, thrown, told
from ._statements import Transaction

_NIL, _TEXT, _NUMBER, _LOGICAL, _DATE, _ARRAY, _OBJECT, _BLOCK = range(8)


class Place(Handle):
    """A place for one value."""

    new, release = lib.zmfb_new, lib.zmfb_free

    def __init__(self, value=None):
        super().__init__()
        if value is not None:
            _fill(self, value)


def _fill(at, value):
    """Puts a Python value into a place."""
    if value is None:
        check(lib.zmfb_set_nil(at))
    elif isinstance(value, bool):
        check(lib.zmfb_set_logical(at, value))
    elif isinstance(value, (int, float, decimal.Decimal)):
        _fill_number(at, value)
    elif isinstance(value, (str, bytes)):
        text = value.encode("latin-1") if isinstance(value, str) else value
        check(lib.zmfb_set_text(at, text, len(text)))
    elif isinstance(value, datetime.date) and not isinstance(value, datetime.datetime):
        check(lib.zmfb_set_date(at, value.year, value.month, value.day))
    elif isinstance(value, (list, tuple)):
        check(lib.zmfb_set_array(at, 0))
        for element in value:
            check(lib.zmfb_append(at, Place(element)))
    elif isinstance(value, (Object, Block)):
        check(lib.zmfb_copy(at, value.place))
    elif callable(value):
        key = next(_keys)
        _functions[key] = value
        check(lib.zmfb_set_block(at, _evaluate, key, _forget))
    else:
        raise TypeError(f"methods take no {type(value).__name__}")


def _fill_number(at, value):
    number = float(value)
    if not isinstance(value, float) and decimal.Decimal(repr(number)) != value:
        raise OverflowError(f"{value} has more digits than numbers of methods have")
    exponent = value.as_tuple().exponent if isinstance(value, decimal.Decimal) else 0
    decimals = -exponent if isinstance(exponent, int) and exponent < 0 else 0
    check(lib.zmfb_set_number(at, number, 0, decimals))


def _value(at):
    """The value in a place, as Python has it."""
    reader = _readers.get(lib.zmfb_kind_of(at))
    return reader(at) if reader is not None else None


def _text(at):
    start, length = c_void_p(), c_size_t()
    check(lib.zmfb_get_text(at, byref(start), byref(length)))
    return ctypes.string_at(start, length.value).decode("latin-1")


def _number(at):
    number, decimals = c_double(), c_int()
    check(lib.zmfb_get_number(at, byref(number), None, byref(decimals)))
    return int(number.value) if decimals.value == 0 and number.value.is_integer() else number.value


def _logical(at):
    logical = c_int()
    check(lib.zmfb_get_logical(at, byref(logical)))
    return logical.value == 1


def _date(at):
    year, month, day = c_int(), c_int(), c_int()
    check(lib.zmfb_get_date(at, byref(year), byref(month), byref(day)))
    return datetime.date(year.value, month.value, day.value) if year.value else None


def _array(at):
    size, element, elements = c_size_t(), Place(), []
    check(lib.zmfb_get_size(at, byref(size)))
    for index in range(1, size.value + 1):
        check(lib.zmfb_get_element(at, index, element))
        elements.append(_value(element))
    return elements


def _named(kind):
    def read(at):
        place = Place()
        check(lib.zmfb_copy(place, at))
        return kind(place)

    return read


def run(function, values):
    """Calls the library with places for the values and for the result, which is returned."""
    places, result = [Place(value) for value in values], Place()
    check(function((c_void_p * len(places))(*(place._as_parameter_ for place in places)), len(places), result))
    return _value(result)


class Block:
    """A code block: one of the library's, or a Python function, which is passed to methods as one anyway."""

    def __init__(self, function):
        self.place = function if isinstance(function, Place) else Place(function)

    def __call__(self, *values):
        return run(lambda *rest: lib.zmfb_eval(self.place, *rest), values)


# The Python functions that the library has blocks of.
_keys, _functions = itertools.count(1), {}


@BODY
def _evaluate(context, arguments, count, result):
    try:
        _fill(result, _functions[context](*(_value(arguments[k]) for k in range(count))))
        return OK
    except BaseException as problem:
        thrown.append(problem)
        return RAISED


@GONE
def _forget(context):
    _functions.pop(context, None)


# The library may call them as long as there is an interpreter.
for _callback in (_evaluate, _forget):
    ctypes.pythonapi.Py_IncRef(ctypes.py_object(_callback))


def set_error_block(function):
    """Has a function hear of raised errors. It gets the error, an Object with "description" and more, and what it
    returns is the value of what failed, for the method to go on; what it raises ends the call. With None, as at
    first, a raised error is raised as Error."""
    check(lib.zmfb_set_error_block(None if function is None else Place(function)))


class Object:
    """An object of the library's: a connection, an error."""

    def __init__(self, place):
        self._place = place

    @property
    def place(self):
        """Where the library has it."""
        if self._place is None:
            raise Error("the connection was closed", status=WRONG_ARGUMENT)
        return self._place

    def call(self, method, *values):
        """Calls a method by its name. Texts are ISO-8859-1, or bytes; None is NIL, and the empty date."""
        return run(lambda *rest: lib.zmfb_call(self.place, ended(method), *rest), values)

    def get(self, name):
        """A member: "sdbname" of a connection, "description" of an error."""
        result = Place()
        check(lib.zmfb_get_member(self.place, ended(name), result))
        return _value(result)

    def set(self, name, value):
        """Assigns a member."""
        check(lib.zmfb_set_member(self.place, ended(name), Place(value)))


_readers = {_TEXT: _text, _NUMBER: _number, _LOGICAL: _logical, _DATE: _date, _ARRAY: _array,
            _OBJECT: _named(Object), _BLOCK: _named(Block)}


def _path(database):
    return ended(os.fsencode(database))


def create_database(database, user=None, password=None):
    """Creates a database, ready for connections; a file that is there is refused."""
    check(lib.zmfb_prepare(_path(database)))
    check(lib.zmfb_create_database(_path(database), ended(user), ended(password)))


_functions = {None: 0, "stored": 1, "module": 2}


def install_functions(database, user=None, password=None, functions=None):
    """Puts the driver's functions into a database, in the place of those that it has: "stored" ones or those of the
    "module"; None means stored ones from Firebird 3.0 on."""
    if functions not in _functions:
        raise ValueError(f"no such functions: {functions!r}")
    check(lib.zmfb_prepare(_path(database)))
    check(lib.zmfb_install_functions(_path(database), ended(user), ended(password), _functions[functions]))


def connect(database, user=None, password=None, role=None):
    """A Connection to a database: a file, or "host/port:path" on a server."""
    return Connection(database, user, password, role)


class Connection(Object):
    """A connection object that is attached: see connect(). With `with` it is closed at its end."""

    def __init__(self, database, user, password, role):
        super().__init__(Place())
        check(lib.zmfb_prepare(_path(database)))
        check(lib.zmfb_connect(self.place, _path(database), ended(user), ended(password), ended(role)))
        if not self.call("isconnected"):
            raise Error(told(lib.zmfb_engine_message()) or f"{database} is not attached")

    def __enter__(self):
        return self

    def __exit__(self, kind, problem, trace):
        self.close()

    def close(self):
        """Disconnects. What its transactions have not committed is rolled back."""
        self._place = None

    def transaction(self, read_only=False):
        """A Transaction that has begun."""
        return Transaction(self.place, read_only)

    def set_database_encoding(self, name):
        """Names what texts in columns without a character set of their own are kept in, as iconv calls it:
        ISO-8859-1 when nothing is said."""
        check(lib.zmfb_set_database_encoding(self.place, ended(name)))
