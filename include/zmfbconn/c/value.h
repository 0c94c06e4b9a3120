/**
 * @file
 * Values of the xBase runtime in C: places, arrays and code blocks.
 */
#ifndef ZMFBCONN_C_VALUE_H
#define ZMFBCONN_C_VALUE_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** A place for one value. */
typedef struct zmfb_value zmfb_value;

/** What became of a call. */
typedef enum zmfb_status {
    ZMFB_OK = 0,
    ZMFB_WRONG_ARGUMENT = 1, /**< NULL where it is not allowed, or a value that makes no sense there */
    ZMFB_WRONG_KIND = 2,     /**< the place holds a value of another kind */
    ZMFB_OUT_OF_RANGE = 3,   /**< no such element, method or day, or larger than can be */
    ZMFB_NO_MEMORY = 4,
    ZMFB_FAILED = 5, /**< the engine or the system refused; zmfb_message() has what it said */
    ZMFB_RAISED = 6, /**< an error was raised and ended the call; zmfb_get_error() has it */
    ZMFB_END = 7     /**< no failure: zmfb_next() has gone past the last row */
} zmfb_status;

/** What a value is. */
typedef enum zmfb_kind {
    ZMFB_NIL = 0,
    ZMFB_TEXT = 1,
    ZMFB_NUMBER = 2,
    ZMFB_LOGICAL = 3,
    ZMFB_DATE = 4,
    ZMFB_ARRAY = 5,
    ZMFB_OBJECT = 6,
    ZMFB_BLOCK = 7
} zmfb_kind;

/**
 * The body of a code block. It reads the `count` values of `arguments`, fills `result`, which is NIL, and
 * answers ZMFB_OK. Any other answer ends the call that evaluated the block, with that status; `result` does
 * not count then. Arguments and result are the library's and end with the call. The body may use this
 * interface; it must return, neither by longjmp() nor by an exception.
 */
typedef zmfb_status (*zmfb_body)(void* context, const zmfb_value* const* arguments, size_t count,
                                 zmfb_value* result);

/** Told once that a block is gone for good, with the context it was made with. */
typedef void (*zmfb_gone)(void* context);

/** @name Places */
/** @{ */

/** A new place that holds NIL; NULL when memory ran out. The caller ends it with zmfb_free(). */
zmfb_value* zmfb_new(void);

/** Ends a place that zmfb_new() made. NULL is allowed. */
void zmfb_free(zmfb_value* value);

/** The kind of the value in a place; ZMFB_NIL for NULL. */
zmfb_kind zmfb_kind_of(const zmfb_value* value);

/** Puts into `to` what is in `from`. */
zmfb_status zmfb_copy(zmfb_value* to, const zmfb_value* from);

/** Puts NIL. */
zmfb_status zmfb_set_nil(zmfb_value* value);
/** Puts a logical: .F. for 0, .T. for anything else. */
zmfb_status zmfb_set_logical(zmfb_value* value, int logical);

/**
 * Puts a number that shows in `width` columns (0: the default of ten) with `decimals` decimals, both from 0
 * to 255. Infinite, or not a number, is out of range.
 */
zmfb_status zmfb_set_number(zmfb_value* value, double number, int width, int decimals);

/** Puts a day of the years 1 to 9999; the empty date for 0, 0, 0. A day that is none is out of range. */
zmfb_status zmfb_set_date(zmfb_value* value, int year, int month, int day);

/** Puts a text: a copy of `length` bytes. `bytes` may be NULL when there are none. */
zmfb_status zmfb_set_text(zmfb_value* value, const char* bytes, size_t length);

/** Puts a new array of `size` NILs, at most 67108864. */
zmfb_status zmfb_set_array(zmfb_value* value, size_t size);

/**
 * Puts a code block that runs `body` with `context`. `gone`, which may be NULL, is called with `context` when
 * nothing names the block any more, and also when this function fails.
 */
zmfb_status zmfb_set_block(zmfb_value* value, zmfb_body body, void* context, zmfb_gone gone);

/** Tells the logical in a place: 0 or 1. */
zmfb_status zmfb_get_logical(const zmfb_value* value, int* logical);

/** Tells the number in a place, and how it shows. `width` and `decimals` may be NULL. */
zmfb_status zmfb_get_number(const zmfb_value* value, double* number, int* width, int* decimals);

/** Tells the day in a place; 0, 0, 0 for the empty date. */
zmfb_status zmfb_get_date(const zmfb_value* value, int* year, int* month, int* day);

/**
 * Tells where the bytes of the text in a place are, and how many. No zero byte follows them. They live until
 * the place is refilled or freed.
 */
zmfb_status zmfb_get_text(const zmfb_value* value, const char** bytes, size_t* length);

/** @} */
/** @name Arrays and code blocks */
/** @{ */

/** Tells how many elements the array in a place has. */
zmfb_status zmfb_get_size(const zmfb_value* array, size_t* size);

/** Puts element `index`, from 1, of an array into `element`. */
zmfb_status zmfb_get_element(const zmfb_value* array, size_t index, zmfb_value* element);

/** Makes what is in `element` the element `index`, from 1, of an array. */
zmfb_status zmfb_set_element(const zmfb_value* array, size_t index, const zmfb_value* element);

/** Appends what is in `element` to an array. */
zmfb_status zmfb_append(const zmfb_value* array, const zmfb_value* element);

/** Evaluates a code block. `arguments` and `result` are as in zmfb_call(). */
zmfb_status zmfb_eval(const zmfb_value* block, const zmfb_value* const* arguments, size_t count,
                      zmfb_value* result);

/** @} */

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
