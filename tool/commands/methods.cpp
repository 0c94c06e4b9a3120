#include <fmt/format.h>

#include "tool/commands.h"
#include "tool/json.h"
#include "tool/shell/names.h"

namespace zmfb::tool {
namespace {

Exit methods_command(Session& session) {
    Json list = Json::array();
    for (const MethodRow& row : methods()) {
        if (session.options().json) {
            list.push_back({{"name", row.name},
                            {"parameters", row.parameters.size()},
                            {"kind", host::kind_name(row.kind)},
                            {"signature", signature_of(row)},
                            {"help", row.help}});
        } else {
            fmt::print("{}\t{}\t{}\n", row.name, row.parameters.size(), host::kind_name(row.kind));
        }
    }
    if (session.options().json) fmt::print("{}\n", json_lines(list));
    return Exit::ok;
}

}  // namespace

void add_methods(CommandLine& line) {
    line.add(line.app(), "methods", "List the methods of the object", "zmfb methods", methods_command);
}

}  // namespace zmfb::tool
