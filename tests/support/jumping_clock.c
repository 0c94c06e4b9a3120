/* The time of day jumps by hours, forth and back, in a program that links this or loads it before all other
 * libraries: each time that it is asked for, and for ncurses, which takes it twice to learn how long it has
 * waited, each time that poll() has waited. The client library and the engine see the true time, and the
 * steady clock is as it is. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <poll.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static int jumps;

/* By how many seconds the caller, an address in its code, sees the wrong time. */
static time_t wrong_by(const void* caller) {
    Dl_info code;
    const char* const file = dladdr(caller, &code) != 0 && code.dli_fname != NULL ? code.dli_fname : "";
    if (strstr(file, "/libfbclient") != NULL || strstr(file, "/plugins/lib") != NULL) return 0;
    const int waits_by_it = strstr(file, "/libtinfo") != NULL || strstr(file, "/libncurses") != NULL;
    const int now = __atomic_add_fetch(&jumps, waits_by_it ? 0 : 1, __ATOMIC_SEQ_CST);
    const time_t hours = 1 + now % 24;
    return 3600 * (now % 2 == 0 ? hours : -hours);
}

static int wrong_time(clockid_t clock, struct timespec* now, const void* caller) {
    const int result = (int)syscall(SYS_clock_gettime, clock, now);
    if (result == 0 && clock == CLOCK_REALTIME) now->tv_sec += wrong_by(caller);
    return result;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
    return wrong_time(clock, now, __builtin_return_address(0));
}

int gettimeofday(struct timeval* restrict now, void* restrict zone) {
    struct timespec exact;
    (void)zone;
    if (wrong_time(CLOCK_REALTIME, &exact, __builtin_return_address(0)) != 0) return -1;
    now->tv_sec = exact.tv_sec;
    now->tv_usec = exact.tv_nsec / 1000;
    return 0;
}

time_t time(time_t* now) {
    struct timespec exact;
    if (wrong_time(CLOCK_REALTIME, &exact, __builtin_return_address(0)) != 0) return -1;
    if (now != NULL) *now = exact.tv_sec;
    return exact.tv_sec;
}

int poll(struct pollfd* files, nfds_t count, int milliseconds) {
    int (*others)(struct pollfd*, nfds_t, int);
    *(void**)&others = dlsym(RTLD_NEXT, "poll");
    const int ready = others(files, count, milliseconds);
    if (milliseconds != 0) __atomic_add_fetch(&jumps, 1, __ATOMIC_SEQ_CST);
    return ready;
}
