#include "sql/attachments.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "sql/state.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace sql {

namespace {

constexpr int system_error = -902;

struct Entry {
    isc_db_handle handle;
    std::string database;
    std::string failure = {};  // the engine's message that it was given up with; "" for one in use
};

struct Attachments {
    std::mutex mutex;
    std::vector<Entry> entries;
    std::atomic<bool> cancelled = false;
    int undisturbed = 0;  // under the mutex for the thread that cancels
};

// Never destroyed: the thread that cancels may outlive main().
Attachments& attachments() {
    static Attachments& all = *new Attachments;
    return all;
}

// Of a database on a server only the last part of the path is compared: links and aliases are the server's.
bool is_file_of(const std::string& database, const std::string& file) {
    namespace fs = std::filesystem;
    std::error_code unknown;
    if (!names_a_server(database)) return fs::equivalent(database, file, unknown);
    return fs::path(database.substr(database.find(':') + 1)).filename() == fs::path(file).filename();
}

// The file that an I/O error in `status` names; "" for none.
std::string failed_file(const ISC_STATUS* status) {
    bool in_io_error = false;
    const char* last_text = "";
    while (*status != isc_arg_end) {
        if (*status == isc_arg_gds) {
            if (in_io_error) break;
            in_io_error = status[1] == isc_io_error;
        } else if (*status == isc_arg_string && in_io_error) {
            last_text = reinterpret_cast<const char*>(status[1]);
        }
        status += *status == isc_arg_cstring ? 3 : 2;
    }
    return last_text;
}

// One that came too late for the statement that it was for hits none of them.
void forget_cancellations() {
    for (Entry& entry : attachments().entries) {
        if (entry.failure.empty()) sql::client().forget_cancellation(&entry.handle);
    }
}

}  // namespace

void add_attachment(isc_db_handle database, std::string_view name) {
    const std::lock_guard lock(attachments().mutex);
    attachments().entries.push_back({database, std::string(name)});
}

void remove_attachment(isc_db_handle database) {
    const std::lock_guard lock(attachments().mutex);
    std::erase_if(attachments().entries, [&](const Entry& entry) { return entry.handle == database; });
}

void require_not_cancelled() {
    if (attachments().cancelled && attachments().undisturbed == 0) throw Cancelled();
}

Status admit(isc_db_handle database) {
    require_not_cancelled();
    const auto& entries = attachments().entries;  // which no other thread changes
    const auto entry = std::ranges::find(entries, database, &Entry::handle);
    const bool given_up = entry != entries.end() && !entry->failure.empty();
    return given_up ? refuse(system_error, entry->failure.c_str()) : Status();
}

void give_up_after(const ISC_STATUS* status) {
    const std::string file = failed_file(status);
    if (file.empty()) return;
    const std::lock_guard lock(attachments().mutex);
    for (Entry& entry : attachments().entries) {
        if (entry.failure.empty() && is_file_of(entry.database, file)) entry.failure = last_engine_message();
    }
}

}  // namespace sql

bool cancel() {
    sql::Attachments& all = sql::attachments();
    const bool again = all.cancelled.exchange(true);
    const std::lock_guard lock(all.mutex);
    if (!again || all.undisturbed > 0) return !all.entries.empty();
    for (sql::Entry& entry : all.entries) {
        ISC_STATUS_ARRAY nothing_to_cancel;
        if (entry.failure.empty()) sql::client().cancel_operation(nothing_to_cancel, &entry.handle);
    }
    return !all.entries.empty();
}

void resume() {
    sql::Attachments& all = sql::attachments();
    if (!all.cancelled.exchange(false)) return;
    const std::lock_guard lock(all.mutex);
    sql::forget_cancellations();
}

Undisturbed::Undisturbed() {
    sql::Attachments& all = sql::attachments();
    const std::lock_guard lock(all.mutex);
    if (all.undisturbed++ == 0 && all.cancelled) sql::forget_cancellations();
}

Undisturbed::~Undisturbed() {
    const std::lock_guard lock(sql::attachments().mutex);
    --sql::attachments().undisturbed;
}

}  // namespace zmfb
