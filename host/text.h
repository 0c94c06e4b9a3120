/// Operations on texts. Texts are bytes, positions count from 1, CHR(0) is a character like any other.
///
/// An argument of the wrong kind raises an argument error (host/error.h); the operation then answers with
/// what the error handler returned.
#pragma once

#include <concepts>
#include <cstddef>
#include <string_view>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// The greatest number of bytes that a text grows to, and that one is filled to by a length asked for. Beyond
/// these an operation raises "String overflow" (1234) and allocates nothing.
inline constexpr std::size_t max_text_size = 0x7FFF'FFFF;
inline constexpr std::size_t max_filled_size = std::size_t{256} << 20;

/// `a` + `b`: joins two texts; adds two numbers (decimals: the larger of both); adds days to a date. Other
/// pairs raise an argument error (1081). A date that leaves the calendar becomes the empty date.
Value operator+(const Value& a, const Value& b);
Value operator+(Value&& a, const Value& b);
/// `a` - `b`: for texts the trailing blanks of `a` move to the end; numbers; date minus days; date minus date
/// in days.
Value operator-(const Value& a, const Value& b);

/// UPPER(s), LOWER(s): ASCII letters only; other bytes are kept.
Value upper(const Value& s);
Value lower(const Value& s);
/// LTRIM(s) removes leading blanks, tabs and line ends; TRIM(s) trailing blanks only; ALLTRIM(s) is
/// LTRIM(TRIM(s)).
Value ltrim(const Value& s);
Value trim(const Value& s);
Value alltrim(const Value& s);

/// SUBSTR(s, start [, count]): `start` 0 counts as 1, a negative one from the end; a NIL `count` is all the
/// rest. LEFT, RIGHT: RIGHT of a wrong kind is "" without an error.
Value substr(const Value& s, const Value& start);
Value substr(const Value& s, const Value& start, const Value& count);
Value left(const Value& s, const Value& count);
Value right(const Value& s, const Value& count);

/// AT(search, s), RAT(search, s): position of the first or last occurrence, 0 when there is none or `search`
/// is empty.
Value at(const Value& search, const Value& s);
Value rat(const Value& search, const Value& s);
/// `sub` $ `s`: whether `sub` occurs in `s`; an empty `sub` never does.
bool contained(const Value& sub, const Value& s);

/// STRTRAN(s, search [, replace [, start [, count]]]): replaces occurrences left to right, from occurrence
/// `start` on and at most `count` of them; what was put in is not searched again. An empty `search` changes
/// nothing, nor does a `count` below 1; a `start` below 1 counts as 1. The three last are ignored when they
/// are of another kind.
Value strtran(const Value& s, const Value& search, const Value& replace = {}, const Value& start = {},
              const Value& count = {});

/// PADR, PADL(value, length [, fill]): exactly `length` bytes, cut at the right or padded with the first byte
/// of `fill` (blank). Numbers and dates become their texts first; any other kind gives "".
Value padr(const Value& value, const Value& length, const Value& fill = {});
Value padl(const Value& value, const Value& length, const Value& fill = {});
/// SPACE(n), REPLICATE(s, n): nothing for n below 1. As with PADR and PADL, a size beyond max_filled_size
/// overflows.
Value space(const Value& n);
Value replicate(const Value& s, const Value& n);

/// CHR(n): the one-byte text of the low eight bits; ASC(s): the first byte, 0 for "".
Value chr(const Value& n);
Value asc(const Value& s);
/// STRPEEK(s, n): the byte at position n, 0 outside the text.
Value strpeek(const Value& s, const Value& n);

/// LEN(x) of a text or an array.
Value len(const Value& x);
/// VALTYPE(x): "U", "C", "N", "L", "D", "A", "O" or "B".
Value valtype(const Value& x);
/// EMPTY(x): NIL, a text of blanks, tabs and line ends only, 0, .F., the empty date, an array without
/// elements.
bool empty(const Value& x);
/// The same of a text that is no value; without it a call with a C++ text would find std::empty().
template <std::convertible_to<std::string_view> T>
bool empty(const T& text) {
    return empty(Value(text));
}

}  // namespace zmfb::host

#pragma GCC visibility pop
