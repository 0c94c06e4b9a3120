// The driver "ZMRDDFIRE" of the runtime: work areas on tables of the object that serves it.
#include "host/driver.h"

#include <memory>

#include "host/error.h"
#include "host/table_error.h"
#include "host/text.h"
#include "rdd/area_table.h"
#include "rdd/raising.h"
#include "rdd/serve_areas.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

namespace {

using host::GenCode;
using host::Subcode;

host::Object* serving = nullptr;

// What is wrong with the object that serves areas; "" when it opens them.
std::string_view unfit() {
    if (serving == nullptr) return "No connection serves ZMRDDFIRE: call setibrdd on one";
    zmFBConn connection = zmFBConn::of(Value(serving));
    if (!connection.isconnected()) return "The connection that serves ZMRDDFIRE is not attached";
    if (!connection(m::isrddactive)) return "The connection that serves ZMRDDFIRE is not active";
    return {};
}

bool serves(GenCode gencode, Subcode subcode, std::string_view operation, std::string_view table) {
    const std::string_view wrong = unfit();
    if (!wrong.empty()) {
        raise_failure({.gencode = gencode,
                       .subcode = subcode,
                       .description = wrong,
                       .operation = operation,
                       .file = table});
    }
    return wrong.empty();
}

class AreaDriver final : public host::Driver {
  public:
    std::unique_ptr<host::Table> open(const host::OpenRequest& request) override {
        if (!serves(GenCode::open, Subcode::table_open, "DBUSEAREA", request.file)) return nullptr;
        std::unique_ptr<host::Table> table;
        try {
            raising({GenCode::open, Subcode::table_open, "DBUSEAREA", request.file},
                    [&] { table = open_table(*serving, request); });
        } catch (const InUse& in_use) {
            constexpr int sharing_violation = 32;
            raise_in_use(in_use, {.gencode = GenCode::open,
                                  .subcode = Subcode::table_open,
                                  .operation = "DBUSEAREA",
                                  .file = request.file,
                                  .oscode = sharing_violation});
        }
        return table;
    }

    // What createtable raises on its way is in the one error that is raised here.
    bool create(std::string_view file, std::span<const host::Field> structure) override {
        if (!serves(GenCode::create, Subcode::table_create, "DBCREATE", file)) return false;
        std::string reason = structure.empty() ? "a table needs a field" : "";
        if (!structure.empty()) {
            const host::ScopedErrorBlock kept(Value::block([&](Args args) {
                reason += (reason.empty() ? "" : ";") + host::error_description(args[0]);
                return Value();
            }));
            zmFBConn connection = zmFBConn::of(Value(serving));
            if (connection(m::createtable, file, structure_of(structure))) return true;
        }
        const std::string description = "Create error: " + reason;
        raise_failure({.gencode = GenCode::create,
                       .subcode = Subcode::table_create,
                       .description = description,
                       .operation = "DBCREATE",
                       .file = file});
        return false;
    }

  private:
    static Structure structure_of(std::span<const host::Field> fields) {
        Structure structure;
        for (const host::Field& field : fields)
            structure.push_back({field.name, std::string(1, field.type), field.length, field.decimals});
        return structure;
    }
};

}  // namespace

void serve_areas(host::Object& object) {
    constexpr std::string_view name = "ZMRDDFIRE";
    serving = &object;
    if (host::find_driver(name) == nullptr) host::register_driver(name, std::make_shared<AreaDriver>());
}

void serve_no_areas(const host::Object& object) {
    if (serving == &object) serving = nullptr;
}

}  // namespace zmfb::rdd
