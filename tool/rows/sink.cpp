#include "tool/rows/sink.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "tool/interrupt.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

void put_out(std::string_view text) {
    const auto put = [&] { return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : -1; };
    // A terminal takes what belongs behind interrupted rows, too.
    if ((output_is_terminal() ? put() : wait_for(put)) < 0) throw output_failure(errno);
}

}  // namespace

Sink::Sink(std::string path, bool pages) : path_(std::move(path)) {
    if (!pages || is_file() || !output_is_terminal()) return;
    pager_command_ = Pager::command();
    if (!pager_command_.empty()) held_.emplace();
}

// One line of the terminal is left for what comes behind.
bool Sink::still_fits(std::string_view text) {
    const std::size_t width = terminal_width();
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        in_line_ += count_characters(text.substr(0, end));
        lines_ += std::max<std::size_t>(1, (in_line_ + width - 1) / width);
        in_line_ = 0;
        text.remove_prefix(end + 1);
    }
    in_line_ += count_characters(text);
    return lines_ + in_line_ / width < terminal_height();
}

void Sink::write(std::string_view text) {
    if (is_file()) {
        if (!file_) file_.emplace(path_);
        return file_->write(text);
    }
    if (pager_) return pager_->write(text);
    if (!held_) return put_out(text);
    *held_ += text;
    if (still_fits(text)) return;
    const std::string all = std::exchange(held_, std::nullopt).value();
    pager_ = std::make_unique<Pager>(pager_command_);
    was_paged_ = true;
    write(all);
}

void Sink::close(bool complete) {
    if (file_) {
        complete ? file_->close() : file_->give_up();
    } else if (pager_) {
        std::exchange(pager_, nullptr)->close();
    } else if (!is_file()) {
        if (held_) put_out(*held_);
        flush_output();
    }
}

}  // namespace zmfb::tool
