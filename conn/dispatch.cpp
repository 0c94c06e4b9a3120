#include <array>
#include <cstddef>
#include <exception>
#include <new>

#include "conn/attach.h"
#include "conn/log.h"
#include "conn/methods.h"
#include "conn/raise.h"
#include "host/text.h"
#include "rdd/close_area.h"
#include "rdd/serve_areas.h"

namespace zmfb::conn {

namespace {

// No work area may outlive the object. An error block that throws breaks a disconnect off in the area that
// was being closed; the next one goes on with those behind it.
void disconnect_for_good(Self& self) {
    std::exception_ptr first;
    std::size_t tries = var(self, Var::aaliases).size() + 1;
    for (; tries > 0 && ask(self, "isconnected"); --tries) {
        try {
            call(self, "disconnect");
        } catch (...) {
            if (!first) first = std::current_exception();
        }
    }
    rdd::close_areas(self);
    if (ask(self, "isconnected")) let_go(self);  // without memory for anything else
    if (first) std::rethrow_exception(first);
}

}  // namespace

Value nomethod(Self& self, Args args) {
    const Value& meth = args[0];
    call(self, "writelog", "[ERROR] Meth: " + meth + " does not exist inside zmFBConn", 0);
    raiseerror("zmFBConn has no Method named: " + meth);
    return {};
}

Value evalmeth(Self& self, Args args) {
    constexpr std::size_t passed = 5;
    const Value& param = args[1];
    const std::size_t count = !host::empty(param) && param.is(host::Kind::array) ? param.size() : 0;
    std::array<Value, passed> arguments;
    for (std::size_t k = 0; k < passed; ++k) arguments[k] = k < count ? param[k + 1] : Value("");
    return self.send(args[0].text(), Args(arguments));
}

Value axit(Self& self, Args) {
    try {
        const Value text = "[GONE] Class: zmFBConn no longer exists. DB: " + var(self, Var::sdbname);
        log_event(0, text.text());
    } catch (const std::bad_alloc&) {  // no line, as where the log cannot be written
    }
    rdd::serve_no_areas(self);
    disconnect_for_good(self);
    return true;
}

}  // namespace zmfb::conn
