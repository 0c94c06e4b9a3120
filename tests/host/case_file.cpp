#include "case_file.h"

#include <fmt/format.h>

#include <fstream>
#include <optional>
#include <stdexcept>

#include "errors.h"
#include "expression.h"
#include "host/compare.h"
#include "values.h"

namespace zmfb::host_test {
namespace {

Case case_of(std::string_view line, std::size_t number) {
    const std::size_t first = line.find('\t');
    const std::size_t second = first == std::string_view::npos ? first : line.find('\t', first + 1);
    if (second == std::string_view::npos || line.find('\t', second + 1) != std::string_view::npos) {
        throw std::runtime_error(fmt::format("line {} has not three columns", number));
    }
    return {.line = number,
            .function = std::string(line.substr(0, first)),
            .expression = std::string(line.substr(first + 1, second - first - 1)),
            .expected = std::string(line.substr(second + 1))};
}

// Whether SET EXACT is on for the case; nothing for a mark that is not known.
std::optional<bool> wants_exact(std::string_view function) {
    const std::size_t colon = function.find(':');
    if (colon == std::string_view::npos) return false;
    const std::string_view mark = function.substr(colon + 1);
    if (mark == "EXACT_ON") return true;
    if (mark == "EXACT_OFF") return false;
    return {};
}

class ExactSetting {
  public:
    explicit ExactSetting(bool on) : before_(host::set_exact()) { host::set_exact(on); }
    ExactSetting(const ExactSetting&) = delete;
    ExactSetting& operator=(const ExactSetting&) = delete;
    ~ExactSetting() { host::set_exact(before_); }

  private:
    bool before_;
};

// The value of an expression, nothing when it raised an error.
std::optional<host::Value> outcome(std::string_view expression) {
    const host::ThrowingErrors thrown;
    try {
        return evaluate(expression);
    } catch (const host::RaisedError&) {
        return {};
    }
}

}  // namespace

std::vector<Case> read_cases(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + file.string());
    std::vector<Case> cases;
    std::size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.ends_with('\r')) line.pop_back();
        if (!line.empty()) cases.push_back(case_of(line, number));
    }
    return cases;
}

std::string difference(const Case& the_case) {
    const std::optional<bool> exact = wants_exact(the_case.function);
    if (!exact) return "unknown mark of the function";
    const ExactSetting setting(*exact);
    try {
        const std::optional<host::Value> result = outcome(the_case.expression);
        if (the_case.expected == "ERROR") return result ? test::show(*result) : "";
        if (!result) return "ERROR";
        return same_value(*result, evaluate(the_case.expected)) ? "" : test::show(*result);
    } catch (const SyntaxError& error) {
        return fmt::format("not understood: {}", error.what());
    }
}

}  // namespace zmfb::host_test
