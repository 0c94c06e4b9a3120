#include <fmt/format.h>

#include "tool/commands.h"
#include "tool/json.h"

namespace zmfb::tool {
namespace {

Exit methods_command(Session& session) {
    Json list = Json::array();
    for (std::size_t i = 0; i < method_count(); ++i) {
        const MethodRow row = method_row(i);
        if (session.options().json) {
            list.push_back(
                {{"name", row.name}, {"parameters", row.parameters}, {"kind", row.kind}, {"help", row.help}});
        } else {
            fmt::print("{}\t{}\t{}\n", row.name, row.parameters, row.kind);
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
