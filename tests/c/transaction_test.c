/* Transactions and their statements: what is kept, what fails half-way, and what outlives what. Runs in a
 * folder of its own. */
#include <stdlib.h>

#include "statement.h"

static int64_t count(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    const int64_t rows = number_of(work, "select count(*) from T");
    zmfb_free_transaction(work);
    return rows;
}

static void only_what_is_committed_is_kept(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    CHECK(run(work, "insert into T values (1)") == 1);
    zmfb_free_transaction(work);
    CHECK(count(connection) == 0);
    work = begun(connection);
    CHECK(run(work, "insert into T values (1)") == 1 && zmfb_roll_back(work) == ZMFB_OK);
    CHECK(count(connection) == 0);
    CHECK(zmfb_begin(work, connection, ZMFB_READ_WRITE) == ZMFB_OK);
    CHECK(run(work, "insert into T values (1)") == 1 && zmfb_commit(work) == ZMFB_OK);
    CHECK(count(connection) == 1);
    zmfb_free_transaction(work);
}

static void a_statement_runs_often_with_the_values_that_stay(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* insert = prepared(work, "insert into T select A + ? from T where A = ?");
    int64_t changed = -1;
    size_t parameters = 0;
    CHECK(zmfb_parameter_count(insert, &parameters) == ZMFB_OK && parameters == 2);
    CHECK(zmfb_execute(insert, &changed) == ZMFB_WRONG_ARGUMENT && said("parameter 1 was given no value"));
    CHECK(zmfb_bind_number(insert, 2, 1, 0) == ZMFB_OK);
    for (int64_t k = 1; k <= 3; ++k) {
        CHECK(zmfb_bind_number(insert, 1, k, 0) == ZMFB_OK);
        CHECK(zmfb_execute(insert, &changed) == ZMFB_OK && changed == 1);
    }
    CHECK(number_of(work, "select sum(A) from T") == 1 + 2 + 3 + 4);
    CHECK(zmfb_bind_number(insert, 2, 99, 0) == ZMFB_OK);
    CHECK(zmfb_execute(insert, &changed) == ZMFB_OK && changed == 0);
    CHECK(zmfb_bind_number(insert, 0, 1, 0) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_bind_number(insert, 3, 1, 0) == ZMFB_OUT_OF_RANGE && said("there is no parameter 3 of 2"));
    zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void returning_gives_a_row(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* insert = prepared(work, "insert into T values (41) returning A + 1");
    CHECK(zmfb_execute(insert, NULL) == ZMFB_FAILED && failed_with(insert, "07005"));
    CHECK(zmfb_query(insert) == ZMFB_OK && zmfb_next(insert) == ZMFB_OK && shows(insert, 1, "42"));
    CHECK(zmfb_next(insert) == ZMFB_END);
    zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void a_failure_half_way_is_no_end(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query = prepared(work,
                                     "select 10 / (3 - N) from (select 1 as N from rdb$database union all "
                                     "select 2 from rdb$database union all select 3 from rdb$database union "
                                     "all select 4 from rdb$database)");
    CHECK(zmfb_query(query) == ZMFB_OK);
    CHECK(zmfb_next(query) == ZMFB_OK && shows(query, 1, "5"));
    CHECK(zmfb_next(query) == ZMFB_OK && shows(query, 1, "10"));
    CHECK(zmfb_next(query) == ZMFB_FAILED && failed_with(query, "22012"));
    CHECK(zmfb_next(query) == ZMFB_FAILED && failed_with(query, "24000")); /* and no row after it */
    CHECK(zmfb_query(query) == ZMFB_OK && zmfb_next(query) == ZMFB_OK && shows(query, 1, "5"));
    zmfb_free_statement(query), zmfb_free_transaction(work);
}

static void running_again_gives_up_the_rows(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query = prepared(work,
                                     "select N from (select 1 as N from rdb$database union all select 2 from "
                                     "rdb$database) where N >= ?");
    CHECK(zmfb_next(query) == ZMFB_WRONG_ARGUMENT && said("there are no rows: zmfb_query() comes first"));
    CHECK(zmfb_bind_number(query, 1, 1, 0) == ZMFB_OK && zmfb_query(query) == ZMFB_OK);
    CHECK(zmfb_next(query) == ZMFB_OK && shows(query, 1, "1"));
    CHECK(zmfb_bind_number(query, 1, 2, 0) == ZMFB_OK && zmfb_query(query) == ZMFB_OK);
    CHECK(zmfb_next(query) == ZMFB_OK && shows(query, 1, "2") && zmfb_next(query) == ZMFB_END);
    CHECK(zmfb_bind_text(query, 1, "no number", 9) == ZMFB_OK && zmfb_query(query) == ZMFB_FAILED);
    CHECK(zmfb_next(query) == ZMFB_WRONG_ARGUMENT); /* the rows of before are gone */
    CHECK(zmfb_bind_number(query, 1, 1, 0) == ZMFB_OK && zmfb_query(query) == ZMFB_OK);
    CHECK(zmfb_prepare_statement(query, work, "select 1 from rdb$database where 1 = ?") == ZMFB_OK);
    CHECK(zmfb_next(query) == ZMFB_WRONG_ARGUMENT); /* and with their statement, as the values are */
    CHECK(zmfb_query(query) == ZMFB_WRONG_ARGUMENT && said("parameter 1 was given no value"));
    zmfb_free_statement(query), zmfb_free_transaction(work);
}

static void what_the_engine_refuses_is_told_of_the_statement(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* statement = prepared(work, "select A from T");
    CHECK(zmfb_prepare_statement(statement, work, "select nothing from nowhere") == ZMFB_FAILED);
    CHECK(failed_with(statement, "42S02") && strstr(zmfb_message(), "NOWHERE") != NULL);
    CHECK(zmfb_query(statement) == ZMFB_OK && zmfb_next(statement) == ZMFB_OK); /* the one of before stays */
    CHECK(zmfb_prepare_statement(statement, work, "commit") == ZMFB_FAILED &&
          failed_with(statement, "0A000"));
    CHECK(zmfb_prepare_statement(statement, work, NULL) == ZMFB_WRONG_ARGUMENT);
    int sqlcode = 1;
    const char *sqlstate = NULL, *text = NULL;
    CHECK(zmfb_statement_error(statement, &sqlcode, &sqlstate, &text) == ZMFB_OK);
    CHECK(sqlcode == 0 && strcmp(sqlstate, "") == 0 && strcmp(text, "") == 0); /* no matter of SQL */
    zmfb_free_statement(statement), zmfb_free_transaction(work);
}

static void a_read_only_transaction_changes_nothing(zmfb_value* connection) {
    zmfb_transaction* work = zmfb_new_transaction();
    CHECK(zmfb_begin(work, connection, ZMFB_READ_ONLY) == ZMFB_OK);
    zmfb_statement* insert = prepared(work, "insert into T values (5)");
    CHECK(zmfb_execute(insert, NULL) == ZMFB_FAILED && failed_with(insert, "42000"));
    zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static int transaction_failed_with(const zmfb_transaction* transaction, const char* state) {
    int sqlcode = 0;
    const char* sqlstate = NULL;
    CHECK(zmfb_transaction_error(transaction, &sqlcode, &sqlstate, NULL) == ZMFB_OK);
    return sqlcode < 0 && strcmp(sqlstate, state) == 0;
}

static void the_batch_of_the_object_is_worked_in(zmfb_value* connection) {
    zmfb_transaction* work = zmfb_new_transaction();
    CHECK(zmfb_begin(work, connection, ZMFB_BATCH) == ZMFB_FAILED && transaction_failed_with(work, "25000"));
    const int64_t before = count(connection);
    CHECK(zmfb_call(connection, "starttransaction", NULL, 0, NULL) == ZMFB_OK);
    CHECK(zmfb_begin(work, connection, ZMFB_BATCH) == ZMFB_OK && run(work, "insert into T values (8)") == 1);
    zmfb_free_transaction(work);
    CHECK(zmfb_call(connection, "commitchanges", NULL, 0, NULL) == ZMFB_OK);
    CHECK(count(connection) == before + 1);
}

static void a_transaction_begins_and_ends_once(zmfb_value* connection) {
    zmfb_transaction* work = zmfb_new_transaction();
    CHECK(zmfb_commit(work) == ZMFB_WRONG_ARGUMENT && said("the transaction was not begun"));
    CHECK(zmfb_roll_back(work) == ZMFB_WRONG_ARGUMENT);
    CHECK(zmfb_begin(work, connection, (zmfb_access)3) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_begin(work, connection, ZMFB_READ_WRITE) == ZMFB_OK);
    CHECK(zmfb_begin(work, connection, ZMFB_READ_WRITE) == ZMFB_WRONG_ARGUMENT);
    CHECK(zmfb_commit(work) == ZMFB_OK);
    CHECK(zmfb_commit(work) == ZMFB_FAILED && transaction_failed_with(work, "25000"));
    CHECK(zmfb_roll_back(work) == ZMFB_FAILED && transaction_failed_with(work, "25000"));
    zmfb_free_transaction(work);
}

static void statements_may_outlive_their_transaction(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query = prepared(work, "select A from T");
    CHECK(zmfb_query(query) == ZMFB_OK && zmfb_next(query) == ZMFB_OK);
    zmfb_free_transaction(work);
    const char* text = NULL;
    size_t length = 0;
    CHECK(zmfb_field_text(query, 1, &text, &length) == ZMFB_FAILED && failed_with(query, "24000"));
    CHECK(zmfb_next(query) == ZMFB_FAILED && failed_with(query, "24000"));
    CHECK(zmfb_query(query) == ZMFB_FAILED && failed_with(query, "25000"));
    zmfb_free_statement(query);
}

static void transactions_may_outlive_their_connection(void) {
    zmfb_value* connection = attached();
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query = prepared(work, "select A from T");
    CHECK(run(work, "insert into T values (7)") == 1);
    CHECK(zmfb_query(query) == ZMFB_OK && zmfb_next(query) == ZMFB_OK);
    zmfb_free(connection);
    CHECK(zmfb_next(query) == ZMFB_FAILED && zmfb_query(query) == ZMFB_FAILED);
    CHECK(failed_with(query, "25000"));
    CHECK(zmfb_commit(work) == ZMFB_FAILED && transaction_failed_with(work, "25000"));
    zmfb_free_transaction(work), zmfb_free_statement(query);
    connection = attached();
    CHECK(count(connection) == 2); /* the 7 was rolled back */
    zmfb_free(connection);
}

static void an_object_that_is_not_attached_has_no_transactions(void) {
    zmfb_value* connection = zmfb_new();
    zmfb_transaction* work = zmfb_new_transaction();
    CHECK(zmfb_begin(work, connection, ZMFB_READ_WRITE) == ZMFB_WRONG_KIND && said("wanted object, got nil"));
    CHECK(zmfb_connect(connection, NULL, NULL, NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_begin(work, connection, ZMFB_READ_WRITE) == ZMFB_FAILED);
    CHECK(transaction_failed_with(work, "08003"));
    zmfb_statement* statement = zmfb_new_statement();
    CHECK(zmfb_prepare_statement(statement, work, "select 1 from rdb$database") == ZMFB_WRONG_ARGUMENT);
    zmfb_free_statement(statement), zmfb_free_transaction(work), zmfb_free(connection);
}

static void texts_are_in_the_encoding_that_is_named(void) {
    zmfb_value* connection = attached();
    CHECK(zmfb_set_database_encoding(connection, "no such set") == ZMFB_FAILED);
    CHECK(zmfb_set_database_encoding(connection, "CP1252") == ZMFB_OK);
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query =
        prepared(work, "select octet_length(cast(? as varchar(9))), cast(? as varchar(9)) from rdb$database");
    CHECK(zmfb_bind_text(query, 1, "\xE2\x82\xAC", 3) == ZMFB_OK);
    CHECK(zmfb_bind_text(query, 2, "\xE2\x82\xAC", 3) == ZMFB_OK);
    CHECK(zmfb_query(query) == ZMFB_OK && zmfb_next(query) == ZMFB_OK);
    CHECK(shows(query, 1, "1") && shows(query, 2, "\xE2\x82\xAC"));
    zmfb_free_statement(query), zmfb_free_transaction(work), zmfb_free(connection);
}

int main(void) {
    CHECK(zmfb_prepare(database) == ZMFB_OK);
    CHECK(zmfb_create_database(database, "SYSDBA", NULL) == ZMFB_OK);
    zmfb_value* connection = attached();
    zmfb_transaction* work = begun(connection);
    CHECK(run(work, "create table T (A integer not null)") == 0 && zmfb_commit(work) == ZMFB_OK);
    zmfb_free_transaction(work);
    only_what_is_committed_is_kept(connection);
    a_statement_runs_often_with_the_values_that_stay(connection);
    returning_gives_a_row(connection);
    a_failure_half_way_is_no_end(connection);
    running_again_gives_up_the_rows(connection);
    what_the_engine_refuses_is_told_of_the_statement(connection);
    a_read_only_transaction_changes_nothing(connection);
    the_batch_of_the_object_is_worked_in(connection);
    a_transaction_begins_and_ends_once(connection);
    statements_may_outlive_their_transaction(connection);
    zmfb_free(connection);
    transactions_may_outlive_their_connection();
    an_object_that_is_not_attached_has_no_transactions();
    texts_are_in_the_encoding_that_is_named();
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
