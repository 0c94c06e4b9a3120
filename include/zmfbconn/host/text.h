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

/// The greatest number of bytes that a text grows to. Beyond it an operation raises "String overflow" (1234)
/// and allocates nothing.
inline constexpr std::size_t max_text_size = 0x7FFF'FFFF;
/// The greatest number of bytes that a text is filled to by a length asked for; likewise.
inline constexpr std::size_t max_filled_size = std::size_t{256} << 20;

/// `a` + `b`: joins two texts; adds two numbers (decimals: the larger of both); adds days to a date. Other
/// pairs raise an argument error (1081). A date that leaves the calendar becomes the empty date.
Value operator+(const Value& a, const Value& b);
/// The same, appending to the text of `a` where nobody shares it.
Value operator+(Value&& a, const Value& b);
/// `a` - `b`: for texts the trailing blanks of `a` move to the end; numbers; date minus days; date minus date
/// in days.
Value operator-(const Value& a, const Value& b);

/// UPPER(s): ASCII letters only; other bytes are kept.
Value upper(const Value& s);
/// LOWER(s): ASCII letters only; other bytes are kept.
Value lower(const Value& s);
/// LTRIM(s): without leading blanks, tabs and line ends.
Value ltrim(const Value& s);
/// TRIM(s): without trailing blanks, and blanks only.
Value trim(const Value& s);
/// ALLTRIM(s): LTRIM(TRIM(s)).
Value alltrim(const Value& s);

/// SUBSTR(s, start): all the rest. `start` 0 counts as 1, a negative one from the end.
Value substr(const Value& s, const Value& start);
/// SUBSTR(s, start, count): a NIL `count` is all the rest.
Value substr(const Value& s, const Value& start, const Value& count);
/// LEFT(s, count): the first bytes.
Value left(const Value& s, const Value& count);
/// RIGHT(s, count): the last bytes; of a wrong kind "" without an error.
Value right(const Value& s, const Value& count);

/// AT(search, s): position of the first occurrence, 0 when there is none or `search` is empty.
Value at(const Value& search, const Value& s);
/// RAT(search, s): position of the last occurrence; likewise.
Value rat(const Value& search, const Value& s);
/// `sub` $ `s`: whether `sub` occurs in `s`; an empty `sub` never does.
bool contained(const Value& sub, const Value& s);

/// STRTRAN(s, search [, replace [, start [, count]]]): replaces occurrences left to right, from occurrence
/// `start` on and at most `count` of them; what was put in is not searched again. An empty `search` changes
/// nothing, nor does a `count` below 1; a `start` below 1 counts as 1. The three last are ignored when they
/// are of another kind.
Value strtran(const Value& s, const Value& search, const Value& replace = {}, const Value& start = {},
              const Value& count = {});

/// PADR(value, length [, fill]): exactly `length` bytes, cut at the right or padded there with the first byte
/// of `fill` (blank). Numbers and dates become their texts first; any other kind gives "".
Value padr(const Value& value, const Value& length, const Value& fill = {});
/// PADL(value, length [, fill]): the same, padded at the left.
Value padl(const Value& value, const Value& length, const Value& fill = {});
/// SPACE(n): blanks, nothing for n below 1. As with PADR and PADL, a size beyond max_filled_size overflows.
Value space(const Value& n);
/// REPLICATE(s, n): the text n times; likewise.
Value replicate(const Value& s, const Value& n);

/// CHR(n): the one-byte text of the low eight bits.
Value chr(const Value& n);
/// ASC(s): the first byte, 0 for "".
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
