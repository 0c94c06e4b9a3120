/// zmFBConn: the connection object, for C++ programs.
#pragma once

#include <span>
#include <string_view>
#include <utility>

#include "host/value.h"
#include "method.h"

#pragma GCC visibility push(default)

namespace zmfb {

using host::Args;
using host::Value;

/// A handle of one connection object. Copies name the same object; when the last one goes, the object's
/// end-of-life handler disconnects it.
///
///     zmfb::zmFBConn connection("customers.fdb", "SYSDBA", "masterkey");
///     if (connection.isconnected()) connection(zmfb::m::bringdbf, "customer.dbf");
///
/// Failures of SQL come back in the results; what a method cannot go on from is raised through the error
/// block (host/error.h), whose default handler ends the program. One thread at a time.
class zmFBConn {
  public:
    /// Makes the object with its defaults and runs `init(db, user, pass, role)`. The object is made whatever
    /// `init` did: isconnected() tells whether it is attached. Without any argument no database is attached
    /// and nothing is logged.
    explicit zmFBConn(const Value& db = {}, const Value& user = {}, const Value& pass = {},
                      const Value& role = {});
    /// An object that is attached as `init` attaches one, but to the database as it is: nothing is looked for
    /// in it, made in it, or raised for what it lacks to be one the driver can use.
    static zmFBConn attached_as_it_is(const Value& db, const Value& user = {}, const Value& pass = {},
                                      const Value& role = {});
    /// A further handle of the object that `object` refers to; a value that is no object gives an unattached
    /// one.
    static zmFBConn of(const Value& object);

    /// Calls a method by its declaration (zmfbconn/methods.h): connection(m::istable, "customers"). The
    /// number and the kinds of the arguments are checked when this is compiled; those that may be left out,
    /// at the end, arrive as NIL. Throws UnexpectedAnswer for an answer of another kind than is declared.
    template <class Result, class... Parameters, class... Arguments>
    Result operator()(const Method<Result(Parameters...)>& method, const Arguments&... arguments) {
        const auto values = method.values(arguments...);
        return method.answer(call_declared(method.name(), method.kind(), Args(values)));
    }
    /// Calls a method by a name that is known only when the program runs, in any case of letters; arguments
    /// left out arrive as NIL. A name that is no method is logged ("[ERROR] Meth: ... does not exist inside
    /// zmFBConn", level 0) and raised; the answer is NIL then.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) {
        if constexpr (sizeof...(Arguments) == 0) {
            return call_with(method, Args());
        } else {
            const Value values[] = {Value(std::forward<Arguments>(arguments))...};
            return call_with(method, Args(values));
        }
    }
    /// The same with the arguments as a view of values.
    Value call_with(std::string_view method, Args args);

    /// Whether a database is attached.
    [[nodiscard]] bool isconnected();
    /// Reads a property: bconn, dbhndl, sdbname, srolename or susername.
    Value get(std::string_view property);
    /// Assigns bconn or dbhndl, unchecked.
    void set(std::string_view property, const Value& value);

    /// The object as a value of the runtime.
    [[nodiscard]] const Value& value() const { return object_; }

  private:
    struct Adopt {};
    zmFBConn(Adopt, Value object) : object_(std::move(object)) {}
    Value call_declared(std::string_view method, MethodKind kind, Args args);
    host::Object& object();

    Value object_;
};

/// The rows of the method table, ordered by name, a property's access row before its assign row. They live
/// for ever.
std::span<const MethodRow> methods();

/// The version of this library, such as "1.0.0"; ZMFB_VERSION (zmfbconn/version.h) is that of the headers.
std::string_view library_version();

/// The file that every program writes its log entries to, when it can.
std::string_view log_file_path();

}  // namespace zmfb

#pragma GCC visibility pop
