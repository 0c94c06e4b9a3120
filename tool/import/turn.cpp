#include "tool/import/turn.h"

#include <unistd.h>

#include <cerrno>

#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

int shared = -1;  // none for a run in one process
int turns = 0;    // of this process, one within another

}  // namespace

void Turn::take_by(int descriptor) { shared = descriptor; }

Turn::Turn() {
    const auto take = [] { return ::lockf(shared, F_LOCK, 0); };
    if (shared >= 0 && turns == 0) {
        if (!interrupted()) {
            wait_for(take);
        } else {
            while (take() != 0 && errno == EINTR) {  // to undo what there is
            }
        }
    }
    ++turns;
}

Turn::~Turn() {
    if (--turns > 0 || shared < 0) return;
    [[maybe_unused]] const int given_back = ::lockf(shared, F_ULOCK, 0);
}

}  // namespace zmfb::tool
