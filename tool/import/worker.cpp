#include "tool/import/worker.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "tool/import/dbf_source.h"
#include "tool/import/turn.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/transfer/progress.h"

namespace zmfb::tool {
namespace {

off_t end_of(std::FILE* file) { return ::lseek(::fileno(file), 0, SEEK_END); }

class Work {
  public:
    Work(const SharedImports& shared, ImportedSoFar& so_far, const ImportWorker& files, int reports)
        : shared_(shared),
          so_far_(so_far),
          files_(files),
          reports_(reports),
          renames_(so_far.unused_renames) {}

    Exit run() {
        Session session(shared_.session);
        if (shared_.tells_progress) {
            tell_progress_to([this](const std::string& text) { report(Json::object({{"progress", text}})); });
        }
        ask_for_table_names(session.connection(), so_far_.engine, shared_.files);
        for (std::size_t at = 0; !interrupted() && (at = shared_.next++) < shared_.files.size();) {
            report(Json::object({{"begun", at}}));
            import(session, at);
        }
        return interrupted() ? ending_status() : Exit::ok;
    }

  private:
    void import(Session& session, std::size_t at) {
        ImportedFile told;
        Exit status = Exit::ok;
        try {
            take_names(session, at);
            import_file(session, shared_.options, shared_.files[at], so_far_, told);
        } catch (const Failure& failure) {
            print_failure(failure);
            status = failure.status;
        }
        const bool refused = status != Exit::ok;
        if (!refused && !session.raised().empty()) status = Exit::failed;
        session.forget_raised();
        std::fflush(nullptr);
        report(Json{{"done", at},
                    {"status", static_cast<int>(status)},
                    {"refused", refused},
                    {"table", told.table},
                    {"records", told.records},
                    {"changes", told.changes},
                    {"bad_values", told.bad_values},
                    {"unused", unused_renames()},
                    {"out", end_of(files_.out.get())},
                    {"err", end_of(files_.err.get())},
                    {"rejects", end_of(files_.rejects.get())}});
    }

    // The tables of the files before, which other processes import, are taken.
    void take_names(Session& session, std::size_t at) {
        for (; named_ < at; ++named_) take_name(session, shared_.files[named_]);
        ++named_;
    }

    void take_name(Session& session, const std::string& file) try {
        open_dbf(file, shared_.options.encoding, "");
        take_table_name(session.connection(), so_far_.engine, file, so_far_.tables);
    } catch (const Failure&) {
        require_uninterrupted();  // else it is none that becomes a table
    }

    // Which of all.
    [[nodiscard]] std::vector<std::size_t> unused_renames() const {
        std::vector<std::size_t> unused;
        std::size_t at = 0;
        for (const auto& [from, to] : renames_) {
            if (so_far_.unused_renames.contains(from)) unused.push_back(at);
            ++at;
        }
        return unused;
    }

    void report(const Json& json) const {
        const std::string line = json_line(json) + '\n';
        for (std::size_t sent = 0; sent < line.size();) {
            const ssize_t put = ::write(reports_, line.data() + sent, line.size() - sent);
            if (put < 0 && errno != EINTR) return;
            if (put > 0) sent += static_cast<std::size_t>(put);
        }
    }

    const SharedImports& shared_;
    ImportedSoFar& so_far_;
    const ImportWorker& files_;
    int reports_;
    const Renames renames_;
    std::size_t named_ = 0;  // files whose tables are among those of so_far_
};

}  // namespace

ScratchFile scratch_file() {
    ScratchFile file(std::tmpfile(), &std::fclose);
    if (file == nullptr) throw Failure{Exit::failed, "cannot write a temporary file", std::strerror(errno)};
    return file;
}

ImportWorker start_import_worker(const SharedImports& shared, ImportedSoFar& so_far) {
    ImportWorker worker{.out = scratch_file(), .err = scratch_file(), .rejects = scratch_file()};
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Failure{Exit::failed, "cannot make a pipe", std::strerror(errno)};
    std::fflush(nullptr);
    const pid_t parent = ::getpid();
    worker.process = ::fork();
    if (worker.process == 0) {
        ::close(ends[0]);
        ::dup2(::fileno(worker.out.get()), STDOUT_FILENO);
        ::dup2(::fileno(worker.err.get()), STDERR_FILENO);
        watch_signals_of_child(parent);
        Turn::take_by(::fileno(shared.turns));
        so_far.rejects.divert_to(worker.rejects.get());
        const Exit status = told([&] { return Work(shared, so_far, worker, ends[1]).run(); });
        std::fflush(nullptr);
        ::_exit(static_cast<int>(status));
    }
    ::close(ends[1]);
    worker.reports = ends[0];
    if (worker.process < 0) {
        ::close(ends[0]);
        throw Failure{Exit::failed, "cannot start a process", std::strerror(errno)};
    }
    return worker;
}

}  // namespace zmfb::tool
