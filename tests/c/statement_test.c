/* Values into statements and out of rows again, and how they fail. Runs in a folder of its own. */
#include "statement.h"

#include <stdlib.h>

static const char all_kinds[] =
    "insert into K (ID, LOGICAL, LETTER, SMALL, WHOLE, BIG, MONEY, RATIO, NAME, RAW, BORN, CLOCK, MOMENT, "
    "NOTES, "
    "PHOTO) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
enum {
    ID = 1,
    LOGICAL,
    LETTER,
    SMALL,
    WHOLE,
    BIG,
    MONEY,
    RATIO,
    NAME,
    RAW,
    BORN,
    CLOCK,
    MOMENT,
    NOTES,
    PHOTO
};

static void create(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    CHECK(run(work,
              "create table K (ID integer not null, LOGICAL boolean, LETTER char(1), SMALL smallint, WHOLE "
              "integer, BIG bigint, MONEY numeric(18, 2), RATIO double precision, NAME varchar(20), RAW "
              "varchar(8) character set octets, BORN date, CLOCK time, MOMENT timestamp, NOTES blob sub_type "
              "text, PHOTO blob)") == 0);
    CHECK(zmfb_commit(work) == ZMFB_OK);
    zmfb_free_transaction(work);
}

static void bind_one_of_each(zmfb_statement* insert) {
    const zmfb_moment moment = {2007, 3, 1, 14, 5, 9, 1234};
    CHECK(zmfb_bind_number(insert, ID, 1, 0) == ZMFB_OK);
    CHECK(zmfb_bind_logical(insert, LOGICAL, 7) == ZMFB_OK);
    CHECK(zmfb_bind_logical(insert, LETTER, 0) == ZMFB_OK);
    CHECK(zmfb_bind_number(insert, SMALL, -32768, 0) == ZMFB_OK);
    CHECK(zmfb_bind_number(insert, WHOLE, 2147483647, 0) == ZMFB_OK);
    CHECK(zmfb_bind_number(insert, BIG, INT64_MIN, 0) == ZMFB_OK);
    CHECK(zmfb_bind_number(insert, MONEY, INT64_MAX, 2) == ZMFB_OK);
    CHECK(zmfb_bind_double(insert, RATIO, 0.1) == ZMFB_OK);
    CHECK(zmfb_bind_text(insert, NAME, "Ann\xC3\xA9", 5) == ZMFB_OK);
    CHECK(zmfb_bind_bytes(insert, RAW, "a\0b", 3) == ZMFB_OK);
    CHECK(zmfb_bind_date(insert, BORN, &moment) == ZMFB_OK);
    CHECK(zmfb_bind_time(insert, CLOCK, &moment) == ZMFB_OK);
    CHECK(zmfb_bind_timestamp(insert, MOMENT, &moment) == ZMFB_OK);
    CHECK(zmfb_bind_text(insert, NOTES, "\xC3\xA9t\xC3\xA9", 5) == ZMFB_OK);
    CHECK(zmfb_bind_bytes(insert, PHOTO, "\0\xFF", 2) == ZMFB_OK);
}

static int is_number(zmfb_statement* statement, size_t index, int64_t number, int wanted_decimals) {
    int64_t unscaled = 0;
    int decimals = -1;
    return zmfb_field_number(statement, index, &unscaled, &decimals) == ZMFB_OK && unscaled == number &&
           decimals == wanted_decimals;
}

static int is_logical(zmfb_statement* statement, size_t index, int wanted) {
    int logical = -1;
    return zmfb_field_logical(statement, index, &logical) == ZMFB_OK && logical == wanted;
}

static int is_moment(zmfb_statement* statement, size_t index, zmfb_moment wanted) {
    zmfb_moment moment;
    return zmfb_field_moment(statement, index, &moment) == ZMFB_OK &&
           memcmp(&moment, &wanted, sizeof moment) == 0;
}

static int is_bytes(zmfb_statement* statement, size_t index, const char* wanted, size_t wanted_length) {
    const void* bytes = NULL;
    size_t length = 0;
    return zmfb_field_bytes(statement, index, &bytes, &length) == ZMFB_OK && length == wanted_length &&
           memcmp(bytes, wanted, length) == 0;
}

static void check_one_of_each(zmfb_statement* row) {
    double real = 0;
    CHECK(is_number(row, ID, 1, 0));
    CHECK(is_logical(row, LOGICAL, 1));
    CHECK(is_logical(row, LETTER, 0));
    CHECK(is_number(row, SMALL, -32768, 0));
    CHECK(is_number(row, WHOLE, 2147483647, 0));
    CHECK(is_number(row, BIG, INT64_MIN, 0));
    CHECK(is_number(row, MONEY, INT64_MAX, 2));
    CHECK(zmfb_field_double(row, RATIO, &real) == ZMFB_OK && real == 0.1);
    CHECK(shows(row, NAME, "Ann\xC3\xA9"));
    CHECK(is_bytes(row, RAW, "a\0b", 3));
    CHECK(is_moment(row, BORN, (zmfb_moment){2007, 3, 1, 0, 0, 0, 0}));
    CHECK(is_moment(row, CLOCK, (zmfb_moment){0, 0, 0, 14, 5, 9, 1234}));
    CHECK(is_moment(row, MOMENT, (zmfb_moment){2007, 3, 1, 14, 5, 9, 1234}));
    CHECK(shows(row, NOTES, "\xC3\xA9t\xC3\xA9"));
    CHECK(is_bytes(row, PHOTO, "\0\xFF", 2));
}

static void check_as_people_write_it(zmfb_statement* row) {
    static const char* const shown[] = {"1",
                                        "true",
                                        "F",
                                        "-32768",
                                        "2147483647",
                                        "-9223372036854775808",
                                        "92233720368547758.07",
                                        "0.1",
                                        "Ann\xC3\xA9",
                                        "610062",
                                        "2007-03-01",
                                        "14:05:09.1234",
                                        "2007-03-01 14:05:09.1234",
                                        "\xC3\xA9t\xC3\xA9",
                                        "<blob 2 bytes>"};
    for (size_t k = 0; k < sizeof shown / sizeof *shown; ++k) CHECK(shows(row, k + 1, shown[k]));
}

static void each_kind_comes_back_as_it_went_in(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* insert = prepared(work, all_kinds);
    int64_t changed = 0;
    bind_one_of_each(insert);
    CHECK(zmfb_execute(insert, &changed) == ZMFB_OK && changed == 1);
    zmfb_statement* row = prepared(work, "select * from K");
    CHECK(zmfb_query(row) == ZMFB_OK && zmfb_next(row) == ZMFB_OK);
    check_one_of_each(row);
    check_as_people_write_it(row);
    CHECK(zmfb_next(row) == ZMFB_END && zmfb_next(row) == ZMFB_END);
    zmfb_free_statement(row), zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void null_is_bound_and_told(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* insert = prepared(work, all_kinds);
    CHECK(zmfb_bind_number(insert, ID, 2, 0) == ZMFB_OK);
    for (size_t k = LOGICAL; k <= PHOTO; ++k) CHECK(zmfb_bind_null(insert, k) == ZMFB_OK);
    CHECK(zmfb_execute(insert, NULL) == ZMFB_OK);
    zmfb_statement* row = prepared(work, "select * from K");
    const char* text = "untouched";
    size_t length = 0;
    int is_null = -1;
    CHECK(zmfb_query(row) == ZMFB_OK && zmfb_next(row) == ZMFB_OK);
    CHECK(zmfb_field_is_null(row, ID, &is_null) == ZMFB_OK && is_null == 0);
    for (size_t k = LOGICAL; k <= PHOTO; ++k) {
        CHECK(zmfb_field_is_null(row, k, &is_null) == ZMFB_OK && is_null == 1);
        CHECK(zmfb_field_text(row, k, &text, &length) == ZMFB_FAILED && failed_with(row, "22002"));
    }
    CHECK(strcmp(text, "untouched") == 0);
    zmfb_free_statement(row), zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void null_where_none_can_be_fails(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* insert = prepared(work, "insert into K (ID) values (?)");
    int sqlcode = 0;
    const char *sqlstate = NULL, *text = NULL;
    int64_t changed = 77;
    CHECK(zmfb_bind_null(insert, 1) == ZMFB_OK && zmfb_execute(insert, &changed) == ZMFB_FAILED);
    CHECK(changed == 77);
    CHECK(zmfb_statement_error(insert, &sqlcode, &sqlstate, &text) == ZMFB_OK);
    CHECK(sqlcode == -625 && strcmp(sqlstate, "23000") == 0 && strstr(text, "\"K\".\"ID\"") != NULL);
    CHECK(strstr(zmfb_message(), text) == zmfb_message()); /* which has the code and the statement too */
    CHECK(strstr(zmfb_message(), "insert into K (ID) values (?)") != NULL);
    CHECK(zmfb_bind_number(insert, 1, 3, 0) == ZMFB_OK && zmfb_execute(insert, NULL) == ZMFB_OK);
    zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void columns_are_told(zmfb_value* connection) {
    static const struct {
        const char* name;
        zmfb_sql_type type;
        int decimals;
    } wanted[] = {
        {"ID", ZMFB_SQL_INTEGER, 0},       {"LOGICAL", ZMFB_SQL_BOOLEAN, 0}, {"LETTER", ZMFB_SQL_TEXT, 0},
        {"SMALL", ZMFB_SQL_INTEGER, 0},    {"WHOLE", ZMFB_SQL_INTEGER, 0},   {"BIG", ZMFB_SQL_INTEGER, 0},
        {"MONEY", ZMFB_SQL_DECIMAL, 2},    {"RATIO", ZMFB_SQL_REAL, 0},      {"NAME", ZMFB_SQL_TEXT, 0},
        {"RAW", ZMFB_SQL_BYTES, 0},        {"BORN", ZMFB_SQL_DATE, 0},       {"CLOCK", ZMFB_SQL_TIME, 0},
        {"MOMENT", ZMFB_SQL_TIMESTAMP, 0}, {"NOTES", ZMFB_SQL_TEXT_BLOB, 0}, {"PHOTO", ZMFB_SQL_BLOB, 0}};
    zmfb_transaction* work = begun(connection);
    zmfb_statement* query = prepared(work, "select * from K");
    size_t count = 0;
    CHECK(zmfb_column_count(query, &count) == ZMFB_OK && count == sizeof wanted / sizeof *wanted);
    for (size_t k = 0; k < count; ++k) {
        const char* name = NULL;
        zmfb_sql_type type = ZMFB_SQL_OTHER;
        int decimals = -1;
        CHECK(zmfb_column(query, k + 1, &name, &type, &decimals) == ZMFB_OK);
        CHECK(strcmp(name, wanted[k].name) == 0 && type == wanted[k].type && decimals == wanted[k].decimals);
        CHECK(zmfb_column(query, k + 1, NULL, NULL, NULL) == ZMFB_OK);
    }
    CHECK(zmfb_column(query, 0, NULL, NULL, NULL) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_column(query, count + 1, NULL, NULL, NULL) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_prepare_statement(query, work, "delete from K") == ZMFB_OK);
    CHECK(zmfb_column_count(query, &count) == ZMFB_OK && count == 0);
    zmfb_free_statement(query), zmfb_free_transaction(work);
}

/* What a value of each kind, into a column that is none of its, is refused with before anything is sent. */
static void values_that_do_not_suit_are_refused(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    zmfb_statement* update = prepared(work, "update K set NAME = ?");
    const zmfb_moment moment = {2007, 3, 1, 14, 5, 9, 1234};
    CHECK(zmfb_bind_number(update, 1, 5, 0) == ZMFB_OK && zmfb_execute(update, NULL) == ZMFB_FAILED);
    CHECK(failed_with(update, "07006"));
    CHECK(zmfb_bind_timestamp(update, 1, &moment) == ZMFB_OK && zmfb_execute(update, NULL) == ZMFB_FAILED);
    CHECK(failed_with(update, "07006"));
    CHECK(zmfb_bind_text(update, 1, "longer than twenty letters", 26) == ZMFB_OK);
    CHECK(zmfb_execute(update, NULL) == ZMFB_FAILED && failed_with(update, "22001"));
    CHECK(zmfb_bind_text(update, 1, "\xE2\x82\xAC", 3) == ZMFB_OK); /* no character of ISO-8859-1 */
    CHECK(zmfb_execute(update, NULL) == ZMFB_FAILED && failed_with(update, "22021"));
    CHECK(zmfb_prepare_statement(update, work, "update K set MONEY = ?") == ZMFB_OK);
    CHECK(zmfb_bind_number(update, 1, 1005, 3) == ZMFB_OK); /* a digit would be lost */
    CHECK(zmfb_execute(update, NULL) == ZMFB_FAILED && failed_with(update, "22003"));
    CHECK(zmfb_bind_double(update, 1, 1.5) == ZMFB_OK && zmfb_execute(update, NULL) == ZMFB_FAILED);
    CHECK(failed_with(update, "07006"));
    CHECK(zmfb_bind_number(update, 1, 1, 19) == ZMFB_FAILED && failed_with(update, "22003"));
    zmfb_free_statement(update), zmfb_free_transaction(work);
}

static void days_and_times_that_are_none_are_out_of_range(zmfb_value* connection) {
    static const zmfb_moment no_days[] = {{2007, 2, 29, 0, 0, 0, 0},
                                          {0, 0, 0, 0, 0, 0, 0},
                                          {10000, 1, 1, 0, 0, 0, 0},
                                          {2007, -1, 1, 0, 0, 0, 0},
                                          {65536 + 2007, 3, 1, 0, 0, 0, 0}};
    static const zmfb_moment no_times[] = {{2007, 3, 1, 24, 0, 0, 0},
                                           {2007, 3, 1, 0, 60, 0, 0},
                                           {2007, 3, 1, 0, 0, -1, 0},
                                           {2007, 3, 1, 0, 0, 0, 10000}};
    zmfb_transaction* work = begun(connection);
    zmfb_statement* update = prepared(work, "update K set MOMENT = ?");
    for (size_t k = 0; k < sizeof no_days / sizeof *no_days; ++k) {
        CHECK(zmfb_bind_date(update, 1, &no_days[k]) == ZMFB_OUT_OF_RANGE && said("no such day"));
        CHECK(zmfb_bind_timestamp(update, 1, &no_days[k]) == ZMFB_OUT_OF_RANGE && said("no such day"));
    }
    for (size_t k = 0; k < sizeof no_times / sizeof *no_times; ++k) {
        CHECK(zmfb_bind_time(update, 1, &no_times[k]) == ZMFB_OUT_OF_RANGE && said("no such time of day"));
        CHECK(zmfb_bind_timestamp(update, 1, &no_times[k]) == ZMFB_OUT_OF_RANGE);
    }
    CHECK(zmfb_bind_date(update, 1, &no_times[0]) == ZMFB_OK); /* the hour does not count */
    CHECK(zmfb_execute(update, NULL) == ZMFB_OK);
    zmfb_free_statement(update), zmfb_free_transaction(work);
}

static void fields_of_another_type_are_refused(zmfb_value* connection) {
    zmfb_transaction* work = begun(connection);
    CHECK(run(work, "insert into K (ID, NAME) values (5, 'Bo')") == 1);
    zmfb_statement* row = prepared(work, "select NAME from K where ID = 5");
    int64_t number = 0;
    int small = 0;
    double real = 0;
    const void* bytes = NULL;
    size_t length = 0;
    zmfb_moment moment;
    CHECK(zmfb_query(row) == ZMFB_OK);
    CHECK(zmfb_field_is_null(row, 1, &small) == ZMFB_FAILED && failed_with(row, "24000")); /* no row yet */
    CHECK(zmfb_next(row) == ZMFB_OK);
    CHECK(zmfb_field_number(row, 1, &number, &small) == ZMFB_FAILED && failed_with(row, "07006"));
    CHECK(zmfb_field_double(row, 1, &real) == ZMFB_FAILED && failed_with(row, "07006"));
    CHECK(zmfb_field_logical(row, 1, &small) == ZMFB_FAILED && failed_with(row, "07006"));
    CHECK(zmfb_field_bytes(row, 1, &bytes, &length) == ZMFB_FAILED && failed_with(row, "07006"));
    CHECK(zmfb_field_moment(row, 1, &moment) == ZMFB_FAILED && failed_with(row, "07006"));
    CHECK(zmfb_field_is_null(row, 2, &small) == ZMFB_OUT_OF_RANGE && said("no such column"));
    CHECK(shows(row, 1, "Bo")); /* the row is still there */
    CHECK(zmfb_next(row) == ZMFB_END);
    CHECK(zmfb_field_is_null(row, 1, &small) == ZMFB_FAILED && failed_with(row, "24000"));
    zmfb_free_statement(row), zmfb_free_transaction(work);
}

int main(void) {
    CHECK(zmfb_prepare(database) == ZMFB_OK);
    CHECK(zmfb_create_database(database, "SYSDBA", NULL) == ZMFB_OK);
    zmfb_value* connection = attached();
    create(connection);
    each_kind_comes_back_as_it_went_in(connection);
    null_is_bound_and_told(connection);
    null_where_none_can_be_fails(connection);
    columns_are_told(connection);
    values_that_do_not_suit_are_refused(connection);
    days_and_times_that_are_none_are_out_of_range(connection);
    fields_of_another_type_are_refused(connection);
    zmfb_free(connection);
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
