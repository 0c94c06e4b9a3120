#include "tool/shell/line_reader.h"

#include <editline/readline.h>
#include <fcntl.h>
#include <langinfo.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "tool/interrupt.h"
#include "tool/output_file.h"
#include "tool/suggest.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

constexpr int longest_history = 1000;

Candidates& candidates_in_use() {
    static Candidates candidates;
    return candidates;
}

std::vector<std::string>& matches() {
    static std::vector<std::string> found;
    return found;
}

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

char* next_match(const char*, int state) {
    static std::size_t at = 0;
    if (state == 0) at = 0;
    return at < matches().size() ? strdup(matches()[at++].c_str()) : nullptr;
}

char** complete(const char* text, int start, int) {
    matches() = completions(text, candidates_in_use()(rl_line_buffer, static_cast<std::size_t>(start)));
    rl_attempted_completion_over = 1;
    return rl_completion_matches(text, next_match);
}

// A byte that was read too early, or -1.
int byte_kept = -1;

// The terminal of `in` as a file of our own, on which reading never waits: Ctrl-C throws away what was typed,
// also between being told that there is something and reading it. Where it cannot be opened, that of `in`
// itself.
int keys_of(std::FILE* in) {
    static const int own = [&] {
        const char* name = ::ttyname(fileno(in));
        const int opened = name == nullptr ? -1 : ::open(name, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        return opened < 0 ? fileno(in) : opened;
    }();
    return own;
}

// One byte of the input, -1 at its end or when Ctrl-C came.
int next_byte(std::FILE* in) {
    if (byte_kept >= 0) return std::exchange(byte_kept, -1);
    const Waiting waiting;
    while (!interrupted()) {
        pollfd keys{keys_of(in), POLLIN, 0};
        if (::poll(&keys, 1, -1) < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        unsigned char byte = 0;
        const ssize_t got = ::read(keys.fd, &byte, 1);
        if (got == 1) return byte;
        if (got == 0 || (errno != EAGAIN && errno != EINTR)) return -1;
    }
    return -1;
}

// A character: the editor wants it whole. What is no UTF-8, such as the letters of a terminal that speaks
// another set, becomes U+FFFD, and takes none of the keys typed after it with it.
int next_character(std::FILE* in) {
    constexpr wchar_t replacement = 0xFFFD;
    std::mbstate_t state{};
    for (bool first = true;; first = false) {
        const int byte = next_byte(in);
        if (byte < 0) return -1;
        const char part = static_cast<char>(byte);
        wchar_t character = 0;
        const std::size_t taken = std::mbrtowc(&character, &part, 1, &state);
        if (taken <= 1) return static_cast<int>(character);
        if (taken == static_cast<std::size_t>(-1)) {
            if (!first) byte_kept = byte;
            return replacement;
        }
    }
}

// Letters beyond ASCII are edited as one only in a UTF-8 locale, and UTF-8 is what the tool reads.
void use_utf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::string_view(nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
}

// Whether nobody else may lay a link there, to lead what is written elsewhere.
bool is_ours(const fs::path& folder) {
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & S_IWOTH) == 0;
}

std::string path_of_history() {
    const auto set = [](const char* name) {
        const char* const value = std::getenv(name);
        return value != nullptr && *value == '/' ? fs::path(value) : fs::path();
    };
    fs::path folder = set("XDG_STATE_HOME");
    if (folder.empty()) {
        folder = set("HOME");
        if (folder.empty()) return {};
        folder = folder / ".local" / "state";
    }
    folder /= "zmfbconn";
    std::error_code error;
    fs::create_directories(folder, error);
    return is_ours(folder) ? (folder / "history").string() : std::string();
}

// As libedit writes it, into memory: it does not tell of a disk that is full. "" when it cannot.
std::string written_history() {
    const int memory = ::memfd_create("history", MFD_CLOEXEC);
    if (memory < 0) return {};
    const std::string path = "/proc/self/fd/" + std::to_string(memory);
    std::string bytes;
    if (write_history(path.c_str()) == 0) {
        std::ifstream in(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    ::close(memory);
    return bytes;
}

// What cannot be written leaves the history as it was.
void keep_history(const std::string& path, std::string_view bytes) {
    const mode_t before = umask(S_IRWXG | S_IRWXO);
    try {
        OutputFile file(path);
        file.write(bytes);
        file.close();
    } catch (const Failure&) {
    }
    umask(before);
}

bool may_hold_a_password(std::string_view input) {
    constexpr std::string_view word = "password";
    const auto same = [](char typed, char letter) { return lower(typed) == letter; };
    return std::search(input.begin(), input.end(), word.begin(), word.end(), same) != input.end();
}

}  // namespace

LineReader::LineReader(Candidates candidates) : history_file_(path_of_history()) {
    use_utf8();
    candidates_in_use() = std::move(candidates);
    rl_readline_name = "zmfb";
    rl_catch_signals = 0;
    rl_getc_function = next_character;
    rl_initialize();
    using_history();
    stifle_history(longest_history);
    if (!history_file_.empty()) read_history(history_file_.c_str());
    rl_attempted_completion_function = complete;
    rl_basic_word_break_characters = " \t\n\"'(){},;=<>+-*/|.";
    rl_completion_append_character = '\0';
}

LineReader::~LineReader() { candidates_in_use() = nullptr; }

std::optional<std::string> LineReader::read(const std::string& prompt) {
    std::fflush(stdout);
    const ControlC ends_the_line(ControlC::Second::is_noted);
    const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt.c_str()), &std::free);
    const bool ended = tool::interrupted();
    interrupted_ = ended && ending_signal() == 0;
    if (!line || ended) {
        std::fputs(interrupted_ ? "^C\n" : "\n", stdout);
        return std::nullopt;
    }
    return std::string(line.get());
}

void LineReader::remember(const std::string& input) {
    if (may_hold_a_password(input)) return;
    add_history(input.c_str());
    if (history_file_.empty()) return;
    if (const std::string bytes = written_history(); !bytes.empty()) keep_history(history_file_, bytes);
}

}  // namespace zmfb::tool
