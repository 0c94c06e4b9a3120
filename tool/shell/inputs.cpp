#include "tool/shell/inputs.h"

#include <utility>

namespace zmfb::tool {
namespace {

// The words that begin and end a transaction go without their ";".
bool may_end_here(const std::string& line) {
    return step_of(line) != Step::none && !StatementScan().end_in(line);
}

}  // namespace

std::string Inputs::take(const std::string& line, const Use& use) {
    if (!begun_.empty()) return take_statements("\n" + line, use);
    const Input kind = input_of(line);
    if (kind == Input::statement) return take_statements(may_end_here(line) ? line + "\n;" : line, use);
    if (kind != Input::nothing) use(kind, line);
    return "";
}

std::string Inputs::take_statements(std::string_view piece, const Use& use) {
    for (auto end = scan_.end_in(piece); end; end = scan_.end_in(piece)) {
        begun_ += piece.substr(0, *end - 1);
        piece.remove_prefix(*end);
        const std::string statement = std::exchange(begun_, {});
        if (input_of(statement) == Input::nothing || use(Input::statement, statement)) continue;
        forget();
        return std::string(piece);
    }
    begun_ += piece;
    if (scan_.is_blank()) forget();
    return "";
}

void Inputs::forget() {
    begun_.clear();
    scan_ = {};
}

}  // namespace zmfb::tool
