/**
 * @file
 * Work areas, by the operations of the language.
 */
#ifndef ZMFBCONN_C_AREA_H
#define ZMFBCONN_C_AREA_H

#include <stddef.h>

#include "value.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** @name Work areas */
/** @{ */

/**
 * Runs an operation of work areas by its name in the language, in any case of letters: "DBUSEAREA", "DBSEEK",
 * "FIELDGET"; docs/work-areas.md has them all. `arguments` and `result` are as in zmfb_call(). RLOCK and
 * FLOCK take for how many seconds to try again, DBRLOCK does behind the record. A name that is none is out of
 * range, and so are more arguments than the operation takes.
 *
 * Areas are the process's, one of them the current one. They are on tables of the connection object that
 * "setibrdd" or "savepreviousrdd" was called on last, and in DBF files before. What cannot be done is raised,
 * but for an open or append that another use of the table is in the way of: without an error block that is
 * ZMFB_OK, and NETERR is .T. then, NETERRHOLDER tells who.
 */
zmfb_status zmfb_call_area(const char* operation, const zmfb_value* const* arguments, size_t count,
                           zmfb_value* result);

/** @} */

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
