/* Values of every kind go in and come out again; what makes no sense is refused. */
#include <math.h>
#include <stdint.h>
#include <stdlib.h>

#include "check.h"

static void nil_and_logical(void) {
    zmfb_value* place = zmfb_new();
    CHECK(zmfb_kind_of(place) == ZMFB_NIL);
    CHECK(zmfb_set_logical(place, 7) == ZMFB_OK && zmfb_kind_of(place) == ZMFB_LOGICAL);
    CHECK(is_true(place));
    CHECK(zmfb_set_logical(place, 0) == ZMFB_OK && is_false(place));
    CHECK(zmfb_set_nil(place) == ZMFB_OK && zmfb_kind_of(place) == ZMFB_NIL);
    zmfb_free(place);
    zmfb_free(NULL);
    CHECK(zmfb_kind_of(NULL) == ZMFB_NIL);
}

static void numbers(void) {
    static const struct {
        double number;
        int width, decimals;
    } rows[] = {{0, 0, 0}, {-12.25, 10, 2}, {9007199254740993.0, 20, 0}, {1e-300, 255, 255}, {-0.5, 4, 1}};
    zmfb_value* place = zmfb_new();
    for (size_t k = 0; k < sizeof rows / sizeof *rows; ++k) {
        double number = 1;
        int width = -1, decimals = -1;
        CHECK(zmfb_set_number(place, rows[k].number, rows[k].width, rows[k].decimals) == ZMFB_OK);
        CHECK(zmfb_kind_of(place) == ZMFB_NUMBER);
        CHECK(zmfb_get_number(place, &number, &width, &decimals) == ZMFB_OK);
        CHECK(number == rows[k].number && width == rows[k].width && decimals == rows[k].decimals);
    }
    CHECK(zmfb_set_number(place, 5, 0, 0) == ZMFB_OK);
    CHECK(zmfb_set_number(place, NAN, 0, 0) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_set_number(place, INFINITY, 0, 0) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_set_number(place, 1, 256, 0) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_set_number(place, 1, 0, -1) == ZMFB_OUT_OF_RANGE);
    CHECK(number_in(place) == 5); /* as it was */
    zmfb_free(place);
}

static void dates(void) {
    static const int days[][3] = {{2007, 3, 1}, {1, 1, 1}, {9999, 12, 31}, {2024, 2, 29}, {0, 0, 0}};
    static const int none[][3] = {{2023, 2, 29}, {10000, 1, 1}, {2007, 13, 1}, {0, 1, 1}, {-1, -1, -1}};
    zmfb_value* place = zmfb_new();
    int year = 9, month = 9, day = 9;
    for (size_t k = 0; k < sizeof days / sizeof *days; ++k) {
        CHECK(zmfb_set_date(place, days[k][0], days[k][1], days[k][2]) == ZMFB_OK);
        CHECK(zmfb_kind_of(place) == ZMFB_DATE);
        CHECK(zmfb_get_date(place, &year, &month, &day) == ZMFB_OK);
        CHECK(year == days[k][0] && month == days[k][1] && day == days[k][2]);
    }
    for (size_t k = 0; k < sizeof none / sizeof *none; ++k) {
        CHECK(zmfb_set_date(place, none[k][0], none[k][1], none[k][2]) == ZMFB_OUT_OF_RANGE);
    }
    CHECK(said("no such day"));
    zmfb_free(place);
}

static void texts(void) {
    zmfb_value *place = zmfb_new(), *other = zmfb_new();
    char bytes[300];
    for (size_t length = 0; length <= sizeof bytes; length += 7) {
        for (size_t k = 0; k < length; ++k) bytes[k] = (char)(k % 256); /* zero bytes among them */
        CHECK(zmfb_set_text(place, bytes, length) == ZMFB_OK && zmfb_kind_of(place) == ZMFB_TEXT);
        CHECK(holds(place, bytes, length));
        CHECK(zmfb_copy(other, place) == ZMFB_OK);
        CHECK(zmfb_set_text(place, "changed", 7) == ZMFB_OK);
        CHECK(holds(other, bytes, length)); /* a copy of its own */
    }
    CHECK(zmfb_set_text(place, NULL, 0) == ZMFB_OK && holds(place, "", 0));
    CHECK(zmfb_set_text(place, "a\0b", 3) == ZMFB_OK && holds(place, "a\0b", 3));
    CHECK(zmfb_set_text(place, NULL, 1) == ZMFB_WRONG_ARGUMENT);
    CHECK(zmfb_set_text(place, "", SIZE_MAX / 2) == ZMFB_NO_MEMORY && said("out of memory"));
    CHECK(holds(place, "a\0b", 3));
    zmfb_free(other);
    zmfb_free(place);
}

static void nested_arrays(void) {
    zmfb_value *outer = zmfb_new(), *inner = zmfb_new(), *place = zmfb_new();
    size_t size = 9;
    CHECK(zmfb_set_array(outer, 2) == ZMFB_OK && zmfb_kind_of(outer) == ZMFB_ARRAY);
    CHECK(zmfb_set_array(inner, 0) == ZMFB_OK && zmfb_get_size(inner, &size) == ZMFB_OK && size == 0);
    CHECK(zmfb_set_element(outer, 2, inner) == ZMFB_OK);
    for (int k = 1; k <= 100; ++k) {
        CHECK(zmfb_set_number(place, k, 0, 0) == ZMFB_OK && zmfb_append(inner, place) == ZMFB_OK);
    }
    zmfb_free(inner); /* the outer one keeps it */
    inner = zmfb_new();
    CHECK(zmfb_get_element(outer, 2, inner) == ZMFB_OK);
    CHECK(zmfb_get_size(inner, &size) == ZMFB_OK && size == 100);
    CHECK(zmfb_get_element(inner, 100, place) == ZMFB_OK && number_in(place) == 100);
    CHECK(zmfb_get_element(outer, 1, place) == ZMFB_OK && zmfb_kind_of(place) == ZMFB_NIL);
    CHECK(zmfb_get_element(outer, 2, outer) == ZMFB_OK); /* into the very place it is read from */
    CHECK(zmfb_get_size(outer, &size) == ZMFB_OK && size == 100);
    CHECK(zmfb_get_element(inner, 0, place) == ZMFB_OUT_OF_RANGE && said("no such element"));
    CHECK(zmfb_get_element(inner, 101, place) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_set_element(inner, 101, place) == ZMFB_OUT_OF_RANGE);
    CHECK(zmfb_set_array(place, 67108865) == ZMFB_OUT_OF_RANGE);
    zmfb_free(place), zmfb_free(inner), zmfb_free(outer);
}

static void deep_arrays(void) {
    enum { depth = 100000 };
    zmfb_value *array = zmfb_new(), *next = zmfb_new();
    for (int k = 0; k < depth; ++k) {
        CHECK(zmfb_set_array(next, 1) == ZMFB_OK);
        CHECK(zmfb_set_element(next, 1, array) == ZMFB_OK);
        CHECK(zmfb_copy(array, next) == ZMFB_OK);
    }
    int found = 0;
    zmfb_value* walk = zmfb_new();
    CHECK(zmfb_copy(walk, array) == ZMFB_OK);
    while (zmfb_kind_of(walk) == ZMFB_ARRAY && zmfb_get_element(walk, 1, walk) == ZMFB_OK) ++found;
    CHECK(found == depth);
    zmfb_free(walk), zmfb_free(next), zmfb_free(array);
}

static void wrong_kinds(void) {
    zmfb_value *place = zmfb_new(), *out = zmfb_new();
    int a = 0, b = 0, c = 0;
    double number = 0;
    const char* bytes = NULL;
    size_t size = 0;
    CHECK(zmfb_set_text(place, "text", 4) == ZMFB_OK);
    CHECK(zmfb_get_logical(place, &a) == ZMFB_WRONG_KIND && said("wanted logical, got character"));
    CHECK(zmfb_get_number(place, &number, NULL, NULL) == ZMFB_WRONG_KIND);
    CHECK(zmfb_get_date(place, &a, &b, &c) == ZMFB_WRONG_KIND);
    CHECK(zmfb_get_size(place, &size) == ZMFB_WRONG_KIND);
    CHECK(zmfb_get_element(place, 1, out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_set_element(place, 1, out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_append(place, out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_eval(place, NULL, 0, out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_call(place, "istable", NULL, 0, out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_get_member(place, "sdbname", out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_set_member(place, "bconn", out) == ZMFB_WRONG_KIND);
    CHECK(zmfb_set_error_block(place) == ZMFB_WRONG_KIND && said("wanted block, got character"));
    CHECK(zmfb_set_nil(place) == ZMFB_OK && zmfb_get_text(place, &bytes, &size) == ZMFB_WRONG_KIND);
    CHECK(bytes == NULL && size == 0 && zmfb_kind_of(out) == ZMFB_NIL);
    zmfb_free(out), zmfb_free(place);
}

static void nothing_given(void) {
    zmfb_value* place = zmfb_new();
    int a = 0;
    double number = 0;
    const char* bytes = NULL;
    size_t size = 0;
    const zmfb_status answers[] = {
        zmfb_prepare(NULL),
        zmfb_create_database(NULL, NULL, NULL),
        zmfb_install_functions(NULL, NULL, NULL, ZMFB_FUNCTIONS_STORED),
        zmfb_connect(NULL, NULL, NULL, NULL, NULL),
        zmfb_call(NULL, "istable", NULL, 0, NULL),
        zmfb_call(place, NULL, NULL, 0, NULL),
        zmfb_call(place, "istable", NULL, 1, NULL),
        zmfb_get_member(NULL, "x", place),
        zmfb_get_member(place, NULL, place),
        zmfb_get_member(place, "x", NULL),
        zmfb_set_member(NULL, "x", place),
        zmfb_set_member(place, NULL, place),
        zmfb_set_member(place, "x", NULL),
        zmfb_get_error(NULL),
        zmfb_copy(NULL, place),
        zmfb_copy(place, NULL),
        zmfb_set_nil(NULL),
        zmfb_set_logical(NULL, 1),
        zmfb_set_number(NULL, 1, 0, 0),
        zmfb_set_date(NULL, 2007, 3, 1),
        zmfb_set_text(NULL, "", 0),
        zmfb_set_array(NULL, 1),
        zmfb_set_block(NULL, NULL, NULL, NULL),
        zmfb_set_block(place, NULL, NULL, NULL),
        zmfb_get_logical(NULL, &a),
        zmfb_get_logical(place, NULL),
        zmfb_get_number(NULL, &number, NULL, NULL),
        zmfb_get_number(place, NULL, NULL, NULL),
        zmfb_get_date(NULL, &a, &a, &a),
        zmfb_get_date(place, &a, &a, NULL),
        zmfb_get_text(NULL, &bytes, &size),
        zmfb_get_text(place, NULL, &size),
        zmfb_get_text(place, &bytes, NULL),
        zmfb_get_size(NULL, &size),
        zmfb_get_size(place, NULL),
        zmfb_get_element(NULL, 1, place),
        zmfb_set_element(NULL, 1, place),
        zmfb_append(NULL, place),
        zmfb_append(place, NULL),
        zmfb_eval(NULL, NULL, 0, NULL),
        zmfb_eval(place, NULL, 1, NULL),
    };
    for (size_t k = 0; k < sizeof answers / sizeof *answers; ++k) {
        if (answers[k] != ZMFB_WRONG_ARGUMENT) fprintf(stderr, "call %zu answered %d\n", k, (int)answers[k]);
        CHECK(answers[k] == ZMFB_WRONG_ARGUMENT);
    }
    CHECK(zmfb_set_array(place, 1) == ZMFB_OK);
    CHECK(zmfb_get_element(place, 1, NULL) == ZMFB_WRONG_ARGUMENT);
    CHECK(zmfb_set_element(place, 1, NULL) == ZMFB_WRONG_ARGUMENT && said("NULL is not allowed here"));
    zmfb_free(place);
}

static void the_method_table(void) {
    const char* before = "";
    int seen = 0;
    for (size_t k = 0; k < zmfb_method_count(); ++k) {
        const char *name = NULL, *kind = NULL, *help = NULL;
        int parameters = -1;
        CHECK(zmfb_method(k, &name, &parameters, &kind, &help) == ZMFB_OK);
        CHECK(strcmp(before, name) <= 0 && parameters >= 0 && strlen(help) > 0);
        CHECK(strlen(name) == strspn(name, "abcdefghijklmnopqrstuvwxyz_0123456789"));
        if (strcmp(name, "istable") == 0) seen = parameters == 1 && strcmp(kind, "exported") == 0;
        before = name;
    }
    CHECK(seen);
    CHECK(zmfb_method(0, NULL, NULL, NULL, NULL) == ZMFB_OK);
    CHECK(zmfb_method(zmfb_method_count(), NULL, NULL, NULL, NULL) == ZMFB_OUT_OF_RANGE);
}

static void settings(void) {
    zmfb_value *on = zmfb_new(), *before = zmfb_new();
    CHECK(zmfb_setting(1, NULL, before) == ZMFB_OK && is_false(before));
    CHECK(zmfb_set_logical(on, 1) == ZMFB_OK);
    CHECK(zmfb_setting(1, on, before) == ZMFB_OK && is_false(before));
    CHECK(zmfb_setting(1, before, before) == ZMFB_OK && is_true(before));
    CHECK(zmfb_setting(3, NULL, NULL) == ZMFB_OK);
    zmfb_free(before), zmfb_free(on);
}

int main(void) {
    CHECK(said(""));
    CHECK(strcmp(zmfb_version(), ZMFB_VERSION) == 0);
    nil_and_logical();
    numbers();
    dates();
    texts();
    nested_arrays();
    deep_arrays();
    wrong_kinds();
    nothing_given();
    the_method_table();
    settings();
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
