#include "tool/command_line.h"
#include "tool/commands.h"

int main(int argc, char** argv) {
    zmfb::tool::CommandLine line;
    zmfb::tool::add_all(line);
    return line.run(argc, argv);
}
