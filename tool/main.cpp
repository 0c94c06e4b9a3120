#include "tool/command_line.h"
#include "tool/commands.h"

int main(int argc, char** argv) {
    using namespace zmfb::tool;
    CommandLine line;
    // In the order in which --help lists them.
    for (const auto add :
         {add_create, add_import, add_tables, add_query, add_call, add_methods, add_locks, add_matrix}) {
        add(line);
    }
    return line.run(argc, argv);
}
