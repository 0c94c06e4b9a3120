/// Dates and times of day.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// A date taken apart; 0, 0, 0 for the empty date.
struct CalendarDay {
    int year = 0;   ///< 1 to 9999
    int month = 0;  ///< 1 to 12
    int day = 0;    ///< 1 to 31
};

/// The date of a calendar day of the Gregorian calendar, years 1 to 9999; the empty date when there is no
/// such day.
Date date_of(CalendarDay day);
/// The calendar day of a date.
CalendarDay calendar_day(Date date);

/// DATE(): today.
Value date();
/// TIME(): the local time as "hh:mm:ss".
Value time();
/// STOD(s): the date of exactly eight digits YYYYMMDD; anything else gives the empty date. Raises nothing.
/// An unqualified call with a std::string would find std::stod(): pass a Value.
Value stod(const Value& s);
/// DTOS(d): YYYYMMDD, eight blanks for the empty date. Not a date: argument error (1120).
Value dtos(const Value& d);
/// DTOC(d): by SET DATE; the empty date keeps its separators between blanks. Not a date: argument error
/// (1118).
Value dtoc(const Value& d);
/// CTOD(s): by the order of SET DATE, any separators; a year of two digits by SET EPOCH. The empty date when
/// it is none. Not a text: argument error (1119).
Value ctod(const Value& s);
/// YEAR(d): 0 for the empty date; shown in 5 columns. Not a date: argument error.
Value year(const Value& d);
/// MONTH(d): 0 for the empty date; shown in 3 columns. Not a date: argument error.
Value month(const Value& d);
/// DAY(d): 0 for the empty date; shown in 3 columns. Not a date: argument error.
Value day(const Value& d);

/// SET DATE FORMAT: the picture that DTOC and CTOD follow, such as "mm/dd/yy" (the default) or "yyyy-mm-dd".
Value set_date_format();
/// Sets it; what is no text raises an argument error.
void set_date_format(const Value& format);

}  // namespace zmfb::host

#pragma GCC visibility pop
