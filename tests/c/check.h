/* What the C tests share: checks that tell the line of what failed and go on. */
#ifndef ZMFB_TESTS_C_CHECK_H
#define ZMFB_TESTS_C_CHECK_H

#include <stdio.h>
#include <string.h>
#include <zmfbconn.h>

static int failed_checks;

#define CHECK(condition)                                                            \
    do {                                                                            \
        if (!(condition)) {                                                         \
            fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            ++failed_checks;                                                        \
        }                                                                           \
    } while (0)

/* Whether a place holds exactly these bytes. */
static inline int holds(const zmfb_value* place, const char* bytes, size_t length) {
    const char* held = NULL;
    size_t held_length = 0;
    return zmfb_get_text(place, &held, &held_length) == ZMFB_OK && held_length == length &&
           memcmp(held, bytes, length) == 0;
}

static inline int holds_text(const zmfb_value* place, const char* text) {
    return holds(place, text, strlen(text));
}

static inline zmfb_status set_text(zmfb_value* place, const char* text) {
    return zmfb_set_text(place, text, strlen(text));
}

/* The number in a place; a number that no test uses when there is none. */
static inline double number_in(const zmfb_value* place) {
    double number = -987654321;
    zmfb_get_number(place, &number, NULL, NULL);
    return number;
}

static inline int is_true(const zmfb_value* place) {
    int logical = 0;
    return zmfb_get_logical(place, &logical) == ZMFB_OK && logical == 1;
}

static inline int is_false(const zmfb_value* place) {
    int logical = 1;
    return zmfb_get_logical(place, &logical) == ZMFB_OK && logical == 0;
}

/* Whether the last failure's words are exactly these. */
static inline int said(const char* words) { return strcmp(zmfb_message(), words) == 0; }

#endif
