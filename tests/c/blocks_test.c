/* Code blocks of C programs, and what they and raised errors do to the call they happen in. */
#include <stdint.h>
#include <stdlib.h>

#include "check.h"

/* What a block is made with, and what it saw. */
typedef struct {
    zmfb_status answer;
    int calls, gone;
    size_t count;
} Notes;

static void note_gone(void* context) { ++((Notes*)context)->gone; }

static zmfb_status add_up(void* context, const zmfb_value* const* arguments, size_t count,
                          zmfb_value* result) {
    Notes* notes = context;
    double sum = 0;
    ++notes->calls;
    notes->count = count;
    CHECK(zmfb_kind_of(result) == ZMFB_NIL);
    for (size_t k = 0; k < count; ++k) {
        if (zmfb_kind_of(arguments[k]) == ZMFB_NUMBER) sum += number_in(arguments[k]);
    }
    CHECK(zmfb_set_number(result, sum, 0, 0) == ZMFB_OK);
    return notes->answer;
}

static void a_block_lives_as_long_as_it_is_named(void) {
    Notes notes = {ZMFB_OK, 0, 0, 0};
    zmfb_value *block = zmfb_new(), *array = zmfb_new();
    CHECK(zmfb_set_block(block, add_up, &notes, note_gone) == ZMFB_OK && zmfb_kind_of(block) == ZMFB_BLOCK);
    CHECK(zmfb_set_array(array, 0) == ZMFB_OK && zmfb_append(array, block) == ZMFB_OK);
    zmfb_free(block);
    CHECK(notes.gone == 0);
    zmfb_free(array);
    CHECK(notes.gone == 1);
    CHECK(zmfb_set_block(NULL, add_up, &notes, note_gone) == ZMFB_WRONG_ARGUMENT && notes.gone == 2);
}

static void evaluating_gives_the_bodys_result(void) {
    Notes notes = {ZMFB_OK, 0, 0, 0};
    zmfb_value *block = zmfb_new(), *one = zmfb_new(), *result = zmfb_new();
    const zmfb_value* arguments[] = {one, NULL, one};
    CHECK(zmfb_set_block(block, add_up, &notes, NULL) == ZMFB_OK);
    CHECK(zmfb_set_number(one, 21, 0, 0) == ZMFB_OK);
    CHECK(zmfb_eval(block, arguments, 3, result) == ZMFB_OK && number_in(result) == 42);
    CHECK(notes.count == 3 && zmfb_eval(block, NULL, 0, NULL) == ZMFB_OK && notes.count == 0);
    CHECK(zmfb_eval(block, arguments, 1, one) == ZMFB_OK && number_in(one) == 21); /* into its own argument */
    zmfb_free(result), zmfb_free(one), zmfb_free(block);
}

static void more_arguments_than_memory_can_hold_are_refused(void) {
    Notes notes = {ZMFB_OK, 0, 0, 0};
    zmfb_value *block = zmfb_new(), *one = zmfb_new();
    const zmfb_value* arguments[] = {one};
    CHECK(zmfb_set_block(block, add_up, &notes, NULL) == ZMFB_OK);
    CHECK(zmfb_eval(block, arguments, SIZE_MAX / 2, NULL) == ZMFB_OUT_OF_RANGE && said("too long"));
    CHECK(notes.calls == 0);
    zmfb_free(one), zmfb_free(block);
}

static void a_status_of_a_body_ends_the_call(void) {
    Notes notes = {ZMFB_OUT_OF_RANGE, 0, 0, 0};
    zmfb_value *block = zmfb_new(), *result = zmfb_new();
    CHECK(zmfb_set_block(block, add_up, &notes, NULL) == ZMFB_OK && set_text(result, "as it was") == ZMFB_OK);
    CHECK(zmfb_eval(block, NULL, 0, result) == ZMFB_OUT_OF_RANGE && said("a code block ended the call"));
    CHECK(holds_text(result, "as it was"));
    zmfb_free(result), zmfb_free(block);
}

/* Fails in a call of its own and passes that on. */
static zmfb_status fail_inside(void* context, const zmfb_value* const* arguments, size_t count,
                               zmfb_value* result) {
    (void)context, (void)arguments, (void)count;
    return zmfb_set_date(result, 2023, 2, 30);
}

static void what_a_body_failed_with_is_told(void) {
    zmfb_value* block = zmfb_new();
    CHECK(zmfb_set_block(block, fail_inside, NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_eval(block, NULL, 0, NULL) == ZMFB_OUT_OF_RANGE && said("no such day"));
    zmfb_free(block);
}

static zmfb_status refill(void* context, const zmfb_value* const* arguments, size_t count,
                          zmfb_value* result) {
    (void)arguments, (void)count, (void)result;
    return zmfb_set_nil(context); /* the place that this very block is in */
}

static void a_block_may_take_itself_away(void) {
    zmfb_value* block = zmfb_new();
    CHECK(zmfb_set_block(block, refill, block, NULL) == ZMFB_OK);
    CHECK(zmfb_eval(block, NULL, 0, NULL) == ZMFB_OK && zmfb_kind_of(block) == ZMFB_NIL);
    zmfb_free(block);
}

static void a_raised_error_is_a_status(void) {
    zmfb_value *connection = zmfb_new(), *result = zmfb_new(), *error = zmfb_new();
    CHECK(zmfb_get_error(error) == ZMFB_OK && zmfb_kind_of(error) == ZMFB_NIL);
    CHECK(zmfb_connect(connection, NULL, NULL, NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_kind_of(connection) == ZMFB_OBJECT);
    CHECK(zmfb_set_number(result, 1, 0, 0) == ZMFB_OK);
    CHECK(zmfb_call(connection, "nosuch", NULL, 0, result) == ZMFB_RAISED && number_in(result) == 1);
    CHECK(said("[FBCONN Error];zmFBConn has no Method named: nosuch"));
    CHECK(zmfb_get_error(error) == ZMFB_OK && zmfb_kind_of(error) == ZMFB_OBJECT);
    CHECK(zmfb_get_member(error, "gencode", result) == ZMFB_OK && number_in(result) == -1);
    CHECK(zmfb_get_member(error, "description", result) == ZMFB_OK);
    CHECK(holds_text(result, "[FBCONN Error];zmFBConn has no Method named: nosuch"));
    CHECK(zmfb_get_member(error, "nosuch", result) == ZMFB_RAISED && said("No exported variable: nosuch"));
    CHECK(set_text(result, "kept") == ZMFB_OK && zmfb_set_member(error, "cargo", result) == ZMFB_OK);
    CHECK(zmfb_get_member(error, "cargo", result) == ZMFB_OK && holds_text(result, "kept"));
    CHECK(zmfb_set_member(connection, "sdbname", result) == ZMFB_RAISED);
    zmfb_free(error), zmfb_free(result), zmfb_free(connection);
}

/* An error block that keeps the description and answers as it was told. */
typedef struct {
    zmfb_status answer;
    char description[80];
} Handler;

static zmfb_status handle(void* context, const zmfb_value* const* arguments, size_t count,
                          zmfb_value* result) {
    Handler* handler = context;
    zmfb_value* text = zmfb_new();
    const char* bytes = "";
    size_t length = 0;
    CHECK(count == 1);
    CHECK(zmfb_get_member(arguments[0], "description", text) == ZMFB_OK);
    CHECK(zmfb_get_text(text, &bytes, &length) == ZMFB_OK && length < sizeof handler->description);
    memcpy(handler->description, bytes, length);
    handler->description[length] = '\0';
    zmfb_free(text);
    CHECK(set_text(result, "instead") == ZMFB_OK);
    return handler->answer;
}

static void the_error_block_decides(void) {
    Handler handler = {ZMFB_OK, ""};
    zmfb_value *connection = zmfb_new(), *block = zmfb_new(), *result = zmfb_new(), *error = zmfb_new();
    CHECK(zmfb_connect(connection, NULL, NULL, NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_set_block(block, handle, &handler, NULL) == ZMFB_OK && zmfb_set_error_block(block) == ZMFB_OK);

    CHECK(zmfb_call(connection, "first", NULL, 0, result) == ZMFB_OK && zmfb_kind_of(result) == ZMFB_NIL);
    CHECK(strcmp(handler.description, "[FBCONN Error];zmFBConn has no Method named: first") == 0);
    CHECK(zmfb_get_member(connection, "nosuch", result) == ZMFB_OK && holds_text(result, "instead"));

    handler.answer = ZMFB_RAISED;
    CHECK(zmfb_call(connection, "second", NULL, 0, result) == ZMFB_RAISED);
    CHECK(said("[FBCONN Error];zmFBConn has no Method named: second"));
    CHECK(zmfb_get_error(error) == ZMFB_OK && zmfb_get_member(error, "description", error) == ZMFB_OK);
    CHECK(holds_text(error, zmfb_message()));

    handler.answer = ZMFB_FAILED;
    CHECK(zmfb_call(connection, "third", NULL, 0, result) == ZMFB_FAILED);
    CHECK(said("a code block ended the call") && strstr(handler.description, "third") != NULL);
    CHECK(holds_text(result, "instead")); /* as it was all the while */

    CHECK(zmfb_set_error_block(NULL) == ZMFB_OK);
    CHECK(zmfb_call(connection, "fourth", NULL, 0, result) == ZMFB_RAISED);
    CHECK(strstr(handler.description, "third") != NULL);
    zmfb_free(error), zmfb_free(result), zmfb_free(block), zmfb_free(connection);
}

int main(void) {
    a_block_lives_as_long_as_it_is_named();
    evaluating_gives_the_bodys_result();
    more_arguments_than_memory_can_hold_are_refused();
    a_status_of_a_body_ends_the_call();
    what_a_body_failed_with_is_told();
    a_block_may_take_itself_away();
    a_raised_error_is_a_status();
    the_error_block_decides();
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
