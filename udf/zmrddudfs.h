/*
 * The functions that SQL statements of the driver call inside the engine: entry points of the module
 * "zmrddudfs".
 *
 * Common to all of them:
 * - Texts are zero-terminated ISO-8859-1. At most ZMRDDUDFS_TEXT_MAX bytes of an argument are read and at
 * most as many are returned.
 * - A returned text is allocated with ib_util_malloc and belongs to the caller (FREE_IT). A null pointer is
 * SQL NULL; it is also what a caller gets when there is no memory.
 * - A null pointer for the value to be converted gives a null pointer, except where 8 blanks are promised. A
 * null pointer for a start, a length or a number of decimals counts as 0.
 * - No state is kept between calls, so any number of threads may call at once.
 */
#ifndef ZMRDDUDFS_H
#define ZMRDDUDFS_H

#include <ibase.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    ZMRDDUDFS_TEXT_MAX = 4000,  /* longest text taken or given, as declared in zmrddudfs.sql */
    ZMRDDUDFS_NUMBER_MAX = 255, /* longest text that a number is printed into */
    ZMRDDUDFS_DATE_LENGTH = 8   /* YYYYMMDD */
};

#pragma GCC visibility push(default)

/*
 * Returns `length` bytes of a blob from byte `start` on, over the borders of its segments; start and length
 * as in zmsubstr. An empty blob gives an empty text; SQL NULL, which arrives as a blob without a handle,
 * gives SQL NULL. The text ends before the blob's first zero byte.
 */
char* zmblobsubstr(const struct blobcallback* blob, const ISC_LONG* start, const ISC_LONG* length);

/* Returns the text without the blanks at both ends. */
char* zmtrim(const char* text);

/* Returns the text with its ISO-8859-1 letters in lower case. */
char* zmlower(const char* text);

/* Returns the text with its ISO-8859-1 letters in upper case; 0xDF and 0xFF have none there and stay. */
char* zmupper(const char* text);

/*
 * Returns `length` bytes of the text from the 1-based `start` on, fewer where the text ends. Start 0 counts
 * as 1, a negative one from the end (-1 is the last byte), and one before the text's beginning as 1. A length
 * below 1 or a start behind the end gives an empty text.
 */
char* zmsubstr(const char* text, const ISC_LONG* start, const ISC_LONG* length);

/* Returns the date of a timestamp as YYYYMMDD; 8 blanks for a null pointer or a year outside 1 to 9999. */
char* zmdtos(const ISC_TIMESTAMP* timestamp);

/*
 * Returns the date of a text "{{D}}YYYY-MM-DD", with or without a time " HH:MM:SS" or " HH:MM:SS.FFFF" behind
 * it, as YYYYMMDD; 8 blanks for "{{D}}" with nothing but blanks behind it and for a null pointer; any other
 * text as it is.
 */
char* skippad(const char* text);

/*
 * Returns the number right-justified in `length` columns with `decimals` digits after the point, rounded half
 * away from zero, or asterisks in all columns when it does not fit or is no number. A length below 1 counts
 * as 10, one above ZMRDDUDFS_NUMBER_MAX as that, negative decimals as 0. Digits from the 17th significant one
 * on are 0.
 */
char* zmstr(const double* number, const ISC_LONG* length, const ISC_LONG* decimals);

/* Returns what zmstr does with 0 for every leading blank and a minus sign moved to the first column. */
char* zmstrzero(const double* number, const ISC_LONG* length, const ISC_LONG* decimals);

/*
 * Returns the text in exactly `length` bytes, filled with blanks on the right; its left part when it is
 * longer. A length below 1 gives an empty text, one above ZMRDDUDFS_TEXT_MAX counts as that.
 */
char* zmpadr(const char* text, const ISC_LONG* length);

/* Returns what zmpadr does, filled with blanks on the left. */
char* zmpadl(const char* text, const ISC_LONG* length);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
