#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "arguments.h"
#include "zmrddudfs.h"

static const char date_mark[] = "{{D}}";
static const char timestamp_form[] = "0000-00-00 00:00:00.0000";

/* Lengths at which a text in timestamp_form may end. */
enum { DATE_END = 10, SECONDS_END = 19, FRACTION_END = 24 };

static char* blank_date(void) { return new_filled_text(ZMRDDUDFS_DATE_LENGTH, ' '); }

/* Returns how many characters of the text follow timestamp_form: a digit for 0, any other character for
 * itself. */
static size_t matching_length(const char* text) {
    size_t i = 0;
    for (; timestamp_form[i]; ++i) {
        const bool matches =
            timestamp_form[i] == '0' ? text[i] >= '0' && text[i] <= '9' : text[i] == timestamp_form[i];
        if (!matches) break;
    }
    return i;
}

static int two_digits(const char* text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

static bool is_calendar_date(const char* text) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int year = two_digits(text) * 100 + two_digits(text + 2);
    const int month = two_digits(text + 5);
    const int day = two_digits(text + 8);
    if (year < 1 || month < 1 || month > 12 || day < 1) return false;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= days[month - 1] + (leap && month == 2);
}

/* Blanks behind it do not count. */
static bool is_timestamp_text(const char* text) {
    size_t length = text_length(text);
    while (length > 0 && text[length - 1] == ' ') --length;
    if (length != DATE_END && length != SECONDS_END && length != FRACTION_END) return false;
    return matching_length(text) >= length && is_calendar_date(text);
}

char* skippad(const char* text) {
    if (!text) return blank_date();
    const size_t length = text_length(text);
    const size_t mark_length = sizeof date_mark - 1;
    if (strncmp(text, date_mark, mark_length) != 0) return new_text(text, length);

    const char* behind = text + mark_length;
    if (behind[strspn(behind, " ")] == '\0') return blank_date();
    if (!is_timestamp_text(behind)) return new_text(text, length);

    char* result = blank_date();
    if (result) {
        memcpy(result, behind, 4);
        memcpy(result + 4, behind + 5, 2);
        memcpy(result + 6, behind + 8, 2);
    }
    return result;
}

/*
 * The engine counts days from 1858-11-17. Counted from 0000-03-01 instead, a year ends with its leap day, and
 * the calendar repeats every 400 years.
 */
char* zmdtos(const ISC_TIMESTAMP* timestamp) {
    if (!timestamp) return blank_date();
    const long long day_number = (long long)timestamp->timestamp_date + 678881;
    if (day_number < 0) return blank_date();
    const long long era = day_number / 146097;
    const long long day_of_era = day_number % 146097;
    const long long year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const long long day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const long long month_from_march = (5 * day_of_year + 2) / 153;
    const int day = (int)(day_of_year - (153 * month_from_march + 2) / 5 + 1);
    const int month = (int)(month_from_march < 10 ? month_from_march + 3 : month_from_march - 9);
    const long long year = era * 400 + year_of_era + (month <= 2);
    if (year < 1 || year > 9999) return blank_date();

    char printed[32];
    (void)snprintf(printed, sizeof printed, "%04d%02d%02d", (int)year, month, day);
    return new_text(printed, ZMRDDUDFS_DATE_LENGTH);
}
