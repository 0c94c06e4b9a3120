"""Transactions, statements and rows."""

import ctypes
import datetime
import decimal
from ctypes import byref, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p

from ._library import END, Handle, Moment, check, ended, lib, refuse, told

_READ_WRITE, _READ_ONLY = range(2)
_TEXT, _BYTES, _INTEGER, _DECIMAL, _REAL, _BOOLEAN, _DATE, _TIME, _TIMESTAMP, _TEXT_BLOB, _BLOB, _OTHER = range(12)


class Transaction(Handle):
    """A transaction; what it changed is rolled back unless it is committed. With `with` it is committed at the end,
    and rolled back by an exception."""

    new, release = lib.zmfb_new_transaction, lib.zmfb_free_transaction

    def __init__(self, connection, read_only):
        super().__init__()
        self._ended = False
        self._check(lib.zmfb_begin(self, connection, _READ_ONLY if read_only else _READ_WRITE))

    def _check(self, status):
        check(status, lib.zmfb_transaction_error, self)

    def __enter__(self):
        return self

    def __exit__(self, kind, problem, trace):
        if kind is not None:
            lib.zmfb_roll_back(self)  # what is raised already counts more
        elif not self._ended:
            self.commit()

    def commit(self):
        """Ends it and keeps what it changed. When that fails, it is rolled back."""
        self._ended = True
        self._check(lib.zmfb_commit(self))

    def roll_back(self):
        """Ends it and undoes what it changed."""
        self._ended = True
        self._check(lib.zmfb_roll_back(self))

    def prepare(self, sql):
        """A Statement, to be run often."""
        return Statement(self, sql)

    def execute(self, sql, *values):
        """Runs a statement that returns no rows, once; how many rows it changed."""
        return self.prepare(sql).execute(*values)

    def query(self, sql, *values):
        """Runs a query, or a statement with RETURNING, once; its Rows."""
        return self.prepare(sql).query(*values)


class Statement(Handle):
    """A prepared statement. Each of `values` is for one "?": None, bool, int, Decimal, float, str, bytes, date, time
    or datetime, which has to suit it and is never rounded."""

    new, release = lib.zmfb_new_statement, lib.zmfb_free_statement

    def __init__(self, transaction, sql):
        super().__init__()
        self._transaction = transaction  # which would be rolled back when it went
        self.runs = 0
        self.check(lib.zmfb_prepare_statement(self, transaction, ended(sql, "utf-8")))

    def check(self, status):
        check(status, lib.zmfb_statement_error, self)

    def execute(self, *values):
        """Runs it without rows; how many rows it changed."""
        changed = c_int64()
        self._bind(values)
        self.check(lib.zmfb_execute(self, byref(changed)))
        return changed.value

    def query(self, *values):
        """Runs it; its Rows. Those of an earlier run are given up."""
        self._bind(values)
        self.check(lib.zmfb_query(self))
        return Rows(self)

    def _bind(self, values):
        self.runs += 1
        count = c_size_t()
        self.check(lib.zmfb_parameter_count(self, byref(count)))
        if len(values) != count.value:
            refuse(-804, "07001", f"The statement takes {count.value} values, not {len(values)}")
        for index, value in enumerate(values, 1):
            self.check(_bind(self, index, value))


def _bind(at, index, value):
    if value is None:
        return lib.zmfb_bind_null(at, index)
    if isinstance(value, bool):
        return lib.zmfb_bind_logical(at, index, value)
    if isinstance(value, (int, decimal.Decimal)):
        return lib.zmfb_bind_number(at, index, *_unscaled(value))
    if isinstance(value, float):
        return lib.zmfb_bind_double(at, index, value)
    if isinstance(value, str):
        text = value.encode("utf-8")
        return lib.zmfb_bind_text(at, index, text, len(text))
    if isinstance(value, (bytes, bytearray, memoryview)):
        return lib.zmfb_bind_bytes(at, index, bytes(value), len(bytes(value)))
    if isinstance(value, datetime.datetime):
        return lib.zmfb_bind_timestamp(at, index, byref(Moment(value.year, value.month, value.day, *_clock(value))))
    if isinstance(value, datetime.date):
        return lib.zmfb_bind_date(at, index, byref(Moment(value.year, value.month, value.day)))
    if isinstance(value, datetime.time):
        return lib.zmfb_bind_time(at, index, byref(Moment(0, 0, 0, *_clock(value))))
    raise TypeError(f"statements take no {type(value).__name__}")


def _unscaled(value):
    """A number in units of its last decimal that is not 0, and how many decimals it has then."""
    number = decimal.Decimal(value)
    if not number:
        return 0, 0
    if number.is_finite() and -18 <= number.adjusted() <= 18:
        sign, digits, exponent = number.as_tuple()
        unscaled, decimals = int("".join(map(str, digits))) * 10 ** max(exponent, 0), max(-exponent, 0)
        while decimals > 0 and unscaled % 10 == 0:
            unscaled, decimals = unscaled // 10, decimals - 1
        unscaled = -unscaled if sign else unscaled
        if -2**63 <= unscaled < 2**63:
            return unscaled, decimals
    refuse(-303, "22003", f"{value} is no number that a column holds")


def _clock(value):
    if value.tzinfo is not None:
        refuse(-413, "22007", f"{value} has a time zone, which no column keeps")
    if value.microsecond % 100:
        refuse(-413, "22007", f"{value} has more than the four decimals of a second that are kept: round it first")
    return value.hour, value.minute, value.second, value.microsecond // 100


class Rows:
    """The rows of a query as tuples, read one after another; `columns` has the names."""

    def __init__(self, statement):
        self._statement, self._run = statement, statement.runs
        count, name, kind, columns = c_size_t(), c_char_p(), c_int(), []
        statement.check(lib.zmfb_column_count(statement, byref(count)))
        for index in range(1, count.value + 1):
            statement.check(lib.zmfb_column(statement, index, byref(name), byref(kind), None))
            columns.append((told(name.value), _fields[kind.value]))
        self.columns = tuple(name for name, field in columns)
        self._readers = [(index, field) for index, (name, field) in enumerate(columns, 1)]

    def __iter__(self):
        return self

    def __next__(self):
        statement = self._statement
        if statement.runs != self._run:
            refuse(-504, "24000", "The statement was run again")
        status = lib.zmfb_next(statement)
        if status == END:
            raise StopIteration
        statement.check(status)
        return tuple(_field(statement, index, field) for index, field in self._readers)


def _field(statement, index, field):
    is_null = c_int()
    statement.check(lib.zmfb_field_is_null(statement, index, byref(is_null)))
    return None if is_null.value else field(statement, index)


def _bytes_by(function):
    def read(statement, index):
        start, length = c_void_p(), c_size_t()
        statement.check(function(statement, index, byref(start), byref(length)))
        return ctypes.string_at(start, length.value)

    return read


_bytes, _utf8 = _bytes_by(lib.zmfb_field_bytes), _bytes_by(lib.zmfb_field_text)


def _text(statement, index):
    return _utf8(statement, index).decode("utf-8")


def _number(statement, index):
    unscaled, decimals = c_int64(), c_int()
    statement.check(lib.zmfb_field_number(statement, index, byref(unscaled), byref(decimals)))
    return unscaled.value, decimals.value


def _integer(statement, index):
    return _number(statement, index)[0]


def _exact(statement, index):
    unscaled, decimals = _number(statement, index)
    return decimal.Decimal(f"{unscaled}E-{decimals}")  # which no context rounds


def _real(statement, index):
    number = c_double()
    statement.check(lib.zmfb_field_double(statement, index, byref(number)))
    return number.value


def _logical(statement, index):
    logical = c_int()
    statement.check(lib.zmfb_field_logical(statement, index, byref(logical)))
    return logical.value == 1


def _moment(statement, index):
    moment = Moment()
    statement.check(lib.zmfb_field_moment(statement, index, byref(moment)))
    return moment


def _date(statement, index):
    moment = _moment(statement, index)
    return datetime.date(moment.year, moment.month, moment.day)


def _time(statement, index):
    moment = _moment(statement, index)
    return datetime.time(moment.hour, moment.minute, moment.second, moment.fraction * 100)


def _timestamp(statement, index):
    return datetime.datetime.combine(_date(statement, index), _time(statement, index))


def _unknown(statement, index):
    refuse(-303, "07006", f"Column {index} is {_text(statement, index)}, a type that is not read")


# What reads a column, in the order of its kinds.
_fields = [_text, _bytes, _integer, _exact, _real, _logical, _date, _time, _timestamp, _text, _bytes, _unknown]
