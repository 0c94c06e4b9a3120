#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <deque>
#include <memory>
#include <thread>
#include <utility>

#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/file_kind.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/log_file.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

struct Given {
    std::size_t count = 20;
    std::optional<int> level;
    std::string tag;
    bool follow = false;
};

int open_log(const std::string& path) {
    const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    const std::string reason = std::strerror(errno);
    const std::string_view odd = odd_kind_at(path);
    if (opened >= 0 && odd.empty()) return opened;
    if (opened >= 0) ::close(opened);
    throw Failure{Exit::failed, fmt::format("cannot read {}", path),
                  odd.empty() ? reason : fmt::format("it is {}", odd),
                  "programs write their log there when they may; \"zmfb doctor\" tells"};
}

// The log, opened for reading; followed, when what is unfinished in it is waited for.
class LogFile {
  public:
    explicit LogFile(bool followed)
        : path_(log_file_path()), descriptor_(open_log(path_)), followed_(followed) {}
    ~LogFile() { close(descriptor_); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    // Reads on to the end, and hands each entry to `use`. A file that became shorter is read from its start.
    template <class Use>
    void read_on(const Use& use) {
        struct stat now {};
        if (fstat(descriptor_, &now) == 0 && now.st_size < offset_) {
            offset_ = lseek(descriptor_, 0, SEEK_SET);
            reader_ = {};
        }
        std::array<char, 65536> buffer;
        ssize_t got = 0;
        while ((got = read(descriptor_, buffer.data(), buffer.size())) > 0) {
            offset_ += got;
            for (LogEntry& entry : reader_.take({buffer.data(), static_cast<std::size_t>(got)})) {
                use(std::move(entry));
            }
        }
        if (!followed_) {
            for (LogEntry& entry : reader_.take_unfinished()) use(std::move(entry));
        }
        if (auto last = reader_.last()) use(std::move(*last));
    }

  private:
    std::string path_;
    int descriptor_;
    bool followed_;
    off_t offset_ = 0;
    LogReader reader_;
};

Json entry_json(const LogEntry& entry) {
    return {{"level", entry.level},        {"user", to_utf8(entry.user)},
            {"date", to_utf8(entry.date)}, {"tag", to_utf8(tag_of(entry.text))},
            {"text", to_utf8(entry.text)}, {"doubtful", entry.doubtful}};
}

// Further lines stand further in than any entry begins.
std::string shown_text(std::string_view text) {
    std::string shown;
    for (const char c : lines_without_controls(to_utf8(text))) {
        shown += c;
        if (c == '\n') shown += "    ";
    }
    return shown;
}

void explain_doubtful() {
    static bool is_explained = false;
    if (std::exchange(is_explained, true)) return;
    say("note: what begins with \"?\" may be a piece of the text of an entry before it\n");
}

void print_entry(const LogEntry& entry) {
    const std::string_view tag = tag_of(entry.text);
    const bool bad = tag == "ERROR" || tag == "FATAL";
    const bool coloured = bad && output_has_colours();
    if (entry.doubtful) explain_doubtful();
    fmt::print("{}{} [{}] {}: {}{}{}\n", entry.doubtful ? "? " : "", without_controls(to_utf8(entry.date)),
               entry.level, without_controls(to_utf8(entry.user)), coloured ? "\x1b[31m" : "",
               shown_text(entry.text), coloured ? "\x1b[0m" : "");
}

// Prints entries as they are written, until it is told to end. As JSON each is one line.
void follow(LogFile& file, const LogFilter& filter, bool json) {
    using namespace std::chrono_literals;
    while (!interrupted()) {
        file.read_on([&](const LogEntry& entry) {
            if (!filter.admits(entry)) return;
            if (json) {
                fmt::print("{}\n", json_line(entry_json(entry)));
            } else {
                print_entry(entry);
            }
        });
        flush_output();
        std::this_thread::sleep_for(200ms);
    }
}

Exit log_command(Session& session, const Given& given) {
    const LogFilter filter{given.level, given.tag};
    const bool json = session.options().json;
    LogFile file(given.follow);
    std::deque<LogEntry> last;
    file.read_on([&](LogEntry entry) {
        if (!filter.admits(entry)) return;
        last.push_back(std::move(entry));
        if (last.size() > given.count) last.pop_front();
    });
    Json list = Json::array();
    for (const LogEntry& entry : last) {
        if (!json) {
            print_entry(entry);
        } else if (given.follow) {
            fmt::print("{}\n", json_line(entry_json(entry)));
        } else {
            list.push_back(entry_json(entry));
        }
    }
    if (json && !given.follow) fmt::print("{}\n", json_lines(list));
    if (given.follow) follow(file, filter, json);
    return ending_signal() != 0 ? ending_status() : Exit::ok;
}

}  // namespace

void add_log(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand log =
        line.add(line.app(), "log", "Show the last entries of the log", "zmfb log --tag error --count 5",
                 [given](Session& session) { return log_command(session, *given); });
    log.option("--count,-n", given->count, {.least = 0, .most = 1000000000, .of = "entries"},
               "How many entries")
        .type_name("COUNT")
        .with_default();
    log.option("--level", given->level, "Only entries of that level and those below it").type_name("LEVEL");
    log.option("--tag", given->tag, "Only entries with that tag, such as ERROR, CONN or UPDT")
        .type_name("TAG");
    log.flag("--follow,-f", given->follow, "Go on with new entries until Ctrl-C");
}

}  // namespace zmfb::tool
