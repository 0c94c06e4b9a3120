#include "tool/browse/idle.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <system_error>
#include <thread>

#include "tool/interrupt.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/sql_error.h"

namespace zmfb::tool::browse {
namespace {

// Cancels what runs, from a thread of its own, when there is something to read on standard input.
class Watch {
  public:
    Watch() : over_(::eventfd(0, EFD_CLOEXEC)) {
        if (over_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
        thread_ = std::thread([this] { watch(); });
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() {
        end();
        ::close(over_);
    }

    // Whether it has cancelled what ran. Nothing is cancelled any more.
    bool end() {
        if (thread_.joinable()) {
            const std::uint64_t one = 1;
            while (::write(over_, &one, sizeof one) < 0 && errno == EINTR) {
            }
            thread_.join();
            if (cancelled_ && ending_signal() == 0) resume();
        }
        return cancelled_;
    }

  private:
    void watch() {
        constexpr int between_two_cancels = 50;  // milliseconds
        pollfd either[] = {{over_, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        while (::poll(either, 2, -1) < 0 && errno == EINTR) {
        }
        pollfd over{over_, POLLIN, 0};
        while (over.revents == 0 && either[0].revents == 0) {
            cancelled_ = true;
            cancel();
            ::poll(&over, 1, between_two_cancels);
        }
    }

    int over_;
    std::atomic<bool> cancelled_ = false;
    std::thread thread_;
};

}  // namespace

bool do_while_idle(const std::function<void()>& work) {
    Watch watch;
    try {
        work();
        return true;
    } catch (const SqlError&) {
        if (!watch.end() || interrupted()) throw;
    } catch (const Cancelled&) {
        if (!watch.end() || interrupted()) throw;
    }
    return false;
}

}  // namespace zmfb::tool::browse
