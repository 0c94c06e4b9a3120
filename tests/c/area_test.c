/* Work areas of C programs, on DBF files. */
#include <stdlib.h>

#include "check.h"

/* Runs an operation with places for up to two arguments. */
static zmfb_status run(const char* operation, const zmfb_value* first, const zmfb_value* second,
                       zmfb_value* result) {
    const zmfb_value* arguments[] = {first, second};
    return zmfb_call_area(operation, arguments, second != NULL ? 2 : first != NULL ? 1 : 0, result);
}

/* Opens PEOPLE in a new area under an alias. */
static zmfb_status use(const char* alias, int shared) {
    zmfb_value *yes = zmfb_new(), *table = zmfb_new(), *name = zmfb_new(), *how = zmfb_new();
    const zmfb_value* arguments[] = {yes, NULL, table, name, how};
    CHECK(zmfb_set_logical(yes, 1) == ZMFB_OK && zmfb_set_logical(how, shared) == ZMFB_OK);
    CHECK(set_text(table, "people") == ZMFB_OK && set_text(name, alias) == ZMFB_OK);
    const zmfb_status status = zmfb_call_area("DBUSEAREA", arguments, 5, NULL);
    zmfb_free(how), zmfb_free(name), zmfb_free(table), zmfb_free(yes);
    return status;
}

/* A table of one field, with two records. */
static void make_people(void) {
    static const char* const names[] = {"Anna", "Bo"};
    zmfb_value *name = zmfb_new(), *structure = zmfb_new(), *field = zmfb_new(), *part = zmfb_new();
    CHECK(zmfb_set_array(field, 0) == ZMFB_OK && zmfb_set_array(structure, 0) == ZMFB_OK);
    CHECK(set_text(part, "name") == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(set_text(part, "C") == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_set_number(part, 10, 0, 0) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_set_number(part, 0, 0, 0) == ZMFB_OK && zmfb_append(field, part) == ZMFB_OK);
    CHECK(zmfb_append(structure, field) == ZMFB_OK && set_text(name, "people") == ZMFB_OK);
    CHECK(run("DBCREATE", name, structure, part) == ZMFB_OK && is_true(part));
    CHECK(use("people", 0) == ZMFB_OK && zmfb_set_number(field, 1, 0, 0) == ZMFB_OK);
    for (size_t k = 0; k < 2; ++k) {
        CHECK(run("DBAPPEND", NULL, NULL, NULL) == ZMFB_OK && set_text(name, names[k]) == ZMFB_OK);
        CHECK(run("FIELDPUT", field, name, NULL) == ZMFB_OK);
    }
    CHECK(run("DBCLOSEALL", NULL, NULL, NULL) == ZMFB_OK);
    zmfb_free(part), zmfb_free(field), zmfb_free(structure), zmfb_free(name);
}

static void operations_go_by_their_names_in_any_case_of_letters(void) {
    zmfb_value *field = zmfb_new(), *result = zmfb_new();
    CHECK(use("people", 1) == ZMFB_OK);
    CHECK(run("dbGoBottom", NULL, NULL, NULL) == ZMFB_OK);
    CHECK(run("recno", NULL, NULL, result) == ZMFB_OK && number_in(result) == 2);
    CHECK(set_text(field, "NAME") == ZMFB_OK && run("FieldGet", field, NULL, result) == ZMFB_OK);
    CHECK(holds_text(result, "Bo        "));
    CHECK(run("fieldget", field, NULL, field) == ZMFB_OK && holds_text(field, "Bo        "));
    CHECK(run("DBCLOSEAREA", NULL, NULL, result) == ZMFB_OK && zmfb_kind_of(result) == ZMFB_NIL);
    CHECK(run("RddSetDefault", NULL, NULL, result) == ZMFB_OK && holds_text(result, "DBFIDX"));
    zmfb_free(result), zmfb_free(field);
}

static void what_is_no_operation_and_too_many_arguments_are_refused(void) {
    zmfb_value* result = zmfb_new();
    const zmfb_value* arguments[] = {NULL, NULL};
    CHECK(set_text(result, "as it was") == ZMFB_OK);
    CHECK(run("DBFLY", NULL, NULL, result) == ZMFB_OUT_OF_RANGE);
    CHECK(said("there is no operation of work areas named DBFLY"));
    CHECK(run("", NULL, NULL, result) == ZMFB_OUT_OF_RANGE &&
          run("DBSKI", NULL, NULL, result) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_call_area("dbskip", arguments, 2, result) == ZMFB_OUT_OF_RANGE);
    CHECK(said("too many arguments: DBSKIP takes 1"));
    CHECK(zmfb_call_area(NULL, NULL, 0, result) == ZMFB_WRONG_ARGUMENT);
    CHECK(zmfb_call_area("DBSKIP", NULL, 1, result) == ZMFB_WRONG_ARGUMENT);
    CHECK(said("NULL is not allowed here") && holds_text(result, "as it was"));
    zmfb_free(result);
}

static void what_cannot_be_done_is_raised(void) {
    zmfb_value *field = zmfb_new(), *result = zmfb_new(), *error = zmfb_new();
    CHECK(run("DBGOTOP", NULL, NULL, NULL) == ZMFB_RAISED && said("Work area not in use"));
    CHECK(use("people", 1) == ZMFB_OK && zmfb_set_number(field, 1, 0, 0) == ZMFB_OK);
    CHECK(set_text(result, "Cy") == ZMFB_OK);
    CHECK(run("FIELDPUT", field, result, result) == ZMFB_RAISED && holds_text(result, "Cy"));
    CHECK(zmfb_get_error(error) == ZMFB_OK && zmfb_get_member(error, "gencode", error) == ZMFB_OK);
    CHECK(number_in(error) == 38);
    CHECK(run("RLOCK", NULL, NULL, error) == ZMFB_OK && is_true(error));
    CHECK(run("FIELDPUT", field, result, NULL) == ZMFB_OK && run("DBUNLOCK", NULL, NULL, NULL) == ZMFB_OK);
    CHECK(run("FIELDGET", field, NULL, result) == ZMFB_OK && holds_text(result, "Cy        "));
    CHECK(run("DBCLOSEALL", NULL, NULL, NULL) == ZMFB_OK);
    zmfb_free(error), zmfb_free(result), zmfb_free(field);
}

static zmfb_status count_calls(void* context, const zmfb_value* const* arguments, size_t count,
                               zmfb_value* result) {
    (void)arguments, (void)count;
    ++*(int*)context;
    return zmfb_set_logical(result, 0);
}

static void another_use_in_the_way_is_told_by_neterr(void) {
    int calls = 0;
    zmfb_value *block = zmfb_new(), *result = zmfb_new();
    CHECK(use("first", 0) == ZMFB_OK);
    CHECK(run("NETERR", NULL, NULL, result) == ZMFB_OK && is_false(result));
    CHECK(use("second", 1) == ZMFB_OK);
    CHECK(run("NETERR", NULL, NULL, result) == ZMFB_OK && is_true(result));
    CHECK(run("USED", NULL, NULL, result) == ZMFB_OK && is_false(result));

    CHECK(zmfb_set_block(block, count_calls, &calls, NULL) == ZMFB_OK &&
          zmfb_set_error_block(block) == ZMFB_OK);
    CHECK(use("second", 1) == ZMFB_OK && calls == 1);
    CHECK(zmfb_set_error_block(NULL) == ZMFB_OK && run("DBCLOSEALL", NULL, NULL, NULL) == ZMFB_OK);
    zmfb_free(result), zmfb_free(block);
}

static void blocks_go_through_records(void) {
    int calls = 0;
    zmfb_value* block = zmfb_new();
    CHECK(use("people", 1) == ZMFB_OK && zmfb_set_block(block, count_calls, &calls, NULL) == ZMFB_OK);
    CHECK(run("DBEVAL", block, NULL, NULL) == ZMFB_OK && calls == 2);
    CHECK(run("DBCLOSEALL", NULL, NULL, NULL) == ZMFB_OK);
    zmfb_free(block);
}

int main(void) {
    make_people();
    operations_go_by_their_names_in_any_case_of_letters();
    what_is_no_operation_and_too_many_arguments_are_refused();
    what_cannot_be_done_is_raised();
    another_use_in_the_way_is_told_by_neterr();
    blocks_go_through_records();
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
