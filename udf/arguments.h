/* What the functions of the module share: reading their arguments and making their results. */
#ifndef ZMRDDUDFS_ARGUMENTS_H
#define ZMRDDUDFS_ARGUMENTS_H

#include <ibase.h>
#include <stddef.h>

/* Returns the number pointed to, or 0 for a null pointer. */
ISC_LONG number_or_zero(const ISC_LONG* number);

/* Returns the length of a text argument, at most ZMRDDUDFS_TEXT_MAX. */
size_t text_length(const char* text);

/* Returns `wanted` brought into the range 0 to `limit`. */
size_t bounded(ISC_LONG wanted, size_t limit);

/* Returns how many of `total` bytes stand before the 1-based `start`; zmsubstr says what a start below 1
 * means. */
size_t bytes_before(ISC_LONG start, size_t total);

/* Returns a text of `length` bytes, all of them `fill`, in memory that the engine frees; null without memory.
 */
char* new_filled_text(size_t length, char fill);

/* Returns a copy of `length` bytes as a text in memory that the engine frees; null without memory. */
char* new_text(const char* bytes, size_t length);

#endif
