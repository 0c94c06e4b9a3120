#include "tests/interleavings/case_file.h"

#include <fmt/format.h>

#include <fstream>
#include <map>
#include <stdexcept>

namespace zmfb::test {
namespace {

constexpr std::size_t most_sessions = 3;

// Adds a call of a session; false when there can be no such session.
bool add_call(InterleavingCase::Calls& to, const std::string& name, const std::string& call) {
    if (name.size() != 1 || name[0] < 'A' || name[0] >= session_name(most_sessions)) return false;
    to.resize(most_sessions);
    to[static_cast<std::size_t>(name[0] - 'A')].push_back(call);
    return true;
}

// Adds what a line says; false when it says nothing known.
bool add_line(InterleavingCase& to, const std::string& word, const std::string& rest) {
    if (word == "first" || word == "last") {
        const std::size_t blank = rest.find(' ');
        return blank != std::string::npos &&
               add_call(word == "first" ? to.first : to.last, rest.substr(0, blank), rest.substr(blank + 1));
    }
    const std::map<std::string_view, std::vector<std::string>*> lists = {{"setup", &to.setup},
                                                                         {"before", &to.before},
                                                                         {"shows", &to.shows},
                                                                         {"never", &to.never},
                                                                         {"also", &to.also}};
    if (const auto list = lists.find(word); list != lists.end()) {
        list->second->push_back(rest);
        return true;
    }
    return add_call(to.sessions, word, rest);
}

}  // namespace

std::vector<InterleavingCase> read_interleavings(const std::filesystem::path& file) {
    std::ifstream lines(file);
    if (!lines) throw std::runtime_error("cannot read " + file.string());
    std::vector<InterleavingCase> cases;
    InterleavingCase for_all;
    for_all.file = file.stem();
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        const std::size_t blank = line.find(' ');
        const std::size_t text = line.find_first_not_of(' ', blank);
        if (text == std::string::npos) throw std::runtime_error(fmt::format("{}:{}", file.string(), number));
        const std::string word = line.substr(0, blank), rest = line.substr(text);
        if (word == "case") {
            cases.push_back(for_all);
            cases.back().name = rest;
        } else if (!add_line(cases.empty() ? for_all : cases.back(), word, rest)) {
            throw std::runtime_error(fmt::format("{}:{}: {}", file.string(), number, word));
        }
    }
    return cases;
}

}  // namespace zmfb::test
