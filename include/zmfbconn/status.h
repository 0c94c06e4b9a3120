/// How something ended that can fail.
#pragma once

#include <string>
#include <utility>

#pragma GCC visibility push(default)

namespace zmfb {

/// Well, or with a failure and what was wrong, in words.
///
///     if (const zmfb::Status done = zmfb::prepare_client("shop.fdb"); !done.ok())
///         std::cerr << done.message() << '\n';
class [[nodiscard]] Status {
  public:
    /// It went well.
    Status() = default;
    /// It failed, and why.
    explicit Status(std::string message) : failed_(true), message_(std::move(message)) {}
    /// What a call of the engine ended with: below 0 a failure, above it a warning.
    Status(int sqlcode, std::string message)
        : failed_(sqlcode < 0), sqlcode_(sqlcode), message_(std::move(message)) {}

    /// Whether it went well.
    [[nodiscard]] bool ok() const noexcept { return !failed_; }
    /// What was wrong, all lines of it when it was the engine that said so; "" when nothing was.
    [[nodiscard]] const std::string& message() const noexcept { return message_; }
    /// The SQLCODE; 0 where nothing was wrong, or not with the engine.
    [[nodiscard]] int sqlcode() const noexcept { return sqlcode_; }

  private:
    bool failed_ = false;
    int sqlcode_ = 0;
    std::string message_;
};

}  // namespace zmfb

#pragma GCC visibility pop
