#include "tool/command_line.h"
#include "tool/commands.h"
#include "tool/session.h"
#include "zmfbconn/database.h"

int main(int argc, char** argv) {
    if (!zmfb::open_standard_descriptors()) {
        zmfb::tool::print_error("a standard descriptor is closed, and /dev/null cannot be opened for it");
        return static_cast<int>(zmfb::tool::Exit::failed);
    }
    zmfb::tool::CommandLine line;
    zmfb::tool::add_all(line);
    return line.run(argc, argv);
}
