/// One run of a matrix over a database: for real, or simulated.
#pragma once

#include <utility>

#include "conn/self.h"

namespace zmfb::matrix {

/// Carries changes out and keeps the log of them.
///
/// The same decisions go through here in both kinds of run; a simulation only takes every change for done.
class Application {
  public:
    Application(Self& object, bool simulation) : self(object), simulation_(simulation) {}

    /// Calls the method that makes a change and returns whether it did; .T. without a call in a simulation.
    template <class... Arguments>
    bool change(MethodName<sizeof...(Arguments)> method, Arguments&&... arguments) {
        return simulation_ || ask(self, method, std::forward<Arguments>(arguments)...);
    }

    /// Logs an event.
    void log(Value text) { log_.push(host::array_of(std::move(text))); }
    /// Logs how a change went; one that was not done fails the run.
    void log_change(bool done, Value done_text, Value error_text) {
        log(std::move(done ? done_text : error_text));
        if (!done) fail();
    }
    void fail() { ok_ = false; }

    /// {ok, log}.
    [[nodiscard]] Value result() const { return host::array_of(ok_, log_); }

    Self& self;

  private:
    bool simulation_;
    bool ok_ = true;
    Value log_ = Value::array_of_size(0);
};

}  // namespace zmfb::matrix
