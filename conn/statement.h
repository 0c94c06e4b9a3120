/// Filling statement templates and running them, as the methods of several folders do.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "conn/self.h"
#include "host/result.h"

namespace zmfb {

/// What a placeholder of a template becomes.
struct Placeholder {
    std::string_view placeholder;
    Value value;
};

/// The pairs that a template is filled with, in their order: a value that holds a later placeholder is filled
/// too.
class Placeholders {
  public:
    Placeholders(std::initializer_list<Placeholder> pairs) {
        for (const Placeholder& pair : pairs) add(pair.placeholder, pair.value);
    }

    /// Adds a pair behind the others.
    void add(std::string_view placeholder, const Value& value);
    /// The same as assemblestatement takes them.
    [[nodiscard]] const Value& array() const { return array_; }

  private:
    Value array_ = Value::array_of_size(0);
};

/// The filled template itself, for who sends it otherwise.
std::string filled(std::string_view statement, const Placeholders& placeholders);

/// The result of the filled query as internalselect gives it: a header, then the data rows; empty when it
/// failed.
Value select(Self& self, std::string_view statement, const Placeholders& placeholders);
/// The number that the first value of the first data row holds; 0 without a row.
Value first_number(const Value& result);

/// Whether the filled statement ran.
bool update(Self& self, std::string_view statement, const Placeholders& placeholders);

/// Why a statement is not to reach the engine.
struct Objection {
    int sqlcode;
    std::string_view reason;
};
/// The same; one that fails raises `message` followed by the SQLCODE error text. With an objection it fails
/// for that, unless no database is attached: then it is passed over like every other.
bool update_or_raise(Self& self, std::string_view statement, const Placeholders& placeholders,
                     const Value& message, const std::optional<Objection>& objection = {});

}  // namespace zmfb
