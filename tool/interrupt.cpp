#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

volatile std::sig_atomic_t noted = 0;

}  // namespace

InterruptWatch::InterruptWatch() {
    noted = 0;
    struct sigaction watch {};
    watch.sa_handler = [](int) { noted = 1; };
    watch.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&watch.sa_mask);
    sigaction(SIGINT, &watch, &before_);
}

InterruptWatch::~InterruptWatch() { sigaction(SIGINT, &before_, nullptr); }

bool InterruptWatch::interrupted() { return noted != 0; }

}  // namespace zmfb::tool
