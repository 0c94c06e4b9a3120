#include "tool/interrupt.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace zmfb::tool {
namespace {

volatile std::sig_atomic_t noted = 0;
int counter = -1;

// The signal may come to any thread of the engine: only the descriptor wakes up the one that waits.
void note(int) {
    noted = 1;
    const int before = errno;
    const std::uint64_t one = 1;
    if (::write(counter, &one, sizeof one) < 0) errno = before;
}

}  // namespace

InterruptWatch::InterruptWatch(Second second) {
    if (counter < 0) counter = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::uint64_t old = 0;
    if (::read(counter, &old, sizeof old) < 0) errno = 0;  // there was none
    noted = 0;
    struct sigaction watch {};
    watch.sa_handler = note;
    if (second == Second::ends_the_program) watch.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&watch.sa_mask);
    sigaction(SIGINT, &watch, &before_);
}

InterruptWatch::~InterruptWatch() { sigaction(SIGINT, &before_, nullptr); }

int InterruptWatch::descriptor() { return counter; }

bool InterruptWatch::interrupted() { return noted != 0; }

}  // namespace zmfb::tool
