#include "host/table_error.h"

#include <string>

namespace zmfb::host {

Value raise_table_error(const TableFailure& failure) {
    constexpr int severity_error = 2;
    const Value error = error_new();
    Object& fields = *error.object();
    std::string description(failure.description);
    if (!failure.file.empty()) description.append(": ").append(failure.file);
    fields.set("description", description);
    fields.set("gencode", static_cast<int>(failure.gencode));
    fields.set("subcode", static_cast<int>(failure.subcode));
    fields.set("subsystem", failure.subsystem);
    fields.set("severity", severity_error);
    fields.set("operation", failure.operation);
    fields.set("filename", failure.file);
    fields.set("oscode", failure.oscode);
    fields.set("candefault", failure.candefault);
    return raise(error);
}

}  // namespace zmfb::host
