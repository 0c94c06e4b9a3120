/**
 * @file
 * Transactions, statements and rows.
 */
#ifndef ZMFBCONN_C_STATEMENT_H
#define ZMFBCONN_C_STATEMENT_H

#include <stddef.h>
#include <stdint.h>

#include "value.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

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
