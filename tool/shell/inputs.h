/// Parting lines into inputs.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tool/shell/statement.h"

namespace zmfb::tool {

/// Takes lines: a statement may go on over several of them, and one line may have several; all else is a
/// line.
class Inputs {
  public:
    /// What becomes of an input; .F. when nothing behind it is to be taken.
    using Use = std::function<bool(Input kind, const std::string& text)>;

    /// Hands on each input that ends in a line, a statement without its ";". Returns what follows the one
    /// that was to be the last.
    std::string take(const std::string& line, const Use& use);
    /// The statement that has begun and not ended yet; "" when there is none.
    [[nodiscard]] const std::string& begun() const { return begun_; }
    /// Forgets it.
    void forget();

  private:
    std::string take_statements(std::string_view piece, const Use& use);

    std::string begun_;
    StatementScan scan_;  // of what has begun
};

}  // namespace zmfb::tool
