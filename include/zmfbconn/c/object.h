/**
 * @file
 * The library, connection objects with their methods by name, and raised errors.
 */
#ifndef ZMFBCONN_C_OBJECT_H
#define ZMFBCONN_C_OBJECT_H

#include <stddef.h>

#include "value.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** @name The library */
/** @{ */

/** The version of the library, such as "1.0.0". ZMFB_VERSION is that of this header. */
const char* zmfb_version(void);

/**
 * In words, in English, why the last function that did not answer ZMFB_OK did not: for ZMFB_RAISED the
 * error's description. "" when none failed yet. The text lives until the next function fails.
 */
const char* zmfb_message(void);

/**
 * All lines that the engine said about what failed last in it during the last call that reached it; "" when
 * nothing failed in that call. A query that failed half-way has rows, as one that came to its end has: this
 * tells them apart. Calls that do not reach the engine, such as that of "isconnected", leave it as it is. The
 * texts that methods return and log are shorter. Lives until this is called again. NULL when memory ran out.
 */
const char* zmfb_engine_message(void);

/**
 * Makes the process ready for `database`: for a plain file name a private environment of the embedded engine,
 * for a server nothing. Comes before the first function that reaches the engine. ZMFB_FAILED where it cannot
 * be made.
 */
zmfb_status zmfb_prepare(const char* database);

/**
 * Creates a database, ready for the driver: with its functions (ZMFB_FUNCTIONS_BY_ENGINE) and its system
 * tables. A file that is there is refused (ZMFB_FAILED) and left alone. `user` and `password` may be NULL.
 */
zmfb_status zmfb_create_database(const char* database, const char* user, const char* password);

/** What the functions are that the driver's statements call in a database. */
typedef enum zmfb_functions {
    ZMFB_FUNCTIONS_BY_ENGINE = 0, /**< stored ones from Firebird 3.0 on, the module's before */
    ZMFB_FUNCTIONS_STORED = 1,    /**< stored functions: they need nothing on the server, but Firebird 3.0 */
    ZMFB_FUNCTIONS_MODULE = 2     /**< those of the module zmrddudfs: the server has to have and allow it */
} zmfb_functions;

/**
 * Puts the driver's functions into a database, in the place of those that it has: into one that another
 * program made, or to change from the ones to the others. Stored ones take the place of the module's with all
 * that uses them as it is; the way back is refused (ZMFB_FAILED) while anything in the database uses one.
 * `user` and `password` may be NULL.
 */
zmfb_status zmfb_install_functions(const char* database, const char* user, const char* password,
                                   zmfb_functions functions);

/**
 * Reads the runtime's setting `number` into `before`, and sets it when `value` is not NULL: 1 is EXACT, 3
 * DECIMALS, 4 DATE FORMAT, 5 EPOCH, which take no value of another kind; 8 is EXCLUSIVE, 9 SOFTSEEK. Either
 * place may be NULL.
 */
zmfb_status zmfb_setting(int number, const zmfb_value* value, zmfb_value* before);

/** @} */
/** @name Connection objects */
/** @{ */

/**
 * Puts a new connection object into `connection` and attaches it. Texts that are NULL are left out; with all
 * of them left out nothing is attached. ZMFB_OK says that the object is made: whether it is attached, the
 * method "isconnected" tells. The object disconnects when the last place that names it is freed or refilled.
 */
zmfb_status zmfb_connect(zmfb_value* connection, const char* database, const char* user, const char* password,
                         const char* role);

/**
 * Calls a method of an object by its name, in any case of letters, and puts what it returns into `result`,
 * which may be NULL, and may be one of the arguments. Arguments that are NULL, or left out, arrive as NIL. A
 * method that is none is raised. Arrays are handed over by reference: a method may change them.
 */
zmfb_status zmfb_call(const zmfb_value* object, const char* method, const zmfb_value* const* arguments,
                      size_t count, zmfb_value* result);

/**
 * Reads a member of an object: properties of a connection ("sdbname"), fields of an error ("description",
 * "gencode", "subcode", "operation", "args", ...). A name that is none is raised.
 */
zmfb_status zmfb_get_member(const zmfb_value* object, const char* name, zmfb_value* value);
/** Assigns a member of an object; a name that is none, or one that can only be read, is raised. */
zmfb_status zmfb_set_member(const zmfb_value* object, const char* name, const zmfb_value* value);

/** How many rows the method table has. */
size_t zmfb_method_count(void);

/**
 * Tells row `index` of the method table, from 0, ordered by name: the name, how many parameters it takes,
 * "exported", "protected", "access" or "assign", and a line of help. The texts live for ever. Any of the
 * places may be NULL.
 */
zmfb_status zmfb_method(size_t index, const char** name, int* parameters, const char** kind,
                        const char** help);

/** @} */
/** @name Raised errors */
/** @{ */

/**
 * Makes the code block `block` the error block, or takes it away with NULL. It is evaluated with the error
 * object as its one argument. ZMFB_OK from its body lets the method go on, with the body's result as the
 * value of what failed; any other status ends the call, which answers that status. An error raised while it
 * runs comes to it again.
 */
zmfb_status zmfb_set_error_block(const zmfb_value* block);

/** Puts the error object of the last call that ended with ZMFB_RAISED into `error`; NIL when none did. */
zmfb_status zmfb_get_error(zmfb_value* error);

/** @} */

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
