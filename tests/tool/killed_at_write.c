/* A library to be loaded before all others: the process is killed before it writes a page of a database for
 * the n-th time, n being what ZMFB_KILLED_AT says. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

typedef ssize_t (*writer)(int, const void*, size_t, off64_t);

static void count(void) {
    static long writes = 0;
    const char* const last = getenv("ZMFB_KILLED_AT");
    if (last != NULL && ++writes == atol(last)) kill(getpid(), SIGKILL);
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
    static writer others = NULL;
    if (others == NULL) *(void**)&others = dlsym(RTLD_NEXT, "pwrite64");
    count();
    return others(file, bytes, size, offset);
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
    return pwrite64(file, bytes, size, offset);
}
