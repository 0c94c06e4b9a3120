#include <stdbool.h>
#include <string.h>

#include "arguments.h"
#include "zmrddudfs.h"

enum { CASE_DISTANCE = 0x20, MULTIPLICATION_SIGN = 0xD7, DIVISION_SIGN = 0xF7 };

static bool is_upper(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != MULTIPLICATION_SIGN);
}

static bool is_lower_with_upper(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != DIVISION_SIGN);
}

char* zmtrim(const char* text) {
    if (!text) return NULL;
    size_t end = text_length(text);
    size_t begin = 0;
    while (begin < end && text[begin] == ' ') ++begin;
    while (end > begin && text[end - 1] == ' ') --end;
    return new_text(text + begin, end - begin);
}

char* zmlower(const char* text) {
    if (!text) return NULL;
    const size_t length = text_length(text);
    char* result = new_text(text, length);
    for (size_t i = 0; result && i < length; ++i) {
        const unsigned char c = (unsigned char)result[i];
        if (is_upper(c)) result[i] = (char)(c + CASE_DISTANCE);
    }
    return result;
}

char* zmupper(const char* text) {
    if (!text) return NULL;
    const size_t length = text_length(text);
    char* result = new_text(text, length);
    for (size_t i = 0; result && i < length; ++i) {
        const unsigned char c = (unsigned char)result[i];
        if (is_lower_with_upper(c)) result[i] = (char)(c - CASE_DISTANCE);
    }
    return result;
}

char* zmsubstr(const char* text, const ISC_LONG* start, const ISC_LONG* length) {
    if (!text) return NULL;
    const size_t total = text_length(text);
    const size_t before = bytes_before(number_or_zero(start), total);
    if (before >= total) return new_text("", 0);
    return new_text(text + before, bounded(number_or_zero(length), total - before));
}

char* zmpadr(const char* text, const ISC_LONG* length) {
    if (!text) return NULL;
    const size_t width = bounded(number_or_zero(length), ZMRDDUDFS_TEXT_MAX);
    const size_t total = text_length(text);
    char* result = new_filled_text(width, ' ');
    if (result) memcpy(result, text, total < width ? total : width);
    return result;
}

char* zmpadl(const char* text, const ISC_LONG* length) {
    if (!text) return NULL;
    const size_t width = bounded(number_or_zero(length), ZMRDDUDFS_TEXT_MAX);
    const size_t total = text_length(text);
    const size_t kept = total < width ? total : width;
    char* result = new_filled_text(width, ' ');
    if (result) memcpy(result + (width - kept), text, kept);
    return result;
}
