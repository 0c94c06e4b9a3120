/**
 * @file
 * zmfbconn in C: the connection object, its methods by name, and values to pass in and out; transactions,
 * statements and rows.
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
 * method cannot go on from is raised: the error block (zmfb_set_error_block) is evaluated with an error
 * object and says whether the method goes on; without one, the call ends with ZMFB_RAISED. This interface
 * never ends the process.
 *
 * Threads. The library keeps its state per process without locks, and so do values. Use it from one thread at
 * a time; which one does not matter.
 *
 * Process. zmfb_prepare() and the first call of the client library read and set environment variables of the
 * process. The library stays loaded until the process ends.
 */
#ifndef ZMFBCONN_H
#define ZMFBCONN_H

#include <stddef.h>
#include <stdint.h>

#include "zmfbconn/version.h"

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
 * DECIMALS, 4 DATE FORMAT, 5 EPOCH. A value of another kind than the setting's is not taken. Either place may
 * be NULL.
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
/** @name Transactions */
/** @{ */

/** A transaction on the attachment of a connection object, beside its methods. */
typedef struct zmfb_transaction zmfb_transaction;

/** What a transaction may do. */
typedef enum zmfb_access {
    ZMFB_READ_WRITE = 0,
    ZMFB_READ_ONLY = 1,
    /** It is the batch that "starttransaction" has opened on the object, which "commitchanges" ends too, and
     * which stays open when the transaction is freed. */
    ZMFB_BATCH = 2
} zmfb_access;

/** A new transaction that has not begun; NULL when memory ran out. The caller ends it with
 * zmfb_free_transaction(). */
zmfb_transaction* zmfb_new_transaction(void);

/**
 * Ends what zmfb_new_transaction() made; what was not committed is rolled back. NULL is allowed. Its
 * statements may live longer, and so may it than its connection: what has ended answers ZMFB_FAILED.
 */
void zmfb_free_transaction(zmfb_transaction* transaction);

/** Begins a transaction that has not begun, or has ended, on the object in `connection`, which must be
 * attached. */
zmfb_status zmfb_begin(zmfb_transaction* transaction, const zmfb_value* connection, zmfb_access access);
/** Ends it and keeps what it changed. When that fails, it is rolled back. */
zmfb_status zmfb_commit(zmfb_transaction* transaction);
/** Ends it and undoes what it changed. */
zmfb_status zmfb_roll_back(zmfb_transaction* transaction);

/**
 * Tells of the last call with this transaction that failed the SQLCODE, the SQLSTATE and all that the engine
 * said, or why it was not asked; 0, "" and "" when it was no matter of SQL, or none failed. The texts live
 * until the next failure of this transaction, or its end. Any of the places may be NULL.
 */
zmfb_status zmfb_transaction_error(const zmfb_transaction* transaction, int* sqlcode, const char** sqlstate,
                                   const char** text);

/**
 * Names what texts in columns without a character set of their own are kept in, as iconv calls it:
 * ISO-8859-1 when nothing is said, a set of one byte a character, or "UTF-8". It holds for the statements of
 * the object in `connection` until it is detached.
 */
zmfb_status zmfb_set_database_encoding(const zmfb_value* connection, const char* name);

/** @} */
/** @name Statements */
/** @{ */

/** A prepared statement, the values for its "?", and its rows. */
typedef struct zmfb_statement zmfb_statement;

/** A day, a time of day, or both. */
typedef struct zmfb_moment {
    int year;     /**< 1 to 9999 */
    int month;    /**< 1 to 12 */
    int day;      /**< 1 to 31 */
    int hour;     /**< 0 to 23 */
    int minute;   /**< 0 to 59 */
    int second;   /**< 0 to 59 */
    int fraction; /**< ten-thousandths of a second, 0 to 9999 */
} zmfb_moment;

/** A new statement that is not prepared; NULL when memory ran out. The caller ends it with
 * zmfb_free_statement(). */
zmfb_statement* zmfb_new_statement(void);
/** Ends what zmfb_new_statement() made, and its rows. NULL is allowed. */
void zmfb_free_statement(zmfb_statement* statement);

/**
 * Prepares `sql` in a transaction that has begun; statements that begin or end one are refused. What was
 * prepared before, its values and its rows go.
 */
zmfb_status zmfb_prepare_statement(zmfb_statement* statement, zmfb_transaction* transaction, const char* sql);

/** Tells how many values a prepared statement takes. */
zmfb_status zmfb_parameter_count(zmfb_statement* statement, size_t* count);

/** @{ */
/**
 * Gives "?" number `index`, from 1, a value, which is copied and stays until another is given. It has to suit
 * the "?" when the statement runs: a number goes into every column of numbers that can hold all its digits,
 * `number` being `unscaled` in units of the last of `decimals` decimals (-1250 and 2 are -12.50); a double
 * into FLOAT and DOUBLE PRECISION; a text also into a text blob, bytes into any other blob and where the
 * character set is OCTETS; a logical into BOOLEAN and, as T or F, into CHAR(1). A day or a time of day that
 * is none is out of range; a date needs no more of the moment than the day, a time no more than the rest.
 */
zmfb_status zmfb_bind_null(zmfb_statement* statement, size_t index);
zmfb_status zmfb_bind_logical(zmfb_statement* statement, size_t index, int logical);
zmfb_status zmfb_bind_number(zmfb_statement* statement, size_t index, int64_t unscaled, int decimals);
zmfb_status zmfb_bind_double(zmfb_statement* statement, size_t index, double number);
zmfb_status zmfb_bind_text(zmfb_statement* statement, size_t index, const char* text, size_t length);
zmfb_status zmfb_bind_bytes(zmfb_statement* statement, size_t index, const void* bytes, size_t length);
zmfb_status zmfb_bind_date(zmfb_statement* statement, size_t index, const zmfb_moment* day);
zmfb_status zmfb_bind_time(zmfb_statement* statement, size_t index, const zmfb_moment* time);
zmfb_status zmfb_bind_timestamp(zmfb_statement* statement, size_t index, const zmfb_moment* moment);
/** @} */

/** Runs a statement that returns no rows. Tells how many rows it changed, where `changed` is not NULL. */
zmfb_status zmfb_execute(zmfb_statement* statement, int64_t* changed);

/** Runs a query, or a statement with RETURNING. Rows of an earlier run are given up. */
zmfb_status zmfb_query(zmfb_statement* statement);

/**
 * Goes to the next row, first to the first: ZMFB_OK when there is one, ZMFB_END behind the last. Any other
 * status is a failure, half-way through the rows too, and there are no more rows then.
 */
zmfb_status zmfb_next(zmfb_statement* statement);

/** The same of a statement as zmfb_transaction_error() of a transaction. */
zmfb_status zmfb_statement_error(const zmfb_statement* statement, int* sqlcode, const char** sqlstate,
                                 const char** text);

/** @} */
/** @name Rows */
/** @{ */

/** What a column holds. */
typedef enum zmfb_sql_type {
    ZMFB_SQL_TEXT = 0,    /**< CHAR, VARCHAR */
    ZMFB_SQL_BYTES = 1,   /**< the same of the character set OCTETS */
    ZMFB_SQL_INTEGER = 2, /**< SMALLINT, INTEGER, BIGINT */
    ZMFB_SQL_DECIMAL = 3, /**< NUMERIC, DECIMAL with decimals; all numbers of more than 18 digits */
    ZMFB_SQL_REAL = 4,    /**< FLOAT, DOUBLE PRECISION, DECFLOAT */
    ZMFB_SQL_BOOLEAN = 5,
    ZMFB_SQL_DATE = 6,
    ZMFB_SQL_TIME = 7,
    ZMFB_SQL_TIMESTAMP = 8,
    ZMFB_SQL_TEXT_BLOB = 9,
    ZMFB_SQL_BLOB = 10,
    ZMFB_SQL_OTHER = 11 /**< a time with a zone, read as a text; an array, which is not read here */
} zmfb_sql_type;

/** Tells how many columns the rows of a prepared statement have; 0 when it returns none. */
zmfb_status zmfb_column_count(zmfb_statement* statement, size_t* count);

/**
 * Tells the alias or name of column `index`, from 1, what it holds, and how many decimals it has. The name
 * lives until the statement is prepared anew or ends. Any of the places may be NULL.
 */
zmfb_status zmfb_column(zmfb_statement* statement, size_t index, const char** name, zmfb_sql_type* type,
                        int* decimals);

/** Tells whether the value of column `index`, from 1, of the current row is NULL: 0 or 1. */
zmfb_status zmfb_field_is_null(zmfb_statement* statement, size_t index, int* is_null);

/** @{ */
/**
 * Tells the value of column `index`, from 1, of the current row. NULL, and a column of another type, is a
 * failure: a number is told of ZMFB_SQL_INTEGER and ZMFB_SQL_DECIMAL, as zmfb_bind_number() takes it; a
 * double of ZMFB_SQL_REAL; a logical of ZMFB_SQL_BOOLEAN and of CHAR(1) with T or F; bytes of ZMFB_SQL_BYTES
 * and ZMFB_SQL_BLOB; a moment of the three that have one, 0 being what they have not. The text of texts and
 * text blobs is told as it is, CHAR without the blanks at its end; every other value as people write it:
 * "-12.50", "true", "2007-03-01", bytes in hexadecimal, "<blob 123 bytes>", "<INT128>". Texts and bytes
 * live until the next row, or until the same field is read again.
 */
zmfb_status zmfb_field_logical(zmfb_statement* statement, size_t index, int* logical);
zmfb_status zmfb_field_number(zmfb_statement* statement, size_t index, int64_t* unscaled, int* decimals);
zmfb_status zmfb_field_double(zmfb_statement* statement, size_t index, double* number);
zmfb_status zmfb_field_text(zmfb_statement* statement, size_t index, const char** text, size_t* length);
zmfb_status zmfb_field_bytes(zmfb_statement* statement, size_t index, const void** bytes, size_t* length);
zmfb_status zmfb_field_moment(zmfb_statement* statement, size_t index, zmfb_moment* moment);
/** @} */

/** @} */

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
