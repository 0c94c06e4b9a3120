/// How a command ends, and what it says then on standard error.
#pragma once

#include <string>
#include <string_view>

namespace zmfb::tool {

/// What the process ends with.
enum class Exit : int { ok = 0, failed = 1, usage = 2, not_attached = 3 };

/// Ends a command early with a status and, on standard error, what print_error() makes of the texts.
struct Failure {
    Exit status = Exit::failed;
    std::string message = {};
    std::string detail = {};
    std::string hint = {};
};

/// Has errors printed as JSON from now on, each an object on a line of its own: "error", and as far as there
/// are such "detail", "hint", "file" and "line"; "raised" with true and "english" for what a method raised.
void show_errors_as_json();
[[nodiscard]] bool errors_are_json();

/// Where an input is from: a line of a file, or of standard input when it has no name; 0 for what somebody
/// typed.
struct Place {
    std::string file = {};
    int line = 0;
};

/// Prints to standard error: "error: ", the place and the message, below it the lines of the detail, and
/// "hint: " and a hint when there is one: the given one, or the one known for what the engine said in the
/// detail.
void print_error(std::string_view message, std::string_view detail = {}, std::string_view hint = {},
                 const Place& place = {});

/// The same for a failure; one without a message is not told.
void print_failure(const Failure& failure);

/// Says that there is no memory, as print_error() would, without asking for any.
void print_out_of_memory() noexcept;

/// How errors raised by methods are printed to standard error: as "raised: " and their description with a
/// line for each part that a ";" ends, the later ones indented; the same in one line as it is; or not at all.
enum class Raised { lines, one_line, silent };

/// Prints an error that a method raised (the bytes of its description), below it what it says in English when
/// it is in Portuguese, and a hint for a method that there is not.
void print_raised(std::string_view description, Raised how);

}  // namespace zmfb::tool
