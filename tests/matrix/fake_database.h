/// A database of tables that exist in memory only, under the real object.
///
/// The object is a zmFBConn whose methods of the catalog and of the schema are replaced by ones that answer
/// from, and change, this database; all the others are the real ones. Nothing reaches a database client.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "conn/self.h"
#include "host/value.h"
#include "tests/matrix/values.h"

namespace zmfb::test {

class FakeDatabase {
  public:
    /// Only one lives at a time.
    FakeDatabase();
    ~FakeDatabase();
    FakeDatabase(const FakeDatabase&) = delete;
    FakeDatabase& operator=(const FakeDatabase&) = delete;

    struct Table {
        std::vector<Value> fields;  ///< in the order of their positions, the driver's own among them
        bool foreign = false;
    };

    /// A table in the driver's layout: RDD_AREAID and RECNO behind the fields given.
    void add(const std::string& name, const Value& structure);
    void add(const std::string& name, std::initializer_list<Field> fields) { add(name, structure(fields)); }
    /// A table that another program made.
    void add_foreign(const std::string& name, std::initializer_list<Field> fields);

    Self& self();
    /// Calls a method of the object by name.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) {
        const Value values[] = {Value(std::forward<Arguments>(arguments))...};
        return self().send(method, host::Args(values));
    }

    /// The fields of a table but the driver's own, as "NOME C 40 0".
    std::vector<std::string> user_fields(const std::string& name);
    /// The names of all columns of a table, in order.
    std::vector<std::string> columns(const std::string& name);

    std::map<std::string, Table> tables;
    std::vector<std::string> changes;  ///< every call that changes the database, with its arguments
    std::set<std::string> failing;     ///< methods, or methods with their arguments, that answer .F.

  private:
    Value object_;
};

}  // namespace zmfb::test
