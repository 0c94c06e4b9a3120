#include "fuzz/fuzz.h"

#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "host/error.h"

namespace zmfb::fuzz {

namespace fs = std::filesystem;

namespace {

std::size_t raised_count = 0;

struct Scratch {
    Scratch() {
        std::string name = (fs::temp_directory_path() / "zmfb-fuzz-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
        folder = name;
    }
    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    fs::path folder;
};

// Once for the process.
void be_quiet() {
    static const bool done = [] {
        setenv("ZMFB_TEST_LOG", "/dev/null", 1);
        host::error_block(Value::block([](host::Args) {
            ++raised_count;
            return Value();
        }));
        return true;
    }();
    static_cast<void>(done);
}

}  // namespace

void require(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

std::uint8_t Input::byte() {
    if (rest_.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return first;
}

std::string_view Input::bytes(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
}

Value value_of(Input& input, int depth) {
    switch (input.below(depth > 0 ? 8 : 7)) {
        case 0:
            return {};
        case 1:
            return input.number<double>();
        case 2:
            return input.number<std::int16_t>();
        case 3:
            return input.flag();
        case 4:
            return host::Date{input.number<std::int32_t>()};
        case 5:
        case 6:
            return input.text();
        default: {
            Value made = Value::array_of_size(0);
            for (std::size_t left = input.below(6); left > 0; --left) made.push(value_of(input, depth - 1));
            return made;
        }
    }
}

std::size_t raised() { return raised_count; }

const fs::path& scratch_folder() {
    static const Scratch scratch;
    return scratch.folder;
}

std::string scratch_file(const std::string& name, std::string_view content) {
    std::string path = (scratch_folder() / name).string();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    require(static_cast<bool>(out.flush()), "the scratch file is written");
    return path;
}

std::string content_of(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace zmfb::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zmfb::fuzz::be_quiet();
    zmfb::fuzz::Input input(data, size);
    zmfb::fuzz::try_input(input);
    return 0;
}
