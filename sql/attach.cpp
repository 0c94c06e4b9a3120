#include "sql/attach.h"

#include <array>
#include <map>
#include <memory>

#include "sql/attachments.h"
#include "sql/client.h"
#include "sql/guard.h"
#include "sql/lock_folder.h"
#include "sql/parameter_block.h"
#include "sql/sessions.h"
#include "sql/state.h"
#include "zmfbconn/database.h"

namespace zmfb::sql {

namespace {

constexpr int bad_parameters = -901;
constexpr int no_attachment = -902;

using Guards = std::map<isc_db_handle, std::unique_ptr<Guard>>;

// Those of the embedded attachments. They last as long as the process, since the engine goes on to its end.
Guards& guards() {
    static Guards& kept = *new Guards;
    return kept;
}

// What the client says of the database in the slot: its name, that of the host, and two more for each host in
// between. Before the texts come the item's number, two bytes of length and the count; before each its
// length.
struct Opened {
    bool by_server = false;
    std::string file;  // cut off when it is long
};
constexpr std::size_t uncut_length = 253;

Status ask_what_is_opened(Opened& opened) {
    constexpr char items[] = {isc_info_db_id, isc_info_end};
    constexpr std::size_t count_at = 3;
    constexpr unsigned char count_without_server = 2;
    std::array<char, 2048> answer{};
    client().database_info(state().status, &state().slot, sizeof items, items, answer.size(), answer.data());
    Status done = outcome();
    if (done.sqlcode() != 0 || answer[0] != isc_info_db_id) return done;
    opened.by_server = static_cast<unsigned char>(answer[count_at]) > count_without_server;
    opened.file.assign(&answer[count_at + 2], static_cast<unsigned char>(answer[count_at + 1]));
    return done;
}

// What is attached in the slot goes again, whatever comes of that.
void drop_slot() {
    const isc_db_handle attached = state().slot;
    if (attached == isc_db_handle()) return;
    ISC_STATUS_ARRAY ignored;
    end_session(attached);
    client().detach_database(ignored, &state().slot);
    guards().erase(attached);
}

// Has the guard hold what the engine has opened, which need not be the file that is called like the database:
// aliases, and what an engine without the right to open it leaves to the server of this host.
Status guard_slot(const std::string& database, std::unique_ptr<Guard>& guard) {
    Opened opened;
    Status done = ask_what_is_opened(opened);
    if (done.sqlcode() != 0) return done;
    if (opened.by_server) {
        guard.reset();
        return done;
    }
    const std::string& file = opened.file.size() > uncut_length ? database : opened.file;
    Status held;
    if (!guard->holds(file)) held = guard->take(file);
    if (held.ok() && !guard->holds(file))
        held = Status(file + " cannot be opened to see which other processes have it open");
    if (held.ok()) held = LockFolder::of_this_process().keep_room_for_files();
    return held.ok() ? done : refuse(no_attachment, held.message());
}

Status attach_slot(const std::string& database, const ParameterBlock& block) {
    if (has_object_interface()) {
        attach_session(state().status, database.c_str(), &state().slot, block.size(), block.data());
    } else {
        client().attach_database(state().status, database.c_str(), &state().slot, block.size(), block.data());
    }
    return outcome();
}

Status attach_slot_guarded(const std::string& database, const ParameterBlock& block) {
    auto guard = std::make_unique<Guard>();
    if (const Status held = guard->take(database); !held.ok()) return refuse(no_attachment, held.message());
    Status done = attach_slot(database, block);
    if (done.sqlcode() != 0) return done;
    done = guard_slot(database, guard);
    if (done.sqlcode() == 0) {
        guards()[state().slot] = std::move(guard);
    } else {
        drop_slot();
    }
    return done;
}

Status attach_slot(std::string_view database, std::string_view user, std::string_view password,
                   std::string_view role) {
    if (const char* reason = objection_to(database, user, password, role))
        return refuse(bad_parameters, reason);
    require_not_cancelled();
    const std::string name = name_without_blanks(database);
    const ParameterBlock block(user, password, role);
    return names_a_server(name) ? attach_slot(name, block) : attach_slot_guarded(name, block);
}

// An attachment with an open transaction refuses to go and loses the transaction all the same.
void end_batch_of(isc_db_handle database) {
    ClassState& shared = state();
    if (shared.batch == isc_tr_handle() || shared.batch_database != database) return;
    client().rollback_transaction(shared.status, &shared.batch);
    shared_batch_ended();
    shared.batch = isc_tr_handle();
}

}  // namespace

Attachment attach(std::string_view database, std::string_view user, std::string_view password,
                  std::string_view role) {
    Attachment result;
    result.slot_address = &state().slot;
    state().slot = isc_db_handle();
    try {
        result.status = attach_slot(database, user, password, role);
        if (result.status.sqlcode() == 0) {
            result.handle = number_of(state().slot);
            add_attachment(state().slot, database);
        } else {
            result.message = sqlcode_message(result.status.sqlcode());
        }
    } catch (...) {
        drop_slot();
        state().slot = isc_db_handle();
        throw;
    }
    state().slot = isc_db_handle();
    return result;
}

Status detach(double handle) {
    const isc_db_handle attached = handle_of(handle);
    isc_db_handle database = attached;
    end_batch_of(database);
    remove_attachment(database);
    end_session(database);
    client().detach_database(state().status, &database);
    Status done = outcome();
    if (done.sqlcode() == 0) guards().erase(attached);
    return done;
}

Status on_attachment(std::string_view database, std::string_view user, std::string_view password,
                     const std::function<Status(double handle)>& work) {
    const Attachment attached = attach(database, user, password, "");
    if (attached.status.sqlcode() != 0) return attached.status;
    struct Detaching {
        double handle;
        ~Detaching() { (void)detach(handle); }
    } const in_the_end{attached.handle};
    return work(attached.handle);
}

}  // namespace zmfb::sql
