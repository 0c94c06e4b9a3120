#include <csignal>

#include "tool/command_line.h"
#include "tool/commands.h"
#include "tool/interrupt.h"
#include "zmfbconn/database.h"

int main(int argc, char** argv) {
    if (!zmfb::open_standard_descriptors()) {
        zmfb::tool::print_error("a standard descriptor is closed, and /dev/null cannot be opened for it");
        return static_cast<int>(zmfb::tool::Exit::failed);
    }
    // What cannot be written is told, and what was begun is undone: neither a pipe that nobody reads nor a
    // file that may not grow is to end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    zmfb::tool::watch_signals();
    zmfb::tool::CommandLine line;
    zmfb::tool::add_all(line);
    return line.run(argc, argv);
}
