#include "arguments.h"

#include <ib_util.h>
#include <string.h>

#include "zmrddudfs.h"

ISC_LONG number_or_zero(const ISC_LONG* number) { return number ? *number : 0; }

size_t text_length(const char* text) {
    const char* end = memchr(text, '\0', ZMRDDUDFS_TEXT_MAX);
    return end ? (size_t)(end - text) : ZMRDDUDFS_TEXT_MAX;
}

size_t bounded(ISC_LONG wanted, size_t limit) {
    if (wanted < 1) return 0;
    return (size_t)wanted < limit ? (size_t)wanted : limit;
}

size_t bytes_before(ISC_LONG start, size_t total) {
    if (start > 0) return (size_t)start - 1;
    if (start == 0) return 0;
    const size_t from_end = (size_t)(-(start + 1)) + 1;
    return from_end < total ? total - from_end : 0;
}

char* new_filled_text(size_t length, char fill) {
    char* text = ib_util_malloc((long)length + 1);
    if (!text) return NULL;
    memset(text, fill, length);
    text[length] = '\0';
    return text;
}

char* new_text(const char* bytes, size_t length) {
    char* text = ib_util_malloc((long)length + 1);
    if (!text) return NULL;
    memcpy(text, bytes, length);
    text[length] = '\0';
    return text;
}
