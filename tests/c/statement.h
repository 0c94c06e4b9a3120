/* What the tests of transactions and statements share: a database of their own, and short words for it. */
#ifndef ZMFB_TESTS_C_STATEMENT_H
#define ZMFB_TESTS_C_STATEMENT_H

#include "check.h"

static const char database[] = "statements.fdb";

/* A new object that is attached to the database. */
static inline zmfb_value* attached(void) {
    zmfb_value* connection = zmfb_new();
    CHECK(zmfb_connect(connection, database, "SYSDBA", NULL, NULL) == ZMFB_OK);
    return connection;
}

/* A new transaction that has begun. */
static inline zmfb_transaction* begun(const zmfb_value* connection) {
    zmfb_transaction* transaction = zmfb_new_transaction();
    CHECK(zmfb_begin(transaction, connection, ZMFB_READ_WRITE) == ZMFB_OK);
    return transaction;
}

/* A new statement that is prepared. */
static inline zmfb_statement* prepared(zmfb_transaction* transaction, const char* sql) {
    zmfb_statement* statement = zmfb_new_statement();
    CHECK(zmfb_prepare_statement(statement, transaction, sql) == ZMFB_OK);
    return statement;
}

/* Runs a statement without values; how many rows it changed, -1 when it failed. */
static inline int64_t run(zmfb_transaction* transaction, const char* sql) {
    zmfb_statement* statement = prepared(transaction, sql);
    int64_t changed = -1;
    zmfb_execute(statement, &changed);
    zmfb_free_statement(statement);
    return changed;
}

/* The one number of a query of one row; a number that no test uses when there is none. */
static inline int64_t number_of(zmfb_transaction* transaction, const char* sql) {
    zmfb_statement* statement = prepared(transaction, sql);
    int64_t number = -987654321;
    int decimals = 0;
    if (zmfb_query(statement) == ZMFB_OK && zmfb_next(statement) == ZMFB_OK)
        zmfb_field_number(statement, 1, &number, &decimals);
    zmfb_free_statement(statement);
    return number;
}

/* Whether a field of the current row has exactly this text. */
static inline int shows(zmfb_statement* statement, size_t index, const char* text) {
    const char* held = "";
    size_t length = 0;
    const int told = zmfb_field_text(statement, index, &held, &length) == ZMFB_OK;
    const int same = told && length == strlen(text) && memcmp(held, text, length) == 0;
    if (!same) fprintf(stderr, "field %zu shows \"%.*s\"\n", index, (int)length, held);
    return same;
}

/* Whether the last failure of a statement was of this SQLSTATE. */
static inline int failed_with(const zmfb_statement* statement, const char* state) {
    int sqlcode = 1;
    const char *sqlstate = NULL, *text = NULL;
    CHECK(zmfb_statement_error(statement, &sqlcode, &sqlstate, &text) == ZMFB_OK);
    const int same = sqlcode < 0 && strcmp(sqlstate, state) == 0 && strlen(text) > 0;
    if (!same) fprintf(stderr, "SQLSTATE %s, SQLCODE %d: %s\n", sqlstate, sqlcode, text);
    return same;
}

#endif
