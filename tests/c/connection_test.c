/* The way of a program in C: a database is made, attached, filled, asked and left. Runs in a folder of its
 * own. */
#include <stdlib.h>

#include "check.h"

static zmfb_status call(zmfb_value* connection, const char* method, const char* text, zmfb_value* result) {
    zmfb_value* argument = zmfb_new();
    const zmfb_value* arguments[] = {argument};
    CHECK(set_text(argument, text) == ZMFB_OK);
    const zmfb_status status = zmfb_call(connection, method, arguments, 1, result);
    zmfb_free(argument);
    return status;
}

/* Element `column` of element `row` of an array, as a text without blanks at its end. */
static int cell_is(const zmfb_value* rows, size_t row, size_t column, const char* text) {
    zmfb_value* cell = zmfb_new();
    const char* bytes = "";
    size_t length = 0;
    CHECK(zmfb_get_element(rows, row, cell) == ZMFB_OK && zmfb_get_element(cell, column, cell) == ZMFB_OK);
    CHECK(zmfb_get_text(cell, &bytes, &length) == ZMFB_OK);
    while (length > 0 && bytes[length - 1] == ' ') --length;
    const int same = length == strlen(text) && memcmp(bytes, text, length) == 0;
    if (!same) fprintf(stderr, "row %zu, column %zu is \"%.*s\"\n", row, column, (int)length, bytes);
    zmfb_free(cell);
    return same;
}

/* {name, type, length, decimals} */
static void append_field(zmfb_value* structure, const char* name, const char* type, int length,
                         int decimals) {
    zmfb_value *field = zmfb_new(), *part = zmfb_new();
    CHECK(zmfb_set_array(field, 0) == ZMFB_OK);
    CHECK(set_text(part, name) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(set_text(part, type) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_set_number(part, length, 0, 0) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_set_number(part, decimals, 0, 0) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_append(structure, field) == ZMFB_OK);
    zmfb_free(part), zmfb_free(field);
}

static void a_table_is_made_from_nested_arrays(zmfb_value* connection) {
    zmfb_value *name = zmfb_new(), *structure = zmfb_new(), *result = zmfb_new();
    const zmfb_value* arguments[] = {name, structure};
    CHECK(set_text(name, "people") == ZMFB_OK && zmfb_set_array(structure, 0) == ZMFB_OK);
    append_field(structure, "name", "C", 10, 0);
    append_field(structure, "born", "D", 8, 0);
    append_field(structure, "credit", "N", 12, 2);
    CHECK(zmfb_call(connection, "createtable", arguments, 2, result) == ZMFB_OK && is_true(result));
    CHECK(call(connection, "istable", "people", result) == ZMFB_OK && is_true(result));
    CHECK(call(connection, "istable", "nobody", result) == ZMFB_OK && is_false(result));
    CHECK(call(connection, "IsTable", "people", result) == ZMFB_OK && is_true(result));
    zmfb_free(result), zmfb_free(structure), zmfb_free(name);
}

static void rows_come_back(zmfb_value* connection) {
    zmfb_value *result = zmfb_new(), *cell = zmfb_new();
    size_t size = 0;
    CHECK(call(connection, "executeupdate",
               "insert into people (name, born, credit) values ('Ann\xE9', '2007-03-01', -12.5)",
               result) == ZMFB_OK);
    CHECK(holds_text(result, "")); /* nothing went wrong */
    CHECK(call(connection, "executeupdate", "insert into people (name) values ('Bo')", result) == ZMFB_OK);

    const char query[] = "select name, born, credit from people order by recno";
    CHECK(call(connection, "executequery", query, result) == ZMFB_OK);
    CHECK(zmfb_get_size(result, &size) == ZMFB_OK && size == 3); /* a header and two rows */
    CHECK(cell_is(result, 2, 1, "Ann\xE9"));
    CHECK(zmfb_get_element(result, 1, cell) == ZMFB_OK && cell_is(cell, 1, 1, "NAME"));
    zmfb_free(cell), zmfb_free(result);
}

static void failing_sql_is_a_result(zmfb_value* connection) {
    zmfb_value* result = zmfb_new();
    size_t size = 9;
    CHECK(call(connection, "executequery", "select nothing from nowhere", result) == ZMFB_OK);
    CHECK(zmfb_get_size(result, &size) == ZMFB_OK && size == 0);
    CHECK(strstr(zmfb_engine_message(), "NOWHERE") != NULL);
    CHECK(call(connection, "isconnected", "", result) == ZMFB_OK && is_true(result));
    CHECK(strstr(zmfb_engine_message(), "NOWHERE") != NULL); /* the engine was not asked */
    CHECK(call(connection, "istable", "people", result) == ZMFB_OK && is_true(result));
    CHECK(strcmp(zmfb_engine_message(), "") == 0);
    zmfb_free(result);
}

/* Credits are -12.5 and 0: the second row cannot be computed. */
static void half_a_result_is_told_by_the_engines_message(zmfb_value* connection) {
    zmfb_value* result = zmfb_new();
    size_t size = 0;
    CHECK(call(connection, "executequery", "select 1 / credit from people order by recno", result) ==
          ZMFB_OK);
    CHECK(zmfb_get_size(result, &size) == ZMFB_OK && size == 2); /* a header and one row of two */
    CHECK(strlen(zmfb_engine_message()) > 0);
    CHECK(call(connection, "executequery", "select 1 / credit from people where credit <> 0", result) ==
          ZMFB_OK);
    CHECK(zmfb_get_size(result, &size) == ZMFB_OK && size == 2);
    CHECK(strcmp(zmfb_engine_message(), "") == 0);
    zmfb_free(result);
}

static void members_are_read_and_assigned(zmfb_value* connection, const char* database) {
    zmfb_value* value = zmfb_new();
    CHECK(zmfb_get_member(connection, "sdbname", value) == ZMFB_OK && holds_text(value, database));
    CHECK(zmfb_get_member(connection, "bconn", value) == ZMFB_OK && is_true(value));
    zmfb_free(value);
}

static void what_is_refused_is_told(const char* database) {
    zmfb_value *connection = zmfb_new(), *result = zmfb_new();
    CHECK(zmfb_create_database(database, NULL, NULL) == ZMFB_FAILED);
    CHECK(strstr(zmfb_message(), database) != NULL);
    CHECK(zmfb_install_functions("/nowhere/none.fdb", "SYSDBA", NULL, ZMFB_FUNCTIONS_BY_ENGINE) ==
          ZMFB_FAILED);
    CHECK(strlen(zmfb_message()) > 0);
    CHECK(zmfb_install_functions(database, "SYSDBA", NULL, (zmfb_functions)3) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_connect(connection, "/nowhere/none.fdb", "SYSDBA", NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_call(connection, "isconnected", NULL, 0, result) == ZMFB_OK && is_false(result));
    zmfb_free(result), zmfb_free(connection);
}

static void functions_are_changed(zmfb_value* connection, const char* database) {
    static const zmfb_functions kinds[] = {ZMFB_FUNCTIONS_MODULE, ZMFB_FUNCTIONS_STORED};
    zmfb_value* result = zmfb_new();
    for (size_t i = 0; i < 2; ++i) {
        CHECK(zmfb_install_functions(database, "SYSDBA", NULL, kinds[i]) == ZMFB_OK);
        CHECK(
            call(connection, "executequery",
                 "select 1 from rdb$functions where rdb$function_name = 'ZMTRIM' and rdb$module_name is null",
                 result) == ZMFB_OK);
        size_t size = 0;
        CHECK(zmfb_get_size(result, &size) == ZMFB_OK && size == 1 + i);
    }
    zmfb_free(result);
}

static void the_last_place_disconnects(const char* database) {
    zmfb_value *connection = zmfb_new(), *second = zmfb_new(), *result = zmfb_new();
    CHECK(zmfb_connect(connection, database, "SYSDBA", NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_copy(second, connection) == ZMFB_OK);
    CHECK(zmfb_connect(connection, NULL, NULL, NULL, NULL) == ZMFB_OK); /* another object in that place */
    CHECK(zmfb_call(connection, "isconnected", NULL, 0, result) == ZMFB_OK && is_false(result));
    CHECK(zmfb_call(second, "isconnected", NULL, 0, result) == ZMFB_OK && is_true(result));
    zmfb_free(result), zmfb_free(second), zmfb_free(connection);
    CHECK(remove(database) == 0);
}

int main(void) {
    static const char database[] = "people.fdb";
    zmfb_value *connection = zmfb_new(), *result = zmfb_new();
    CHECK(zmfb_prepare(database) == ZMFB_OK);
    CHECK(zmfb_create_database(database, "SYSDBA", NULL) == ZMFB_OK);
    CHECK(zmfb_connect(connection, database, "SYSDBA", NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_call(connection, "isconnected", NULL, 0, result) == ZMFB_OK && is_true(result));
    a_table_is_made_from_nested_arrays(connection);
    rows_come_back(connection);
    failing_sql_is_a_result(connection);
    half_a_result_is_told_by_the_engines_message(connection);
    members_are_read_and_assigned(connection, database);
    what_is_refused_is_told(database);
    functions_are_changed(connection, database);
    zmfb_free(result), zmfb_free(connection);
    the_last_place_disconnects(database);
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
