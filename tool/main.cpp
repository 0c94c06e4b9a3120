#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "tool/command_line.h"
#include "tool/commands.h"
#include "tool/errors.h"
#include "tool/interrupt.h"
#include "zmfbconn/database.h"

namespace {

std::terminate_handler as_usual = nullptr;

// Here ends a destructor that threw: one for which there is no memory, as those of JSON values want some, or
// one of the engine's, which throws what is no std::exception.
[[noreturn]] void end_in_words() {
    constexpr auto status = static_cast<int>(zmfb::tool::Exit::failed);
    static bool is_ending = false;
    try {
        if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        if (std::exchange(is_ending, true)) ::_exit(status);
        zmfb::tool::print_out_of_memory();
        std::exit(status);
    } catch (const std::exception&) {  // told as usual
    } catch (...) {
        std::fflush(stdout);
        zmfb::tool::print_error("the engine failed and cannot go on", {},
                                "zmfb doctor says whether the database is sound");
        ::_exit(status);
    }
    as_usual();
    std::abort();
}

}  // namespace

int main(int argc, char** argv) try {
    if (!zmfb::open_standard_descriptors()) {
        zmfb::tool::print_error("a standard descriptor is closed, and /dev/null cannot be opened for it");
        return static_cast<int>(zmfb::tool::Exit::failed);
    }
    // What cannot be written is told, and what was begun is undone: neither a pipe that nobody reads nor a
    // file that may not grow is to end the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    as_usual = std::set_terminate(end_in_words);
    zmfb::tool::watch_signals();
    zmfb::tool::CommandLine line;
    zmfb::tool::add_all(line);
    const int status = line.run(argc, argv);
    // All is written and let go of by now. At exit() the client library of a server would sleep for 50 ms.
    if (zmfb::names_a_server(line.options().database)) ::_exit(status);
    return status;
} catch (const std::bad_alloc&) {
    zmfb::tool::print_out_of_memory();
    return static_cast<int>(zmfb::tool::Exit::failed);
} catch (const std::system_error& problem) {
    zmfb::tool::print_error("cannot start a thread", problem.what());
    return static_cast<int>(zmfb::tool::Exit::failed);
}
