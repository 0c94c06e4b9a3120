#include "tool/shell/rest.h"

#include <string>

#include "tool/shell/statement.h"

namespace zmfb::tool {
namespace {

class Counter {
  public:
    void take(std::string_view line) {
        if (within_) return take_statements("\n" + std::string(line));
        const Input input = input_of(line);
        if (input == Input::statement) return take_statements(line);
        if (input != Input::nothing) ++inputs_;
    }
    // One that does not end counts.
    [[nodiscard]] std::size_t inputs() const { return inputs_ + (within_ ? 1 : 0); }

  private:
    void take_statements(std::string_view piece) {
        for (auto end = scan_.end_in(piece); end; end = scan_.end_in(piece)) {
            if (within_ || input_of(piece.substr(0, *end - 1)) != Input::nothing) ++inputs_;
            within_ = false;
            piece.remove_prefix(*end);
        }
        within_ = !scan_.is_blank();
        if (!within_) scan_ = {};
    }

    std::size_t inputs_ = 0;
    bool within_ = false;  // a statement
    StatementScan scan_;
};

}  // namespace

Rest count_rest(LineInput& in, std::string_view left) {
    Counter counter;
    counter.take(left);
    Rest rest;
    for (auto line = in.next(); line; line = in.next()) {
        ++rest.lines;
        counter.take(*line);
    }
    rest.inputs = counter.inputs();
    return rest;
}

}  // namespace zmfb::tool
