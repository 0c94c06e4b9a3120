#include <math.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "arguments.h"
#include "zmrddudfs.h"

/* A double carries 15 to 16 significant decimal digits; what stands behind them is noise. */
enum { DIGITS = 16, DEFAULT_WIDTH = 10 };

/* A number as its significant digits; the first one counts for 10 to the power of `exponent`. */
struct decimal {
    bool negative;
    int exponent;
    char digits[DIGITS];
};

static struct decimal to_decimal(double number) {
    struct decimal value = {.negative = signbit(number) != 0};
    char printed[64];
    (void)snprintf(printed, sizeof printed, "%.*e", DIGITS - 1, fabs(number));
    /* The character between the first digit and the others is the locale's. */
    size_t count = 0;
    const char* at = printed;
    for (; *at && *at != 'e'; ++at) {
        if (*at >= '0' && *at <= '9' && count < DIGITS) value.digits[count++] = *at;
    }
    value.exponent = *at ? (int)strtol(at + 1, NULL, 10) : 0;
    return value;
}

static bool is_zero(const struct decimal* value) {
    for (size_t i = 0; i < DIGITS; ++i) {
        if (value->digits[i] != '0') return false;
    }
    return true;
}

/* Adds one to the last of the first `count` digits; a carry out of the first one moves the exponent. */
static void count_up(struct decimal* value, size_t count) {
    while (count > 0 && value->digits[count - 1] == '9') value->digits[--count] = '0';
    if (count > 0) {
        value->digits[count - 1] = (char)(value->digits[count - 1] + 1);
    } else {
        value->digits[0] = '1';
        ++value->exponent;
    }
}

/* Rounds half away from zero to `decimals` digits after the point. */
static void round_decimal(struct decimal* value, int decimals) {
    const int kept = value->exponent + 1 + decimals;
    if (kept >= DIGITS) return;
    const bool up = kept >= 0 && value->digits[kept] >= '5';
    const size_t count = kept > 0 ? (size_t)kept : 0;
    memset(value->digits + count, '0', DIGITS - count);
    if (up) count_up(value, count);
}

static char digit_at(const struct decimal* value, int power) {
    const int index = value->exponent - power;
    return index >= 0 && index < DIGITS ? value->digits[index] : '0';
}

/* Prints the rounded value so that it ends at `end`; the columns before it stay as they are. */
static void print_before(char* end, const struct decimal* value, int whole, int decimals) {
    for (int power = -decimals; power < 0; ++power) *--end = digit_at(value, power);
    if (decimals > 0) *--end = '.';
    for (int power = 0; power < whole; ++power) *--end = digit_at(value, power);
    if (value->negative) *--end = '-';
}

char* zmstr(const double* number, const ISC_LONG* length, const ISC_LONG* decimals) {
    if (!number) return NULL;
    const ISC_LONG asked = number_or_zero(length);
    const int width = (int)bounded(asked < 1 ? DEFAULT_WIDTH : asked, ZMRDDUDFS_NUMBER_MAX);
    const int places = (int)bounded(number_or_zero(decimals), ZMRDDUDFS_NUMBER_MAX);
    if (!isfinite(*number)) return new_filled_text((size_t)width, '*');

    struct decimal value = to_decimal(*number);
    round_decimal(&value, places);
    if (is_zero(&value)) value.negative = false;
    const int whole = value.exponent > 0 ? value.exponent + 1 : 1;
    const int needed = value.negative + whole + (places > 0 ? 1 + places : 0);
    if (needed > width) return new_filled_text((size_t)width, '*');

    char* result = new_filled_text((size_t)width, ' ');
    if (result) print_before(result + width, &value, whole, places);
    return result;
}

char* zmstrzero(const double* number, const ISC_LONG* length, const ISC_LONG* decimals) {
    char* result = zmstr(number, length, decimals);
    if (!result) return NULL;
    char* first = result;
    while (*first == ' ') *first++ = '0';
    if (*first == '-') {
        *first = '0';
        *result = '-';
    }
    return result;
}
