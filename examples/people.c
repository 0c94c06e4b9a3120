/*
 * The C interface: makes a database and a table, puts people in and asks for them, lends the library a code
 * block, and hears about a raised error. people.pl and people.py do the same from Perl and Python.
 *
 *     people people.fdb
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zmfbconn.h>

/* Ends the program where a call has no success. */
static void must(zmfb_status status) {
    if (status == ZMFB_OK) return;
    fprintf(stderr, "%s\n", zmfb_message());
    exit(EXIT_FAILURE);
}

static void set_text(zmfb_value* place, const char* text) { must(zmfb_set_text(place, text, strlen(text))); }

/* Calls a method with one text. */
static void call(const zmfb_value* connection, const char* method, const char* text, zmfb_value* result) {
    zmfb_value* argument = zmfb_new();
    const zmfb_value* arguments[] = {argument};
    set_text(argument, text);
    must(zmfb_call(connection, method, arguments, 1, result));
    zmfb_free(argument);
}

/* createtable("people", {{"name", "C", 10, 0}, {"born", "D", 8, 0}, {"credit", "N", 12, 2}}) */
static void create_table(const zmfb_value* connection) {
    static const struct {
        const char *name, *type;
        int length, decimals;
    } columns[] = {{"name", "C", 10, 0}, {"born", "D", 8, 0}, {"credit", "N", 12, 2}};
    zmfb_value *name = zmfb_new(), *structure = zmfb_new(), *column = zmfb_new(), *part = zmfb_new();
    const zmfb_value* arguments[] = {name, structure};
    set_text(name, "people");
    must(zmfb_set_array(structure, 0));
    for (size_t k = 0; k < sizeof columns / sizeof *columns; ++k) {
        must(zmfb_set_array(column, 0));
        set_text(part, columns[k].name), must(zmfb_append(column, part));
        set_text(part, columns[k].type), must(zmfb_append(column, part));
        must(zmfb_set_number(part, columns[k].length, 0, 0)), must(zmfb_append(column, part));
        must(zmfb_set_number(part, columns[k].decimals, 0, 0)), must(zmfb_append(column, part));
        must(zmfb_append(structure, column));
    }
    must(zmfb_call(connection, "createtable", arguments, 2, NULL));
    zmfb_free(part), zmfb_free(column), zmfb_free(structure), zmfb_free(name);
}

/* The rows of a query, a line each; the first row is the header, {{name, type, length, decimals}, ...}. */
static void print_rows(const zmfb_value* rows) {
    zmfb_value *row = zmfb_new(), *cell = zmfb_new();
    size_t row_count = 0, cell_count = 0, length = 0;
    const char* text = NULL;
    must(zmfb_get_size(rows, &row_count));
    for (size_t k = 2; k <= row_count; ++k) {
        must(zmfb_get_element(rows, k, row));
        must(zmfb_get_size(row, &cell_count));
        for (size_t c = 1; c <= cell_count; ++c) {
            must(zmfb_get_element(row, c, cell));
            if (c > 1) printf(" | ");
            if (zmfb_kind_of(cell) == ZMFB_NIL) {
                printf("NULL");
            } else {
                must(zmfb_get_text(cell, &text, &length));
                printf("%.*s", (int)length, text);
            }
        }
        printf("\n");
    }
    zmfb_free(cell), zmfb_free(row);
}

static zmfb_status twice(void* context, const zmfb_value* const* arguments, size_t count,
                         zmfb_value* result) {
    double number = 0;
    (void)context;
    if (count < 1) return ZMFB_WRONG_ARGUMENT;
    const zmfb_status status = zmfb_get_number(arguments[0], &number, NULL, NULL);
    return status == ZMFB_OK ? zmfb_set_number(result, 2 * number, 0, 0) : status;
}

static void lend_a_block(void) {
    zmfb_value *block = zmfb_new(), *number = zmfb_new();
    const zmfb_value* arguments[] = {number};
    double doubled = 0;
    must(zmfb_set_block(block, twice, NULL, NULL));
    must(zmfb_set_number(number, 21, 0, 0));
    must(zmfb_eval(block, arguments, 1, number));
    must(zmfb_get_number(number, &doubled, NULL, NULL));
    printf("twice 21 is %.0f\n", doubled);
    must(zmfb_set_text(number, "no number", 9));
    printf("twice a text: status %d\n", (int)zmfb_eval(block, arguments, 1, NULL));
    zmfb_free(number), zmfb_free(block);
}

static void bytes_with_zeros(void) {
    zmfb_value *array = zmfb_new(), *text = zmfb_new();
    const char* bytes = NULL;
    size_t length = 0;
    must(zmfb_set_array(array, 1));
    must(zmfb_set_text(text, "a\0b", 3));
    must(zmfb_set_element(array, 1, text));
    must(zmfb_get_element(array, 1, text));
    must(zmfb_get_text(text, &bytes, &length));
    printf("bytes:");
    for (size_t k = 0; k < length; ++k) printf(" %02x", (unsigned char)bytes[k]);
    printf("\n");
    zmfb_free(text), zmfb_free(array);
}

/* An error block: tells of the error, and lets the method go on. */
static zmfb_status tell(void* context, const zmfb_value* const* arguments, size_t count, zmfb_value* result) {
    zmfb_value* description = zmfb_new();
    const char* text = NULL;
    size_t length = 0;
    (void)context, (void)count, (void)result;
    must(zmfb_get_member(arguments[0], "description", description));
    must(zmfb_get_text(description, &text, &length));
    printf("told: %.*s\n", (int)length, text);
    zmfb_free(description);
    return ZMFB_OK;
}

static void hear_of_errors(const zmfb_value* connection) {
    zmfb_value* block = zmfb_new();
    printf("without an error block: status %d, ", (int)zmfb_call(connection, "nosuch", NULL, 0, NULL));
    printf("%s\n", zmfb_message());
    must(zmfb_set_block(block, tell, NULL, NULL));
    must(zmfb_set_error_block(block));
    printf("with one: status %d\n", (int)zmfb_call(connection, "nosuch", NULL, 0, NULL));
    must(zmfb_set_error_block(NULL));
    zmfb_free(block);
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: people DATABASE\n");
        return 2;
    }
    zmfb_value *connection = zmfb_new(), *result = zmfb_new();
    must(zmfb_prepare(argv[1]));
    must(zmfb_create_database(argv[1], "SYSDBA", NULL));
    must(zmfb_connect(connection, argv[1], "SYSDBA", NULL, NULL));
    create_table(connection);
    call(connection, "executeupdate",
         "insert into people (name, born, credit) values ('Anna', '2007-03-01', -12.5)", result);
    call(connection, "executeupdate", "insert into people (name) values ('Bo')", result);
    must(zmfb_exact_queries(1));
    call(connection, "executequery", "select name, cast(born as date), credit from people order by name",
         result);
    print_rows(result);
    lend_a_block();
    bytes_with_zeros();
    hear_of_errors(connection);
    zmfb_free(result), zmfb_free(connection); /* disconnects */
    return EXIT_SUCCESS;
}
