#include "zmfbconn/connection.h"

#include "conn/attach.h"
#include "conn/class.h"
#include "conn/log.h"
#include "conn/public_call.h"
#include "conn/self.h"
#include "zmfbconn/version.h"

namespace zmfb {

zmFBConn::zmFBConn(const Value& db, const Value& user, const Value& pass, const Value& role) {
    const conn::PublicCall under_way;
    auto* made = new host::Instance(conn::zmfbconn_class());
    object_ = Value(made);
    zmfb::call(*made, "init", db, user, pass, role);
}

zmFBConn zmFBConn::attached_as_it_is(const Value& db, const Value& user, const Value& pass,
                                     const Value& role) {
    const conn::PublicCall under_way;
    auto* made = new host::Instance(conn::zmfbconn_class());
    const Value object(made);
    conn::attach_as_it_is(*made, db, user, pass, role);
    return of(object);
}

zmFBConn zmFBConn::of(const Value& object) { return {Adopt{}, object}; }

host::Object& zmFBConn::object() {
    if (object_.object() == nullptr) object_ = Value(new host::Instance(conn::zmfbconn_class()));
    return *object_.object();
}

Value zmFBConn::call_with(std::string_view method, Args args) {
    const conn::PublicCall under_way;
    return object().send(method, args);
}

Value zmFBConn::call_declared(std::string_view method, MethodKind kind, Args args) {
    if (kind != MethodKind::assign) return call_with(method, args);
    set(method, args[0]);
    return args[0];
}

bool zmFBConn::isconnected() {
    const Value attached = call_with("isconnected", Args());
    return attached.is(host::Kind::logical) && attached.logical();
}

Value zmFBConn::get(std::string_view property) { return object().get(property); }

void zmFBConn::set(std::string_view property, const Value& value) { object().set(property, value); }

std::string_view library_version() { return ZMFB_VERSION; }

std::string_view log_file_path() { return conn::log_path(); }

}  // namespace zmfb
