"""The library: its functions, how they fail, and what it makes for us."""

import ctypes
import os
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_int64, c_size_t, c_void_p

OK, WRONG_ARGUMENT, WRONG_KIND, OUT_OF_RANGE, NO_MEMORY, FAILED, RAISED, END = range(8)
_STATUS = c_int
BODY = ctypes.CFUNCTYPE(_STATUS, c_void_p, POINTER(c_void_p), c_size_t, c_void_p)
GONE = ctypes.CFUNCTYPE(None, c_void_p)


class Moment(ctypes.Structure):
    _fields_ = [(name, c_int) for name in ("year", "month", "day", "hour", "minute", "second", "fraction")]


def _load():
    name = os.environ.get("ZMFB_LIBRARY", "libzmfbconn.so.2")
    try:
        library = ctypes.CDLL(name)
    except OSError as problem:
        raise ImportError(f"{problem}: the environment variable ZMFB_LIBRARY names the file of the library") from None
    field = [_STATUS, c_void_p, c_size_t]
    for function, result, *arguments in [
        ("version", c_char_p), ("message", c_char_p), ("engine_message", c_char_p),
        ("prepare", _STATUS, c_char_p), ("create_database", _STATUS, c_char_p, c_char_p, c_char_p),
        ("install_functions", _STATUS, c_char_p, c_char_p, c_char_p, c_int),
        ("connect", _STATUS, c_void_p, c_char_p, c_char_p, c_char_p, c_char_p),
        ("call", _STATUS, c_void_p, c_char_p, POINTER(c_void_p), c_size_t, c_void_p),
        ("call_area", _STATUS, c_char_p, POINTER(c_void_p), c_size_t, c_void_p),
        ("eval", _STATUS, c_void_p, POINTER(c_void_p), c_size_t, c_void_p),
        ("get_member", _STATUS, c_void_p, c_char_p, c_void_p), ("set_member", _STATUS, c_void_p, c_char_p, c_void_p),
        ("set_error_block", _STATUS, c_void_p),
        ("new", c_void_p), ("free", None, c_void_p), ("kind_of", c_int, c_void_p), ("copy", _STATUS, c_void_p, c_void_p),
        ("set_nil", _STATUS, c_void_p), ("set_logical", _STATUS, c_void_p, c_int),
        ("set_number", _STATUS, c_void_p, c_double, c_int, c_int),
        ("set_date", _STATUS, c_void_p, c_int, c_int, c_int), ("set_text", _STATUS, c_void_p, c_char_p, c_size_t),
        ("set_array", _STATUS, c_void_p, c_size_t), ("append", _STATUS, c_void_p, c_void_p),
        ("set_block", _STATUS, c_void_p, BODY, c_void_p, GONE),
        ("get_logical", _STATUS, c_void_p, POINTER(c_int)),
        ("get_number", _STATUS, c_void_p, POINTER(c_double), POINTER(c_int), POINTER(c_int)),
        ("get_date", _STATUS, c_void_p, POINTER(c_int), POINTER(c_int), POINTER(c_int)),
        ("get_text", _STATUS, c_void_p, POINTER(c_void_p), POINTER(c_size_t)),
        ("get_size", _STATUS, c_void_p, POINTER(c_size_t)), ("get_element", _STATUS, c_void_p, c_size_t, c_void_p),
        ("new_transaction", c_void_p), ("free_transaction", None, c_void_p),
        ("begin", _STATUS, c_void_p, c_void_p, c_int), ("commit", _STATUS, c_void_p), ("roll_back", _STATUS, c_void_p),
        ("transaction_error", _STATUS, c_void_p, POINTER(c_int), POINTER(c_char_p), POINTER(c_char_p)),
        ("set_database_encoding", _STATUS, c_void_p, c_char_p),
        ("new_statement", c_void_p), ("free_statement", None, c_void_p),
        ("prepare_statement", _STATUS, c_void_p, c_void_p, c_char_p),
        ("statement_error", _STATUS, c_void_p, POINTER(c_int), POINTER(c_char_p), POINTER(c_char_p)),
        ("bind_null", *field), ("bind_logical", *field, c_int), ("bind_number", *field, c_int64, c_int),
        ("bind_double", *field, c_double), ("bind_text", *field, c_char_p, c_size_t),
        ("bind_bytes", *field, c_char_p, c_size_t), ("bind_date", *field, POINTER(Moment)),
        ("bind_time", *field, POINTER(Moment)), ("bind_timestamp", *field, POINTER(Moment)),
        ("execute", _STATUS, c_void_p, POINTER(c_int64)), ("query", _STATUS, c_void_p), ("next", _STATUS, c_void_p),
        ("parameter_count", _STATUS, c_void_p, POINTER(c_size_t)), ("column_count", _STATUS, c_void_p, POINTER(c_size_t)),
        ("column", *field, POINTER(c_char_p), POINTER(c_int), POINTER(c_int)),
        ("field_is_null", *field, POINTER(c_int)), ("field_logical", *field, POINTER(c_int)),
        ("field_number", *field, POINTER(c_int64), POINTER(c_int)), ("field_double", *field, POINTER(c_double)),
        ("field_text", *field, POINTER(c_void_p), POINTER(c_size_t)),
        ("field_bytes", *field, POINTER(c_void_p), POINTER(c_size_t)), ("field_moment", *field, POINTER(Moment)),
    ]:
        called = getattr(library, "zmfb_" + function)
        called.restype, called.argtypes = result, arguments
    return library


lib = _load()


def told(text):
    """What the library or the engine says, in UTF-8 or else in ISO-8859-1."""
    try:
        return text.decode("utf-8")
    except UnicodeDecodeError:
        return text.decode("latin-1")


class Error(Exception):
    """A failure. `sqlcode` and `sqlstate` are 0 and "" when it was no matter of SQL; `text` is all that the engine
    said, or why it was not asked; `status` is that of the C interface."""

    def __init__(self, message, text=None, sqlcode=0, sqlstate="", status=FAILED):
        super().__init__(message)
        self.text, self.sqlcode, self.sqlstate, self.status = text or message, sqlcode, sqlstate, status


# What Python raised inside a block, on its way through the library.
thrown = []


def check(status, error_of=None, handle=None):
    """Raises what a status says; `error_of` tells of the handle's last failure."""
    if status == OK:
        return
    if thrown:
        raise thrown.pop()
    message = told(lib.zmfb_message())
    code, state, text = c_int(), c_char_p(b""), c_char_p(b"")
    if error_of is not None:
        error_of(handle, byref(code), byref(state), byref(text))
    raise Error(message, told(text.value), code.value, state.value.decode("ascii"), status)


def refuse(sqlcode, sqlstate, text):
    """Raises what is refused without asking the library."""
    raise Error(text, text, sqlcode, sqlstate)


def ended(text, encoding="latin-1"):
    """A text for the library that ends with a zero byte; None is NULL."""
    if text is None:
        return None
    encoded = text if isinstance(text, bytes) else text.encode(encoding)
    if b"\0" in encoded:
        raise ValueError("there is a zero byte inside the text")
    return encoded


class Handle:
    """Something of the library that is freed with the Python object."""

    # Set by the kinds of handles: what makes one, and what frees it.
    new = release = None
    # What ctypes passes on for the object, which it keeps meanwhile.
    _as_parameter_ = None

    def __init__(self):
        self._as_parameter_ = type(self).new()
        if self._as_parameter_ is None:
            raise MemoryError

    def __del__(self):
        type(self).release(self._as_parameter_)
