/*
 * The C interface: makes a database and a table, puts people in and asks for them, goes through them in a
 * work area, lends the library a code block, and hears about a raised error. people.pl and people.py do the
 * same from Perl and Python.
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

/* Puts a person in; no birthday is NULL. */
static void add(zmfb_statement* insert, const char* name, const zmfb_moment* born, int64_t cents) {
    int64_t added = 0;
    must(zmfb_bind_text(insert, 1, name, strlen(name)));
    must(born == NULL ? zmfb_bind_null(insert, 2) : zmfb_bind_date(insert, 2, born));
    must(zmfb_bind_number(insert, 3, cents, 2));
    must(zmfb_execute(insert, &added));
    printf("%d added\n", (int)added);
}

/* Both or none: a transaction that is not committed is rolled back. */
static void add_people(const zmfb_value* connection) {
    static const zmfb_moment born = {2007, 3, 1, 0, 0, 0, 0};
    zmfb_transaction* work = zmfb_new_transaction();
    zmfb_statement* insert = zmfb_new_statement();
    must(zmfb_begin(work, connection, ZMFB_READ_WRITE));
    must(zmfb_prepare_statement(insert, work, "insert into people (name, born, credit) values (?, ?, ?)"));
    add(insert, "Anna", &born, -1250);
    add(insert, "Bo", NULL, 0);
    must(zmfb_commit(work));
    zmfb_free_statement(insert), zmfb_free_transaction(work);
}

static void print_field(zmfb_statement* row, size_t index) {
    const char* text = "NULL";
    size_t length = 4;
    int is_null = 0;
    must(zmfb_field_is_null(row, index, &is_null));
    if (!is_null) must(zmfb_field_text(row, index, &text, &length));
    printf("%s%.*s", index > 1 ? " | " : "", (int)length, text);
}

/* The rows of a query, a line each. */
static void print_people(const zmfb_value* connection, int64_t largest_credit) {
    zmfb_transaction* work = zmfb_new_transaction();
    zmfb_statement* query = zmfb_new_statement();
    zmfb_status status = ZMFB_OK;
    size_t columns = 0;
    must(zmfb_begin(work, connection, ZMFB_READ_ONLY));
    must(zmfb_prepare_statement(
        query, work, "select name, cast(born as date), credit from people where credit <= ? order by name"));
    must(zmfb_bind_number(query, 1, largest_credit, 0));
    must(zmfb_column_count(query, &columns));
    must(zmfb_query(query));
    while ((status = zmfb_next(query)) == ZMFB_OK) {
        for (size_t k = 1; k <= columns; ++k) print_field(query, k);
        printf("\n");
    }
    if (status != ZMFB_END) must(status); /* the rows broke off half-way */
    zmfb_free_statement(query), zmfb_free_transaction(work);
}

/* Runs an operation of work areas with up to two arguments. */
static void area(const char* operation, const zmfb_value* first, const zmfb_value* second,
                 zmfb_value* result) {
    const zmfb_value* arguments[] = {first, second};
    must(zmfb_call_area(operation, arguments, second != NULL ? 2 : first != NULL ? 1 : 0, result));
}

static int says_yes(const char* operation, const zmfb_value* argument) {
    zmfb_value* answer = zmfb_new();
    int yes = 0;
    area(operation, argument, NULL, answer);
    must(zmfb_get_logical(answer, &yes));
    zmfb_free(answer);
    return yes;
}

static double number_of(const char* operation, const zmfb_value* argument) {
    zmfb_value* answer = zmfb_new();
    double number = 0;
    area(operation, argument, NULL, answer);
    must(zmfb_get_number(answer, &number, NULL, NULL));
    zmfb_free(answer);
    return number;
}

/* A work area: finds Bo in any case of letters, changes him under a lock, and goes through all. */
static void work_in_an_area(const zmfb_value* connection) {
    zmfb_value *yes = zmfb_new(), *text = zmfb_new(), *value = zmfb_new();
    const zmfb_value* people[] = {yes, NULL, text, NULL, yes}; /* a new area, shared */
    must(zmfb_call(connection, "setibrdd", NULL, 0, NULL));    /* areas are on its tables */
    must(zmfb_set_logical(yes, 1)), set_text(text, "people");
    must(zmfb_call_area("DBUSEAREA", people, 5, NULL));
    set_text(text, "name"), set_text(value, "UPPER(NAME)");
    area("ORDCREATE", text, value, NULL);
    set_text(text, "credit"), set_text(value, "BO");
    if (says_yes("DBSEEK", value) && says_yes("RLOCK", NULL)) {
        must(zmfb_set_number(value, 7.5, 0, 0));
        area("FIELDPUT", text, value, NULL);
        area("DBUNLOCK", NULL, NULL, NULL);
    }
    for (area("DBGOTOP", NULL, NULL, NULL); !says_yes("EOF", NULL); area("DBSKIP", NULL, NULL, NULL))
        printf("record %.0f has %.2f\n", number_of("RECNO", NULL), number_of("FIELDGET", text));
    area("DBCLOSEAREA", NULL, NULL, NULL);
    zmfb_free(value), zmfb_free(text), zmfb_free(yes);
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
    const zmfb_status status = zmfb_eval(block, arguments, 1, NULL);
    printf("twice a text: %s\n", status == ZMFB_WRONG_KIND ? "refused" : "taken");
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
    zmfb_value* connection = zmfb_new();
    must(zmfb_prepare(argv[1]));
    must(zmfb_create_database(argv[1], "SYSDBA", NULL));
    must(zmfb_connect(connection, argv[1], "SYSDBA", NULL, NULL));
    create_table(connection);
    add_people(connection);
    print_people(connection, 0);
    work_in_an_area(connection);
    lend_a_block();
    bytes_with_zeros();
    hear_of_errors(connection);
    zmfb_free(connection); /* disconnects */
    return EXIT_SUCCESS;
}
