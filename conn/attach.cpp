#include "conn/attach.h"

#include <fmt/format.h>

#include <new>

#include "conn/log.h"
#include "conn/methods.h"
#include "conn/raise.h"
#include "host/array.h"
#include "host/text.h"
#include "host/workarea.h"
#include "rdd/close_area.h"
#include "sql/attach.h"

namespace zmfb::conn {

namespace {

std::string_view given(const Value& argument) {
    return argument.is(host::Kind::character) ? argument.text() : std::string_view{};
}

bool is_handle(const Value& value) { return value.is(host::Kind::numeric) && !host::empty(value); }

void attach_database(Self& self, const Value& db, const Value& user, const Value& pass, const Value& role) {
    const sql::Attachment made = sql::attach(given(db), given(user), given(pass), given(role));
    if (made.status.sqlcode() != 0) {
        log_event(0, sqlcode_text(made.status.sqlcode(), made.message));
        return;
    }
    var(self, Var::bconn) = true;
    var(self, Var::dbhndl) = made.handle;
    log_event(0, fmt::format("[CONN] Connected to: {} Pointer DB1: {}({})", given(db), made.slot_address,
                             static_cast<std::int64_t>(made.handle)));
}

void check_database(Self& self) {
    if (!ask(self, "isallneededudfsinstalled")) {
        call(self, "writelog", "[FATAL] Missing UDFs in Database.", 0);
        raiseerror("The DataBase:; " + var(self, Var::sdbname) + "; Does not have all " +
                   "needed UDFs installed!!");
    }
    const bool created =
        ask(self, "createtableofopn") && ask(self, "createtableofflocks") && ask(self, "createtableofrlocks");
    if (!created) {
        call(self, "writelog", "[FATAL] Error creating system tables.", 0);
        raiseerror("Fatal error on creating system tables. Better to Abort!");
    }
}

}  // namespace

void attach_as_it_is(Self& self, const Value& db, const Value& user, const Value& pass, const Value& role) {
    var(self, Var::sdbname) = given(db);
    var(self, Var::susername) = given(user);
    var(self, Var::srolename) = given(role);
    attach_database(self, db, user, pass, role);
    call(self, "setfullpathdatfile");
}

// A detach that fails is passed over: nothing is left to be done with the handle. dbhndl keeps its dead
// value: whether the object is attached is asked of isconnected, never of the handle.
void let_go(Self& self) noexcept {
    const Value handle = var(self, Var::dbhndl);
    try {
        if (is_handle(handle)) (void)sql::detach(handle.number());
    } catch (const std::bad_alloc&) {  // for what the engine says of a failure
    }
    var(self, Var::bconn) = false;
}

Value init(Self& self, Args args) {
    const Value& db = args[0];
    const Value& user = args[1];
    const Value& pass = args[2];
    const Value& role = args[3];
    if (host::empty(db) && host::empty(user) && host::empty(pass) && host::empty(role)) {
        call(self, "setrddactive", false);
        return {};
    }
    call(self, "showgreetscr");
    attach_as_it_is(self, db, user, pass, role);
    if (ask(self, "isconnected")) check_database(self);
    call(self, "hidegreetscr");
    return {};
}

Value disconnect(Self& self, Args) {
    const Value name = var(self, Var::sdbname);
    call(self, "closealltables");
    rdd::close_areas(self);
    const bool has_handle = is_handle(var(self, Var::dbhndl));
    const std::string exit = fmt::format("[EXIT] Disconnected from: {}", given(name));
    let_go(self);
    if (has_handle) log_event(0, exit);
    return {};
}

Value isconnected(Self& self, Args) { return var(self, Var::bconn); }

Value getdatabasename(Self& self, Args) { return var(self, Var::sdbname); }

// A work area that closes calls removealias, which replaces aaliases: the loop runs over a copy.
Value closealltables(Self& self, Args) {
    const Value aliases = host::aclone(var(self, Var::aaliases));
    for (const Value& entry : aliases.items()) {
        const Value alias = entry[1];
        if (!alias.is(host::Kind::character) || host::empty(alias)) continue;
        call(self, "writelog", "[FORCED] Trying close alias: " + alias, 5);
        host::dbclosearea(alias);
        rdd::close_area(self, alias.text());
    }
    return {};
}

Value announcealias(Self& self, Args args) {
    host::aadd(var(self, Var::aaliases), host::array_of(args[0]));
    return {};
}

Value removealias(Self& self, Args args) {
    const Value als = args[0];
    const Value aliases = var(self, Var::aaliases);
    const Value is_it = Value::block([&als](Args x) { return x[0][1].same(als); });
    const Value found = host::ascan(aliases, is_it);
    if (!host::empty(found)) aliases[static_cast<std::size_t>(found.integer())][1] = Value();
    const Value kept = Value::array_of_size(0);
    for (const Value& entry : aliases.items()) {
        if (!host::empty(entry[1])) host::aadd(kept, host::array_of(entry[1]));
    }
    var(self, Var::aaliases) = kept;
    return {};
}

}  // namespace zmfb::conn
