#include "tool/rows/sink.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "tool/interrupt.h"
#include "tool/output.h"

namespace zmfb::tool {

void Sink::write(std::string_view text) {
    if (is_file()) {
        if (!file_) file_.emplace(path_);
        file_->write(text);
        return;
    }
    const auto put = [&] { return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : -1; };
    // A terminal takes what belongs behind interrupted rows, too.
    if ((isatty(STDOUT_FILENO) != 0 ? put() : wait_for(put)) < 0) throw output_failure(errno);
}

void Sink::close(bool complete) {
    if (file_) {
        complete ? file_->close() : file_->give_up();
    } else if (!is_file()) {
        flush_output();
    }
}

}  // namespace zmfb::tool
