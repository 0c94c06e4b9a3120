/// Error blocks for tests.
#pragma once

#include <string>
#include <utility>

#include "host/error.h"
#include "host/value.h"

namespace zmfb::host_test {

/// While it lives, errors are kept here, and the operation that raised one goes on with `answer`.
class CaughtErrors {
  public:
    explicit CaughtErrors(host::Value answer = {})
        : block_(host::Value::block([this, answer = std::move(answer)](host::Args args) {
              last_ = args[0];
              ++count_;
              return answer;
          })) {}

    /// How many were raised since the last call.
    int take_count() { return std::exchange(count_, 0); }
    /// The last error object, NIL when none was raised.
    [[nodiscard]] const host::Value& last() const { return last_; }
    /// A field of the last error object.
    [[nodiscard]] host::Value field(std::string_view name) const {
        return last_.object() == nullptr ? host::Value() : last_.object()->get(name);
    }
    [[nodiscard]] int number(std::string_view name) const {
        const host::Value value = field(name);
        return value.is(host::Kind::numeric) ? static_cast<int>(value.number()) : -1;
    }
    [[nodiscard]] std::string text(std::string_view name) const {
        const host::Value value = field(name);
        return value.is(host::Kind::character) ? std::string(value.text()) : std::string();
    }

  private:
    int count_ = 0;
    host::Value last_;
    host::ScopedErrorBlock block_;
};

}  // namespace zmfb::host_test
