#include "tool/commands.h"

namespace zmfb::tool {

void add_all(CommandLine& line) {
    for (const auto add : {add_create, add_import, add_tables, add_query, add_shell, add_call, add_methods,
                           add_locks, add_matrix}) {
        add(line);
    }
}

}  // namespace zmfb::tool
