/* Every function of transactions and statements with NULL where it is not allowed, and with handles that are
 * not ready. Needs no database. */
#include <stdlib.h>

#include "check.h"

#define REFUSED(call) CHECK((call) == ZMFB_WRONG_ARGUMENT && said(words))

/* Each call with this statement. */
static void each_is_refused(zmfb_statement* statement, const char* words) {
    const zmfb_moment moment = {2007, 3, 1, 14, 5, 9, 1234};
    const char* text = NULL;
    const void* bytes = NULL;
    size_t size = 0;
    int64_t number = 0;
    int small = 0;
    double real = 0;
    zmfb_moment told;
    REFUSED(zmfb_bind_null(statement, 1));
    REFUSED(zmfb_bind_logical(statement, 1, 1));
    REFUSED(zmfb_bind_number(statement, 1, 1, 0));
    REFUSED(zmfb_bind_number(statement, 1, 1, 2));
    REFUSED(zmfb_bind_double(statement, 1, 1));
    REFUSED(zmfb_bind_text(statement, 1, "a", 1));
    REFUSED(zmfb_bind_bytes(statement, 1, "a", 1));
    REFUSED(zmfb_bind_date(statement, 1, &moment));
    REFUSED(zmfb_bind_time(statement, 1, &moment));
    REFUSED(zmfb_bind_timestamp(statement, 1, &moment));
    REFUSED(zmfb_parameter_count(statement, &size));
    REFUSED(zmfb_execute(statement, &number));
    REFUSED(zmfb_query(statement));
    REFUSED(zmfb_next(statement));
    REFUSED(zmfb_column_count(statement, &size));
    REFUSED(zmfb_column(statement, 1, &text, NULL, NULL));
    REFUSED(zmfb_field_is_null(statement, 1, &small));
    REFUSED(zmfb_field_logical(statement, 1, &small));
    REFUSED(zmfb_field_number(statement, 1, &number, &small));
    REFUSED(zmfb_field_double(statement, 1, &real));
    REFUSED(zmfb_field_text(statement, 1, &text, &size));
    REFUSED(zmfb_field_bytes(statement, 1, &bytes, &size));
    REFUSED(zmfb_field_moment(statement, 1, &told));
}

static void no_transaction_is_refused(void) {
    static const char words[] = "NULL is not allowed here";
    zmfb_value* connection = zmfb_new();
    zmfb_transaction* transaction = zmfb_new_transaction();
    zmfb_statement* statement = zmfb_new_statement();
    REFUSED(zmfb_begin(NULL, connection, ZMFB_READ_WRITE));
    REFUSED(zmfb_begin(transaction, NULL, ZMFB_READ_WRITE));
    REFUSED(zmfb_commit(NULL));
    REFUSED(zmfb_roll_back(NULL));
    REFUSED(zmfb_transaction_error(NULL, NULL, NULL, NULL));
    REFUSED(zmfb_statement_error(NULL, NULL, NULL, NULL));
    REFUSED(zmfb_prepare_statement(NULL, transaction, "select 1 from rdb$database"));
    REFUSED(zmfb_prepare_statement(statement, NULL, "select 1 from rdb$database"));
    REFUSED(zmfb_prepare_statement(statement, transaction, NULL));
    REFUSED(zmfb_set_database_encoding(NULL, "UTF-8"));
    REFUSED(zmfb_set_database_encoding(connection, NULL));
    CHECK(zmfb_set_database_encoding(connection, "UTF-8") == ZMFB_WRONG_KIND);
    zmfb_free_statement(statement), zmfb_free_transaction(transaction), zmfb_free(connection);
    zmfb_free_statement(NULL), zmfb_free_transaction(NULL);
}

static void what_did_not_fail_has_no_error(void) {
    zmfb_transaction* transaction = zmfb_new_transaction();
    zmfb_statement* statement = zmfb_new_statement();
    int sqlcode = 1;
    const char *sqlstate = NULL, *text = NULL;
    CHECK(zmfb_transaction_error(transaction, &sqlcode, &sqlstate, &text) == ZMFB_OK);
    CHECK(sqlcode == 0 && strcmp(sqlstate, "") == 0 && strcmp(text, "") == 0);
    CHECK(zmfb_statement_error(statement, &sqlcode, &sqlstate, &text) == ZMFB_OK);
    CHECK(sqlcode == 0 && strcmp(sqlstate, "") == 0 && strcmp(text, "") == 0);
    CHECK(zmfb_statement_error(statement, NULL, NULL, NULL) == ZMFB_OK);
    zmfb_free_statement(statement), zmfb_free_transaction(transaction);
}

int main(void) {
    zmfb_statement* statement = zmfb_new_statement();
    each_is_refused(NULL, "NULL is not allowed here");
    each_is_refused(statement, "the statement is not prepared");
    zmfb_free_statement(statement);
    no_transaction_is_refused();
    what_did_not_fail_has_no_error();
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
