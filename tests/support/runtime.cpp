#include "tests/support/runtime.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <regex>
#include <stdexcept>

#include "conn/log.h"
#include "tests/support/environment.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

fs::path fresh_folder() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(info->test_suite_name()) + "." + info->name();
    std::replace(name.begin(), name.end(), '/', '_');
    const fs::path folder = process_folder() / name;
    fs::remove_all(folder);
    fs::create_directory(folder);
    return folder;
}

// "\t[level] user date\n text": the first line of an entry ends with the year.
std::optional<int> level_of_first_line(const std::string& line) {
    static const std::regex shape(R"(\t\[(-?\d+)\] .* \w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4})");
    std::smatch found;
    if (!std::regex_match(line, found, shape)) return std::nullopt;
    return std::stoi(found[1]);
}

}  // namespace

void PrintTo(const LogEntry& entry, std::ostream* out) { *out << '[' << entry.level << "] " << entry.text; }

Runtime::Runtime()
    : folder_(fresh_folder()), errors_(host::Value::block([this](host::Args args) {
          raised_.push_back(host::error_description(args[0]));
          return answer_;
      })) {
    setenv("ZMFB_TEST_LOG", file("zmrddfire.log").c_str(), 1);
    log_at(0);
}

Runtime::~Runtime() {
    if (!HasFailure()) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
}

void Runtime::TearDown() {
    if (raised_was_read_) return;
    for (const std::string& description : raised_) ADD_FAILURE() << "raised: " << description;
}

std::string Runtime::write_file(const std::string& name, std::string_view content) const {
    std::ofstream out(file(name), std::ios::binary);
    out << content;
    if (!out.flush()) throw std::runtime_error("cannot write " + file(name));
    return file(name);
}

std::string Runtime::read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void Runtime::log_at(int level) { conn::set_log_level(level); }

std::string Runtime::log_text() const { return read_file(file("zmrddfire.log")); }

std::vector<LogEntry> Runtime::log_lines() const {
    std::vector<LogEntry> entries;
    std::ifstream in(file("zmrddfire.log"), std::ios::binary);
    bool text_begins = false;
    for (std::string line; std::getline(in, line);) {
        if (const std::optional<int> level = level_of_first_line(line)) {
            entries.push_back({*level, ""});
            text_begins = true;
        } else if (!entries.empty()) {
            std::string& text = entries.back().text;
            text += text_begins ? line.substr(std::min<std::size_t>(line.size(), 1)) : "\n" + line;
            text_begins = false;
        }
    }
    return entries;
}

void Runtime::clear_log() const { fs::remove(file("zmrddfire.log")); }

std::vector<std::string> Runtime::sql_log() const {
    std::vector<std::string> statements;
    for (const LogEntry& entry : log_lines()) {
        for (const std::string_view tag :
             {"[UPDT] Statement: ", "[QURY] Statement: ", "[CACHE] Statement: "}) {
            if (entry.text.starts_with(tag)) statements.push_back(entry.text.substr(tag.size()));
        }
    }
    return statements;
}

const std::vector<std::string>& Runtime::raised() {
    raised_was_read_ = true;
    return raised_;
}

}  // namespace zmfb::test
