/* A library to be loaded before all others: one call on a file goes wrong.
 *
 * ZMFB_DISK_FILES   part of the names of the files that are meant, such as ".fdb"
 * ZMFB_DISK_CALL    write, sync, truncate, open or read
 * ZMFB_DISK_FAULT   ENOSPC or EIO: the call fails so; short: half of it is done; late: it takes 50 ms longer;
 *                   power: the process is killed, and what was written since the last sync of each file is
 * lost ZMFB_DISK_NTH     the call that goes wrong, counted from 1, and with ZMFB_DISK_STAYS all after it
 * ZMFB_DISK_COUNT   a file that gets the number of such calls at the end
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { most_files = 1024, most_blocks = 65536 };
static char meant[most_files];
static char writes_through[most_files]; /* nothing waits for a sync */

/* What a write covered, to be put back when the power goes. */
struct block {
    int file;
    off64_t offset;
    size_t size;
    off64_t length; /* of the file before it */
    char* bytes;
};
static struct block blocks[most_blocks];
static int block_count;
static long calls;
static pthread_mutex_t one_at_a_time = PTHREAD_MUTEX_INITIALIZER;

/* Puts the library's own function in a pointer to one. */
static void find(void* function, const char* name) { *(void**)function = dlsym(RTLD_NEXT, name); }
static const char* given(const char* name) {
    const char* const value = getenv(name);
    return value == NULL ? "" : value;
}

static int is_meant(int file) { return file >= 0 && file < most_files && meant[file]; }

static int is_meant_name(const char* name) {
    const char* const part = getenv("ZMFB_DISK_FILES");
    return part != NULL && strstr(name, part) != NULL;
}

/* The power is gone: later writes first. */
static void lose_power(void) {
    pthread_mutex_lock(&one_at_a_time);
    ssize_t (*put)(int, const void*, size_t, off64_t);
    find(&put, "pwrite64");
    for (int i = block_count - 1; i >= 0; --i) {
        const struct block* const one = &blocks[i];
        if (one->file < 0) continue;
        if (put(one->file, one->bytes, one->size, one->offset) < 0) _exit(99);
        if (ftruncate64(one->file, one->length) != 0) _exit(99);
    }
    kill(getpid(), SIGKILL);
}

static void keep(int file, size_t size, off64_t offset) {
    ssize_t (*get)(int, void*, size_t, off64_t);
    find(&get, "pread64");
    struct stat64 now;
    if (strcmp(given("ZMFB_DISK_FAULT"), "power") != 0 || writes_through[file]) return;
    pthread_mutex_lock(&one_at_a_time);
    if (block_count == most_blocks || fstat64(file, &now) != 0) _exit(98);
    struct block* const one = &blocks[block_count];
    one->file = file;
    one->offset = offset;
    one->length = now.st_size;
    one->bytes = malloc(size);
    if (one->bytes == NULL) _exit(98);
    const ssize_t got = get(file, one->bytes, size, offset);
    one->size = got < 0 ? 0 : (size_t)got;
    ++block_count;
    pthread_mutex_unlock(&one_at_a_time);
}

static void forget(int file) {
    pthread_mutex_lock(&one_at_a_time);
    for (int i = 0; i < block_count; ++i) {
        if (blocks[i].file == file) blocks[i].file = -1;
    }
    pthread_mutex_unlock(&one_at_a_time);
}

enum outcome { goes_well, fails, is_short };

static enum outcome call_on(int file_is_meant, const char* call) {
    const char* const fault = given("ZMFB_DISK_FAULT");
    if (!file_is_meant || strcmp(given("ZMFB_DISK_CALL"), call) != 0) return goes_well;
    const long nth = atol(given("ZMFB_DISK_NTH"));
    const long now = __atomic_add_fetch(&calls, 1, __ATOMIC_SEQ_CST);
    if (nth == 0 || now < nth || (now > nth && getenv("ZMFB_DISK_STAYS") == NULL)) return goes_well;
    if (strcmp(fault, "power") == 0) lose_power();
    if (strcmp(fault, "late") == 0) nanosleep(&(struct timespec){.tv_nsec = 50000000}, NULL);
    if (strcmp(fault, "short") == 0) return is_short;
    if (strcmp(fault, "ENOSPC") == 0) errno = ENOSPC;
    if (strcmp(fault, "EIO") == 0) errno = EIO;
    return strcmp(fault, "ENOSPC") == 0 || strcmp(fault, "EIO") == 0 ? fails : goes_well;
}

__attribute__((destructor)) static void tell_count(void) {
    const char* const name = getenv("ZMFB_DISK_COUNT");
    FILE* const file = name == NULL || calls == 0 ? NULL : fopen(name, "a");
    if (file == NULL) return;
    fprintf(file, "%ld\n", calls);
    fclose(file);
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
    ssize_t (*others)(int, const void*, size_t, off64_t);
    find(&others, "pwrite64");
    const enum outcome outcome = call_on(is_meant(file), "write");
    if (outcome == fails) return -1;
    if (is_meant(file)) keep(file, size, offset);
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size, offset);
}
ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
    return pwrite64(file, bytes, size, offset);
}

ssize_t write(int file, const void* bytes, size_t size) {
    ssize_t (*others)(int, const void*, size_t);
    find(&others, "write");
    const enum outcome outcome = call_on(is_meant(file), "write");
    if (outcome == fails) return -1;
    if (is_meant(file)) keep(file, size, lseek64(file, 0, SEEK_CUR));
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t offset) {
    ssize_t (*others)(int, void*, size_t, off64_t);
    find(&others, "pread64");
    const enum outcome outcome = call_on(is_meant(file), "read");
    if (outcome == fails) return -1;
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size, offset);
}
ssize_t pread(int file, void* bytes, size_t size, off_t offset) { return pread64(file, bytes, size, offset); }

ssize_t read(int file, void* bytes, size_t size) {
    ssize_t (*others)(int, void*, size_t);
    find(&others, "read");
    const enum outcome outcome = call_on(is_meant(file), "read");
    if (outcome == fails) return -1;
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size);
}

static int sync_with(const char* name, int file) {
    int (*others)(int);
    find(&others, name);
    if (call_on(is_meant(file), "sync") == fails) return -1;
    const int result = others(file);
    if (result == 0 && is_meant(file)) forget(file);
    return result;
}
int fsync(int file) { return sync_with("fsync", file); }
int fdatasync(int file) { return sync_with("fdatasync", file); }

int ftruncate64(int file, off64_t length) {
    int (*others)(int, off64_t);
    find(&others, "ftruncate64");
    return call_on(is_meant(file), "truncate") == fails ? -1 : others(file, length);
}
int ftruncate(int file, off_t length) { return ftruncate64(file, length); }

int open64(const char* name, int flags, ...) {
    int (*others)(const char*, int, ...);
    find(&others, "open64");
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (call_on(is_meant_name(name), "open") == fails) return -1;
    const int file = others(name, flags, mode);
    if (file < 0 || file >= most_files) return file;
    meant[file] = (char)is_meant_name(name);
    writes_through[file] = (flags & O_DSYNC) != 0;
    return file;
}
int open(const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return open64(name, flags, mode);
}

int close(int file) {
    int (*others)(int);
    find(&others, "close");
    if (file >= 0 && file < most_files) meant[file] = 0;
    return others(file);
}
