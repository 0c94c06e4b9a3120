#include <string.h>

#include "arguments.h"
#include "zmrddudfs.h"

enum { READ_SIZE = 8192 };

static size_t smaller(size_t a, size_t b) { return a < b ? a : b; }

/* Copies up to `wanted` bytes of the blob behind its first `before` ones to `out`. */
static void read_piece(const struct blobcallback* blob, size_t before, size_t wanted, char* out) {
    ISC_UCHAR buffer[READ_SIZE];
    size_t filled = 0;
    short state = blb_got_full_segment;
    while (filled < wanted && state != blb_got_eof) {
        ISC_USHORT reported = 0;
        state = blob->blob_get_segment(blob->blob_handle, buffer, READ_SIZE, &reported);
        const size_t got = smaller(reported, READ_SIZE);
        const size_t skipped = smaller(before, got);
        const size_t taken = smaller(got - skipped, wanted - filled);
        memcpy(out + filled, buffer + skipped, taken);
        before -= skipped;
        filled += taken;
    }
}

char* zmblobsubstr(const struct blobcallback* blob, const ISC_LONG* start, const ISC_LONG* length) {
    if (!blob || !blob->blob_handle) return NULL;
    const size_t total = blob->blob_total_length > 0 ? (size_t)blob->blob_total_length : 0;
    const size_t before = bytes_before(number_or_zero(start), total);
    const size_t wanted = bounded(number_or_zero(length), ZMRDDUDFS_TEXT_MAX);
    char* result = new_filled_text(wanted, '\0');
    if (result) read_piece(blob, before, wanted, result);
    return result;
}
