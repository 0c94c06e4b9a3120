#include "tool/import/jobs.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <list>
#include <map>
#include <new>

#include "tool/import/worker.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

constexpr int tick_milliseconds = 100;
// More than a worker takes to end itself: it was stopped.
constexpr std::chrono::seconds patience{30};

// A number that all processes see.
class SharedNumber {
  public:
    using Number = std::atomic<std::size_t>;
    SharedNumber()
        : place_(::mmap(nullptr, sizeof(Number), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
        if (place_ == MAP_FAILED) throw std::bad_alloc();
        number_ = new (place_) Number(0);
    }
    ~SharedNumber() { ::munmap(place_, sizeof(Number)); }
    SharedNumber(const SharedNumber&) = delete;
    SharedNumber& operator=(const SharedNumber&) = delete;
    Number& operator*() { return *number_; }

  private:
    void* place_;
    Number* number_;
};

// A line for each file at work, at the foot of the terminal. The cursor is left at the beginning of the
// first, so that whatever is printed takes their place.
class Foot {
  public:
    explicit Foot(bool shown) : shown_(shown) {}
    [[nodiscard]] bool is_shown() const { return shown_; }
    void show(const std::vector<std::string>& lines) const {
        if (!shown_ || lines.empty()) return;
        for (const std::string& line : lines)
            fmt::print("{}\033[K\n", without_controls(line).substr(0, terminal_width() - 1));
        fmt::print("\033[J\033[{}A", lines.size());
        std::fflush(stdout);
    }
    void clear() const {
        if (!shown_) return;
        fmt::print("\033[J");
        std::fflush(stdout);
    }

  private:
    bool shown_;
};

// A worker as the process that started it sees it.
struct Running {
    ImportWorker worker;
    std::string pending = {};    // of its reports
    std::string progress = {};   // of its file
    std::size_t file = nothing;  // at work
    Marks shown = {};            // what it wrote up to there was taken
    bool ended = false;

    static constexpr std::size_t nothing = static_cast<std::size_t>(-1);
};

// What is to be told of a file when those before it are told.
struct Done {
    ImportedFile told;
    Exit status = Exit::ok;
    std::string out, err, rejects;
};

std::string read_up_to(std::FILE* file, off_t& from, off_t to) {
    std::string bytes(static_cast<std::size_t>(std::max<off_t>(0, to - from)), '\0');
    const ssize_t got = ::pread(::fileno(file), bytes.data(), bytes.size(), from);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, got)));
    from = to;
    return bytes;
}

std::string how_it_ended(int status) {
    if (!WIFSIGNALED(status)) return fmt::format("ended with status {}", WEXITSTATUS(status));
    return fmt::format("was ended by signal {} ({})", WTERMSIG(status), ::strsignal(WTERMSIG(status)));
}

off_t size_of(std::FILE* file) { return ::lseek(::fileno(file), 0, SEEK_END); }

void take(Running& running, const Marks& up_to, Done& done) {
    const ImportWorker& worker = running.worker;
    done.out += read_up_to(worker.out.get(), running.shown.out, up_to.out);
    done.err += read_up_to(worker.err.get(), running.shown.err, up_to.err);
    done.rejects += read_up_to(worker.rejects.get(), running.shown.rejects, up_to.rejects);
}

class Jobs {
  public:
    Jobs(const Session& session, const ImportOptions& options, const std::vector<std::string>& files,
         ImportedSoFar& so_far, std::vector<ImportedFile>& told)
        : files_(files),
          so_far_(so_far),
          told_(told),
          all_renames_(so_far.unused_renames),
          foot_(output_is_terminal() && !session.options().json),
          shared_{session.options(), options, files, *next_, turns_.get(), foot_.is_shown()} {}

    // Those that are still at work when something fails here undo what they began.
    ~Jobs() {
        kill_all(SIGTERM);
        for (Running& one : running_) {
            if (!one.ended) ::waitpid(one.worker.process, nullptr, 0);
        }
    }
    Jobs(const Jobs&) = delete;
    Jobs& operator=(const Jobs&) = delete;

    Exit run(std::size_t jobs) {
        so_far_.rejects.begin();
        while (running_.size() < std::min(jobs, files_.size())) start();
        while (std::ranges::any_of(running_, [](const Running& one) { return !one.ended; })) {
            look_at_signals();
            wait_for_reports();
            tell();
            foot_.show(progress());
        }
        foot_.clear();
        for (const auto& [file, done] : done_) tell_one(file, done);
        return ending_signal() != 0 ? ending_status() : status_;
    }

  private:
    void start() { running_.push_back({.worker = start_import_worker(shared_, so_far_)}); }

    void look_at_signals() {
        if (ending_signal() == 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (!killed_at_) {
            killed_at_ = now + patience;
            begin_undoing();
            kill_all(ending_signal());
        } else if (now > *killed_at_) {
            kill_all(SIGKILL);
        }
    }

    void kill_all(int signal) {
        for (const Running& one : running_) {
            if (!one.ended) ::kill(one.worker.process, signal);
        }
    }

    void wait_for_reports() {
        std::vector<pollfd> waits;
        for (const Running& one : running_) waits.push_back({one.ended ? -1 : one.worker.reports, POLLIN, 0});
        if (::poll(waits.data(), waits.size(), tick_milliseconds) <= 0) return;
        std::size_t at = 0;
        for (Running& one : running_) {
            if (at == waits.size()) break;  // started meanwhile
            if (waits[at++].revents != 0) read_reports(one);
        }
    }

    void read_reports(Running& one) {
        std::array<char, 4096> buffer;
        const ssize_t got = ::read(one.worker.reports, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) return;
        if (got <= 0) return ended(one);
        one.pending.append(buffer.data(), static_cast<std::size_t>(got));
        for (std::size_t end = 0; (end = one.pending.find('\n')) != std::string::npos;
             one.pending.erase(0, end + 1)) {
            take_report(one, Json::parse(one.pending.substr(0, end)));
        }
    }

    void take_report(Running& one, const Json& report) {
        if (report.contains("progress")) one.progress = report["progress"];
        if (report.contains("begun")) one.file = report["begun"];
        if (!report.contains("done")) return;
        Done& done = done_[report["done"]];
        done.status = static_cast<Exit>(report["status"].get<int>());
        done.told.table = report["table"];
        done.told.records = report["records"];
        done.told.changes = report["changes"];
        done.told.bad_values = report["bad_values"];
        done.told.refused = report["refused"];
        take(one, {report["out"], report["err"], report["rejects"]}, done);
        keep_unused(report["unused"].get<std::vector<std::size_t>>());
        one.file = Running::nothing;
        one.progress.clear();
    }

    // A field that one of them has had is not unused.
    void keep_unused(const std::vector<std::size_t>& unused) {
        std::size_t at = 0;
        for (const auto& [from, to] : all_renames_) {
            if (std::ranges::find(unused, at++) == unused.end()) so_far_.unused_renames.erase(from);
        }
    }

    // One that has not told the end of its file was ended, and those that are left need another.
    void ended(Running& one) {
        one.ended = true;
        ::close(one.worker.reports);
        int status = 0;
        while (::waitpid(one.worker.process, &status, 0) < 0 && errno == EINTR) {
        }
        const ImportWorker& worker = one.worker;
        Done rest;
        take(one, {size_of(worker.out.get()), size_of(worker.err.get()), size_of(worker.rejects.get())},
             rest);
        if (one.file != Running::nothing) {
            rest.status = Exit::failed;
            rest.told.refused = true;
            rest.err += fmt::format(
                "error: {} was not imported\n  its process {}\nhint: \"zmfb doctor\" says what was left, if "
                "anything was\n",
                files_[one.file], how_it_ended(status));
            done_[one.file] = std::move(rest);
            if (ending_signal() == 0 && *next_ < files_.size()) start();
        } else if (!rest.err.empty()) {
            say("{}", rest.err);
            status_ = Exit::failed;
        }
    }

    void tell() {
        if (done_.empty() || done_.begin()->first != told_.size()) return;
        foot_.clear();
        while (!done_.empty() && done_.begin()->first == told_.size()) {
            tell_one(done_.begin()->first, done_.begin()->second);
            done_.erase(done_.begin());
        }
    }

    void tell_one(std::size_t file, const Done& done) {
        fmt::print("{}", done.out);
        flush_output();
        say("{}", done.err);
        so_far_.rejects.take_in(done.rejects);
        told_.push_back(done.told);
        told_.back().file = files_[file];
        if (done.status != Exit::ok) status_ = done.status;
    }

    [[nodiscard]] std::vector<std::string> progress() const {
        std::vector<std::string> lines;
        for (const Running& one : running_) {
            if (!one.progress.empty()) lines.push_back(files_[one.file] + ": " + one.progress);
        }
        return lines;
    }

    const std::vector<std::string>& files_;
    ImportedSoFar& so_far_;
    std::vector<ImportedFile>& told_;
    const Renames all_renames_;
    SharedNumber next_;
    ScratchFile turns_ = scratch_file();
    Foot foot_;
    SharedImports shared_;
    std::list<Running> running_;
    std::map<std::size_t, Done> done_;
    std::optional<std::chrono::steady_clock::time_point> killed_at_;
    Exit status_ = Exit::ok;
};

}  // namespace

Exit import_at_once(const Session& session, const ImportOptions& options,
                    const std::vector<std::string>& files, std::size_t jobs, ImportedSoFar& so_far,
                    std::vector<ImportedFile>& told) {
    return Jobs(session, options, files, so_far, told).run(jobs);
}

}  // namespace zmfb::tool
