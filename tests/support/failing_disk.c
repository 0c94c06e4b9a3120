/* A library to be loaded before all others: one call on a file goes wrong.
 *
 * ZMFB_DISK_FILES   part of the names of the files that are meant, such as ".fdb"; "tmpfile" means files
 * without one ZMFB_DISK_CALL    write, sync, truncate, open, read, rename or close ZMFB_DISK_FAULT   ENOSPC
 * or EIO: the call fails so; short: half of it is done; late: it takes 50 ms longer; power: the process is
 * killed, and what was written since the last sync of each file is lost, but not a name that it has taken
 * ZMFB_DISK_NTH     the call that goes wrong, counted from 1, and with ZMFB_DISK_STAYS all after it
 * ZMFB_DISK_COUNT   a file that gets a line with each call and its number at the end of each process
 *
 * What the C library writes of its own streams is seen where the program calls fwrite() or fflush(), not
 * where it prints.
 */
#define _GNU_SOURCE
#undef _FILE_OFFSET_BITS /* which would give functions of 32-bit positions the names of the others */
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

enum { most_files = 1024, most_blocks = 65536 };
static char meant[most_files];
static char writes_through[most_files]; /* nothing waits for a sync */

/* What a write covered, to be put back when the power goes. */
struct block {
    int file; /* -1 when it is on the disk */
    dev_t device;
    ino64_t inode;
    off64_t offset;
    size_t size;
    off64_t length; /* of the file before it */
    char* bytes;
};
static struct block blocks[most_blocks];
static int block_count;
enum call { of_write, of_sync, of_truncate, of_open, of_read, of_rename, of_close, call_kinds };
static const char* const names[call_kinds] = {"write", "sync", "truncate", "open", "read", "rename", "close"};
static long calls[call_kinds];
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
    one->device = now.st_dev;
    one->inode = now.st_ino;
    one->offset = offset;
    one->length = now.st_size;
    one->bytes = malloc(size);
    if (one->bytes == NULL) _exit(98);
    const ssize_t got = get(file, one->bytes, size, offset);
    one->size = got < 0 ? 0 : (size_t)got;
    ++block_count;
    pthread_mutex_unlock(&one_at_a_time);
}

/* A sync is one of the whole file, through whichever descriptor. */
static void forget(int file) {
    struct stat64 now;
    if (fstat64(file, &now) != 0) return;
    pthread_mutex_lock(&one_at_a_time);
    for (int i = 0; i < block_count; ++i) {
        if (blocks[i].device == now.st_dev && blocks[i].inode == now.st_ino) blocks[i].file = -1;
    }
    pthread_mutex_unlock(&one_at_a_time);
}

/* Another descriptor takes the place of one that is closed before all of it is on the disk. */
static void keep_reachable(int file) {
    int other = -1;
    pthread_mutex_lock(&one_at_a_time);
    for (int i = 0; i < block_count; ++i) {
        if (blocks[i].file != file) continue;
        if (other < 0) other = fcntl(file, F_DUPFD_CLOEXEC, most_files);
        if (other < 0) _exit(97);
        blocks[i].file = other;
    }
    pthread_mutex_unlock(&one_at_a_time);
}

enum outcome { goes_well, fails, is_short, power_goes };

static enum outcome outcome_of(int file_is_meant, enum call call) {
    const char* const fault = given("ZMFB_DISK_FAULT");
    if (!file_is_meant) return goes_well;
    const long now = __atomic_add_fetch(&calls[call], 1, __ATOMIC_SEQ_CST);
    if (strcmp(given("ZMFB_DISK_CALL"), names[call]) != 0) return goes_well;
    const long nth = atol(given("ZMFB_DISK_NTH"));
    if (nth == 0 || now < nth || (now > nth && getenv("ZMFB_DISK_STAYS") == NULL)) return goes_well;
    if (strcmp(fault, "power") == 0) return power_goes;
    if (strcmp(fault, "late") == 0) nanosleep(&(struct timespec){.tv_nsec = 50000000}, NULL);
    if (strcmp(fault, "short") == 0) return is_short;
    if (strcmp(fault, "ENOSPC") == 0) errno = ENOSPC;
    if (strcmp(fault, "EIO") == 0) errno = EIO;
    return strcmp(fault, "ENOSPC") == 0 || strcmp(fault, "EIO") == 0 ? fails : goes_well;
}

static enum outcome call_on(int file_is_meant, enum call call) {
    const enum outcome outcome = outcome_of(file_is_meant, call);
    if (outcome == power_goes) lose_power();
    return outcome;
}

__attribute__((destructor)) static void tell_counts(void) {
    FILE* (*others)(const char*, const char*);
    find(&others, "fopen64");
    const char* const name = getenv("ZMFB_DISK_COUNT");
    FILE* const file = name == NULL ? NULL : others(name, "a");
    if (file == NULL) return;
    for (int i = 0; i < call_kinds; ++i) fprintf(file, "%s %ld\n", names[i], calls[i]);
    fclose(file);
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
    ssize_t (*others)(int, const void*, size_t, off64_t);
    find(&others, "pwrite64");
    const enum outcome outcome = call_on(is_meant(file), of_write);
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
    const enum outcome outcome = call_on(is_meant(file), of_write);
    if (outcome == fails) return -1;
    if (is_meant(file)) keep(file, size, lseek64(file, 0, SEEK_CUR));
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size);
}

/* What streams of C++ write when it is much. */
ssize_t writev(int file, const struct iovec* parts, int count) {
    ssize_t (*others)(int, const struct iovec*, int);
    find(&others, "writev");
    return is_meant(file) ? write(file, parts[0].iov_base, parts[0].iov_len) : others(file, parts, count);
}

static ssize_t send_with(const char* name, int to, int from, void* offset, size_t size) {
    ssize_t (*others)(int, int, void*, size_t);
    find(&others, name);
    const enum outcome outcome = call_on(is_meant(to), of_write);
    return outcome == fails ? -1 : others(to, from, offset, outcome == is_short ? (size + 1) / 2 : size);
}
ssize_t sendfile64(int to, int from, off64_t* offset, size_t size) {
    return send_with("sendfile64", to, from, offset, size);
}
ssize_t sendfile(int to, int from, off_t* offset, size_t size) {
    return send_with("sendfile", to, from, offset, size);
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
    size_t (*others)(const void*, size_t, size_t, FILE*);
    find(&others, "fwrite");
    return call_on(is_meant(fileno(stream)), of_write) == fails ? 0 : others(bytes, size, count, stream);
}

int fflush(FILE* stream) {
    int (*others)(FILE*);
    find(&others, "fflush");
    return stream != NULL && call_on(is_meant(fileno(stream)), of_write) == fails ? EOF : others(stream);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t offset) {
    ssize_t (*others)(int, void*, size_t, off64_t);
    find(&others, "pread64");
    const enum outcome outcome = call_on(is_meant(file), of_read);
    if (outcome == fails) return -1;
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size, offset);
}
ssize_t pread(int file, void* bytes, size_t size, off_t offset) { return pread64(file, bytes, size, offset); }

ssize_t read(int file, void* bytes, size_t size) {
    ssize_t (*others)(int, void*, size_t);
    find(&others, "read");
    const enum outcome outcome = call_on(is_meant(file), of_read);
    if (outcome == fails) return -1;
    return others(file, bytes, outcome == is_short ? (size + 1) / 2 : size);
}

static int sync_with(const char* name, int file) {
    int (*others)(int);
    find(&others, name);
    if (call_on(is_meant(file), of_sync) == fails) return -1;
    const int result = others(file);
    if (result == 0 && is_meant(file)) forget(file);
    return result;
}
int fsync(int file) { return sync_with("fsync", file); }
int fdatasync(int file) { return sync_with("fdatasync", file); }

int ftruncate64(int file, off64_t length) {
    int (*others)(int, off64_t);
    find(&others, "ftruncate64");
    return call_on(is_meant(file), of_truncate) == fails ? -1 : others(file, length);
}
int ftruncate(int file, off_t length) { return ftruncate64(file, length); }

static int opened(int file, int file_is_meant, int flags) {
    if (file < 0 || file >= most_files) return file;
    meant[file] = (char)file_is_meant;
    writes_through[file] = (flags & O_DSYNC) != 0;
    return file;
}

int open64(const char* name, int flags, ...) {
    int (*others)(const char*, int, ...);
    find(&others, "open64");
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (call_on(is_meant_name(name), of_open) == fails) return -1;
    return opened(others(name, flags, mode), is_meant_name(name), flags);
}
int open(const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return open64(name, flags, mode);
}

/* The end of a process that was begun without another program. */
void _exit(int status) {
    void (*others)(int);
    find(&others, "_exit");
    tell_counts();
    others(status);
    abort(); /* never */
}

FILE* fopen64(const char* name, const char* mode) {
    FILE* (*others)(const char*, const char*);
    find(&others, "fopen64");
    if (call_on(is_meant_name(name), of_open) == fails) return NULL;
    FILE* const stream = others(name, mode);
    if (stream != NULL) opened(fileno(stream), is_meant_name(name), 0);
    return stream;
}
FILE* fopen(const char* name, const char* mode) { return fopen64(name, mode); }

FILE* tmpfile64(void) {
    FILE* (*others)(void);
    find(&others, "tmpfile64");
    if (call_on(is_meant_name("tmpfile"), of_open) == fails) return NULL;
    FILE* const stream = others();
    if (stream != NULL) opened(fileno(stream), is_meant_name("tmpfile"), 0);
    return stream;
}
FILE* tmpfile(void) { return tmpfile64(); }

int fclose(FILE* stream) {
    int (*others)(FILE*);
    find(&others, "fclose");
    const int file = fileno(stream);
    const int was_meant = is_meant(file);
    if (was_meant) {
        fflush(stream);
        meant[file] = 0;
        keep_reachable(file);
    }
    const int result = others(stream);
    return call_on(was_meant, of_close) == fails ? EOF : result;
}

int close(int file) {
    int (*others)(int);
    find(&others, "close");
    const int was_meant = is_meant(file);
    if (was_meant) {
        meant[file] = 0;
        keep_reachable(file);
    }
    const int result = others(file);
    return call_on(was_meant, of_close) == fails ? -1 : result;
}

/* The power goes once the new name is there. */
static int rename_with(const char* from, const char* to, unsigned flags) {
    int (*others)(int, const char*, int, const char*, unsigned);
    find(&others, "renameat2");
    const enum outcome outcome = outcome_of(is_meant_name(from) || is_meant_name(to), of_rename);
    if (outcome == fails) return -1;
    const int result = others(AT_FDCWD, from, AT_FDCWD, to, flags);
    if (outcome == power_goes) lose_power();
    return result;
}
int rename(const char* from, const char* to) { return rename_with(from, to, 0); }
int renameat2(int from_folder, const char* from, int to_folder, const char* to, unsigned flags) {
    int (*others)(int, const char*, int, const char*, unsigned);
    find(&others, "renameat2");
    const int is_here = from_folder == AT_FDCWD && to_folder == AT_FDCWD;
    return is_here ? rename_with(from, to, flags) : others(from_folder, from, to_folder, to, flags);
}
