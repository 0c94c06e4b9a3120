#include "tool/commands.h"

namespace zmfb::tool {

void add_all(CommandLine& line) {
    line.head("Databases and DBF files");
    add_create(line);
    add_prepare(line);
    add_functions(line);
    add_import(line);
    add_export(line);
    line.head("Tables");
    add_tables(line);
    add_matrix(line);
    line.head("Rows and calls");
    add_browse(line);
    add_query(line);
    add_shell(line);
    add_call(line);
    add_methods(line);
    line.head("Health");
    add_doctor(line);
    add_grant(line);
    add_log(line);
    add_locks(line);
    line.head("The tool itself");
    add_generate(line);
}

}  // namespace zmfb::tool
