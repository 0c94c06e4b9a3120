/* A library to be loaded before all others: each time the time of day is asked for, it is an hour earlier
 * than before. */
#define _GNU_SOURCE
#include <stddef.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static time_t put_back(void) {
    static time_t by = 0;
    by += 3600;
    return by;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
    const int result = (int)syscall(SYS_clock_gettime, clock, now);
    if (result == 0 && clock == CLOCK_REALTIME) now->tv_sec -= put_back();
    return result;
}

int gettimeofday(struct timeval* restrict now, void* restrict zone) {
    struct timespec exact;
    (void)zone;
    if (clock_gettime(CLOCK_REALTIME, &exact) != 0) return -1;
    now->tv_sec = exact.tv_sec;
    now->tv_usec = exact.tv_nsec / 1000;
    return 0;
}

time_t time(time_t* now) {
    struct timespec exact;
    if (clock_gettime(CLOCK_REALTIME, &exact) != 0) return -1;
    if (now != NULL) *now = exact.tv_sec;
    return exact.tv_sec;
}
