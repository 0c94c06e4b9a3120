/**
 * @file
 * zmfbconn in C: the connection object, its methods by name, and values to pass in and out; transactions,
 * statements and rows; work areas.
 *
 *     zmfb_value *connection = zmfb_new(), *argument = zmfb_new(), *answer = zmfb_new();
 *     const zmfb_value *arguments[] = {argument};
 *     int there = 0;
 *     if (zmfb_prepare("shop.fdb") == ZMFB_OK &&
 *         zmfb_connect(connection, "shop.fdb", "SYSDBA", NULL, NULL) == ZMFB_OK &&
 *         zmfb_set_text(argument, "customers", 9) == ZMFB_OK &&
 *         zmfb_call(connection, "istable", arguments, 1, answer) == ZMFB_OK)
 *         zmfb_get_logical(answer, &there);
 *     zmfb_free(answer), zmfb_free(argument), zmfb_free(connection);
 *
 * Values. A zmfb_value is a place that holds one value of the xBase runtime: NIL, a text, a number, a
 * logical, a date, an array, an object or a code block. zmfb_new() makes a place and zmfb_free() ends it;
 * every other function fills or reads places that are there already, so these two are all there is to
 * ownership; of transactions and statements the same holds. Copying an array, an object or a block from place
 * to place copies a reference: both name the same thing, which lives until the last place that names it is
 * freed or refilled. An array that contains itself is never freed.
 *
 * Texts are bytes with a length, zero bytes among them, in the character set ISO-8859-1; those of statements
 * and of their rows in UTF-8. What a function takes as `const char *` without a length ends with a zero byte.
 * NULL is allowed where it is said.
 *
 * Failure. Functions answer a status; only ZMFB_OK is success, and ZMFB_END no failure. On any other the
 * places that the function fills are as they were, and zmfb_message() tells in words what was wrong. No C++
 * exception comes out of any of them.
 *
 * Raised errors. Failures of SQL are results of methods, and failures of transactions and statements. What a
 * method, or an operation of work areas, cannot go on from is raised: the error block (zmfb_set_error_block)
 * is evaluated with an error object and says whether it goes on; without one, the call ends with ZMFB_RAISED.
 * This interface never ends the process.
 *
 * Threads. The library keeps its state per process without locks, and so do values. Use it from one thread at
 * a time; which one does not matter.
 *
 * Process. zmfb_prepare() and the first call of the client library read and set environment variables of the
 * process. The library stays loaded until the process ends.
 */
#ifndef ZMFBCONN_H
#define ZMFBCONN_H

#include "zmfbconn/c/area.h"
#include "zmfbconn/c/object.h"
#include "zmfbconn/c/statement.h"
#include "zmfbconn/c/value.h"
#include "zmfbconn/version.h"

#endif
